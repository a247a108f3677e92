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

using Bytes = std::vector<std::uint8_t>;
using Samples = std::vector<double>;

/// Where a bit lies in a block: in which byte, and how far from the byte's lowest bit.
struct Place {
    int byte, shift;
};

/// What the tests know of a layout: where bit `bit` of each sample of a block lies, the samples counted pixel
/// by pixel, and which full formats it is packed from and unpacked to.
struct Layout {
    FrameFormat rgb, bgr;
    int bits, pixels;
    Place (*place)(int sample, int bit);
    std::vector<FrameFormat> sources, destinations;
};

Place fromLowestBit(int position) { return {position / 8, position % 8}; }
Place fromHighestBit(int position) { return {position / 8, 7 - position % 8}; }

// clang-format off
const Layout layouts[] = {
    {P::RGB_DPX_FILLED_U10(), P::BGR_DPX_FILLED_U10(), 10, 1,
     [](int sample, int bit) { return fromLowestBit(22 - 10 * sample + bit); },
     {F::RGB_U8(), F::RGB_U10(), F::RGB_F32(), F::BGR_U8(), F::BGR_U10(), F::BGR_U16(), F::BGR_F32(),
      F::BGRA_U8(), F::BGRA_U16(), F::BGRA_F32(), F::ARGB_U8(), F::ARGB_U15plus1()},
     {F::RGB_U8(), F::BGR_U8(), F::RGB_U10(), F::BGR_U10(), F::RGB_U16(), F::RGBA_U8(), F::BGRA_U8(),
      F::BGRA_U16(), F::BGRA_F32(), F::ARGB_U8(), F::ARGB_U15plus1()}},
    {P::RGB_DPX_PACKED_U12(), P::BGR_DPX_PACKED_U12(), 12, 2,
     [](int sample, int bit) { return fromLowestBit(12 * sample + bit); },
     {F::RGB_U8(), F::RGB_U12(), F::RGB_F32(), F::BGR_U8(), F::BGR_U12(), F::BGR_U16(), F::BGR_F32(),
      F::BGRA_U8(), F::BGRA_U16(), F::BGRA_F32(), F::ARGB_U8(), F::ARGB_U15plus1()},
     {F::RGB_U8(), F::BGR_U8(), F::RGB_U12(), F::BGR_U12(), F::RGBA_U8(), F::BGRA_U8(), F::BGRA_U16(),
      F::BGRA_F32(), F::ARGB_U8(), F::ARGB_U15plus1()}},
    {P::RGB_SMPTE_2110_U12(), P::BGR_SMPTE_2110_U12(), 12, 2,
     [](int sample, int bit) { return fromHighestBit(12 * sample + 11 - bit); },
     {F::RGB_U8(), F::RGB_U12(), F::RGB_F32(), F::BGR_U8(), F::BGR_U12(), F::BGR_U16(), F::BGR_F32(),
      F::BGRA_U8(), F::BGRA_U16(), F::BGRA_F32(), F::ARGB_U8(), F::ARGB_U15plus1()},
     {F::RGB_U8(), F::BGR_U8(), F::RGB_U12(), F::BGR_U12(), F::RGB_U16(), F::BGRA_U8(), F::BGRA_U16(),
      F::BGRA_F32(), F::ARGB_U8(), F::ARGB_U15plus1()}},
};
// clang-format on

std::uint32_t expectedCode(double sample, T depth, int bits) {
    std::uint32_t const highest = (1u << bits) - 1;
    if (fullScale(depth) == highest)
        return static_cast<std::uint32_t>(sample) & highest;
    double const value = sample / fullScale(depth) * highest;
    if (std::isnan(value) || value < 0)
        return 0;
    return value > highest ? highest : static_cast<std::uint32_t>(std::floor(value + 0.5));
}

double expectedSample(std::uint32_t code, int bits, T depth) {
    std::uint32_t const highest = (1u << bits) - 1;
    if (depth == T::U8)
        return code >> (bits - 8);
    double const value = static_cast<double>(code) / highest * fullScale(depth);
    return depth == T::F32 ? static_cast<float>(value) : std::floor(value + 0.5);
}

