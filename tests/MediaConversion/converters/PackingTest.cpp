#include <MediaConversion/converters/ImageToFullFrame.h>
#include <MediaConversion/converters/ImageToPackedFrame.h>

#include <tests/MediaConversion/converters/PackingReference.h>

#include <OpenImageIO/imageio.h>

using namespace MediaConversion;
using namespace Zentrel;
using namespace TestSupport;
using namespace TestSupport::Packing;

namespace {

TEST(Packing, GivesTheBytesOfThePlainFormula) {
    expectServesExactly<ImageToPackedFrame>(encodings, encoding, "Packing is not supported from ");
    expectServesExactly<ImageToFullFrame>(decodings, decoding, "Unpacking is not supported from ");
}

TEST(Packing, PacksBlocksToTheBit) {
    std::vector<double> const twoPixels{0xabc, 0x123, 0x456, 0x789, 0xdef, 0x012};
    struct {
        FrameFormat source;
        std::vector<double> samples;
        FrameFormat destination;
        const char* bytes;
    } const cases[] = {
        {F::RGB_U10(), {1023, 0, 1}, P::RGB_DPX_FILLED_U10(), "04 00 c0 ff "},
        {F::RGB_U10(), {1023, 0, 1}, P::BGR_DPX_FILLED_U10(), "fc 0f 40 00 "},
        {F::RGB_U10(), {1024, 1025, 65535}, P::RGB_DPX_FILLED_U10(), "fc 1f 00 00 "}, // 0, 1, 1023
        {F::RGB_F32(), {NAN, -INFINITY, INFINITY}, P::RGB_DPX_FILLED_U10(), "fc 0f 00 00 "},
        {F::RGB_U12(), twoPixels, P::RGB_DPX_PACKED_U12(), "bc 3a 12 56 94 78 ef 2d 01 "},
        {F::RGB_U12(), twoPixels, P::RGB_SMPTE_2110_U12(), "ab c1 23 45 67 89 de f0 12 "},
        {F::RGB_U12(), twoPixels, P::BGR_SMPTE_2110_U12(), "45 61 23 ab c0 12 de f7 89 "},
    };
    for (auto const& row : cases)
        EXPECT_EQ(blockOf<ImageToPackedFrame>(row.source, row.samples, row.destination), row.bytes);
}

TEST(Packing, RefusesFramesWithoutPixels) {
    ImageToPackedFrame packing(P::RGB_SMPTE_2110_U12());
    EXPECT_EQ(messageOf([&] { packing.onNewImage(nullptr); }), "Can only convert FullFrame images");
    EXPECT_EQ(messageOf([&] { packing.convert(FullFrame(F::RGB_U12())); }), "no image data in frame");
}

TEST(Packing, GivesTheBytesOfADpxFile) {
    TemporaryFolder const folder;
    for (auto const& [full, packed, bits, name] :
         {std::tuple(F::RGB_U10(), P::RGB_DPX_FILLED_U10(), 10, "Filled, method A"),
          std::tuple(F::RGB_U12(), P::RGB_DPX_PACKED_U12(), 12, "Packed")}) {
        cv::Size const size(32, 9); // rows of whole 32-bit words, as DPX wants them also when packed
        cv::Mat const picture = GuardedPicture(full, size, Filling::Noise).matrix().clone();
        cv::Mat const samples = picture * (1 << (16 - bits)); // of which the file keeps the upper bits
        OIIO::ImageSpec spec(size.width, size.height, 3, OIIO::TypeUInt16);
        spec.attribute("oiio:BitsPerSample", bits);
        spec.attribute("oiio:Endian", "little");
        spec.attribute("dpx:Packing", name);
        std::string const file = (folder / "p.dpx").string();
        auto const output = OIIO::ImageOutput::create(file);
        ASSERT_TRUE(output && output->open(file, spec) &&
                    output->write_image(OIIO::TypeUInt16, samples.data) && output->close());

        cv::Mat const words = convertedBy<ImageToPackedFrame>(packed, frameOf(full, picture));
        Bytes const written = bytesOf(file);
        auto const length = static_cast<std::ptrdiff_t>(words.total() * words.elemSize());
        EXPECT_TRUE(std::equal(written.end() - length, written.end(), words.data)) << name;
    }
}

} // namespace
