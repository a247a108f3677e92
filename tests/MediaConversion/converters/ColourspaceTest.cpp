#include <MediaConversion/converters/ImageColourspace.h>

#include <tests/MediaConversion/converters/ConverterValidator.h>

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
    std::set<std::pair<std::string, std::string>> const served{
        {"RGB", "BGR"},  {"RGB", "RGBA"},  {"RGB", "BGRA"}, {"BGR", "RGB"},   {"BGR", "RGBA"},
        {"BGR", "BGRA"}, {"RGBA", "RGB"},  {"RGBA", "BGR"}, {"RGBA", "BGRA"}, {"BGRA", "RGB"},
        {"BGRA", "BGR"}, {"BGRA", "RGBA"}, {"ARGB", "RGB"}, {"ARGB", "BGR"}};
    for (auto const& [source, sourceType] : FullFrame::openCvTypes)
        for (auto const& [destination, type] : FullFrame::openCvTypes) {
            std::string const &from = source.layoutName, &to = destination.layoutName;
            if (source == destination || source.channelType != destination.channelType)
                continue;
            if (served.count({from, to}))
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
