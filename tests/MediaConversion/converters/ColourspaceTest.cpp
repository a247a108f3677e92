#include <MediaConversion/MediaPipeline/PackedFrame.h>
#include <MediaConversion/converters/ColourTransforms.h>
#include <MediaConversion/converters/ImageColourspace.h>

#include <tests/TestSupport.h>

#include <opencv2/core.hpp>

using namespace MediaConversion;
using namespace Zentrel;
using TestSupport::messageOf;
using F = FullFrameFormat;
using C = Colourspace;
using T = ChannelType;

namespace {

/// A full format of 8-bit, 16-bit or float samples in any order, also those that the catalogue does not name.
FrameFormat formatOf(std::string const& order, T depth) {
    auto const channels = static_cast<std::uint32_t>(order.size());
    std::uint32_t const bytes = depth == T::U8 ? 1 : depth == T::F32 ? 4 : 2;
    return {channels == 4 ? C::RGBA : C::RGB, depth, PixelPacking({channels * bytes}, {channels}, {1, 1}),
            order};
}

template <class Sample>
Sample fullScale() {
    return std::is_floating_point_v<Sample> ? Sample(1) : std::numeric_limits<Sample>::max();
}

/// Converts a few pixels, and expects each channel where its letter stands; alpha that was not there is full.
template <class Sample>
void expectReordered(std::string const& from, std::string const& to, T depth) {
    FrameFormat const source = formatOf(from, depth), destination = formatOf(to, depth);
    int const channels = static_cast<int>(from.size());
    cv::Mat pixels(3, 7, CV_MAKETYPE(cv::DataType<Sample>::depth, channels));
    for (int i = 0; i < 3 * 7 * channels; ++i)
        pixels.ptr<Sample>()[i] = static_cast<Sample>(i % 83) / (depth == T::F32 ? 64 : 1);

    FullFrame const result = ImageColourspace(destination).convert({source, pixels, Frame::Origin::TopLeft});
    ASSERT_EQ(result.format(), destination);
    for (int pixel = 0; pixel < 3 * 7; ++pixel)
        for (std::size_t i = 0; i < to.size(); ++i) {
            auto const place = from.find(to[i]);
            Sample const expected = place == std::string::npos
                                        ? fullScale<Sample>()
                                        : pixels.ptr<Sample>()[pixel * channels + place];
            EXPECT_EQ(result.image().ptr<Sample>()[pixel * to.size() + i], expected) << from << " to " << to;
        }
}

TEST(ImageColourspace, ServesFourteenPairsOfOrdersAtEveryDepth) {
    std::pair<const char*, const char*> const served[] = {
        {"RGB", "BGR"},  {"RGB", "RGBA"},  {"RGB", "BGRA"}, {"BGR", "RGB"},   {"BGR", "RGBA"},
        {"BGR", "BGRA"}, {"RGBA", "RGB"},  {"RGBA", "BGR"}, {"RGBA", "BGRA"}, {"BGRA", "RGB"},
        {"BGRA", "BGR"}, {"BGRA", "RGBA"}, {"ARGB", "RGB"}, {"ARGB", "BGR"},
    };
    EXPECT_EQ(ImageColourspace::openCvConversion.size(), std::size(served));
    auto const held = [](std::pair<const char*, const char*> const& orders, T depth) {
        return FullFrame::is(formatOf(orders.first, depth)) && FullFrame::is(formatOf(orders.second, depth));
    };
    for (auto const& orders : served) {
        auto const& [from, to] = orders;
        expectReordered<std::uint8_t>(from, to, T::U8);
        if (held(orders, T::U12)) // added alpha is 65535, not 4095
            expectReordered<std::uint16_t>(from, to, T::U12);
        if (held(orders, T::F32))
            expectReordered<float>(from, to, T::F32);
    }
}

TEST(ImageColourspace, SharesThePixelsBetweenEqualFormats) {
    for (FrameFormat const& format : {F::ARGB_U8(), F::YCOCGA_COCGAY_U8()}) {
        FullFrame const frame(format, 2, 2);
        EXPECT_EQ(ImageColourspace(format).convert(frame).image().data, frame.image().data);
    }
}

TEST(ImageColourspace, RefusesOtherPairs) {
    struct {
        FrameFormat source, destination;
        const char* names;
    } const cases[] = {
        {F::ARGB_U8(), F::RGBA_U8(), "RGBA_U8_ARGB to RGBA_U8_RGBA"},
        {F::RGB_U8(), F::ARGB_U8(), "RGB_U8_RGB to RGBA_U8_ARGB"},
        {F::RGB_U8(), F::RGB_U16(), "RGB_U8_RGB to RGB_U16_RGB"}, // same order, another depth
        {F::YCBCR_ITU_T871_YCBCR_U8(), F::YCBCR_ITU_T871_YCRCB_U8(),
         "YCbCr_ITU_T871_U8_YCbCr to YCbCr_ITU_T871_U8_YCrCb"},
    };
    for (auto const& row : cases)
        EXPECT_EQ(messageOf([&] { ImageColourspace::selectConversion(row.source, row.destination); }),
                  std::string("Colourspace conversion is not supported from ") + row.names);
    EXPECT_EQ(messageOf([] { ImageColourspace(F::RGB_U8()).onNewImage(nullptr); }),
              "Can only convert FullFrame images");
}

TEST(ColourTransforms, AreTheSameToTheLastBit) {
    struct {
        double b, g, r, y, u, v;
    } const forward[] = {
        {1, 1, 1, 0.9999999999999999, 0.5, 0.5}, // the sum of the luma's factors falls just short of one
        {0, 0, 0, 0, 0.5, 0.5},
        {0, 0, 1, 0.299, 0.331264, 1},
        {1, 0, 0, 0.114, 1, 0.418688},
        {0.1, 0.7, 0.3, 0x1.0624dd2f1a9fbp-1, 0x1.11ea0d4f73dbap-2, 0x1.652878c50dbbap-2},
    };
    for (auto const& row : forward) {
        double y, u, v, yAlone;
        BgrToYuv(row.b, row.g, row.r, y, u, v);
        BgrToY(row.b, row.g, row.r, yAlone);
        EXPECT_EQ(y, row.y);
        EXPECT_EQ(u, row.u);
        EXPECT_EQ(v, row.v);
        EXPECT_EQ(yAlone, y);
    }
    double b, g, r;
    YuvToBgr(0.5, 1.0, 0.5, b, g, r);
    EXPECT_EQ(b, 0.5 + 1.772 * 0.5);
    EXPECT_EQ(g, 0.5 - 0.34414 * 0.5);
    EXPECT_EQ(r, 0.5);
    YuvToBgr(0.25, 0.5, 0.75, b, g, r);
    EXPECT_EQ(b, 0.25);
    EXPECT_EQ(g, 0.25 - 0.71414 * 0.25);
    EXPECT_EQ(r, 0.25 + 1.402 * 0.25);
}

TEST(ColourTransforms, RoundIntegerChromaUpwards) {
    struct {
        int r, g, b, y, co, cg;
    } const cases[] = {
        {255, 255, 255, 255, 0, 0}, {255, 0, 0, 64, 128, -64}, {0, 0, 255, 64, -127, -64},
        {0, 255, 0, 128, 0, 128},   {0, 0, 1, 0, 0, 0},        {0, 0, 3, 1, -1, -1},
    };
    for (auto const& row : cases) {
        int y, co, cg;
        RgbToYCoCg(row.r, row.g, row.b, y, co, cg);
        EXPECT_EQ(y, row.y);
        EXPECT_EQ(co, row.co);
        EXPECT_EQ(cg, row.cg);
    }
    int r, g, b;
    YCoCgToRgb(64, 128, -64, r, g, b);
    EXPECT_EQ(r, 256);
    EXPECT_EQ(g, 0);
    EXPECT_EQ(b, 0);
}

} // namespace
