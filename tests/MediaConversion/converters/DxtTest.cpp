#include <MediaConversion/converters/ColourTransforms.h>
#include <MediaConversion/converters/ImageRGBtoYCoCgDXT5.h>
#include <MediaConversion/converters/ImageYCoCgDXT5toRGB.h>

#include <tests/MediaConversion/converters/DxtReference.h>

#include <squish.h>

using namespace MediaConversion;
using namespace Zentrel;
using namespace TestSupport;
using namespace TestSupport::Dxt;

namespace {

cv::Mat encoded(FrameFormat const& destination, cv::Mat const& image) {
    return convertedBy<ImageRGBtoYCoCgDXT5>(destination, frameOf(F::RGBA_U8(), image));
}

/// RGBA blocks that lie on a line through a colour, with some noise: near to what photographs hold, from flat
/// ones to the longest lines there are, rising and falling in each channel.
cv::Mat linearBlocks() {
    std::mt19937 random;
    cv::Mat image(64, 256, CV_8UC4);
    for (int block = 0; block < 16 * 64; ++block) {
        int const length = 1 << random() % 9, noise = 1 << random() % 5;
        for (int c = 0; c < 4; ++c) {
            int const start = random() % 256, slope = static_cast<int>(random() % (2 * length)) - length;
            for (int i = 0; i < 16; ++i)
                image.ptr(block / 64 * 4 + i / 4, block % 64 * 4 + i % 4)[c] = static_cast<std::uint8_t>(
                    byteOf(start + slope * i / 15 + static_cast<int>(random() % noise)));
        }
    }
    return image;
}

TEST(Dxt, AgreesWithThePlainFormula) {
    expectServesExactly<ImageRGBtoYCoCgDXT5>(encodings, encoding, "DXT conversion is not supported from ");
    expectServesExactly<ImageYCoCgDXT5toRGB>(decodings, decoding, "RGB conversion is not supported from ");
    cv::Mat const image = linearBlocks();
    for (auto const& destination : {P::YCOCG_DXT5_U8(), P::RGB_DXT1_U8()}) {
        cv::Mat expected(image.rows / 4, image.cols / 4, openCvTypeOf(destination));
        encoding(F::RGBA_U8(), destination)(image, expected);
        expectSameBytes(encoded(destination, image), expected);
    }
}

// The block encoder and decoder do the same in bytes.
TEST(YCoCg, IsRoundedHalfUp) {
    constexpr int cases[][6] = {{255, 0, 0, 64, 128, -64},  {0, 255, 0, 128, 0, 128},
                                {0, 0, 255, 64, -127, -64}, {0, 0, 1, 0, 0, 0},
                                {0, 0, 3, 1, -1, -1},       {9, 9, 9, 9, 0, 0}};
    for (auto const& [r, g, b, y, co, cg] : cases) {
        int results[3];
        RgbToYCoCg(r, g, b, results[0], results[1], results[2]);
        EXPECT_THAT(results, testing::ElementsAre(y, co, cg));
    }
    int red, green, blue;
    YCoCgToRgb(100, 10, -5, red, green, blue);
    EXPECT_EQ(std::tie(red, green, blue), std::tuple(115, 95, 95));
}

/// A block of two colours: `where` has the first one's pixels as ones, pixel 0 lowest.
cv::Mat blockOf(Rgb const& first, Rgb const& second, unsigned where) {
    cv::Mat block(4, 4, CV_8UC4, cv::Scalar::all(77));
    for (int i = 0; i < 16; ++i)
        for (int c = 0; c < 3; ++c)
            block.ptr(i / 4, i % 4)[c] = static_cast<std::uint8_t>((where >> i & 1 ? first : second)[c]);
    return block;
}

TEST(DxtEncoder, EncodesBlocksAsComputedByHand) {
    constexpr Rgb grey{100, 100, 100}, black{0, 0, 0}, white{255, 255, 255}, red{255, 0, 0}, green{0, 255, 0};
    struct {
        const char* what;
        cv::Mat block;
        FrameFormat destination;
        const char* bytes;
    } const cases[] = {
        {"a flat block: luma endpoints 100 and 99, chroma endpoints around 128, all chroma on the third step",
         blockOf(grey, grey, 0), P::YCOCG_DXT5_U8(), "64 63 00 00 00 00 00 00 03 84 e3 7b aa aa aa aa "},
        {"black: the luma endpoints are equal, and the indices are the second's", blockOf(black, black, 0),
         P::YCOCG_DXT5_U8(), "00 00 49 92 24 49 92 24 03 84 e3 7b aa aa aa aa "},
        {"red above green: Co falls while Cg rises, the Cg endpoints are exchanged",
         blockOf(red, green, 0x00ff), P::YCOCG_DXT5_U8(), "7e 41 49 92 24 00 00 00 40 f2 80 87 00 00 55 55 "},
        {"black beside white", blockOf(black, white, 0x3333), P::RGB_DXT1_U8(), "9e f7 61 08 05 05 05 05 "},
    };
    for (auto const& [what, block, destination, bytes] : cases)
        EXPECT_EQ(hexOf(encoded(destination, block).data, destination.pixelPacking.bytes()), bytes) << what;
}

// Graphics hardware and other decoders see the same values. Theirs of the endpoints may differ from ours by
// one: they repeat the high bits where we round.
TEST(DxtEncoder, IsReadByAnotherDecoder) {
    for (auto const& destination : {P::YCOCG_DXT5_U8(), P::RGB_DXT1_U8()}) {
        bool const isDxt1 = destination == P::RGB_DXT1_U8();
        cv::Mat const blocks = encoded(destination, linearBlocks());
        for (std::size_t block = 0; block < blocks.total(); ++block) {
            std::uint8_t const* const bytes = blocks.data + block * blocks.elemSize();
            std::uint8_t theirs[16][4];
            squish::Decompress(theirs[0], bytes, isDxt1 ? squish::kDxt1 : squish::kDxt5);
            for (int i = 0; i < 16; ++i) {
                Rgb const ours = isDxt1 ? expectedFromDxt1(bytes, i) : expectedColour(bytes + 8, i, false);
                for (std::size_t c = 0; c < 3; ++c)
                    ASSERT_NEAR(theirs[i][c], ours[c], 1);
                if (!isDxt1) {
                    ASSERT_EQ(theirs[i][3], expectedLuma(bytes, i));
                }
            }
        }
    }
}

} // namespace
