// The blocks of the chroma-subsampled YCbCr formats: how the codes of a few pixels that share one pair of
// chroma codes lie in memory.
//
// A block is a type of exactly the format's bytes, which unpacks its codes. `pack` makes the words of a block
// from its codes: 32 bits each, the lowest byte first; of the last word the format may take fewer. `Int` is a
// number, or a vector of them. A code is taken modulo its bits: whatever a code out of range has above them
// is lost. In the diagrams bytes stand in the order of memory, each with its most significant bit on the
// left.
#pragma once

#include <array>
#include <cstdint>

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
    static constexpr int bits = 8, fullScale = 255;

    std::uint8_t bytes[4];

    template <class Int>
    static std::array<Int, 1> pack(Codes422<Int> const& codes) {
        return {lowBits<8>(codes.y0) | lowBits<8>(codes.cb) << 8 | lowBits<8>(codes.y1) << 16 |
                codes.cr << 24};
    }
    Codes422<std::int32_t> unpack() const { return {bytes[0], bytes[1], bytes[2], bytes[3]}; }
};

/// 10-bit 4:2:2: the upper eight bits of each code, then the lower two of all.
///
///     |  byte 0  |  byte 1  |  byte 2  |  byte 3  |              byte 4               |
///     | Cb 9..2  | Y0 9..2  | Cr 9..2  | Y1 9..2  | Cb 1..0 | Y0 1..0 | Cr 1..0 | Y1 1..0 |
struct TenBit422 {
    static constexpr int bits = 10, fullScale = 1023;

    std::uint8_t bytes[5];

    template <class Int>
    static std::array<Int, 2> pack(Codes422<Int> const& codes) {
        auto const [y0, cb, y1, cr] = codes;
        return {lowBits<8>(cb >> 2) | lowBits<8>(y0 >> 2) << 8 | lowBits<8>(cr >> 2) << 16 | (y1 >> 2) << 24,
                lowBits<2>(cb) << 6 | lowBits<2>(y0) << 4 | lowBits<2>(cr) << 2 | lowBits<2>(y1)};
    }
    Codes422<std::int32_t> unpack() const {
        auto const code = [this](int byte) { return bytes[byte] << 2 | (bytes[4] >> (6 - 2 * byte) & 3); };
        return {code(1), code(0), code(3), code(2)};
    }
};

/// The upper bytes of a 10-bit 4:2:2 block as 8-bit codes; for reading only.
struct TenBit422UpperBytes {
    static constexpr int bits = 8, fullScale = 255;

    std::uint8_t bytes[5];

    Codes422<std::int32_t> unpack() const { return {bytes[1], bytes[0], bytes[3], bytes[2]}; }
};

/// 8-bit 4:2:0.
///
///     | byte 0 | byte 1 | byte 2 | byte 3 | byte 4 | byte 5 |
///     |   Cb   |   Cr   |  Y00   |  Y01   |  Y10   |  Y11   |
struct EightBit420 {
    static constexpr int bits = 8, fullScale = 255;

    std::uint8_t bytes[6];

    template <class Int>
    static std::array<Int, 2> pack(Codes420<Int> const& codes) {
        auto const [cb, cr, y00, y01, y10, y11] = codes;
        return {lowBits<8>(cb) | lowBits<8>(cr) << 8 | lowBits<8>(y00) << 16 | y01 << 24,
                lowBits<8>(y10) | lowBits<8>(y11) << 8};
    }
    Codes420<std::int32_t> unpack() const {
        return {bytes[0], bytes[1], bytes[2], bytes[3], bytes[4], bytes[5]};
    }
};

/// 12-bit luma, 10-bit chroma and 10-bit alpha in two 32-bit words, the right pixel's first.
///
///              bits 31..22   bits 21..10   bits 9..0
///     word 0  |    Cr      |     Y1      |    A1    |
///     word 1  |    A0      |     Y0      |    Cb    |
struct Hybrid4224 {
    static constexpr int lumaBits = 12, chromaBits = 10, alphaBits = 10;
    static constexpr int lumaScale = 4095, chromaScale = 1023, alphaScale = 1023;

    std::uint32_t words[2];

    template <class Int>
    static std::array<Int, 2> pack(Codes4224<Int> const& codes) {
        auto const [y0, y1, cb, cr, a0, a1] = codes;
        return {cr << 22 | lowBits<12>(y1) << 10 | lowBits<10>(a1),
                a0 << 22 | lowBits<12>(y0) << 10 | lowBits<10>(cb)};
    }
    Codes4224<std::int32_t> unpack() const {
        auto const field = [](std::uint32_t word, int lowestBit, int bits) {
            return static_cast<std::int32_t>(word >> lowestBit & ((1u << bits) - 1));
        };
        auto const [right, left] = words;
        return {field(left, 10, 12),  field(right, 10, 12), field(left, 0, 10),
                field(right, 22, 10), field(left, 22, 10),  field(right, 0, 10)};
    }
};

} // namespace MediaConversion
