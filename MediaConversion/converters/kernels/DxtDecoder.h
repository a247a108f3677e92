// The block decoder: what graphics hardware shows of a block, whoever encoded it.
#pragma once

#include <MediaConversion/converters/ColourTransforms.h>
#include <MediaConversion/converters/DxtBlocks.h>
#include <MediaConversion/converters/kernels/Shorts.h>
#include <MediaConversion/converters/kernels/Unrolled.h>
#include <MediaConversion/converters/kernels/Vectors.h>

#include <array>

namespace MediaConversion::Dxt {
namespace {

/// 8-bit components.
struct Colour {
    Ints red, green, blue;
};

/// The four colours that a colour piece's indices choose from.
using Palette = std::array<Colour, 4>;

/// The 8-bit value of a code of `bits` bits, 5 or 6: 255 * code / (2^bits - 1), rounded without a division.
/// The codes 20, 25 and 29 of 5 bits and 53 of 6 bits come out one below the nearest.
template <int bits>
Ints expanded(Ints code) {
    Ints const scaled = 255 * code + (1 << (bits - 1));
    return (scaled + (scaled >> bits)) >> bits;
}

inline Colour endpointColour(Ints word) {
    return {expanded<5>(Rgb565::red(word)), expanded<6>(Rgb565::green(word)),
            expanded<5>(Rgb565::blue(word))};
}

/// The mean of two bytes with weights whose sum is at most 7, rounded down: the multiplication is near enough
/// to a division.
template <int aWeight, int bWeight>
Ints mean(Ints a, Ints b) {
    constexpr int sum = aWeight + bWeight;
    return ((aWeight * a + bWeight * b) * (65536 / sum + 1)) >> 16;
}

template <int aWeight, int bWeight>
Colour mixed(Colour const& a, Colour const& b) {
    return {mean<aWeight, bWeight>(a.red, b.red), mean<aWeight, bWeight>(a.green, b.green),
            mean<aWeight, bWeight>(a.blue, b.blue)};
}

inline Palette fourColours(Colour const& first, Colour const& second) {
    return {first, second, mixed<2, 1>(first, second), mixed<1, 2>(first, second)};
}

inline Palette threeColoursAndBlack(Colour const& first, Colour const& second) {
    return {first, second, mixed<1, 1>(first, second), Colour{0, 0, 0}};
}

/// Pixels `i` and `i + 8` of a block, for all `i` below 8, in the lower and the upper halves of each lane.
template <class Pixel>
using Pairs = std::array<Pixel, blockPixels / 2>;

/// The same number in both halves; it must fit them.
inline Shorts inBothHalves(Ints number) { return Shorts((number & 0xffff) | number << 16); }

/// Numbers from which indices of `bits` bits choose. Kept are the differences that the bits make: where a bit
/// is set they come on top of those of the bits below.
template <int bits>
class Choice {
public:
    explicit Choice(std::array<Ints, 1 << bits> numbers) {
        unrolled<bits>([&](auto bit) {
            unrolled<1 << bits>([&](auto i) {
                if constexpr ((i >> bit & 1) != 0)
                    numbers[i] = numbers[i] ^ numbers[i - (1 << bit)];
            });
        });
        unrolled<1 << bits>([&](auto i) { differences[i] = inBothHalves(numbers[i]); });
    }

    /// For the indices whose lowest bit is bit `lowest`.
    Shorts at(Shorts const& indices, int lowest) const {
        return sum<bits, 0>(indices << (16 - bits - lowest));
    }

private:
    /// Of the differences of the lowest `count` bits from `first` on; the indices are the upper bits.
    template <int count, int first>
    Shorts sum(Shorts const& indices) const {
        if constexpr (count == 0) {
            return differences[first];
        } else {
            Shorts const isSet = indices << (bits - count) >> 15;
            return sum<count - 1, first>(indices) ^
                   (isSet & sum<count - 1, first + (1 << (count - 1))>(indices));
        }
    }

