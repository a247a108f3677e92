#include <MediaConversion/converters/ImageToFullFrame.h>
#include <MediaConversion/converters/ImageToPackedFrame.h>

#include <tests/MediaConversion/converters/ConverterValidator.h>

#include <OpenImageIO/imageio.h>

using namespace MediaConversion;
using namespace Zentrel;
using namespace TestSupport;
using F = FullFrameFormat;
using P = PackedFrameFormat;
using T = ChannelType;

namespace {

/// What the tests know of a layout: where bit `bit` of each sample of a block lies, in bits from the lowest
/// one of the first byte upwards, the samples counted pixel by pixel.
struct Layout {
    FrameFormat rgb, bgr;
    int bits, pixels;
    int (*position)(int sample, int bit);
    FormatPairs encodings, decodings;
};

Layout layoutOf(FrameFormat const& rgb, FrameFormat const& bgr, int bits, int pixels,
                int (*position)(int sample, int bit), std::vector<FrameFormat> const& ofSameDepth,
                std::vector<FrameFormat> const& decodedToo) {
    std::vector<FrameFormat> const alsoDecodedTo{F::RGB_U8(),       F::BGR_U8(),   F::BGRA_U8(),
                                                 F::BGRA_U16(),     F::BGRA_F32(), F::ARGB_U8(),
                                                 F::ARGB_U15plus1()};
    std::vector<FrameFormat> const encodedOnly{F::RGB_F32(), F::BGR_U16(), F::BGR_F32()};
    std::vector<FrameFormat> const both{rgb, bgr};
    return {rgb,
            bgr,
            bits,
            pixels,
            position,
            pairsOf({{alsoDecodedTo, both}, {encodedOnly, both}, {ofSameDepth, both}}),
            pairsOf({{both, alsoDecodedTo}, {both, decodedToo}, {both, ofSameDepth}})};
}

std::vector<Layout> const& layouts() {
    static std::vector<Layout> const instance{
        layoutOf(P::RGB_DPX_FILLED_U10(), P::BGR_DPX_FILLED_U10(), 10, 1,
                 [](int sample, int bit) { return 22 - 10 * sample + bit; }, {F::RGB_U10(), F::BGR_U10()},
                 {F::RGB_U16(), F::RGBA_U8()}),
        layoutOf(P::RGB_DPX_PACKED_U12(), P::BGR_DPX_PACKED_U12(), 12, 2,
                 [](int sample, int bit) { return 12 * sample + bit; }, {F::RGB_U12(), F::BGR_U12()},
                 {F::RGBA_U8()}),
        layoutOf(P::RGB_SMPTE_2110_U12(), P::BGR_SMPTE_2110_U12(), 12, 2,
                 [](int sample, int bit) {
                     int const fromHighest = 12 * sample + 11 - bit;
                     return fromHighest / 8 * 8 + 7 - fromHighest % 8;
                 },
                 {F::RGB_U12(), F::BGR_U12()}, {F::RGB_U16()}),
    };
    return instance;
}

std::uint32_t expectedCode(double sample, T depth, int bits) {
    std::uint32_t const highest = (1u << bits) - 1;
    if (fullScale(depth) == highest)
        return static_cast<std::uint32_t>(sample) & highest;
    double const value = sample / fullScale(depth) * highest;
    return std::isnan(value) ? 0 : static_cast<std::uint32_t>(std::clamp<double>(value, 0, highest) + 0.5);
}

double expectedSample(std::uint32_t code, int bits, T depth) {
    if (depth == T::U8)
        return code >> (bits - 8);
    double const value = code / ((1 << bits) - 1.0) * fullScale(depth);
    return depth == T::F32 ? value : std::floor(value + 0.5);
}

/// Calls `visit(row, column, channel, bytes of the block, number of the sample in the block)` for the three
/// colour samples of every pixel; the packed format's name begins with their order.
template <class Visit>
void forEachSample(Layout const& layout, FrameFormat const& packed, FrameFormat const& full, cv::Mat blocks,
                   Visit const& visit) {
    for (int row = 0; row < blocks.rows; ++row)
        for (int column = 0; column < blocks.cols * layout.pixels; ++column)
            for (int i = 0; i < 3; ++i)
                visit(row, column, full.layoutName.find(packed.layoutName[i]),
                      blocks.ptr(row, column / layout.pixels), column % layout.pixels * 3 + i);
}

Reference packing(Layout const& layout, FrameFormat const& source, FrameFormat const& packed) {
    return [&layout, source, packed](cv::Mat const& image, cv::Mat& expected) {
        cv::Mat samples;
        image.convertTo(samples, CV_64F);
        expected.setTo(0);
        forEachSample(layout, packed, source, expected,
                      [&](int row, int column, auto channel, std::uint8_t* block, int sample) {
                          std::uint32_t const code = expectedCode(samples.ptr<double>(row, column)[channel],
                                                                  source.channelType, layout.bits);
                          for (int bit = 0; bit < layout.bits; ++bit) {
                              int const position = layout.position(sample, bit);
                              block[position / 8] |= (code >> bit & 1) << position % 8;
                          }
                      });
    };
}

Reference unpacking(Layout const& layout, FrameFormat const& packed, FrameFormat const& destination) {
    return [&layout, packed, destination](cv::Mat const& blocks, cv::Mat& expected) {
        // Opaque, where there is alpha.
        cv::Mat samples(expected.size(), CV_64FC(expected.channels()),
                        cv::Scalar::all(fullScale(destination.channelType)));
        forEachSample(layout, packed, destination, blocks,
                      [&](int row, int column, auto channel, std::uint8_t const* block, int sample) {
                          std::uint32_t code = 0;
                          for (int bit = 0; bit < layout.bits; ++bit) {
                              int const position = layout.position(sample, bit);
                              code |= (block[position / 8] >> position % 8 & 1u) << bit;
                          }
                          samples.ptr<double>(row, column)[channel] =
                              expectedSample(code, layout.bits, destination.channelType);
                      });
        samples.convertTo(expected, expected.depth());
    };
}

TEST(Packing, ServesItsTables) {
    FormatPairs encodings, decodings;
    for (Layout const& layout : layouts()) {
        for (auto const& [source, destination] : layout.encodings)
            expectConverts<ImageToPackedFrame>(source, destination, packing(layout, source, destination));
        for (auto const& [source, destination] : layout.decodings)
            expectConverts<ImageToFullFrame>(source, destination, unpacking(layout, source, destination));
        encodings.insert(layout.encodings.begin(), layout.encodings.end());
        decodings.insert(layout.decodings.begin(), layout.decodings.end());
    }
    EXPECT_EQ(encodings.size(), 72u);
    EXPECT_EQ(decodings.size(), 62u);
    expectServesExactly<ImageToPackedFrame>(encodings, "Packing is not supported from ");
    expectServesExactly<ImageToFullFrame>(decodings, "Unpacking is not supported from ");
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
    for (auto const& row : cases) {
        cv::Mat pixels;
        int const type = openCvTypeOf(row.source);
        cv::Mat(row.samples).reshape(CV_MAT_CN(type), 1).convertTo(pixels, type);
        cv::Mat const block = convertedBy<ImageToPackedFrame>(row.destination, frameOf(row.source, pixels));
        EXPECT_EQ(hexOf(block.data, block.elemSize()), row.bytes);
    }
}

TEST(Packing, RefusesFramesThatItCannotRead) {
    ImageToPackedFrame toPacked(P::RGB_SMPTE_2110_U12());
    ImageToFullFrame toFull(F::RGB_U12());
    EXPECT_EQ(messageOf([&] { toPacked.onNewImage(nullptr); }), "Can only convert FullFrame images");
    EXPECT_EQ(messageOf([&] { toFull.onNewImage(nullptr); }), "Can only convert packed images");
    EXPECT_EQ(messageOf([&] { toPacked.convert(FullFrame(F::RGB_U12())); }), "no image data in frame");
    EXPECT_EQ(
        messageOf([&] {
            toPacked.convert({F::RGB_U12(), 1, 3});
        }),
        "Frame format column pixel packing of 2 pixels is incompatible with supplied image columns of 3");
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
