// The layouts of compressed blocks of 4 x 4 pixels. A block is made of pieces of 64 bits; pixel i of a block
// lies in column i mod 4 of row i / 4.
//
//   DXT1          one colour piece
//   YCoCg-DXT5    one luma piece, then one colour piece with Co as red, Cg as green, and as blue the scale of
//                 both, less one
//
// A piece is four little-endian 16-bit words, here from bit 15 on the left to bit 0:
//
//   colour piece    |    red 5    |     green 6     |   blue 5    |   endpoint 0
//                   |    red 5    |     green 6     |   blue 5    |   endpoint 1
//                   | p7  | p6  | p5  | p4  | p3  | p2  | p1 | p0 |   indices of the pixels,
//                   | p15 | p14 | p13 | p12 | p11 | p10 | p9 | p8 |   2 bits each
//
//   luma piece      |      endpoint 1       |     endpoint 0      |
//                   |p5|   p4   |   p3   |   p2   |   p1  |   p0  |   indices of pixels, 3 bits each, in a
//                   |p10 |   p9   |   p8   |   p7   |   p6  | p5  |   run of 48 bits: p5 and p10 lie across
//                   |   p15   |   p14   |   p13   |  p12 |p11|p10 |   two words
#pragma once

#include <MediaConversion/converters/kernels/Shorts.h>
#include <MediaConversion/converters/kernels/Words.h>

#include <array>

namespace MediaConversion::Dxt {
namespace {

/// Width and height of a block in pixels.
constexpr int blockSize = 4;
constexpr int blockPixels = blockSize * blockSize;
constexpr int pieceBytes = 8;

/// The measures of a block of so many pieces.
template <int pieces_>
struct Block {
    static constexpr int pieces = pieces_, bytes = pieces * pieceBytes, rows = blockSize, columns = blockSize;
};

/// 64 bits of every block, as they are written. They are read as two words of 32 bits.
using Piece = std::array<Shorts, 4>;

/// One channel: a number for each pixel of a block.
using Channel = std::array<Shorts, blockPixels>;

/// The colours of endpoints: 5, 6 and 5 bits.
struct Rgb565 {
    /// The high bits of 8-bit components.
    static Shorts pack(Shorts const& red, Shorts const& green, Shorts const& blue) {
        return ((red >> 3) << 11) | ((green >> 2) << 5) | (blue >> 3);
    }
    // clang-format off
    static Shorts red(Shorts const& word)   { return word >> 11 & 31; }
    static Shorts green(Shorts const& word) { return word >> 5 & 63; }
    static Shorts blue(Shorts const& word)  { return word & 31; }
    // clang-format on
};

struct ColourPiece {
    static Piece pack(Shorts const& endpoint0, Shorts const& endpoint1,
                      std::array<Shorts, 2> const& indices) {
        return {endpoint0, endpoint1, indices[0], indices[1]};
    }
    /// Both endpoints, the first one in the lower 16 bits.
    static Ints endpoints(std::array<Ints, 2> const& piece) { return piece[0]; }
    /// The indices of all pixels, that of pixel i from bit 2 i on.
    static Ints indices(std::array<Ints, 2> const& piece) { return piece[1]; }
};

struct LumaPiece {
    static Piece pack(Shorts const& endpoint0, Shorts const& endpoint1,
                      std::array<Shorts, 3> const& indices) {
        return {endpoint0 | (endpoint1 << 8), indices[0], indices[1], indices[2]};
    }
    static Ints endpoint(std::array<Ints, 2> const& piece, int number) {
        return piece[0] >> (8 * number) & 0xff;
    }
    /// The indices of the pixels from `pixel` on: 3 bits each, as many as 32 bits take.
    static Ints indicesFrom(std::array<Ints, 2> const& piece, int pixel) {
        return wordAt(piece, 16 + 3 * pixel);
    }
};

} // namespace
} // namespace MediaConversion::Dxt
