// The blocks of the chroma-subsampled YCbCr formats: how the codes of a few pixels that share one pair of
// chroma codes lie in memory.
//
// A block is a type of exactly the format's bytes, which packs codes into itself and unpacks them again. A
// code is taken modulo its bits: whatever a code out of range has above them is lost. In the diagrams bytes
// stand in the order of memory, each with its most significant bit on the left.
#pragma once

#include <cstdint>

namespace MediaConversion {

/// The codes of a left pixel (0) and a right one (1) with common chroma.
struct Codes422 {
    std::int32_t y0, cb, y1, cr;
};

/// The codes of a square of pixels with common chroma: top left, top right, bottom left, bottom right.
struct Codes420 {
    std::int32_t cb, cr, y00, y01, y10, y11;
};

/// The codes of a left pixel (0) and a right one (1) with common chroma and an alpha each.
struct Codes4224 {
    std::int32_t y0, y1, cb, cr, a0, a1;
};

/// 8-bit 4:2:2.
///
///     | byte 0 | byte 1 | byte 2 | byte 3 |
///     |   Y0   |   Cb   |   Y1   |   Cr   |
struct Yuyv422 {
    static constexpr int fullScale = 255;

    std::uint8_t bytes[4];

    static Yuyv422 pack(Codes422 const& codes) {
        auto const byte = [](std::uint32_t code) { return static_cast<std::uint8_t>(code); };
        return {{byte(codes.y0), byte(codes.cb), byte(codes.y1), byte(codes.cr)}};
    }
    Codes422 unpack() const { return {bytes[0], bytes[1], bytes[2], bytes[3]}; }
};

/// 10-bit 4:2:2: the upper eight bits of each code, then the lower two of all.
///
///     |  byte 0  |  byte 1  |  byte 2  |  byte 3  |              byte 4               |
///     | Cb 9..2  | Y0 9..2  | Cr 9..2  | Y1 9..2  | Cb 1..0 | Y0 1..0 | Cr 1..0 | Y1 1..0 |
struct TenBit422 {
    static constexpr int fullScale = 1023;

    std::uint8_t bytes[5];

    static TenBit422 pack(Codes422 const& codes) {
        auto const upper = [](std::uint32_t code) { return static_cast<std::uint8_t>(code >> 2); };
        auto const lower = [](std::uint32_t code) { return code & 3; };
        return {{upper(codes.cb), upper(codes.y0), upper(codes.cr), upper(codes.y1),
                 static_cast<std::uint8_t>(lower(codes.cb) << 6 | lower(codes.y0) << 4 |
                                           lower(codes.cr) << 2 | lower(codes.y1))}};
    }
    Codes422 unpack() const {
        auto const code = [this](int byte) { return bytes[byte] << 2 | (bytes[4] >> (6 - 2 * byte) & 3); };
        return {code(1), code(0), code(3), code(2)};
    }
};

/// The upper bytes of a 10-bit 4:2:2 block as 8-bit codes; for reading only.
struct TenBit422UpperBytes {
    static constexpr int fullScale = 255;

    std::uint8_t bytes[5];

    Codes422 unpack() const { return {bytes[1], bytes[0], bytes[3], bytes[2]}; }
};

/// 8-bit 4:2:0.
///
///     | byte 0 | byte 1 | byte 2 | byte 3 | byte 4 | byte 5 |
///     |   Cb   |   Cr   |  Y00   |  Y01   |  Y10   |  Y11   |
struct EightBit420 {
    static constexpr int fullScale = 255;

    std::uint8_t bytes[6];

    static EightBit420 pack(Codes420 const& codes) {
        auto const byte = [](std::uint32_t code) { return static_cast<std::uint8_t>(code); };
        return {{byte(codes.cb), byte(codes.cr), byte(codes.y00), byte(codes.y01), byte(codes.y10),
                 byte(codes.y11)}};
    }
    Codes420 unpack() const { return {bytes[0], bytes[1], bytes[2], bytes[3], bytes[4], bytes[5]}; }
};

/// 12-bit luma, 10-bit chroma and 10-bit alpha in two 32-bit words, the right pixel's first.
///
///              bits 31..22   bits 21..10   bits 9..0
///     word 0  |    Cr      |     Y1      |    A1    |
///     word 1  |    A0      |     Y0      |    Cb    |
struct Hybrid4224 {
    static constexpr int lumaScale = 4095, chromaScale = 1023, alphaScale = 1023;

    std::uint32_t words[2];

    static Hybrid4224 pack(Codes4224 const& codes) {
        auto const word = [](std::uint32_t upper, std::uint32_t luma, std::uint32_t lower) {
            return upper << 22 | (luma & 0xfff) << 10 | (lower & 0x3ff);
        };
        return {{word(codes.cr, codes.y1, codes.a1), word(codes.a0, codes.y0, codes.cb)}};
    }
    Codes4224 unpack() const {
        auto const field = [](std::uint32_t word, int lowestBit, int bits) {
            return static_cast<std::int32_t>(word >> lowestBit & ((1u << bits) - 1));
        };
        auto const [right, left] = words;
        return {field(left, 10, 12),  field(right, 10, 12), field(left, 0, 10),
                field(right, 22, 10), field(left, 22, 10),  field(right, 0, 10)};
    }
};

} // namespace MediaConversion