/// Calls `visit(row, column, channel, bytes of the block, number of the sample in the block)` for the three
/// colour samples of every pixel; the packed format's name begins with their order.
template <class Visit>
void forEachSample(Layout const& layout, FrameFormat const& packed, FrameFormat const& full, cv::Mat blocks,
                   Visit const& visit) {
    int channels[3];
    for (std::size_t i = 0; i < 3; ++i)
        channels[i] = static_cast<int>(full.layoutName.find(packed.layoutName[i]));
    for (int row = 0; row < blocks.rows; ++row)
        for (int column = 0; column < blocks.cols * layout.pixels; ++column)
            for (int i = 0; i < 3; ++i)
                visit(row, column, channels[i], blocks.ptr(row, column / layout.pixels),
                      column % layout.pixels * 3 + i);
}

Reference packing(Layout const& layout, FrameFormat const& source, FrameFormat const& packed) {
    return [&layout, source, packed](cv::Mat const& image, cv::Mat& expected) {
        cv::Mat samples;
        image.convertTo(samples, CV_64F);
        std::memset(expected.data, 0, expected.total() * expected.elemSize());
        forEachSample(layout, packed, source, expected,
                      [&](int row, int column, int channel, std::uint8_t* block, int sample) {
                          std::uint32_t const code = expectedCode(samples.ptr<double>(row, column)[channel],
                                                                  source.channelType, layout.bits);
                          for (int bit = 0; bit < layout.bits; ++bit)
                              if (code >> bit & 1) {
                                  Place const place = layout.place(sample, bit);
                                  block[place.byte] |= static_cast<std::uint8_t>(1 << place.shift);
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
                      [&](int row, int column, int channel, std::uint8_t const* block, int sample) {
                          std::uint32_t code = 0;
                          for (int bit = 0; bit < layout.bits; ++bit) {
                              Place const place = layout.place(sample, bit);
                              code |= static_cast<std::uint32_t>(block[place.byte] >> place.shift & 1) << bit;
                          }
                          samples.ptr<double>(row, column)[channel] =
                              expectedSample(code, layout.bits, destination.channelType);
                      });
        samples.convertTo(expected, expected.depth());
    };
}

/// A full frame of one row with these samples.
FullFrame rowOf(FrameFormat const& format, Samples samples) {
    int const channels = static_cast<int>(format.pixelPacking.samples());
    cv::Mat row;
    cv::Mat(1, static_cast<int>(samples.size()) / channels, CV_64FC(channels), samples.data())
        .convertTo(row, CV_MAT_DEPTH(openCvTypeOf(format)));
    return {format, row, Frame::Origin::TopLeft};
}

Samples samplesOf(FullFrame const& frame) {
    cv::Mat samples;
    frame.image().convertTo(samples, CV_64F);
    return {samples.ptr<double>(),
            samples.ptr<double>() + samples.total() * static_cast<std::size_t>(samples.channels())};
}

Bytes bytesOf(PackedFrame const& frame) {
    cv::Mat const blocks = frame.image();
    return {blocks.data, blocks.data + blocks.total() * blocks.elemSize()};
}

PackedFrame packed(FullFrame const& source, FrameFormat const& destination) {
    return ImageToPackedFrame(destination).convert(source);
}

FullFrame unpacked(PackedFrame const& source, FrameFormat const& destination) {
    return ImageToFullFrame(destination).convert(source);
}

/// Three channels that take every value of 0..highest in different orders.
Samples everyValue(int highest) {
    Samples samples;
    for (int value = 0; value <= highest; ++value)
        for (int const sample : {value, highest - value, value ^ 85})
            samples.push_back(sample);
    return samples;
}

TEST(ImageToPackedFrame, ServesItsTable) {
    FormatPairs pairs;
    for (Layout const& layout : layouts)
        for (FrameFormat const& destination : {layout.rgb, layout.bgr})
            for (FrameFormat const& source : layout.sources) {
                pairs.insert({source, destination});
                expectConverts<ImageToPackedFrame>(source, destination, packing(layout, source, destination));
            }
    EXPECT_EQ(pairs.size(), 72u);
    EXPECT_EQ(ImageToPackedFrame::packingConversion.size(), 72u);
    expectServesExactly<ImageToPackedFrame>(pairs, "Packing is not supported from ");
}

TEST(ImageToFullFrame, ServesItsTable) {
    FormatPairs pairs;
    for (Layout const& layout : layouts)
        for (FrameFormat const& source : {layout.rgb, layout.bgr})
            for (FrameFormat const& destination : layout.destinations) {
                pairs.insert({source, destination});
                expectConverts<ImageToFullFrame>(source, destination, unpacking(layout, source, destination));
            }
    EXPECT_EQ(pairs.size(), 62u);
    EXPECT_EQ(ImageToFullFrame::packingConversion.size(), 62u);
    expectServesExactly<ImageToFullFrame>(pairs, "Unpacking is not supported from ");
}

TEST(ImageToPackedFrame, PacksBlocksToTheBit) {
    struct {
        FrameFormat source;
        Samples samples;
        FrameFormat destination;
        Bytes bytes;
    } const cases[] = {
        {F::RGB_U10(), {1023, 1023, 1023}, P::RGB_DPX_FILLED_U10(), {0xfc, 0xff, 0xff, 0xff}},
        {F::RGB_U10(), {1023, 0, 1}, P::RGB_DPX_FILLED_U10(), {0x04, 0x00, 0xc0, 0xff}},
        {F::RGB_U10(), {1023, 0, 1}, P::BGR_DPX_FILLED_U10(), {0xfc, 0x0f, 0x40, 0x00}},
        {F::RGB_U10(), {1024, 1025, 65535}, P::RGB_DPX_FILLED_U10(), {0xfc, 0x1f, 0x00, 0x00}}, // 0, 1, 1023
        {F::BGR_F32(), {1, 2, -0.5}, P::BGR_DPX_FILLED_U10(), {0x00, 0xf0, 0xff, 0xff}},
        {F::RGB_F32(), {NAN, -INFINITY, INFINITY}, P::RGB_DPX_FILLED_U10(), {0xfc, 0x0f, 0x00, 0x00}},
        {F::BGRA_U8(), {0, 0, 128, 255}, P::RGB_DPX_FILLED_U10(), {0x00, 0x00, 0x80, 0x80}}, // 514
        {F::ARGB_U15plus1(),
         {9, 32768, 16384, 40000},
         P::RGB_DPX_FILLED_U10(),
         {0xfc, 0x0f, 0xe0, 0xff}}, // 1023, 512, 1023
        {F::RGB_U12(),
         {0xabc, 0x123, 0x456, 0x789, 0xdef, 0x012},
         P::RGB_DPX_PACKED_U12(),
         {0xbc, 0x3a, 0x12, 0x56, 0x94, 0x78, 0xef, 0x2d, 0x01}},
        {F::RGB_U12(),
         {0xabc, 0x123, 0x456, 0x789, 0xdef, 0x012},
         P::RGB_SMPTE_2110_U12(),
         {0xab, 0xc1, 0x23, 0x45, 0x67, 0x89, 0xde, 0xf0, 0x12}},
        {F::RGB_U12(),
         {0xfabc, 0xf123, 0xf456, 0xf789, 0xfdef, 0xf012},
         P::BGR_SMPTE_2110_U12(),
         {0x45, 0x61, 0x23, 0xab, 0xc0, 0x12, 0xde, 0xf7, 0x89}},
    };
    for (auto const& row : cases)
        EXPECT_EQ(bytesOf(packed(rowOf(row.source, row.samples), row.destination)), row.bytes);
}

TEST(ImageToFullFrame, UnpacksBlocksToTheBit) {
    struct {
        FrameFormat source;
        Bytes bytes;
        FrameFormat destination;
        Samples samples;
    } const cases[] = {
        // The two lowest bits are no part of a sample.
        {P::RGB_DPX_FILLED_U10(), {0xff, 0xff, 0xff, 0xff}, F::ARGB_U15plus1(), {32768, 32768, 32768, 32768}},
        {P::RGB_DPX_FILLED_U10(), {0x03, 0x00, 0x80, 0x80}, F::RGB_U8(), {128, 0, 0}}, // 514
        {P::RGB_DPX_FILLED_U10(),
         {0xfc, 0x3f, 0x00, 0x80},
         F::RGB_U16(),
         {32800, 192, 65535}}, // 512, 3, 1023
        {P::RGB_DPX_FILLED_U10(), {0xfc, 0x3f, 0x00, 0x80}, F::RGBA_U8(), {128, 0, 255, 255}},
        {P::BGR_DPX_FILLED_U10(), {0xfc, 0x0f, 0x00, 0x80}, F::BGRA_F32(), {512.f / 1023.f, 0, 1, 1}},
        {P::RGB_DPX_PACKED_U12(),
         {0xbc, 0x3a, 0x12, 0x56, 0x94, 0x78, 0xef, 0x2d, 0x01},
         F::BGR_U12(),
         {0x456, 0x123, 0xabc, 0x012, 0xdef, 0x789}},
        {P::RGB_SMPTE_2110_U12(),
         {0xbc, 0x3a, 0x12, 0x56, 0x94, 0x78, 0xef, 0x2d, 0x01},
         F::RGB_U12(),
         {0xbc3, 0xa12, 0x569, 0x478, 0xef2, 0xd01}},
        {P::RGB_SMPTE_2110_U12(),
         {0xab, 0xc1, 0x23, 0x45, 0x67, 0x89, 0xde, 0xf0, 0x12},
         F::ARGB_U8(),
         {255, 0xab, 0x12, 0x45, 255, 0x78, 0xde, 0x01}},
    };
    for (auto const& row : cases) {
        int const columns = static_cast<int>(row.samples.size() / row.destination.pixelPacking.samples());
        EXPECT_EQ(samplesOf(unpacked({row.source, 1, columns, row.bytes}, row.destination)), row.samples);
    }
}

TEST(Packing, KeepsWhatUnpackingCanHold) {
    struct {
        FrameFormat full;
        int highest;
        std::vector<FrameFormat> packed;
    } const cases[] = {
        {F::BGR_U8(),
         255,
         {P::RGB_DPX_FILLED_U10(), P::BGR_DPX_FILLED_U10(), P::RGB_DPX_PACKED_U12(), P::BGR_DPX_PACKED_U12(),
          P::RGB_SMPTE_2110_U12(), P::BGR_SMPTE_2110_U12()}},
        {F::RGB_U10(), 1023, {P::RGB_DPX_FILLED_U10(), P::BGR_DPX_FILLED_U10()}},
        {F::RGB_U12(),
         4095,
         {P::RGB_DPX_PACKED_U12(), P::BGR_DPX_PACKED_U12(), P::RGB_SMPTE_2110_U12(),
          P::BGR_SMPTE_2110_U12()}},
    };
    for (auto const& row : cases)
        for (FrameFormat const& format : row.packed) {
            Samples const samples = everyValue(row.highest);
            EXPECT_EQ(samplesOf(unpacked(packed(rowOf(row.full, samples), format), row.full)), samples)
                << FrameFormat::toString(format);
        }
}

TEST(Packing, RefusesFramesThatItCannotRead) {
    ImageToPackedFrame toPacked(P::RGB_SMPTE_2110_U12());
    ImageToFullFrame toFull(F::RGB_U12());
    struct {
        std::function<void()> action;
        const char* message;
    } const cases[] = {
        {[&] { toPacked.onNewImage(nullptr); }, "Can only convert FullFrame images"},
        {[&] { toPacked.onNewImage(PackedFrame::create(P::RGB_SMPTE_2110_U12(), 2, 2)); },
         "Can only convert FullFrame images"},
        {[&] { toPacked.convert(FullFrame(F::RGB_U12())); }, "no image data in frame"},
        {[&] { toPacked.convert(FullFrame(F::RGB_U12(), 1, 3)); },
         "Frame format column pixel packing of 2 pixels is incompatible with supplied image columns of 3"},
        {[&] { toFull.onNewImage(nullptr); }, "Can only convert packed images"},
        {[&] { toFull.onNewImage(FullFrame::create(F::RGB_U12(), 2, 2)); }, "Can only convert packed images"},
        {[&] { toFull.convert(PackedFrame(P::RGB_SMPTE_2110_U12())); }, "no image data in frame"},
    };
    for (auto const& row : cases)
        EXPECT_EQ(messageOf(row.action), row.message);
}

/// A DPX file with one element of RGB whose header says that everything in it is little-endian.
void writeDpx(std::filesystem::path const& file, int width, int height, int bits, bool filled,
              Bytes const& pixels) {
    constexpr std::uint32_t headerBytes = 2048;
    Bytes header(headerBytes);
    auto const put = [&header](std::size_t offset, int bytes, std::uint32_t value) {
        for (int i = 0; i < bytes; ++i)
            header[offset++] = static_cast<std::uint8_t>(value >> 8 * i);
    };
    put(0, 4, 0x53445058); // "SDPX" as a number: "XPDS" in a little-endian file
    put(4, 4, headerBytes);
    std::memcpy(&header[8], "V2.0", 4);
    put(16, 4, headerBytes + static_cast<std::uint32_t>(pixels.size()));
    put(770, 2, 1); // elements
    put(772, 4, static_cast<std::uint32_t>(width));
    put(776, 4, static_cast<std::uint32_t>(height));
    put(800, 1, 50); // R, G, B
    put(801, 1, 2);  // linear
    put(803, 1, static_cast<std::uint32_t>(bits));
    put(804, 2, filled ? 1 : 0); // "filled to 32-bit words, method A"
    put(808, 4, headerBytes);

    std::ofstream stream(file, std::ios::binary);
    for (Bytes const& part : {header, pixels})
        stream.write(reinterpret_cast<char const*>(part.data()), static_cast<std::streamsize>(part.size()));
    ASSERT_TRUE(stream.flush().good()) << file;
}

TEST(Packing, GivesWhatADpxReaderReads) {
    struct {
        FrameFormat full, packed;
        int bits;
    } const cases[] = {
        {F::RGB_U10(), P::RGB_DPX_FILLED_U10(), 10},
        {F::RGB_U12(), P::RGB_DPX_PACKED_U12(), 12},
    };
    TemporaryFolder const folder;
    for (auto const& row : cases) {
        constexpr int width = 32,
                      height = 9; // rows of whole 32-bit words, as DPX wants them also when packed
        cv::Mat picture(height, width, CV_16UC3);
        fillFull(picture, row.full.channelType, Filling::Noise);
        PackedFrame const frame = packed({row.full, picture, Frame::Origin::TopLeft}, row.packed);
        std::string const file = (folder / ("words" + std::to_string(row.bits) + ".dpx")).string();
        writeDpx(file, width, height, row.bits, row.bits == 10, bytesOf(frame));

        auto const input = OIIO::ImageInput::open(file);
        ASSERT_TRUE(input) << OIIO::geterror();
        ASSERT_EQ(input->spec().width, width);
        ASSERT_EQ(input->spec().height, height);
        cv::Mat read(height, width, CV_16UC3);
        ASSERT_TRUE(input->read_image(0, 0, 0, 3, OIIO::TypeDesc::UINT16, read.data)) << input->geterror();
        // The reader stretches samples to 16 bits by repeating their upper bits below.
        for (int i = 0; i < 3 * width * height; ++i)
            ASSERT_EQ(read.ptr<std::uint16_t>()[i] >> (16 - row.bits), picture.ptr<std::uint16_t>()[i])
                << FrameFormat::toString(row.packed) << ", sample " << i;
    }
}

TEST(Packing, GivesThePixelGroupsOfSt2110) {
    // The published table has for 4:4:4 RGB of 12 bits: groups of 9 octets that cover 2 pixels, in the order
    // R0, G0, B0, R1, G1, B1, in network bit order.
    PixelPacking const group = P::RGB_SMPTE_2110_U12().pixelPacking;
    EXPECT_EQ(group.bytes(), 9u);
    EXPECT_EQ(group.pixels().columns, 2u);

    Samples const samples = everyValue(4095);
    Bytes const bytes = bytesOf(packed(rowOf(F::RGB_U12(), samples), P::RGB_SMPTE_2110_U12()));
    ASSERT_EQ(bytes.size() * 8, samples.size() * 12);
    std::size_t position = 0;
    for (double const sample : samples) {
        int code = 0;
        for (std::size_t const end = position + 12; position < end; ++position)
            code = code << 1 | (bytes[position / 8] >> (7 - position % 8) & 1);
        ASSERT_EQ(code, sample) << "before bit " << position;
    }
}

} // namespace
