#include <MediaConversion/MediaPipeline/FrameFormat.h>

#include <gtest/gtest.h>

#include <vector>

using namespace Zentrel;

namespace {

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

TEST(FrameFormat, IsPrintedForMessages) {
    EXPECT_EQ(FrameFormat::toString(PackedFrameFormat::YCBCRA_ITU_T871_9ZT_4224_HYBRID_U12()),
              "YCbCrA_ITU_T871_U12_9ZT-4224-HYBRID");
    EXPECT_EQ(FrameFormat::toString(static_cast<ChannelType>(6)), "(Unknown ChannelType 6)");
    EXPECT_EQ(FrameFormat::toString(static_cast<Colourspace>(0xFFFFFFFFu)),
              "(Unknown Colourspace 4294967295)");
}

} // namespace
