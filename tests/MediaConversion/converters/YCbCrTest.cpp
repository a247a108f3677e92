#include <MediaConversion/converters/ImageRGBtoYCbCr42x.h>
#include <MediaConversion/converters/ImageYCbCr42xToRGB.h>

#include <tests/MediaConversion/converters/YCbCrReference.h>

using namespace MediaConversion;
using namespace TestSupport;
using namespace TestSupport::YCbCr;

namespace {

TEST(YCbCr, GivesTheBytesOfThePlainEvaluation) {
    expectServesExactly<ImageRGBtoYCbCr42x>(encodings, encoding,
                                            "YCbCr 4:2:2 conversion is not supported from ");
    expectServesExactly<ImageYCbCr42xToRGB>(decodings, decoding, "RGB conversion is not supported from ");
}

// Of these lumas one at least stays within the range of samples, whatever the chroma adds.
TEST(YCbCr, RoundsAllEightBitChromaLikeDoubles) {
    constexpr std::uint8_t lumas[][2] = {{0, 255}, {100, 155}};
    cv::Mat blocks(256, 512, openCvTypeOf(yuyv));
    for (int cb = 0; cb < 256; ++cb)
        for (int i = 0; i < 512; ++i) {
            auto* const block = blocks.ptr(cb, i);
            block[0] = lumas[i % 2][0];
            block[1] = static_cast<std::uint8_t>(cb);
            block[2] = lumas[i % 2][1];
            block[3] = static_cast<std::uint8_t>(i / 2);
        }
    cv::Mat expected(256, 1024, openCvTypeOf(F::BGR_U8()));
    decoding(yuyv, F::BGR_U8())(blocks, expected);
    for (auto const set : availableInstructionSets()) {
        ConvertingWith const settings(set, 1);
        expectSameBytes(convertedBy<ImageYCbCr42xToRGB>(F::BGR_U8(), frameOf(yuyv, blocks)), expected);
    }
}

// Worked out by hand from the definitions.
TEST(ImageRGBtoYCbCr42x, GivesKnownBlocks) {
    struct {
        const char* what;
        FrameFormat source, destination;
        int rows;
        std::vector<double> samples;
        const char* bytes;
    } const cases[] = {
        // clang-format off
        {"white", F::BGRA_F32(), yuyv, 1, {1, 1, 1, 1, 1, 1, 1, 1}, "ff 80 ff 80 "},
        {"clamped red", F::BGR_F32(), ten, 1, {-0.5, 0, 1.5, 0, -INFINITY, INFINITY}, "54 4c ff 4c ee "},
        {"red, blue, white, black", F::BGR_U8(), square, 2, {0, 0, 255, 255, 0, 0, 255, 255, 255, 0, 0, 0}, "95 9a 4c 1d ff 00 "},
        // cr 1023, y1 467, a1 1023; a0 256, y0 1224, cb 339
        {"red's chroma beside blue", F::BGRA_F32(), hybrid, 1, {0, 0, 1, 0.25, 1, 0, 0, 1}, "ff 4f c7 ff 53 21 13 40 "},
        {"NaN beside white", F::BGR_F32(), yuyv, 1, {0, NAN, 0, 1, 1, 1}, "00 00 ff 00 "},
        {"NaN as alpha", F::BGRA_F32(), hybrid, 1, {0, 0, 0, NAN, 0, 0, 0, NAN}, "00 00 00 80 00 02 00 00 "},
        // y 1201, cb -165, cr -344
        {"the greatest green", F::RGB_U15plus1(), ten, 1, {0, 65535, 0, 0, 65535, 0}, "d6 2c aa 2c d1 "},
        // clang-format on
    };
    for (auto const& row : cases)
        EXPECT_EQ(blockOf<ImageRGBtoYCbCr42x>(row.source, row.samples, row.destination, row.rows), row.bytes)
            << row.what;
}

} // namespace
