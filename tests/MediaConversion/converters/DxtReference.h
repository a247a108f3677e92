// The block compressions once more: one block at a time, plain integers, division instead of shifts.
#pragma once

#include <tests/MediaConversion/converters/ConverterValidator.h>

#include <array>

namespace TestSupport::Dxt {

using F = Zentrel::FullFrameFormat;
using P = Zentrel::PackedFrameFormat;

using Pieces = std::vector<std::uint64_t>;
/// Three components, and those of the 16 pixels of a block.
using Rgb = std::array<int, 3>;
using RgbBlock = std::array<Rgb, 16>;

inline int floorDivided(int a, int b) { return static_cast<int>(std::floor(static_cast<double>(a) / b)); }
inline int byteOf(int value) { return std::clamp(value, 0, 255); }

/// A piece's 64 bits, with the pixels' indices above `indexPosition`.
inline std::uint64_t piece(int endpoint0, int endpoint1, int indexPosition,
                           std::array<int, 16> const& indices) {
    std::uint64_t value = endpoint0 | std::uint64_t(endpoint1) << indexPosition / 2;
    for (std::size_t i = 0; i < 16; ++i)
        value |= std::uint64_t(indices[i]) << (indexPosition + (64 - indexPosition) / 16 * i);
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
inline std::uint64_t colourPiece(RgbBlock const& block, Rgb const& first, Rgb const& second, int components) {
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
    std::array<int, 16> indices{};
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
    auto const endpoint = [](Rgb const& colour) {
        return colour[0] / 8 * 2048 + colour[1] / 4 * 32 + colour[2] / 8;
    };
    return piece(endpoint(first), endpoint(second), 32, indices);
}

inline std::uint64_t lumaPiece(RgbBlock const& block, int component, int low, int high) {
    int const half = (high - low) / 14;
    std::array<int, 16> indices;
    for (int i = 0; i < 16; ++i) {
        int const luma = block[i][component];
        int n = 1 + (luma <= low + half);
        for (int k = 2; k <= 7; ++k)
            n += luma <= ((8 - k) * high + (k - 1) * low) / 7 + half;
        n %= 8;
        indices[i] = n == 0 ? 1 : n == 1 ? 0 : n;
    }
    return piece(high, low, 16, indices);
}

inline Pieces expectedDxt1(RgbBlock const& block) {
    Box box(block);
    for (int c = 0; c < 3; ++c) {
        int const inset = (box.high[c] - box.low[c]) / 16;
        box.low[c] += inset;
        box.high[c] -= inset;
    }
    return {colourPiece(block, box.high, box.low, 3)};
}

inline Pieces expectedYCoCgDxt5(RgbBlock const& rgb) {
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
    auto const luma = lumaPiece(block, 2, box.low[2], box.high[2]);

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
    return {luma, colourPiece(block, box.high, box.low, 2)};
}

inline std::uint64_t numberAt(std::uint8_t const* bytes, int count) {
    std::uint64_t value = 0;
    std::memcpy(&value, bytes, static_cast<std::size_t>(count));
    return value;
}

/// Rounds to nearest, but for the codes for which the decoders' arithmetic gives one less.
inline int expandedCode(int code, int highest) {
    static const std::set<int> lower5{20, 25, 29}, lower6{53};
    int const nearest = static_cast<int>(std::lround(255.0 * code / highest));
    return nearest - static_cast<int>((highest == 31 ? lower5 : lower6).count(code));
}

/// The colour of a pixel of a colour piece, with four colours or, if `hasBlack`, three and black.
inline Rgb expectedColour(std::uint8_t const* piece, int pixel, bool hasBlack) {
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

inline Rgb expectedFromDxt1(std::uint8_t const* block, int pixel) {
    return expectedColour(block, pixel, numberAt(block, 2) <= numberAt(block + 2, 2));
}

inline int expectedLuma(std::uint8_t const* piece, int pixel) {
    int const a0 = piece[0], a1 = piece[1], k = static_cast<int>(numberAt(piece + 2, 6) >> (3 * pixel) & 7);
    if (k < 2)
        return piece[k];
    if (a0 > a1)
        return ((8 - k) * a0 + (k - 1) * a1) / 7;
    return k == 6 ? 0 : k == 7 ? 255 : ((6 - k) * a0 + (k - 1) * a1) / 5;
}

inline Rgb expectedFromYCoCgDxt5(std::uint8_t const* block, int pixel) {
    auto const [red, green, blue] = expectedColour(block + 8, pixel, false);
    int const y = expectedLuma(block, pixel), scale = blue / 8 + 1;
    int const co = (red - 128) / scale, cg = (green - 128) / scale;
    return {byteOf(y + co - cg), byteOf(y + cg), byteOf(y - co - cg)};
}

// ---- Whole pictures ----

inline std::size_t positionIn(FrameFormat const& format, char letter) {
    return format.layoutName.find(letter);
}

inline RgbBlock blockAt(FrameFormat const& format, cv::Mat const& image, int row, int column) {
    RgbBlock block;
    for (int i = 0; i < 16; ++i)
        for (std::size_t c = 0; c < 3; ++c)
            block[i][c] = image.ptr(4 * row + i / 4, 4 * column + i % 4)[positionIn(format, "RGB"[c])];
    return block;
}

inline Reference encoding(FrameFormat const& source, FrameFormat const& destination) {
    auto const encode = destination == P::RGB_DXT1_U8() ? expectedDxt1 : expectedYCoCgDxt5;
    return [=](cv::Mat const& image, cv::Mat& blocks) {
        for (int row = 0; row < blocks.rows; ++row)
            for (int column = 0; column < blocks.cols; ++column) {
                Pieces const pieces = encode(blockAt(source, image, row, column));
                std::memcpy(blocks.ptr(row, column), pieces.data(), blocks.elemSize());
            }
    };
}

inline Reference decoding(FrameFormat const& source, FrameFormat const& destination) {
    auto const decode = source == P::RGB_DXT1_U8() ? expectedFromDxt1 : expectedFromYCoCgDxt5;
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

inline const FormatPairs encodings =
    pairsOf({{{F::RGB_U8(), F::BGR_U8(), F::RGBA_U8(), F::BGRA_U8()}, {P::YCOCG_DXT5_U8()}},
             {{F::RGBA_U8()}, {P::RGB_DXT1_U8()}}});
inline const FormatPairs decodings =
    pairsOf({{{P::YCOCG_DXT5_U8(), P::RGB_DXT1_U8()}, {F::RGB_U8(), F::BGR_U8(), F::BGRA_U8()}}});

} // namespace TestSupport::Dxt
