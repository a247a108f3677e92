#include <MediaConversion/MediaPipeline/Encoder.h>
#include <MediaConversion/MediaPipeline/FrameSinkDestination.h>
#include <MediaConversion/converters/ImageRGBtoYCbCr42x.h>
#include <MediaConversion/converters/ImageYCbCr42xToRGB.h>

#include <tests/MediaConversion/converters/ConverterValidator.h>

#include <array>

using namespace MediaConversion;
using namespace TestSupport;
using F = Zentrel::FullFrameFormat;
using P = Zentrel::PackedFrameFormat;

namespace {

FormatPairs const encodings{
    {F::RGB_U8(), P::YCBCR_ITU_T871_YUYV_422_U8()},
    {F::RGB_U8(), P::YCBCR_ITU_T871_9ZT_420_U8()},
    {F::RGB_U15plus1(), P::YCBCR_ITU_T871_9ZT_422_U10()},
    {F::BGR_U8(), P::YCBCR_ITU_T871_YUYV_422_U8()},
    {F::BGR_U8(), P::YCBCR_ITU_T871_9ZT_420_U8()},
    {F::BGR_U16(), P::YCBCR_ITU_T871_YUYV_422_U8()},
    {F::BGR_U16(), P::YCBCR_ITU_T871_9ZT_422_U10()},
    {F::BGR_U16(), P::YCBCR_ITU_T871_9ZT_420_U8()},
    {F::BGR_F32(), P::YCBCR_ITU_T871_YUYV_422_U8()},
    {F::BGR_F32(), P::YCBCR_ITU_T871_9ZT_422_U10()},
    {F::BGR_F32(), P::YCBCR_ITU_T871_9ZT_420_U8()},
    {F::BGRA_U8(), P::YCBCR_ITU_T871_YUYV_422_U8()},
    {F::BGRA_U8(), P::YCBCR_ITU_T871_9ZT_422_U10()},
    {F::BGRA_U8(), P::YCBCR_ITU_T871_9ZT_420_U8()},
    {F::BGRA_U16(), P::YCBCR_ITU_T871_YUYV_422_U8()},
    {F::BGRA_U16(), P::YCBCR_ITU_T871_9ZT_422_U10()},
    {F::BGRA_U16(), P::YCBCR_ITU_T871_9ZT_420_U8()},
    {F::BGRA_F32(), P::YCBCR_ITU_T871_YUYV_422_U8()},
    {F::BGRA_F32(), P::YCBCR_ITU_T871_9ZT_422_U10()},
    {F::BGRA_F32(), P::YCBCRA_ITU_T871_9ZT_4224_HYBRID_U12()},
    {F::BGRA_F32(), P::YCBCR_ITU_T871_9ZT_420_U8()},
    {F::ARGB_U8(), P::YCBCR_ITU_T871_YUYV_422_U8()},
    {F::ARGB_U8(), P::YCBCR_ITU_T871_9ZT_422_U10()},
    {F::ARGB_U15plus1(), P::YCBCR_ITU_T871_YUYV_422_U8()},
    {F::ARGB_U15plus1(), P::YCBCR_ITU_T871_9ZT_422_U10()},
};

FormatPairs const decodings{
    {P::YCBCR_ITU_T871_YUYV_422_U8(), F::RGB_U8()},
    {P::YCBCR_ITU_T871_YUYV_422_U8(), F::BGR_U8()},
    {P::YCBCR_ITU_T871_YUYV_422_U8(), F::BGRA_U8()},
    {P::YCBCR_ITU_T871_YUYV_422_U8(), F::BGRA_U16()},
    {P::YCBCR_ITU_T871_YUYV_422_U8(), F::ARGB_U8()},
    {P::YCBCR_ITU_T871_YUYV_422_U8(), F::ARGB_U15plus1()},
    {P::YCBCR_ITU_T871_YUYV_422_U8(), F::BGRA_F32()},
    {P::YCBCR_ITU_T871_9ZT_422_U10(), F::RGB_U8()},
    {P::YCBCR_ITU_T871_9ZT_422_U10(), F::BGR_U8()},
    {P::YCBCR_ITU_T871_9ZT_422_U10(), F::RGB_U16()},
    {P::YCBCR_ITU_T871_9ZT_422_U10(), F::RGB_U15plus1()},
    {P::YCBCR_ITU_T871_9ZT_422_U10(), F::ARGB_U8()},
    {P::YCBCR_ITU_T871_9ZT_422_U10(), F::ARGB_U15plus1()},
    {P::YCBCR_ITU_T871_9ZT_422_U10(), F::BGRA_U16()},
    {P::YCBCR_ITU_T871_9ZT_422_U10(), F::BGRA_U8()},
    {P::YCBCR_ITU_T871_9ZT_422_U10(), F::BGRA_F32()},
    {P::YCBCRA_ITU_T871_9ZT_4224_HYBRID_U12(), F::BGRA_F32()},
    {P::YCBCR_ITU_T871_9ZT_420_U8(), F::RGB_U8()},
    {P::YCBCR_ITU_T871_9ZT_420_U8(), F::BGR_U8()},
    {P::YCBCR_ITU_T871_9ZT_420_U8(), F::BGRA_U8()},
    {P::YCBCR_ITU_T871_9ZT_420_U8(), F::BGRA_U16()},
    {P::YCBCR_ITU_T871_9ZT_420_U8(), F::BGRA_F32()},
};

// A plain evaluation of the formulas, one sample at a time. Channels are found by their letter in the
// format's layout name.

using Samples = std::array<double, 4>;

double& sampleIn(Samples& pixel, FrameFormat const& format, char channel) {
    return pixel.at(format.layoutName.find(channel));
}

struct Evaluated {
    double y, cb, cr, alpha;
};

/// `picture` holds the samples as doubles.
Evaluated evaluatedAt(cv::Mat const& picture, FrameFormat const& format, int row, int column) {
    auto const* const samples = picture.ptr<double>(row, column);
    Samples pixel{};
    std::copy_n(samples, picture.channels(), pixel.begin());
    for (double& sample : pixel)
        if (format.channelType != Zentrel::ChannelType::F32)
            sample = sample / fullScale(format.channelType);
        else if (!std::isnan(sample))
            sample = std::clamp(sample, 0.0, 1.0);
    double const r = sampleIn(pixel, format, 'R'), g = sampleIn(pixel, format, 'G');
    double const b = sampleIn(pixel, format, 'B');
    return {0.299 * r + 0.587 * g + 0.114 * b, 0.5 * b - 0.168736 * r - 0.331264 * g + 0.5,
            0.5 * r - 0.418688 * g - 0.081312 * b + 0.5,
            picture.channels() == 4 ? sampleIn(pixel, format, 'A') : 1};
}

/// The code, of which only `bits` bits remain.
std::uint64_t code(double value, int scale, int bits) {
    double const whole = std::trunc(value * scale + 0.5);
    if (std::isnan(whole))
        return 0;
    auto const period = std::int64_t{1} << bits;
    return static_cast<std::uint64_t>((static_cast<std::int64_t>(whole) % period + period) % period);
}

/// Writes the words of a block.
template <class Word>
void write(cv::Mat& blocks, int row, int column, std::initializer_list<std::uint64_t> words) {
    std::transform(words.begin(), words.end(), reinterpret_cast<Word*>(blocks.ptr(row, column)),
                   [](std::uint64_t word) { return static_cast<Word>(word); });
}

void writeBlock(cv::Mat& blocks, int row, int column, FrameFormat const& format,
                std::vector<Evaluated> const& pixels) {
    auto const [y0, cb0, cr0, a0] = pixels[0];
    auto const [y1, cb1, cr1, a1] = pixels[1];
    if (format == P::YCBCR_ITU_T871_YUYV_422_U8())
        write<std::uint8_t>(blocks, row, column,
                            {code(y0, 255, 8), code((cb0 + cb1) / 2, 255, 8), code(y1, 255, 8),
                             code((cr0 + cr1) / 2, 255, 8)});
    else if (format == P::YCBCR_ITU_T871_9ZT_422_U10()) {
        auto const cb = code((cb0 + cb1) / 2, 1023, 10), cr = code((cr0 + cr1) / 2, 1023, 10);
        auto const left = code(y0, 1023, 10), right = code(y1, 1023, 10);
        write<std::uint8_t>(
            blocks, row, column,
            {cb / 4, left / 4, cr / 4, right / 4, cb % 4 * 64 + left % 4 * 16 + cr % 4 * 4 + right % 4});
    } else if (format == P::YCBCR_ITU_T871_9ZT_420_U8())
        write<std::uint8_t>(blocks, row, column,
                            {code((cb0 + cb1 + pixels[2].cb + pixels[3].cb) / 4, 255, 8),
                             code((cr0 + cr1 + pixels[2].cr + pixels[3].cr) / 4, 255, 8), code(y0, 255, 8),
                             code(y1, 255, 8), code(pixels[2].y, 255, 8), code(pixels[3].y, 255, 8)});
    else
        write<std::uint32_t>(blocks, row, column,
                             {(code(cr0, 1023, 10) * 4096 + code(y1, 4095, 12)) * 1024 + code(a1, 1023, 10),
                              (code(a0, 1023, 10) * 4096 + code(y0, 4095, 12)) * 1024 + code(cb0, 1023, 10)});
}

/// The pixels of a block, row by row.
std::vector<Evaluated> readBlock(cv::Mat const& blocks, int row, int column, FrameFormat const& format,
                                 bool toEightBits) {
    auto const* const byte = blocks.ptr(row, column);
    if (format == P::YCBCR_ITU_T871_YUYV_422_U8()) {
        double const cb = byte[1] / 255.0, cr = byte[3] / 255.0;
        return {{byte[0] / 255.0, cb, cr, 1}, {byte[2] / 255.0, cb, cr, 1}};
    }
    if (format == P::YCBCR_ITU_T871_9ZT_422_U10()) {
        auto const value = [&](int i) {
            int const lower[] = {byte[4] / 64, byte[4] / 16 % 4, byte[4] / 4 % 4, byte[4] % 4};
            return toEightBits ? byte[i] / 255.0 : (byte[i] * 4 + lower[i]) / 1023.0;
        };
        return {{value(1), value(0), value(2), 1}, {value(3), value(0), value(2), 1}};
    }
    if (format == P::YCBCR_ITU_T871_9ZT_420_U8()) {
        std::vector<Evaluated> pixels;
        for (int luma = 2; luma < 6; ++luma)
            pixels.push_back({byte[luma] / 255.0, byte[0] / 255.0, byte[1] / 255.0, 1});
        return pixels;
    }
    std::uint32_t word[2];
    std::memcpy(word, byte, sizeof word);
    double const cb = word[1] % 1024 / 1023.0, cr = word[0] / 4194304 / 1023.0;
    return {{word[1] / 1024 % 4096 / 4095.0, cb, cr, word[1] / 4194304 / 1023.0},
            {word[0] / 1024 % 4096 / 4095.0, cb, cr, word[0] % 1024 / 1023.0}};
}

void writePixel(cv::Mat& picture, int row, int column, FrameFormat const& format, Evaluated const& value) {
    Samples pixel{};
    double const u = value.cb - 0.5, v = value.cr - 0.5;
    sampleIn(pixel, format, 'B') = value.y + 1.772 * u;
    sampleIn(pixel, format, 'G') = value.y - 0.34414 * u - 0.71414 * v;
    sampleIn(pixel, format, 'R') = value.y + 1.402 * v;
    if (picture.channels() == 4)
        sampleIn(pixel, format, 'A') = value.alpha;
    double const scale = fullScale(format.channelType);
    for (int i = 0; i < picture.channels(); ++i) {
        double const limited = std::clamp(pixel[i] * scale, 0.0, scale);
        if (picture.depth() == CV_8U)
            picture.ptr<std::uint8_t>(row, column)[i] = static_cast<std::uint8_t>(limited + 0.5);
        else if (picture.depth() == CV_16U)
            picture.ptr<std::uint16_t>(row, column)[i] = static_cast<std::uint16_t>(limited + 0.5);
        else
            picture.ptr<float>(row, column)[i] = static_cast<float>(limited);
    }
}

template <class Action>
void forEachBlock(cv::Mat const& blocks, Action const& action) {
    for (int row = 0; row < blocks.rows; ++row)
        for (int column = 0; column < blocks.cols; ++column)
            action(row, column);
}

TEST(ImageRGBtoYCbCr42x, GivesTheBytesOfThePlainEvaluation) {
    for (auto const& [source, destination] : encodings)
        expectConverts<ImageRGBtoYCbCr42x>(
            source, destination,
            [&, from = source, to = destination](cv::Mat const& picture, cv::Mat& blocks) {
                int const height = static_cast<int>(to.pixelPacking.pixels().rows);
                cv::Mat samples;
                picture.convertTo(samples, CV_64F);
                forEachBlock(blocks, [&](int row, int column) {
                    std::vector<Evaluated> pixels;
                    for (int y = 0; y < height; ++y)
                        for (int x = 0; x < 2; ++x)
                            pixels.push_back(evaluatedAt(samples, from, row * height + y, column * 2 + x));
                    writeBlock(blocks, row, column, to, pixels);
                });
            });
}

TEST(ImageYCbCr42xToRGB, GivesTheBytesOfThePlainEvaluation) {
    for (auto const& [source, destination] : decodings)
        expectConverts<ImageYCbCr42xToRGB>(
            source, destination,
            [&, from = source, to = destination](cv::Mat const& blocks, cv::Mat& picture) {
                int const height = static_cast<int>(from.pixelPacking.pixels().rows);
                forEachBlock(blocks, [&](int row, int column) {
                    auto const pixels = readBlock(blocks, row, column, from, picture.depth() == CV_8U);
                    for (int i = 0; i < 2 * height; ++i)
                        writePixel(picture, row * height + i / 2, column * 2 + i % 2, to, pixels[i]);
                });
            });
}

TEST(ImageRGBtoYCbCr42x, ServesExactlyItsTable) {
    expectServesExactly<ImageRGBtoYCbCr42x>(encodings, "YCbCr 4:2:2 conversion is not supported from ");
}

TEST(ImageYCbCr42xToRGB, ServesExactlyItsTable) {
    expectServesExactly<ImageYCbCr42xToRGB>(decodings, "RGB conversion is not supported from ");
}

/// A matrix of the format's type with these samples, row by row.
cv::Mat matrixOf(FrameFormat const& format, int rows, std::vector<double> const& samples) {
    cv::Mat matrix;
    cv::Mat(samples).reshape(CV_MAT_CN(openCvTypeOf(format)), rows).convertTo(matrix, openCvTypeOf(format));
    return matrix;
}

template <class Processor>
cv::Mat resultOf(FrameFormat const& source, FrameFormat const& destination, cv::Mat const& matrix) {
    return convertedBy<Processor>(destination, frameOf(source, matrix));
}

// Worked out by hand from the definitions.
TEST(ImageRGBtoYCbCr42x, GivesKnownBlocks) {
    auto const yuyv = P::YCBCR_ITU_T871_YUYV_422_U8(), ten = P::YCBCR_ITU_T871_9ZT_422_U10();
    auto const square = P::YCBCR_ITU_T871_9ZT_420_U8(), hybrid = P::YCBCRA_ITU_T871_9ZT_4224_HYBRID_U12();
    struct {
        const char* what;
        FrameFormat source, destination;
        int rows;
        std::vector<double> samples;
        const char* bytes;
    } const cases[] = {
        // clang-format off
        {"white", F::BGRA_F32(), yuyv, 1, {1, 1, 1, 1, 1, 1, 1, 1}, "ff 80 ff 80 "},
        {"black", F::BGRA_F32(), ten, 1, {0, 0, 0, 1, 0, 0, 0, 1}, "80 00 80 00 00 "},
        {"red", F::BGRA_F32(), ten, 1, {0, 0, 1, 1, 0, 0, 1, 1}, "54 4c ff 4c ee "},
        {"clamped red", F::BGR_F32(), ten, 1, {-0.5, 0, 1.5, 0, -INFINITY, INFINITY}, "54 4c ff 4c ee "},
        {"red, blue, white, black", F::BGR_U8(), square, 2, {0, 0, 255, 255, 0, 0, 255, 255, 255, 0, 0, 0}, "95 9a 4c 1d ff 00 "},
        // cr 1023, y1 467, a1 1023; a0 256, y0 1224, cb 339
        {"red's chroma beside blue", F::BGRA_F32(), hybrid, 1, {0, 0, 1, 0.25, 1, 0, 0, 1}, "ff 4f c7 ff 53 21 13 40 "},
        {"NaN beside white", F::BGR_F32(), yuyv, 1, {0, NAN, 0, 1, 1, 1}, "00 00 ff 00 "},
        {"NaN as alpha", F::BGRA_F32(), hybrid, 1, {0, 0, 0, NAN, 0, 0, 0, NAN}, "00 00 00 80 00 02 00 00 "},
        // y 225, cb 1, cr -32
        {"green of 1.5", F::ARGB_U15plus1(), yuyv, 1, {0, 0, 49152, 0, 0, 0, 49152, 0}, "e1 01 e1 e0 "},
        // y 1201, cb -165, cr -344
        {"the greatest green", F::RGB_U15plus1(), ten, 1, {0, 65535, 0, 0, 65535, 0}, "d6 2c aa 2c d1 "},
        // clang-format on
    };
    for (auto const& row : cases) {
        cv::Mat const block = resultOf<ImageRGBtoYCbCr42x>(row.source, row.destination,
                                                           matrixOf(row.source, row.rows, row.samples));
        EXPECT_EQ(hexOf(block.data, block.elemSize()), row.bytes) << row.what;
    }
}

TEST(ImageYCbCr42xToRGB, GivesKnownPixels) {
    auto const yuyv = P::YCBCR_ITU_T871_YUYV_422_U8(), ten = P::YCBCR_ITU_T871_9ZT_422_U10();
    auto const square = P::YCBCR_ITU_T871_9ZT_420_U8(), hybrid = P::YCBCRA_ITU_T871_9ZT_4224_HYBRID_U12();
    std::vector<double> const blackAndWhite{128, 0, 128, 255, 3};
    struct {
        FrameFormat source, destination;
        std::vector<double> block, samples;
    } const cases[] = {
        {ten, F::BGRA_F32(), blackAndWhite, {0.000866, 0, 0.000685, 1, 1, 0.999483, 1, 1}},
        {ten, F::BGRA_U16(), blackAndWhite, {57, 0, 45, 65535, 65535, 65501, 65535, 65535}},
        {ten, F::ARGB_U15plus1(), blackAndWhite, {32768, 22, 0, 28, 32768, 32768, 32751, 32768}},
        // of the upper bytes, chroma is 128 / 255
        {ten, F::BGR_U8(), blackAndWhite, {1, 0, 1, 255, 254, 255}},
        {ten, F::ARGB_U8(), blackAndWhite, {255, 1, 0, 1, 255, 255, 254, 255}},
        {yuyv, F::RGB_U8(), {0, 128, 255, 128}, {1, 0, 1, 255, 254, 255}},
        {yuyv, F::ARGB_U15plus1(), {76, 85, 77, 255}, {32768, 32737, 0, 89, 32768, 32768, 74, 217}},
        {square,
         F::BGRA_U8(),
         {128, 128, 0, 255, 255, 0},
         {1, 0, 1, 255, 255, 254, 255, 255, 255, 254, 255, 255, 1, 0, 1, 255}},
        // cr 512, y1 0, a1 341; a0 1023, y0 4095, cb 512
        {hybrid,
         F::BGRA_F32(),
         {-2147483307.0, -512.0},
         {1, 0.999483, 1, 1, 0.000866, 0, 0.000685, 0.333333}},
    };
    for (auto const& row : cases) {
        cv::Mat const pixels =
            resultOf<ImageYCbCr42xToRGB>(row.source, row.destination, matrixOf(row.source, 1, row.block));
        std::vector<double> samples;
        pixels.reshape(1, 1).convertTo(samples, CV_64F);
        EXPECT_THAT(samples, testing::Pointwise(testing::DoubleNear(5e-7), row.samples))
            << FrameFormat::toString(row.source) << " to " << FrameFormat::toString(row.destination);
    }
}

template <class Processor>
std::string refusal(FrameFormat const& destination, std::unique_ptr<Zentrel::IImageFrame> frame) {
    return messageOf([&] { Processor(destination).onNewImage(std::move(frame)); });
}

TEST(ImageRGBtoYCbCr42x, RefusesFrames) {
    auto const square = P::YCBCR_ITU_T871_9ZT_420_U8(), hybrid = P::YCBCRA_ITU_T871_9ZT_4224_HYBRID_U12();
    auto const full = [](int rows, int columns) { return FullFrame::create(F::BGRA_F32(), rows, columns); };
    using Image = ImageRGBtoYCbCr42x;
    EXPECT_EQ(refusal<Image>(square, nullptr), "Can only convert FullFrame images");
    EXPECT_EQ(refusal<Image>(square, PackedFrame::create(square, 2, 2)), "Can only convert FullFrame images");
    EXPECT_EQ(refusal<Image>(hybrid, std::make_unique<FullFrame>(F::BGRA_F32())), "no image data in frame");
    EXPECT_EQ(
        refusal<Image>(hybrid, std::make_unique<FullFrame>(F::BGR_F32())),
        "YCbCr 4:2:2 conversion is not supported from RGB_F32_BGR to YCbCrA_ITU_T871_U12_9ZT-4224-HYBRID");
    EXPECT_EQ(refusal<Image>(square, full(3, 4)),
              "Frame format row pixel packing of 2 pixels is incompatible with "
              "supplied image rows of 3");
    EXPECT_EQ(
        refusal<Image>(hybrid, full(4, 3)),
        "Frame format column pixel packing of 2 pixels is incompatible with supplied image columns of 3");
}

TEST(ImageYCbCr42xToRGB, RefusesFrames) {
    auto const yuyv = P::YCBCR_ITU_T871_YUYV_422_U8();
    using Image = ImageYCbCr42xToRGB;
    EXPECT_EQ(refusal<Image>(F::BGR_U8(), nullptr), "Can only convert PackedFrame images");
    EXPECT_EQ(refusal<Image>(F::BGR_U8(), FullFrame::create(F::BGR_U8(), 2, 2)),
              "Can only convert PackedFrame images");
    EXPECT_EQ(refusal<Image>(F::BGR_U8(), std::make_unique<PackedFrame>(yuyv)), "no image data in frame");
    EXPECT_EQ(refusal<Image>(F::BGR_U16(), std::make_unique<PackedFrame>(yuyv)),
              "RGB conversion is not supported from YCbCr_ITU_T871_U8_YUYV-422 to RGB_U16_BGR");
}

// The encoder has steps for these two pairs, but the converter does not serve them.
TEST(ImageYCbCr42xToRGB, RefusesRgbaWhenAFrameArrives) {
    for (auto const& source : {P::YCBCR_ITU_T871_YUYV_422_U8(), P::YCBCR_ITU_T871_9ZT_422_U10()}) {
        Encoder encoder(source, F::RGBA_U8());
        FrameSinkDestination sink;
        encoder.connect(&sink);
        encoder.start();
        EXPECT_EQ(messageOf([&] { encoder.encodeFrame(PackedFrame::create(source, 2, 2)); }),
                  "RGB conversion is not supported from " + FrameFormat::toString(source) +
                      " to RGBA_U8_RGBA");
    }
}

} // namespace
