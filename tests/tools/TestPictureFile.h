// Picture files for tests, written with the library that the tool reads them with.
#pragma once

#include <OpenImageIO/imageio.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace TestSupport {

/// The sample of a channel at a pixel of the file; row 0 is the top one.
using Sample = std::function<float(int x, int y, int channel)>;

/// Describes a picture whose file holds all of its pixels.
inline OIIO::ImageSpec pictureSpec(int width, int height, std::vector<std::string> channels,
                                   OIIO::TypeDesc type) {
    OIIO::ImageSpec spec(width, height, static_cast<int>(channels.size()), type);
    for (std::size_t i = 0; i < channels.size(); ++i)
        if (channels[i] == "A")
            spec.alpha_channel = static_cast<int>(i);
    spec.channelnames = std::move(channels);
    return spec;
}

inline void writePictureFile(const std::filesystem::path& file, const OIIO::ImageSpec& spec,
                             const Sample& sample) {
    std::vector<float> samples;
    for (int y = 0; y < spec.height; ++y)
        for (int x = 0; x < spec.width; ++x)
            for (int channel = 0; channel < spec.nchannels; ++channel)
                samples.push_back(sample(x, y, channel));
    const auto output = OIIO::ImageOutput::create(file.string());
    ASSERT_TRUE(output && output->open(file.string(), spec)) << file;
    ASSERT_TRUE(output->write_image(OIIO::TypeFloat, samples.data())) << output->geterror();
    ASSERT_TRUE(output->close()) << output->geterror();
}

/// What a picture file holds, colour under a straight alpha as it is there.
template <class Value>
struct LoadedPicture {
    explicit LoadedPicture(const std::filesystem::path& file) {
        OIIO::ImageSpec keepStraight;
        keepStraight.attribute("oiio:UnassociatedAlpha", 1);
        const auto input = OIIO::ImageInput::open(file.string(), &keepStraight);
        if (!input) {
            ADD_FAILURE() << OIIO::geterror();
            return;
        }
        spec = input->spec();
        samples.resize(spec.image_pixels() * static_cast<std::size_t>(spec.nchannels));
        EXPECT_TRUE(input->read_image(0, 0, 0, -1, OIIO::BaseTypeFromC<Value>::value, samples.data()));
    }

    OIIO::ImageSpec spec;
    std::vector<Value> samples;
};

} // namespace TestSupport
