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

/// A DPX file with one element of RGB whose header says that everything in it is little-endian.
void writeDpx(std::filesystem::path const& file, cv::Size size, int bits, cv::Mat const& pixels) {
    auto const pixelBytes = static_cast<std::uint32_t>(pixels.total() * pixels.elemSize());
    struct {
        std::size_t offset, bytes;
        std::uint32_t value;
    } const fields[] = {
        {0, 4, 0x53445058}, // "SDPX" as a number: "XPDS" in a little-endian file
        {4, 4, 2048},       // where the pixels are
        {8, 4, 0x302e3256}, // "V2.0"
        {16, 4, 2048 + pixelBytes},
        {770, 2, 1}, // elements
        {772, 4, static_cast<std::uint32_t>(size.width)},
        {776, 4, static_cast<std::uint32_t>(size.height)},
        {800, 1, 50}, // R, G, B
        {801, 1, 2},  // linear
        {803, 1, static_cast<std::uint32_t>(bits)},
        {804, 2, bits == 10}, // "filled to 32-bit words, method A"
        {808, 4, 2048},
    };
    std::string header(2048, '\0');
    for (auto const& field : fields)
        std::memcpy(&header[field.offset], &field.value, field.bytes);
    std::ofstream stream(file, std::ios::binary);
    stream << header << std::string(reinterpret_cast<char const*>(pixels.data), pixelBytes);
}

TEST(Packing, GivesWhatADpxReaderReads) {
    TemporaryFolder const folder;
    for (auto const& [full, packed, bits] : {std::tuple(F::RGB_U10(), P::RGB_DPX_FILLED_U10(), 10),
                                             std::tuple(F::RGB_U12(), P::RGB_DPX_PACKED_U12(), 12)}) {
        cv::Size const size(32, 9); // rows of whole 32-bit words, as DPX wants them also when packed
        cv::Mat const picture = GuardedPicture(full, size, Filling::Noise).matrix().clone();
        std::string const file = (folder / ("words" + std::to_string(bits) + ".dpx")).string();
        writeDpx(file, size, bits, convertedBy<ImageToPackedFrame>(packed, frameOf(full, picture)));

        auto const input = OIIO::ImageInput::open(file);
        ASSERT_TRUE(input) << OIIO::geterror();
        ASSERT_EQ(cv::Size(input->spec().width, input->spec().height), size);
        cv::Mat read(size, CV_16UC3);
        ASSERT_TRUE(input->read_image(0, 0, 0, 3, OIIO::TypeDesc::UINT16, read.data)) << input->geterror();
        // The reader stretches samples to 16 bits by repeating their upper bits below.
        for (int i = 0; i < 3 * size.area(); ++i)
            ASSERT_EQ(read.ptr<std::uint16_t>()[i] >> (16 - bits), picture.ptr<std::uint16_t>()[i]) << i;
    }
}

} // namespace
