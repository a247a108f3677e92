// The block decoder: what graphics hardware shows of a block, whoever encoded it.
#pragma once

#include <MediaConversion/converters/ColourTransforms.h>
#include <MediaConversion/converters/DxtBlocks.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace MediaConversion::Dxt {

/// 8-bit components.
struct Colour {
    int red, green, blue;
};

/// The four colours that a colour piece's indices choose from.
using Palette = std::array<Colour, 4>;

/// The 8-bit value of a code of `bits` bits, 5 or 6: 255 * code / (2^bits - 1), rounded without a division.
/// The codes 20, 25 and 29 of 5 bits and 53 of 6 bits come out one below the nearest.
template <int bits>
int expanded(int code) {
    int const scaled = 255 * code + (1 << (bits - 1));
    return (scaled + (scaled >> bits)) >> bits;
}

inline Colour endpointColour(int word) {
    return {expanded<5>(Rgb565::red(word)), expanded<6>(Rgb565::green(word)),
            expanded<5>(Rgb565::blue(word))};
}

/// The weighted mean of two colours, rounded down.
inline Colour mixed(Colour const& a, int aWeight, Colour const& b, int bWeight) {
    auto const mean = [&](int x, int y) { return (aWeight * x + bWeight * y) / (aWeight + bWeight); };
    return {mean(a.red, b.red), mean(a.green, b.green), mean(a.blue, b.blue)};
}

inline Palette fourColours(Colour const& first, Colour const& second) {
    return {first, second, mixed(first, 2, second, 1), mixed(first, 1, second, 2)};
}

inline Palette threeColoursAndBlack(Colour const& first, Colour const& second) {
    return {first, second, mixed(first, 1, second, 1), Colour{0, 0, 0}};
}

/// The values of a luma piece's indices: eight steps, or six steps, 0 and 255, as the endpoints' order says.
inline std::array<int, 8> lumaSteps(int first, int second) {
    std::array<int, 8> values{first, second};
    int const intervals = first > second ? 7 : 5;
    for (int step = 1; step < intervals; ++step)
        values[step + 1] = ((intervals - step) * first + step * second) / intervals;
    if (intervals == 5) {
        values[6] = 0;
        values[7] = 255;
    }
    return values;
}

inline int saturated(int value) { return std::clamp(value, 0, 255); }

struct Dxt1Decoder {
    static constexpr int pieces = 1;

    static Channel<Colour> decode(std::uint8_t const* bytes) {
        std::uint64_t const piece = readPiece(bytes);
        int const word0 = ColourPiece::endpoint(piece, 0), word1 = ColourPiece::endpoint(piece, 1);
        Colour const first = endpointColour(word0), second = endpointColour(word1);
        Palette const palette =
            word0 > word1 ? fourColours(first, second) : threeColoursAndBlack(first, second);

        Channel<Colour> pixels;
        for (int i = 0; i < blockPixels; ++i)
            pixels[i] = palette[ColourPiece::index(piece, i)];
        return pixels;
    }
};

struct YCoCgDxt5Decoder {
    static constexpr int pieces = 2;

    /// Co and Cg around 0, their scale taken back. The divisions round towards zero.
    struct Chroma {
        int co, cg;
    };

    static Chroma chromaOf(Colour const& colour) {
        int const scale = (colour.blue >> 3) + 1;
        return {(colour.red - 128) / scale, (colour.green - 128) / scale};
    }

    static Channel<Colour> decode(std::uint8_t const* bytes) {
        std::uint64_t const lumaPiece = readPiece(bytes), colourPiece = readPiece(bytes + pieceBytes);
        auto const lumas = lumaSteps(LumaPiece::endpoint(lumaPiece, 0), LumaPiece::endpoint(lumaPiece, 1));
        // Always four colours: the order of the endpoints says nothing here.
        auto const colours = fourColours(endpointColour(ColourPiece::endpoint(colourPiece, 0)),
                                         endpointColour(ColourPiece::endpoint(colourPiece, 1)));
        std::array<Chroma, 4> chromas;
        std::transform(colours.begin(), colours.end(), chromas.begin(), chromaOf);

        Channel<Colour> pixels;
        for (int i = 0; i < blockPixels; ++i) {
            Chroma const& chroma = chromas[ColourPiece::index(colourPiece, i)];
            Colour colour;
            YCoCgToRgb(lumas[LumaPiece::index(lumaPiece, i)], chroma.co, chroma.cg, colour.red, colour.green,
                       colour.blue);
            pixels[i] = {saturated(colour.red), saturated(colour.green), saturated(colour.blue)};
        }
        return pixels;
    }
};

} // namespace MediaConversion::Dxt
