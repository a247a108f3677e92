// The block decoder: what graphics hardware shows of a block, whoever encoded it.
#pragma once

#include <MediaConversion/converters/kernels/Bytes.h>
#include <MediaConversion/converters/kernels/DxtBlocks.h>
#include <MediaConversion/converters/kernels/Unrolled.h>

#include <array>

namespace MediaConversion::Dxt {
namespace {

/// A component of both endpoints of every block: the first one's in the lower half of each lane, the second
/// one's in the upper half.
using Ends = Shorts;

/// The endpoints change places.
inline Ends exchanged(Ends const& ends) { return Ends(ends.ints() << 16 | (ends.ints() >> 16 & 0xffff)); }

/// The means of each endpoint and the other, with weights, rounded down.
template <int own, int other>
Ends mixed(Ends const& ends) {
    return (ends * own + exchanged(ends) * other) / (own + other);
}

/// The 8-bit value of a code of `bits` bits, 5 or 6: 255 * code / (2^bits - 1), rounded without a division.
/// The codes 20, 25 and 29 of 5 bits and 53 of 6 bits come out one below the nearest.
template <int bits>
Ends expanded(Ends const& code) {
    Ends const scaled = code * 255 + (1 << (bits - 1));
    return (scaled + (scaled >> bits)) >> bits;
}

/// 8-bit components.
struct Colours {
    Ends red, green, blue;
};

inline Colours endpointColours(std::array<Ints, 2> const& piece) {
    Ends const words(ColourPiece::endpoints(piece));
    return {expanded<5>(Rgb565::red(words)), expanded<6>(Rgb565::green(words)),
            expanded<5>(Rgb565::blue(words))};
}

/// Two numbers below 256 as the lower two bytes of one.
inline Ints bytesOf(Ends const& ends) { return (ends.ints() | ends.ints() >> 8) & 0xffff; }

/// The four numbers that indices choose from, as bytes: those of the endpoints and two others.
inline Ints tableOf(Ends const& ends, Ends const& others) { return bytesOf(ends) | bytesOf(others) << 16; }

/// The lowest four indices of `bits` bits each as bytes.
template <int bits>
Ints indicesInBytes(Ints const& indices) {
    constexpr int one = (1 << bits) - 1, two = (1 << 2 * bits) - 1;
    Ints const pairs = (indices & two) | (indices << (16 - 2 * bits) & two << 16);
    return (pairs | pairs << (8 - bits)) & one * 0x01010101;
}

/// The values of a luma piece's indices, four bytes each: eight steps, or six steps, 0 and 255, as the
/// endpoints' order says.
struct LumaTables {
    Ints low, high;

