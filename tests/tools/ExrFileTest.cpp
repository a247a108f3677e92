// EXR files read without OpenImageIO, beside what that reads of them.
#include <oiio/PictureSpec.h>
#include <tests/TestSupport.h>
#include <tests/tools/TestPictureFile.h>
#include <tools/zet/ExrFile.h>

#include <algorithm>
#include <functional>
#include <random>

using namespace testing;
using namespace TestSupport;
using namespace ZetTool;

namespace {

std::vector<std::string> channelNames(int count) {
    const std::vector<std::string> all{"R", "G", "B", "A"};
    return {all.begin(), all.begin() + count};
}

/// Noise, which does not compress, below a smooth part that does.
Sample halfNoise(int height) {
    return [height, random = std::make_shared<std::mt19937>(1)](int x, int y, int channel) {
        return y < height / 2 ? static_cast<float>(x + y * 3 + channel) / 256
                              : std::generate_canonical<float, 24>(*random) * 3 - 1;
    };
}

/// The samples of the file's pixels in the order in which OpenImageIO gives them.
std::vector<float> samplesOf(Picture& picture, const OIIO::ImageSpec& spec) {
    const auto width = static_cast<std::size_t>(spec.width),
               channels = static_cast<std::size_t>(spec.nchannels);
    std::vector<float> samples(spec.image_pixels() * channels);
    std::vector<float> line(width);
    const int left = spec.x - spec.full_x, top = spec.y - spec.full_y;
    for (int y = 0; y < spec.height; ++y)
        for (std::size_t channel = 0; channel < channels; ++channel) {
            picture.readRow(picture.height() - 1 - top - y, left, left + spec.width,
                            static_cast<EmbeddedHost::PictureChannel>(channel), line.data());
            for (std::size_t x = 0; x < width; ++x)
                samples[(static_cast<std::size_t>(y) * width + x) * channels + channel] = line[x];
        }
    return samples;
}

class ExrFileTest : public Test {
protected:
    const TemporaryFolder folder;
    const std::filesystem::path file = folder / "p.exr";
};

TEST_F(ExrFileTest, ReadsWhatOpenImageIOReads) {
    struct Case {
        const char* compression;
        OIIO::TypeDesc samples;
        int channels, width, height;
        const char* lineOrder = "increasingY";
    };
    for (const Case& c : std::vector<Case>{
             {"none", OIIO::TypeHalf, 3, 33, 20},
             {"zip", OIIO::TypeHalf, 3, 1, 1},
             {"zip", OIIO::TypeHalf, 3, 37, 50},
             {"zip", OIIO::TypeHalf, 4, 64, 48, "decreasingY"},
             {"zip", OIIO::TypeFloat, 4, 13, 33},
             {"zips", OIIO::TypeHalf, 4, 7, 9},
             {"zips", OIIO::TypeHalf, 3, 201, 9}, // an odd number of even bytes
             {"zips", OIIO::TypeFloat, 3, 40, 5},
         }) {
        auto spec = pictureSpec(c.width, c.height, channelNames(c.channels), c.samples);
        spec.attribute("compression", c.compression);
        spec.attribute("openexr:lineOrder", c.lineOrder);
        spec.x = 5;
        spec.full_x = 3;
        spec.full_y = -4;
        spec.full_width = c.width + 6;
        spec.full_height = c.height + 8;
        writePictureFile(file, spec, halfNoise(c.height));

        const LoadedPicture<float> loaded(file);
        const PictureHeader wanted = ZetImageIo::describe(loaded.spec);
        const auto exr = ExrFile::open(file);
        ASSERT_TRUE(exr) << c.compression;
        const PictureHeader header = exr->header();
        EXPECT_EQ(header.size, wanted.size);
        EXPECT_EQ(header.hasAlpha, wanted.hasAlpha);
        EXPECT_EQ(header.premultiplied, wanted.premultiplied);
        EXPECT_EQ(header.floatSamples, wanted.floatSamples);
        EXPECT_EQ(header.bytes, wanted.bytes);
        EXPECT_EQ(header.colourSpace, wanted.colourSpace);
        auto picture = exr->read();
        ASSERT_TRUE(picture) << c.compression;
        EXPECT_EQ(samplesOf(*picture, loaded.spec), loaded.samples)
            << c.compression << ' ' << c.samples << ' ' << c.width << 'x' << c.height;
    }
}

TEST_F(ExrFileTest, LeavesOtherSortsToOpenImageIO) {
    const auto common = pictureSpec(32, 32, channelNames(3), OIIO::TypeHalf);
    const auto isOpened = [&](const OIIO::ImageSpec& spec) {
        writePictureFile(file, spec, halfNoise(32));
        return ExrFile::open(file) != nullptr;
    };
    EXPECT_TRUE(isOpened(common));
    for (const auto& change : std::vector<std::function<void(OIIO::ImageSpec&)>>{
             [](auto& spec) { spec.attribute("compression", "piz"); },
             [](auto& spec) { spec.tile_width = spec.tile_height = 16; },
             [](auto& spec) {
                 spec.channelnames = {"R", "G", "Z"};
             },
             [](auto& spec) {
                 spec.channelnames = {"left.R", "left.G", "left.B"};
             },
             [](auto& spec) {
                 spec.channelformats = {OIIO::TypeHalf, OIIO::TypeHalf, OIIO::TypeFloat};
             },
             [](auto& spec) { spec.format = OIIO::TypeUInt32; },
         }) {
        auto other = common;
        change(other);
        EXPECT_FALSE(isOpened(other));
    }
    // OpenImageIO writes no attributes of this name; what other programs wrote, it reads in any case.
    auto tagged = common;
    tagged.attribute("mine:colorspace", "sRGB");
    writePictureFile(file, tagged, halfNoise(32));
    auto bytes = bytesOf(file);
    const std::string mine = "mine:", oiio = "OIIO:";
    std::copy(oiio.begin(), oiio.end(), std::search(bytes.begin(), bytes.end(), mine.begin(), mine.end()));
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    EXPECT_FALSE(ExrFile::open(file));

    std::ofstream(file) << "text";
    EXPECT_FALSE(ExrFile::open(file));
    EXPECT_FALSE(ExrFile::open(folder / "none.exr"));
}

TEST_F(ExrFileTest, GivesNoPictureOfADamagedFile) {
    const auto smooth = halfNoise(2 * 64); // so that all of it is compressed
    for (const char* compression : {"none", "zip"}) {
        auto spec = pictureSpec(64, 64, channelNames(3), OIIO::TypeHalf);
        spec.attribute("compression", compression);
        writePictureFile(file, spec, smooth);
        const auto bytes = std::filesystem::file_size(file);
        std::filesystem::resize_file(file, bytes - 1);
        const auto cut = ExrFile::open(file);
        ASSERT_TRUE(cut);
        EXPECT_FALSE(cut->read()) << compression;
        std::filesystem::resize_file(file, 400); // within the table of chunks
        EXPECT_FALSE(ExrFile::open(file)) << compression;
    }
    writePictureFile(file, pictureSpec(64, 64, channelNames(3), OIIO::TypeHalf), smooth);
    std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
    stream.seekp(-20, std::ios::end).put('\x55').put('\x55').flush();
    const auto flipped = ExrFile::open(file);
    ASSERT_TRUE(flipped);
    EXPECT_FALSE(flipped->read());
}

} // namespace
