#include <MediaConversion/converters/ImageRGBtoYCoCgDXT5.h>
#include <MediaConversion/converters/ImageYCoCgDXT5toRGB.h>

#include <tests/MediaConversion/converters/ConverterValidator.h>

#include <squish.h>

#include <array>

using namespace MediaConversion;
using namespace Zentrel;
using namespace TestSupport;
using F = FullFrameFormat;
using P = PackedFrameFormat;

namespace {

using Bytes = std::vector<std::uint8_t>;
/// Three components, and those of the 16 pixels of a block.
using Rgb = std::array<int, 3>;
using RgbBlock = std::array<Rgb, 16>;
using Indices = std::array<int, 16>;

// ---- The block compressions once more: one block at a time, plain integers, division instead of shifts ----

int floorDivided(int a, int b) { return static_cast<int>(std::floor(static_cast<double>(a) / b)); }
int byteOf(int value) { return std::clamp(value, 0, 255); }

void append(Bytes& bytes, std::uint64_t value, int count) {
    for (int i = 0; i < count; ++i)
        bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

std::uint64_t field(Indices const& indices, int bits) {
    std::uint64_t value = 0;
    for (int i = 15; i >= 0; --i)
        value = value << bits | static_cast<unsigned>(indices[i]);
    return value;
}

/// The bounds of each component over the block.
struct Box {
    Rgb low, high;

    explicit Box(RgbBlock const& block) : low(block[0]), high(block[0]) {
        for (Rgb const& pixel : block)
            for (int c = 0; c < 3; ++c) {
                low[c] = std::min(low[c], pixel[c]);
                high[c] = std::max(high[c], pixel[c]);
            }
    }
};

/// A colour piece of endpoints `first` and `second` with 8 bits; indices by the distance in the first
/// `components`.
Bytes colourPiece(RgbBlock const& block, Rgb const& first, Rgb const& second, int components) {
    constexpr int steps[] = {8, 4, 8}, repeats[] = {32, 64, 32};
    std::array<Rgb, 4> palette;
    for (int c = 0; c < 3; ++c) {
        int const p0 = first[c] / steps[c] * steps[c] + first[c] / repeats[c];
        int const p1 = second[c] / steps[c] * steps[c] + second[c] / repeats[c];
        palette[0][c] = p0;
        palette[1][c] = p1;
        palette[2][c] = (p0 + p0 + p1) / 3;
        palette[3][c] = (p0 + p1 + p1) / 3;
    }
    Indices indices{};
    for (int i = 0; i < 16; ++i) {
        int d[4] = {};
        for (int k = 0; k < 4; ++k)
            for (int c = 0; c < components; ++c)
                d[k] += std::abs(palette[k][c] - block[i][c]);
        if (d[0] > d[3] && d[2] > d[3])
            indices[i] += 1;
        if ((d[1] > d[2] && d[0] > d[2]) || (d[0] > d[3] && d[1] > d[3]))
            indices[i] += 2;
    }
    Bytes bytes;
    for (Rgb const& colour : {first, second})
        append(bytes, colour[0] / 8 * 2048u + colour[1] / 4 * 32u + colour[2] / 8, 2);
    append(bytes, field(indices, 2), 4);
    return bytes;
}

Bytes lumaPiece(RgbBlock const& block, int component, int low, int high) {
    int const half = (high - low) / 14;
    Indices indices;
    for (int i = 0; i < 16; ++i) {
        int const luma = block[i][component];
        int n = 1 + (luma <= low + half);
        for (int k = 2; k <= 7; ++k)
            n += luma <= ((8 - k) * high + (k - 1) * low) / 7 + half;
        n %= 8;
        indices[i] = n == 0 ? 1 : n == 1 ? 0 : n;
    }
    Bytes bytes{static_cast<std::uint8_t>(high), static_cast<std::uint8_t>(low)};
    append(bytes, field(indices, 3), 6);
    return bytes;
}

Bytes expectedDxt1(RgbBlock const& block) {
    Box box(block);
    for (int c = 0; c < 3; ++c) {
        int const inset = (box.high[c] - box.low[c]) / 16;
        box.low[c] += inset;
        box.high[c] -= inset;
    }
    return colourPiece(block, box.high, box.low, 3);
}

Bytes expectedYCoCgDxt5(RgbBlock const& rgb) {
    RgbBlock block; // Co, Cg, Y
    for (int i = 0; i < 16; ++i) {
        auto const [r, g, b] = rgb[i];
        block[i] = {byteOf(floorDivided(2 * (r - b) + 2, 4) + 128),
                    byteOf(floorDivided(2 * g - r - b + 2, 4) + 128), floorDivided(r + 2 * g + b + 2, 4)};
    }

    Box const unscaled(block);
    int extent = 0;
    for (int const bound : {unscaled.low[0], unscaled.high[0], unscaled.low[1], unscaled.high[1]})
        extent = std::max(extent, std::abs(bound - 128));
    int const scale = extent < 32 ? 4 : extent < 64 ? 2 : 1;
    for (Rgb& pixel : block)
        for (int c : {0, 1})
            pixel[c] = (pixel[c] - 128) * scale + 128;

    Box box(block);
    for (int c = 0; c < 3; ++c) {
        int const unit = c == 2 ? 32 : 16, inset = box.high[c] - box.low[c] - (unit / 2 - 1);
        int const low = byteOf(floorDivided(box.low[c] * unit + inset, unit));
        box.high[c] = byteOf(floorDivided(box.high[c] * unit - inset, unit));
        box.low[c] = low;
    }
    Bytes bytes = lumaPiece(block, 2, box.low[2], box.high[2]);

    constexpr int steps[] = {8, 4}, repeats[] = {32, 64};
    for (int c : {0, 1})
        for (Rgb* const bounds : {&box.low, &box.high})
            (*bounds)[c] = (*bounds)[c] / steps[c] * steps[c] + (*bounds)[c] / repeats[c];
    int opposed = 0;
    for (Rgb const& pixel : block)
        opposed += (pixel[0] >= (box.low[0] + box.high[0] + 1) / 2) !=
                   (pixel[1] >= (box.low[1] + box.high[1] + 1) / 2);
    if (opposed > 8)
        std::swap(box.low[1], box.high[1]);
    box.low[2] = box.high[2] = (scale - 1) * 8;
    Bytes const colours = colourPiece(block, box.high, box.low, 2);
    bytes.insert(bytes.end(), colours.begin(), colours.end());
    return bytes;
}

std::uint64_t numberAt(std::uint8_t const* bytes, int count) {
    std::uint64_t value = 0;
    std::memcpy(&value, bytes, static_cast<std::size_t>(count));
    return value;
}

/// Rounds to nearest, but for the codes for which the decoders' arithmetic gives one less.
int expandedCode(int code, int highest) {
    static const std::set<int> lower5{20, 25, 29}, lower6{53};
    int const nearest = static_cast<int>(std::lround(255.0 * code / highest));
    return nearest - static_cast<int>((highest == 31 ? lower5 : lower6).count(code));
}

/// The colour of a pixel of a colour piece, with four colours or, if `hasBlack`, three and black.
Rgb expectedColour(std::uint8_t const* piece, int pixel, bool hasBlack) {
    constexpr int shifts[] = {11, 5, 0}, highest[] = {31, 63, 31};
    auto const component = [&](int endpoint, int c) {
        int const word = static_cast<int>(numberAt(piece + 2 * endpoint, 2));
        return expandedCode(word >> shifts[c] & highest[c], highest[c]);
    };
    auto const index = numberAt(piece + 4, 4) >> (2 * pixel) & 3;
    Rgb colour;
    for (int c = 0; c < 3; ++c) {
        int const p0 = component(0, c), p1 = component(1, c);
        int const values[2][4] = {{p0, p1, (2 * p0 + p1) / 3, (p0 + 2 * p1) / 3}, {p0, p1, (p0 + p1) / 2, 0}};
        colour[c] = values[hasBlack][index];
    }
    return colour;
}

Rgb expectedFromDxt1(std::uint8_t const* block, int pixel) {
    return expectedColour(block, pixel, numberAt(block, 2) <= numberAt(block + 2, 2));
}

int expectedLuma(std::uint8_t const* piece, int pixel) {
    int const a0 = piece[0], a1 = piece[1], k = static_cast<int>(numberAt(piece + 2, 6) >> (3 * pixel) & 7);
    if (k < 2)
        return piece[k];
    if (a0 > a1)
        return ((8 - k) * a0 + (k - 1) * a1) / 7;
    return k == 6 ? 0 : k == 7 ? 255 : ((6 - k) * a0 + (k - 1) * a1) / 5;
}

Rgb expectedFromYCoCgDxt5(std::uint8_t const* block, int pixel) {
    auto const [red, green, blue] = expectedColour(block + 8, pixel, false);
    int const y = expectedLuma(block, pixel), scale = blue / 8 + 1;
    int const co = (red - 128) / scale, cg = (green - 128) / scale;
    return {byteOf(y + co - cg), byteOf(y + cg), byteOf(y - co - cg)};
}

// ---- Whole pictures ----

std::size_t positionIn(FrameFormat const& format, char letter) { return format.layoutName.find(letter); }

RgbBlock blockAt(FrameFormat const& format, cv::Mat const& image, int row, int column) {
    RgbBlock block;
    for (int i = 0; i < 16; ++i)
        for (std::size_t c = 0; c < 3; ++c)
            block[i][c] = image.ptr(4 * row + i / 4, 4 * column + i % 4)[positionIn(format, "RGB"[c])];
    return block;
}

Reference encoding(FrameFormat const& source, Bytes (*encode)(RgbBlock const&)) {
    return [=](cv::Mat const& image, cv::Mat& blocks) {
        for (int row = 0; row < blocks.rows; ++row)
            for (int column = 0; column < blocks.cols; ++column) {
                Bytes const bytes = encode(blockAt(source, image, row, column));
                std::copy(bytes.begin(), bytes.end(), blocks.ptr(row, column));
            }
    };
}

Reference decoding(FrameFormat const& destination, Rgb (*decode)(std::uint8_t const*, int)) {
    return [=](cv::Mat const& blocks, cv::Mat& image) {
        image.setTo(cv::Scalar::all(255));
        for (int y = 0; y < image.rows; ++y)
            for (int x = 0; x < image.cols; ++x) {
                Rgb const colour = decode(blocks.ptr(y / 4, x / 4), y % 4 * 4 + x % 4);
                for (std::size_t c = 0; c < 3; ++c)
                    image.ptr(y, x)[positionIn(destination, "RGB"[c])] = static_cast<std::uint8_t>(colour[c]);
            }
    };
}

cv::Mat encoded(FrameFormat const& source, FrameFormat const& destination, cv::Mat const& image) {
    return convertedBy<ImageRGBtoYCoCgDXT5>(destination, frameOf(source, image));
}

cv::Mat decoded(FrameFormat const& source, FrameFormat const& destination, cv::Mat const& blocks) {
    return convertedBy<ImageYCoCgDXT5toRGB>(destination, frameOf(source, blocks));
}

/// RGBA blocks that lie on a line through a colour, with some noise: near to what photographs hold, from flat
/// and grey ones to the longest lines there are, rising and falling in each channel.
cv::Mat linearBlocks() {
    Seeded seeded;
    cv::Mat image(256, 1024, CV_8UC4);
    for (int row = 0; row < image.rows / 4; ++row)
        for (int column = 0; column < image.cols / 4; ++column) {
            int const length = 1 << seeded.below(9), noise = 1 << seeded.below(5);
            bool const grey = seeded.below(8) == 0;
            int start[3], slope[3];
            for (int c = 0; c < 3; ++c) {
                start[c] = static_cast<int>(seeded.below(256));
                slope[c] = static_cast<int>(seeded.below(2 * length)) - length;
            }
            for (int i = 0; i < 16; ++i)
                for (int c = 0; c < 4; ++c)
                    image.ptr(4 * row + i / 4, 4 * column + i % 4)[c] = static_cast<std::uint8_t>(
                        c == 3 ? seeded.below(256)
                               : byteOf(start[grey ? 0 : c] + slope[grey ? 0 : c] * i / 15 +
                                        static_cast<int>(grey ? 0 : seeded.below(noise))));
        }
    return image;
}

const FormatPairs encoderPairs{{F::RGB_U8(), P::YCOCG_DXT5_U8()},
                               {F::BGR_U8(), P::YCOCG_DXT5_U8()},
                               {F::RGBA_U8(), P::YCOCG_DXT5_U8()},
                               {F::BGRA_U8(), P::YCOCG_DXT5_U8()},
                               {F::RGBA_U8(), P::RGB_DXT1_U8()}};
const FormatPairs decoderPairs{{P::YCOCG_DXT5_U8(), F::RGB_U8()},  {P::YCOCG_DXT5_U8(), F::BGR_U8()},
                               {P::YCOCG_DXT5_U8(), F::BGRA_U8()}, {P::RGB_DXT1_U8(), F::RGB_U8()},
                               {P::RGB_DXT1_U8(), F::BGR_U8()},    {P::RGB_DXT1_U8(), F::BGRA_U8()}};

auto encoderFor(FrameFormat const& format) {
    return format == P::RGB_DXT1_U8() ? expectedDxt1 : expectedYCoCgDxt5;
}

auto decoderFor(FrameFormat const& format) {
    return format == P::RGB_DXT1_U8() ? expectedFromDxt1 : expectedFromYCoCgDxt5;
}

TEST(DxtEncoder, AgreesWithThePlainFormula) {
    for (auto const& [source, destination] : encoderPairs)
        expectConverts<ImageRGBtoYCoCgDXT5>(source, destination, encoding(source, encoderFor(destination)));
}

TEST(DxtDecoder, AgreesWithThePlainFormula) {
    for (auto const& [source, destination] : decoderPairs)
        expectConverts<ImageYCoCgDXT5toRGB>(source, destination, decoding(destination, decoderFor(source)));
}

TEST(DxtEncoder, AgreesWithThePlainFormulaOnBlocksAsInPhotographs) {
    cv::Mat const image = linearBlocks();
    for (auto const& destination : {P::YCOCG_DXT5_U8(), P::RGB_DXT1_U8()}) {
        cv::Mat expected(image.rows / 4, image.cols / 4, PackedFrame::openCvTypes.at(destination));
        encoding(F::RGBA_U8(), encoderFor(destination))(image, expected);
        expectSameBytes(encoded(F::RGBA_U8(), destination, image), expected);
    }

    cv::Mat const blocks = encoded(F::RGBA_U8(), P::YCOCG_DXT5_U8(), image);
    int scales[5] = {}, exchanged = 0, fallingEndpoints = 0;
    for (std::size_t i = 0; i < blocks.total(); ++i) {
        std::uint8_t const* const colours = blocks.data + 16 * i + 8;
        ++scales[std::min(colours[0] & 31, 3) + 1];
        exchanged += (numberAt(colours, 2) >> 5 & 63) < (numberAt(colours + 2, 2) >> 5 & 63);
        fallingEndpoints += numberAt(colours, 2) < numberAt(colours + 2, 2);
    }
    for (int const count : {scales[1], scales[2], scales[4], exchanged, fallingEndpoints})
        EXPECT_GT(count, 20) << "the picture has too few blocks of some kind";
    EXPECT_EQ(scales[3], 0);
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
        {"a flat block: equal endpoints", blockOf(grey, grey, 0), P::RGB_DXT1_U8(),
         "2c 63 2c 63 00 00 00 00 "},
        {"black beside white", blockOf(black, white, 0x3333), P::RGB_DXT1_U8(), "9e f7 61 08 05 05 05 05 "},
    };
    for (auto const& [what, block, destination, bytes] : cases)
        EXPECT_EQ(hexOf(encoded(F::RGBA_U8(), destination, block).data, destination.pixelPacking.bytes()),
                  bytes)
            << what;
}

TEST(DxtDecoder, DecodesBlocksAsComputedByHand) {
    struct {
        const char* what;
        Bytes block;
        std::array<Rgb, 4> firstRow;
    } const cases[] = {
        {"DXT1, equal endpoints: three colours and black",
         {0x2c, 0x63, 0x2c, 0x63, 0xe4, 0, 0, 0},
         {{{99, 101, 99}, {99, 101, 99}, {99, 101, 99}, {0, 0, 0}}}},
        {"DXT1, rising endpoints: the mean of both, and black",
         {0x00, 0x00, 0xff, 0xff, 0xe4, 0, 0, 0},
         {{{0, 0, 0}, {255, 255, 255}, {127, 127, 127}, {0, 0, 0}}}},
        {"DXT1, falling endpoints: four colours",
         {0xff, 0xff, 0x00, 0x00, 0xe4, 0, 0, 0},
         {{{255, 255, 255}, {0, 0, 0}, {170, 170, 170}, {85, 85, 85}}}},
        {"equal luma endpoints: six steps, 0 and 255; grey as the encoder stores it is grey",
         {100, 100, 0xb0, 0x0f, 0, 0, 0, 0, 0x03, 0x84, 0xe3, 0x7b, 0xaa, 0, 0, 0},
         {{{100, 100, 100}, {0, 0, 0}, {0, 0, 0}, {255, 255, 255}}}},
        {"chroma rounds towards zero when the scale of 4 is taken back: Co of 99 - 128 is -7, not -8",
         {100, 99, 0, 0, 0, 0, 0, 0, 0x03, 0x64, 0x03, 0x64, 0, 0, 0, 0},
         {{{93, 100, 107}, {93, 100, 107}, {93, 100, 107}, {93, 100, 107}}}},
    };
    for (auto const& [what, block, firstRow] : cases) {
        bool const isDxt1 = block.size() == 8;
        cv::Mat const blocks(1, 1, CV_8UC(static_cast<int>(block.size())),
                             const_cast<std::uint8_t*>(block.data()));
        cv::Mat const pixels = decoded(isDxt1 ? P::RGB_DXT1_U8() : P::YCOCG_DXT5_U8(), F::BGRA_U8(), blocks);
        for (int x = 0; x < 4; ++x) {
            auto const* const pixel = pixels.ptr(0, x);
            EXPECT_EQ((Rgb{pixel[2], pixel[1], pixel[0]}), firstRow[static_cast<std::size_t>(x)])
                << what << ", " << x;
            EXPECT_EQ(pixel[3], 255);
        }
    }
}

// Graphics hardware and other decoders see the same values. Theirs of the endpoints may differ from ours by
// one: they repeat the high bits where we round.
TEST(DxtEncoder, IsReadByAnotherDecoder) {
    cv::Mat const image = linearBlocks();

    cv::Mat const dxt1 = encoded(F::RGBA_U8(), P::RGB_DXT1_U8(), image);
    cv::Mat const ours = decoded(P::RGB_DXT1_U8(), F::RGB_U8(), dxt1);
    cv::Mat const yCoCg = encoded(F::RGBA_U8(), P::YCOCG_DXT5_U8(), image);
    int largestColour = 0, largestChroma = 0, wrongLumas = 0;
    for (int row = 0; row < dxt1.rows; ++row)
        for (int column = 0; column < dxt1.cols; ++column) {
            std::uint8_t rgb[16][4], coCgScaleY[16][4];
            squish::Decompress(rgb[0], dxt1.ptr(row, column), squish::kDxt1);
            squish::Decompress(coCgScaleY[0], yCoCg.ptr(row, column), squish::kDxt5);
            for (int i = 0; i < 16; ++i) {
                Rgb const chroma = expectedColour(yCoCg.ptr(row, column) + 8, i, false);
                for (int c = 0; c < 3; ++c) {
                    int const colour = ours.ptr(4 * row + i / 4, 4 * column + i % 4)[c];
                    largestColour = std::max(largestColour, std::abs(rgb[i][c] - colour));
                    largestChroma = std::max(
                        largestChroma, std::abs(coCgScaleY[i][c] - chroma[static_cast<std::size_t>(c)]));
                }
                wrongLumas += coCgScaleY[i][3] != expectedLuma(yCoCg.ptr(row, column), i);
            }
        }
    EXPECT_LE(largestColour, 1);
    EXPECT_LE(largestChroma, 1);
    EXPECT_EQ(wrongLumas, 0);
}

TEST(Dxt, ServesItsPairsAndRefusesAllOthers) {
    expectServesExactly<ImageRGBtoYCoCgDXT5>(encoderPairs, "DXT conversion is not supported from ");
    expectServesExactly<ImageYCoCgDXT5toRGB>(decoderPairs, "RGB conversion is not supported from ");
}

TEST(Dxt, RefusesFramesOfTheWrongKindAndWithoutBlocks) {
    EXPECT_EQ(messageOf([] { ImageRGBtoYCoCgDXT5(P::YCOCG_DXT5_U8()).onNewImage(nullptr); }),
              "Can only convert FullFrame images");
    EXPECT_EQ(
        messageOf([] {
            ImageRGBtoYCoCgDXT5(P::YCOCG_DXT5_U8()).onNewImage(PackedFrame::create(P::YCOCG_DXT5_U8(), 4, 4));
        }),
        "Can only convert FullFrame images");
    EXPECT_EQ(
        messageOf([] { ImageYCoCgDXT5toRGB(F::RGB_U8()).onNewImage(FullFrame::create(F::RGB_U8(), 4, 4)); }),
        "Can only convert PackedFrame images");
    for (auto const& [rows, columns, message] :
         {std::tuple{4, 6,
                     "column pixel packing of 4 pixels is incompatible with supplied image columns of 6"},
          std::tuple{9, 8, "row pixel packing of 4 pixels is incompatible with supplied image rows of 9"}})
        for (auto const& destination : {P::YCOCG_DXT5_U8(), P::RGB_DXT1_U8()})
            EXPECT_EQ(messageOf([&, height = rows, width = columns] {
                          ImageRGBtoYCoCgDXT5(destination).convert({F::RGBA_U8(), height, width});
                      }),
                      std::string("Frame format ") + message);
}

TEST(DxtEncoder, ItsConversionsCheckTheDestinationThemselves) {
    FullFrame const source(F::RGBA_U8(), 4, 4);
    auto const toYCoCg = ImageRGBtoYCoCgDXT5::selectConversion(F::RGBA_U8(), P::YCOCG_DXT5_U8());
    auto const toDxt1 = ImageRGBtoYCoCgDXT5::selectConversion(F::RGBA_U8(), P::RGB_DXT1_U8());
    EXPECT_EQ(messageOf([&] { toYCoCg(source, P::RGB_DXT1_U8()); }),
              "DXT5 conversion destination format only supports YCoCg_U8_YCoCg-DXT5, no support for  "
              "RGB_U8_RGB-DXT1");
    EXPECT_EQ(messageOf([&] { toDxt1(source, F::RGB_U8()); }),
              "DXT1 conversion destination format only supports RGB_U8_RGB-DXT1, no support for  RGB_U8_RGB");
}

} // namespace
