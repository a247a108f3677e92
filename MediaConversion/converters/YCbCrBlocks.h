// The blocks of the chroma-subsampled YCbCr formats: how the codes of a few pixels that share one pair of
// chroma codes lie in memory.
//
// `pack` makes the words of a block from its codes and `unpack` the codes from the words: 32 bits each, the
// lowest byte first; of the last word the format may take fewer. `Int` is a number, or a vector of them. In
// the diagrams bytes stand in the order of memory, each with its most significant bit on the left.
#pragma once

#include <array>

namespace MediaConversion {

template <int bits, class Int>
Int lowBits(Int const& code) {
    return code & ((1 << bits) - 1);
}

/// The codes of a left pixel (0) and a right one (1) with common chroma.
template <class Int>
struct Codes422 {
    Int y0, cb, y1, cr;
};

/// The codes of a square of pixels with common chroma: top left, top right, bottom left, bottom right.
template <class Int>
struct Codes420 {
    Int cb, cr, y00, y01, y10, y11;
};

/// The codes of a left pixel (0) and a right one (1) with common chroma and an alpha each.
template <class Int>
struct Codes4224 {
    Int y0, y1, cb, cr, a0, a1;
};

/// 8-bit 4:2:2.
///
///     | byte 0 | byte 1 | byte 2 | byte 3 |
///     |   Y0   |   Cb   |   Y1   |   Cr   |
struct Yuyv422 {
    static constexpr int bits = 8, fullScale = 255, bytes = 4;

    template <class Int>
    static std::array<Int, 1> pack(Codes422<Int> const& codes) {
        return {codes.y0 | codes.cb << 8 | codes.y1 << 16 | codes.cr << 24};
    }
    template <class Int>
    static Codes422<Int> unpack(std::array<Int, 1> const& words) {
        auto const [word] = words;
        return {lowBits<8>(word), lowBits<8>(word >> 8), lowBits<8>(word >> 16), lowBits<8>(word >> 24)};
    }
};

/// 10-bit 4:2:2: the upper eight bits of each code, then the lower two of all.
///
///     |  byte 0  |  byte 1  |  byte 2  |  byte 3  |              byte 4               |
///     | Cb 9..2  | Y0 9..2  | Cr 9..2  | Y1 9..2  | Cb 1..0 | Y0 1..0 | Cr 1..0 | Y1 1..0 |
struct TenBit422 {
    static constexpr int bits = 10, fullScale = 1023, bytes = 5;

    template <class Int>
    static std::array<Int, 2> pack(Codes422<Int> const& codes) {
        auto const [y0, cb, y1, cr] = codes;
        return {(cb >> 2) | (y0 >> 2) << 8 | (cr >> 2) << 16 | (y1 >> 2) << 24,
                lowBits<2>(cb) << 6 | lowBits<2>(y0) << 4 | lowBits<2>(cr) << 2 | lowBits<2>(y1)};
    }
    template <class Int>
    static Codes422<Int> unpack(std::array<Int, 2> const& words) {
        auto const [upper, lower] = words;
        return {lowBits<8>(upper >> 8) << 2 | lowBits<2>(lower >> 4),
                lowBits<8>(upper) << 2 | lowBits<2>(lower >> 6),
                lowBits<8>(upper >> 24) << 2 | lowBits<2>(lower),
                lowBits<8>(upper >> 16) << 2 | lowBits<2>(lower >> 2)};
    }
};

/// The upper bytes of a 10-bit 4:2:2 block as 8-bit codes; for reading only.
struct TenBit422UpperBytes {
    static constexpr int bits = 8, fullScale = 255, bytes = 5;

    template <class Int>
    static Codes422<Int> unpack(std::array<Int, 2> const& words) {
        auto const [upper, lower] = words;
        return {lowBits<8>(upper >> 8), lowBits<8>(upper), lowBits<8>(upper >> 24), lowBits<8>(upper >> 16)};
    }
};

/// 8-bit 4:2:0.
///
///     | byte 0 | byte 1 | byte 2 | byte 3 | byte 4 | byte 5 |
///     |   Cb   |   Cr   |  Y00   |  Y01   |  Y10   |  Y11   |
struct EightBit420 {
    static constexpr int bits = 8, fullScale = 255, bytes = 6;

    template <class Int>
    static std::array<Int, 2> pack(Codes420<Int> const& codes) {
        auto const [cb, cr, y00, y01, y10, y11] = codes;
        return {cb | cr << 8 | y00 << 16 | y01 << 24, y10 | y11 << 8};
    }
    template <class Int>
    static Codes420<Int> unpack(std::array<Int, 2> const& words) {
        auto const [first, second] = words;
        return {lowBits<8>(first),       lowBits<8>(first >> 8), lowBits<8>(first >> 16),
                lowBits<8>(first >> 24), lowBits<8>(second),     lowBits<8>(second >> 8)};
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

    template <class Int>
    static std::array<Int, 2> pack(Codes4224<Int> const& codes) {
        auto const [y0, y1, cb, cr, a0, a1] = codes;
        return {cr << 22 | y1 << 10 | a1, a0 << 22 | y0 << 10 | cb};
    }
    template <class Int>
    static Codes4224<Int> unpack(std::array<Int, 2> const& words) {
        auto const [right, left] = words;
        return {lowBits<12>(left >> 10),  lowBits<12>(right >> 10), lowBits<10>(left),
                lowBits<10>(right >> 22), lowBits<10>(left >> 22),  lowBits<10>(right)};
    }
};

} // namespace MediaConversion
