#include <MediaConversion/converters/ImageColourspace.h>

#include <tests/MediaConversion/converters/ConverterValidator.h>

#include <map>

using namespace MediaConversion;
using namespace Zentrel;
using namespace TestSupport;
using F = FullFrameFormat;

namespace {

/// Each channel where its letter stands; alpha that was not there is full for the type, not for the depth.
Reference reordering(std::string const& from, std::string const& to) {
    return [=](cv::Mat const& source, cv::Mat& expected) {
        expected.setTo(cv::Scalar::all(expected.depth() == CV_32F ? 1 : 65535));
        for (std::size_t i = 0; i < to.size(); ++i)
            if (auto const place = from.find(to[i]); place != std::string::npos) {
                cv::Mat channel;
                cv::extractChannel(source, channel, static_cast<int>(place));
                cv::insertChannel(channel, expected, static_cast<int>(i));
            }
    };
}

TEST(ImageColourspace, ServesFourteenPairsOfOrdersAtEveryDepth) {
    std::map<std::string, std::string> const served{{"RGB", "BGR, RGBA, BGRA"},
                                                    {"BGR", "RGB, RGBA, BGRA"},
                                                    {"RGBA", "RGB, BGR, BGRA"},
                                                    {"BGRA", "RGB, BGR, RGBA"},
                                                    {"ARGB", "RGB, BGR"}};
    EXPECT_EQ(ImageColourspace::openCvConversion.size(), 14u);
    for (auto const& [source, sourceType] : FullFrame::openCvTypes)
        for (auto const& [destination, type] : FullFrame::openCvTypes) {
            std::string const &from = source.layoutName, &to = destination.layoutName;
            auto const orders = served.find(from);
            if (source == destination || orders == served.end() ||
                source.channelType != destination.channelType)
                continue;
            if ((", " + orders->second + ",").find(" " + to + ",") != std::string::npos)
                expectConverts<ImageColourspace>(source, destination, reordering(from, to));
            else
                EXPECT_EQ(
                    messageOf([&, a = source, b = destination] { ImageColourspace::selectConversion(a, b); }),
                    "Colourspace conversion is not supported from " + FrameFormat::toString(source) + " to " +
                        FrameFormat::toString(destination));
        }
    FullFrame const same(F::ARGB_U8(), 2, 2); // passed on, although no other format becomes ARGB
    EXPECT_EQ(ImageColourspace(F::ARGB_U8()).convert(same).image().data, same.image().data);
    SelfPruningMemoryPool<HostMemoryResource, true> pool(3);
    auto raw = FullFrame::createRaw(F::ARGB_U8(), 2, 2,
                                    std::make_unique<RawFrameData>(std::make_unique<MemoryAccess>(pool, 16)));
    EXPECT_NE(ImageColourspace(F::ARGB_U8()).convert(*raw).image().data, raw->image().data);
}

} // namespace
