#include <MediaConversion/MediaPipeline/FrameFormat.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

using namespace Zentrel;
using F = FullFrameFormat;
using P = PackedFrameFormat;

namespace {

struct CatalogueRow {
    FrameFormat (*format)();
    const char* name;
    const char* packing;
};

// Written from the format tables of the media server, not from the catalogue.
const CatalogueRow catalogue[] = {
    {F::RGB_U8, "RGB_U8_RGB", "3,3,1x1"},
    {F::BGR_U8, "RGB_U8_BGR", "3,3,1x1"},
    {F::RGB_U10, "RGB_U10_RGB", "6,3,1x1"},
    {F::BGR_U10, "RGB_U10_BGR", "6,3,1x1"},
    {F::RGB_U12, "RGB_U12_RGB", "6,3,1x1"},
    {F::BGR_U12, "RGB_U12_BGR", "6,3,1x1"},
    {F::RGB_U15plus1, "RGB_U15plus1_RGB", "6,3,1x1"},
    {F::BGR_U15plus1, "RGB_U15plus1_BGR", "6,3,1x1"},
    {F::RGB_U16, "RGB_U16_RGB", "6,3,1x1"},
    {F::BGR_U16, "RGB_U16_BGR", "6,3,1x1"},
    {F::RGB_F32, "RGB_F32_RGB", "12,3,1x1"},
    {F::BGR_F32, "RGB_F32_BGR", "12,3,1x1"},
    {F::RGBA_U8, "RGBA_U8_RGBA", "4,4,1x1"},
    {F::BGRA_U8, "RGBA_U8_BGRA", "4,4,1x1"},
    {F::ARGB_U8, "RGBA_U8_ARGB", "4,4,1x1"},
    {F::ARGB_U15plus1, "RGBA_U15plus1_ARGB", "8,4,1x1"},
    {F::BGRA_U16, "RGBA_U16_BGRA", "8,4,1x1"},
    {F::RGBA_F32, "RGBA_F32_RGBA", "16,4,1x1"},
    {F::BGRA_F32, "RGBA_F32_BGRA", "16,4,1x1"},
    {F::YCBCR_ITU_T871_YCBCR_U8, "YCbCr_ITU_T871_U8_YCbCr", "3,3,1x1"},
    {F::YCBCR_ITU_T871_YCBCR_F32, "YCbCr_ITU_T871_F32_YCbCr", "12,3,1x1"},
    {F::YCBCR_ITU_T871_YCRCB_U8, "YCbCr_ITU_T871_U8_YCrCb", "3,3,1x1"},
    {F::YCOCGA_COCGAY_U8, "YCoCgA_U8_CoCgAY", "4,4,1x1"},
    {F::YCBCR_ITU_T871_YCBCR_U10, "YCbCr_ITU_T871_U10_YCbCr", "6,3,1x1"},
    {P::RGB_DPX_FILLED_U10, "RGB_U10_RGB-DPX-FILLED", "4,3,1x1"},
    {P::BGR_DPX_FILLED_U10, "RGB_U10_BGR-DPX-FILLED", "4,3,1x1"},
    {P::RGB_DPX_PACKED_U12, "RGB_U12_RGB-DPX-PACKED", "9,6,1x2"},
    {P::BGR_DPX_PACKED_U12, "RGB_U12_BGR-DPX-PACKED", "9,6,1x2"},
    {P::RGB_SMPTE_2110_U12, "RGB_U12_RGB-SMPTE-2110", "9,6,1x2"},
    {P::BGR_SMPTE_2110_U12, "RGB_U12_BGR-SMPTE-2110", "9,6,1x2"},
    {P::RGB_DXT1_U8, "RGB_U8_RGB-DXT1", "8,48,4x4"},
    {P::YCBCR_ITU_T871_YUYV_422_U8, "YCbCr_ITU_T871_U8_YUYV-422", "4,4,1x2"},
    {P::YCBCR_ITU_T871_9ZT_422_U10, "YCbCr_ITU_T871_U10_9ZT-422", "5,4,1x2"},
    {P::YCBCRA_ITU_T871_9ZT_4224_HYBRID_U12, "YCbCrA_ITU_T871_U12_9ZT-4224-HYBRID", "8,6,1x2"},
    {P::YCBCR_ITU_T871_9ZT_420_U8, "YCbCr_ITU_T871_U8_9ZT-420", "6,6,2x2"},
    {P::YCOCG_DXT5_U8, "YCoCg_U8_YCoCg-DXT5", "16,48,4x4"},
};

TEST(FrameFormat, CatalogueHasTheServersFormats) {
    for (auto const& row : catalogue) {
        EXPECT_EQ(FrameFormat::toString(row.format()), row.name);
        EXPECT_EQ(PixelPacking::toString(row.format().pixelPacking), row.packing) << row.name;
    }
}

TEST(FrameFormat, UnknownValuesPrintTheirNumber) {
    EXPECT_EQ(FrameFormat::toString(static_cast<ChannelType>(6)), "(Unknown ChannelType 6)");
    EXPECT_EQ(FrameFormat::toString(static_cast<Colourspace>(9)), "(Unknown Colourspace 9)");
    EXPECT_EQ(FrameFormat::toString(static_cast<Colourspace>(0xFFFFFFFFu)),
              "(Unknown Colourspace 4294967295)");
}

TEST(FrameFormat, OrdersByEachFieldInTurn) {
    auto const make = [](unsigned colourspace, unsigned depth, unsigned bytes, unsigned samples,
                         unsigned rows, unsigned columns, const char* layout) {
        return FrameFormat{static_cast<Colourspace>(colourspace), static_cast<ChannelType>(depth),
                           PixelPacking({bytes}, {samples}, {rows, columns}), layout};
    };
    // Each is smaller than the next because of one field, although every later field is larger.
    std::vector<FrameFormat> const ascending = {
        make(0, 9, 9, 9, 9, 9, "z"), make(1, 0, 9, 9, 9, 9, "z"),  make(1, 1, 0, 9, 9, 9, "z"),
        make(1, 1, 1, 0, 9, 9, "z"), make(1, 1, 1, 1, 0, 9, "z"),  make(1, 1, 1, 1, 1, 0, "z"),
        make(1, 1, 1, 1, 1, 1, "a"), make(1, 1, 1, 1, 1, 1, "ab"), make(1, 1, 1, 1, 1, 1, "\xff"),
    };
    for (std::size_t i = 0; i < ascending.size(); ++i)
        for (std::size_t j = 0; j < ascending.size(); ++j) {
            EXPECT_EQ(ascending[i] < ascending[j], i < j) << i << " and " << j;
            EXPECT_EQ(ascending[i] == ascending[j], i == j) << i << " and " << j;
        }
}

TEST(FrameFormat, EqualFieldsAreTheSameFormat) {
    FrameFormat const built{Colourspace::RGB, ChannelType::U8, PixelPacking({3}, {3}, {1, 1}), "BGR"};
    EXPECT_EQ(built, F::BGR_U8());
    EXPECT_FALSE(built < F::BGR_U8());
    EXPECT_FALSE(F::BGR_U8() < built);
}

} // namespace