    explicit LumaTables(std::array<Ints, 2> const& piece) {
        Ints const first = LumaPiece::endpoint(piece, 0), second = LumaPiece::endpoint(piece, 1);
        Ends const ends(first | second << 16);
        auto const firsts = [](Ends const& a, Ends const& b) {
            return (a.ints() & 0xff) | (b.ints() & 0xff) << 8;
        };
        auto const seconds = [](Ends const& a, Ends const& b) {
            return a.ints() >> 16 | b.ints() >> 16 << 8;
        };
        Ends const step1of7 = mixed<6, 1>(ends), step2of7 = mixed<5, 2>(ends), step3of7 = mixed<4, 3>(ends);
        Ends const step1of5 = mixed<4, 1>(ends), step2of5 = mixed<3, 2>(ends);
        auto const isEight = first > second;
        low = bytesOf(ends) | chosen(isEight, firsts(step1of7, step2of7), firsts(step1of5, step2of5)) << 16;
        high = chosen(isEight, bytesOf(step3of7) | seconds(step2of7, step1of7) << 16,
                      seconds(step2of5, step1of5) | static_cast<int>(0xff000000));
    }
};

/// The rows of a block.
using PixelRows = std::array<PixelBytes, blockSize>;

struct Dxt1Decoder : Block<1> {
    static PixelRows decode(std::array<Ints, 2> const& piece) {
        auto const [red, green, blue] = endpointColours(piece);
        Ints const words = ColourPiece::endpoints(piece);
        Ints const isFour = (words & 0xffff) > (words >> 16 & 0xffff);
        auto const table = [&](Ends const& ends) {
            // Four colours, or three and black.
            return tableOf(ends,
                           Ends(chosen(isFour, mixed<2, 1>(ends).ints(), mixed<1, 1>(ends).ints() & 0xffff)));
        };
        Ints const reds = table(red), greens = table(green), blues = table(blue);

        PixelRows pixels;
        unrolled<blockSize>([&](auto y) {
            Ints const places = indicesInBytes<2>(ColourPiece::indices(piece) >> 8 * y);
            pixels[y] = {bytesAt(reds, places), bytesAt(greens, places), bytesAt(blues, places)};
        });
        return pixels;
    }
};

struct YCoCgDxt5Decoder : Block<2> {
    static PixelRows decode(std::array<Ints, 4> const& words) {
        std::array<Ints, 2> const lumaPiece{words[0], words[1]}, colourPiece{words[2], words[3]};
        LumaTables const lumas(lumaPiece);
        // Always four colours: the order of the endpoints says nothing here.
        auto const colours = endpointColours(colourPiece);
        Chroma const ends(colours),
            others({mixed<2, 1>(colours.red), mixed<2, 1>(colours.green), mixed<2, 1>(colours.blue)});
        // Red is y + co - cg, green y + cg and blue y - (co + cg). Bytes have no sign: what is added to luma
        // is the difference of two.
        auto const table = [&](auto const& value) { return tableOf(value(ends), value(others)); };
        Ints const cos = table([](Chroma const& chroma) { return chroma.co + 128; });
        Ints const cgs = table([](Chroma const& chroma) { return chroma.cg + 128; });
        Ints const sums = table([](Chroma const& chroma) { return max(chroma.co + chroma.cg, 0); });
        Ints const negativeSums =
            table([](Chroma const& chroma) { return max(min(0 - chroma.co - chroma.cg, 255), 0); });

        PixelRows pixels;
        unrolled<blockSize>([&](auto y) {
            Bytes const luma(bytesAt(lumas.low, lumas.high,
                                     indicesInBytes<3>(LumaPiece::indicesFrom(lumaPiece, blockSize * y))));
            Ints const places = indicesInBytes<2>(ColourPiece::indices(colourPiece) >> 8 * y);
            Bytes const co(bytesAt(cos, places)), cg(bytesAt(cgs, places));
            pixels[y] = {
                shifted(luma, co, cg).ints(), shifted(luma, cg, 128).ints(),
                shifted(luma, Bytes(bytesAt(negativeSums, places)), Bytes(bytesAt(sums, places))).ints()};
        });
        return pixels;
    }

private:
    /// luma + a - b, limited.
    static Bytes shifted(Bytes const& luma, Bytes const& a, Bytes const& b) {
        return limitedDifference(limitedSum(luma, limitedDifference(a, b)), limitedDifference(b, a));
    }

    /// Co and Cg of two colours, around 0: their scale is taken back, rounded towards zero.
    struct Chroma {
        Ends co, cg;

        explicit Chroma(Colours const& colours) {
            Ends const scale = (colours.blue >> 3) + 1;
            // A bit too large, so that whole quotients do not come out below.
            Floats const first = (1 + 1.0 / 65536) / Floats(scale.ints() & 0xffff);
            Floats const second = (1 + 1.0 / 65536) / Floats(scale.ints() >> 16);
            auto const unscaled = [&](Ends const& chroma) {
                Ints const both = (chroma - 128).ints();
                return Ends((truncated(Floats(both << 16 >> 16) * first) & 0xffff) |
                            truncated(Floats(both >> 16) * second) << 16);
            };
            co = unscaled(colours.red);
            cg = unscaled(colours.green);
        }
    };
};

} // namespace
} // namespace MediaConversion::Dxt