    std::array<Shorts, 1 << bits> differences;
};

/// The values of a luma piece's indices: eight steps, or six steps, 0 and 255, as the endpoints' order says.
inline std::array<Ints, 8> lumaSteps(Ints first, Ints second) {
    std::array<Ints, 8> const eight{first,
                                    second,
                                    mean<6, 1>(first, second),
                                    mean<5, 2>(first, second),
                                    mean<4, 3>(first, second),
                                    mean<3, 4>(first, second),
                                    mean<2, 5>(first, second),
                                    mean<1, 6>(first, second)};
    std::array<Ints, 8> const six{first,
                                  second,
                                  mean<4, 1>(first, second),
                                  mean<3, 2>(first, second),
                                  mean<2, 3>(first, second),
                                  mean<1, 4>(first, second),
                                  0,
                                  255};
    std::array<Ints, 8> values;
    unrolled<8>([&](auto i) { values[i] = chosen(first > second, eight[i], six[i]); });
    return values;
}

/// 8-bit components of two pixels in each lane.
struct ColourPair {
    Shorts red, green, blue;
};

struct Dxt1Decoder {
    static constexpr int pieces = 1;

    static Pairs<ColourPair> decode(std::array<Ints, 2> const& piece) {
        Ints const word0 = ColourPiece::endpoint(piece, 0), word1 = ColourPiece::endpoint(piece, 1);
        Colour const first = endpointColour(word0), second = endpointColour(word1);
        Palette const four = fourColours(first, second), three = threeColoursAndBlack(first, second);
        std::array<Ints, 4> redAndGreen, blue;
        unrolled<4>([&](auto i) {
            redAndGreen[i] =
                chosen(word0 > word1, four[i].red | four[i].green << 8, three[i].red | three[i].green << 8);
            blue[i] = chosen(word0 > word1, four[i].blue, three[i].blue);
        });
        Choice<2> const redsAndGreens(redAndGreen), blues(blue);

        Shorts const indices = Shorts(ColourPiece::indices(piece));
        Pairs<ColourPair> pixels;
        unrolled<blockPixels / 2>([&](auto i) {
            Shorts const both = redsAndGreens.at(indices, 2 * i);
            pixels[i] = {both & 0xff, both >> 8 & 0xff, blues.at(indices, 2 * i)};
        });
        return pixels;
    }
};

struct YCoCgDxt5Decoder {
    static constexpr int pieces = 2;

    static Pairs<ColourPair> decode(std::array<Ints, 4> const& words) {
        std::array<Ints, 2> const lumaPiece{words[0], words[1]}, colourPiece{words[2], words[3]};
        Choice<3> const lumas(
            lumaSteps(LumaPiece::endpoint(lumaPiece, 0), LumaPiece::endpoint(lumaPiece, 1)));
        // Always four colours: the order of the endpoints says nothing here.
        auto const colours = fourColours(endpointColour(ColourPiece::endpoint(colourPiece, 0)),
                                         endpointColour(ColourPiece::endpoint(colourPiece, 1)));
        std::array<Ints, 4> coValues, cgValues;
        unrolled<4>([&](auto i) {
            Floats const scale((colours[i].blue >> 3) + 1);
            coValues[i] = unscaled(colours[i].red, scale);
            cgValues[i] = unscaled(colours[i].green, scale);
        });
        Choice<2> const cos(coValues), cgs(cgValues);

        auto const lumaIndices = pairedIndices(lumaPiece);
        Shorts const indices = Shorts(ColourPiece::indices(colourPiece));
        Pairs<ColourPair> pixels;
        unrolled<blockPixels / 2>([&](auto i) {
            Shorts const luma = lumas.at(lumaIndices[i / 5], i % 5 * 3);
            ColourPair pair;
            YCoCgToRgb<Shorts>(luma, cos.at(indices, 2 * i), cgs.at(indices, 2 * i), pair.red, pair.green,
                               pair.blue);
            pixels[i] = {saturated(pair.red), saturated(pair.green), saturated(pair.blue)};
        });
        return pixels;
    }

private:
    /// Those of the pixels 0..4 and 5..7 in the lower halves, of 8..12 and 13..15 in the upper ones.
    static std::array<Shorts, 2> pairedIndices(std::array<Ints, 2> const& piece) {
        auto const inHalves = [&](int pixel) {
            return Shorts((LumaPiece::indicesFrom(piece, pixel) & 0xffff) |
                          LumaPiece::indicesFrom(piece, pixel + 8) << 16);
        };
        return {inHalves(0), inHalves(5)};
    }

    /// Chroma around 0, its scale taken back, rounded towards zero: quotients of such small numbers are
    /// whole, or far from it.
    static Ints unscaled(Ints chroma, Floats scale) { return truncated(Floats(chroma - 128) / scale); }

    static Shorts saturated(Shorts const& value) { return max(min(value, 255), 0); }
};

} // namespace
} // namespace MediaConversion::Dxt
