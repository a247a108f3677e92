// The blocks of the chroma-subsampled YCbCr formats: how the codes of a few pixels that share one pair of
// chroma codes lie in memory.
//
// `pack` makes the words of a block from its codes and `unpack` the codes from the words: 32 bits each, the
// lowest byte first; of the last word the format may take fewer. In the diagrams bytes stand in the order of
// memory, each with its most significant bit on the left.
#pragma once

#include <MediaConversion/converters/kernels/Vectors.h>

#include <array>

namespace MediaConversion {
namespace {

/// The codes of a left pixel (0) and a right one (1) with common chroma.
struct Codes422 {
    Ints y0, cb, y1, cr;
};

/// The codes of a square of pixels with common chroma: top left, top right, bottom left, bottom right.
struct Codes420 {
    Ints cb, cr, y00, y01, y10, y11;
};

/// The codes of a left pixel (0) and a right one (1) with common chroma and an alpha each.
struct Codes4224 {
    Ints y0, y1, cb, cr, a0, a1;
};

/// 8-bit 4:2:2.
///
///     | byte 0 | byte 1 | byte 2 | byte 3 |
///     |   Y0   |   Cb   |   Y1   |   Cr   |
struct Yuyv422 {
    static constexpr int bits = 8, fullScale = 255, bytes = 4;

    static std::array<Ints, 1> pack(Codes422 const& codes) {
        return {codes.y0 | codes.cb << 8 | codes.y1 << 16 | codes.cr << 24};
    }
    static Codes422 unpack(std::array<Ints, 1> const& words) {
        auto const [word] = words;
        return {lowBits(word, 8), lowBits(word >> 8, 8), lowBits(word >> 16, 8), lowBits(word >> 24, 8)};
    }
};

/// 10-bit 4:2:2: the upper eight bits of each code, then the lower two of all.
///
///     |  byte 0  |  byte 1  |  byte 2  |  byte 3  |              byte 4               |
///     | Cb 9..2  | Y0 9..2  | Cr 9..2  | Y1 9..2  | Cb 1..0 | Y0 1..0 | Cr 1..0 | Y1 1..0 |
struct TenBit422 {
    static constexpr int bits = 10, fullScale = 1023, bytes = 5;

    static std::array<Ints, 2> pack(Codes422 const& codes) {
        auto const [y0, cb, y1, cr] = codes;
        return {(cb >> 2) | (y0 >> 2) << 8 | (cr >> 2) << 16 | (y1 >> 2) << 24,
                lowBits(cb, 2) << 6 | lowBits(y0, 2) << 4 | lowBits(cr, 2) << 2 | lowBits(y1, 2)};
    }
    static Codes422 unpack(std::array<Ints, 2> const& words) {
        auto const [upper, lower] = words;
        return {lowBits(upper >> 8, 8) << 2 | lowBits(lower >> 4, 2),
                lowBits(upper, 8) << 2 | lowBits(lower >> 6, 2),
                lowBits(upper >> 24, 8) << 2 | lowBits(lower, 2),
                lowBits(upper >> 16, 8) << 2 | lowBits(lower >> 2, 2)};
    }
};

/// The upper bytes of a 10-bit 4:2:2 block as 8-bit codes; for reading only.
struct TenBit422UpperBytes {
    static constexpr int bits = 8, fullScale = 255, bytes = 5;

    static Codes422 unpack(std::array<Ints, 2> const& words) {
        auto const [upper, lower] = words;
        return {lowBits(upper >> 8, 8), lowBits(upper, 8), lowBits(upper >> 24, 8), lowBits(upper >> 16, 8)};
    }
};

/// 8-bit 4:2:0.
///
///     | byte 0 | byte 1 | byte 2 | byte 3 | byte 4 | byte 5 |
///     |   Cb   |   Cr   |  Y00   |  Y01   |  Y10   |  Y11   |
struct EightBit420 {
    static constexpr int bits = 8, fullScale = 255, bytes = 6;

    static std::array<Ints, 2> pack(Codes420 const& codes) {
        auto const [cb, cr, y00, y01, y10, y11] = codes;
        return {cb | cr << 8 | y00 << 16 | y01 << 24, y10 | y11 << 8};
    }
    static Codes420 unpack(std::array<Ints, 2> const& words) {
        auto const [first, second] = words;
        return {lowBits(first, 8),       lowBits(first >> 8, 8), lowBits(first >> 16, 8),
                lowBits(first >> 24, 8), lowBits(second, 8),     lowBits(second >> 8, 8)};
    }
};

/// 12-bit luma, 10-bit chroma and 10-bit alpha in two 32-bit words, the right pixel's first.
///
///              bits 31..22   bits 21..10   bits 9..0
///     word 0  |    Cr      |     Y1      |    A1    |
///     word 1  |    A0      |     Y0      |    Cb    |
struct Hybrid4224 {
    static constexpr int lumaBits = 12, chromaBits = 10, alphaBits = 10;
    static constexpr int lumaScale = 4095, chromaScale = 1023, alphaScale = 1023, bytes = 8;

    static std::array<Ints, 2> pack(Codes4224 const& codes) {
        auto const [y0, y1, cb, cr, a0, a1] = codes;
        return {cr << 22 | y1 << 10 | a1, a0 << 22 | y0 << 10 | cb};
    }
    static Codes4224 unpack(std::array<Ints, 2> const& words) {
        auto const [right, left] = words;
        return {lowBits(left >> 10, 12),  lowBits(right >> 10, 12), lowBits(left, 10),
                lowBits(right >> 22, 10), lowBits(left >> 22, 10),  lowBits(right, 10)};
    }
};

} // namespace
} // namespace MediaConversion
