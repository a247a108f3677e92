// The block encoder, step by step: a fixed number of integer operations, without search, so that a frame is
// compressed at the rate of playback. All values fit 16 bits.
#pragma once

#include <MediaConversion/converters/kernels/Bytes.h>
#include <MediaConversion/converters/kernels/DxtBlocks.h>
#include <MediaConversion/converters/kernels/Unrolled.h>

#include <array>
#include <cstddef>

namespace MediaConversion::Dxt {
namespace {

/// A channel in bytes: the values of the pixels i and i + 8 of a block stand side by side.
using Pairs = std::array<Bytes, blockPixels / 2>;

/// The pixels of a block as 8-bit samples.
template <class Values>
struct RgbPixels {
    Values red, green, blue;
};

/// Pixels for a YCoCg-DXT5 block: Co and Cg around 128.
struct YCoCgPixels {
    Pairs y, co, cg;
};

inline Bytes inBothBytes(Shorts const& value) { return Bytes(value, value); }

/// The smallest and the largest value of a channel in a block.
template <class Int>
struct Bounds {
    Int min, max;
};

/// One component of the two endpoints, between which the values of a block are interpolated. They are never
/// put into order: decoders read the mode of a block from it.
struct Endpoints {
    Shorts first, second;
};

/// 128 more than half the difference, rounded up: the mean of `b` and 255 - `a` is 128 + (b - a) / 2, rounded
/// down. Half of 255 leaves a byte.
inline Bytes halfDifference(Bytes const& a, Bytes const& b) { return limitedSum(~mean(b, ~a), 1); }

/// What RgbToYCoCg gives, with 128 added to Co and Cg, in bytes. Its quarters are halves of halves: the mean
/// of red and blue is rounded up where it is taken away and down where it is added, after which the second
/// rounding gives what one of the quarter would.
inline YCoCgPixels toYCoCg(RgbPixels<Pairs> const& rgb) {
    YCoCgPixels pixels;
    unrolled<blockPixels / 2>([&](auto i) {
        Bytes const red = rgb.red[i], green = rgb.green[i], blue = rgb.blue[i];
        pixels.y[i] = mean(green, ~mean(~red, ~blue));
        pixels.co[i] = halfDifference(red, blue);
        pixels.cg[i] = halfDifference(green, mean(red, blue));
    });
    return pixels;
}

template <class Int, std::size_t count>
Bounds<Int> boundingBox(std::array<Int, count> const& values) {
    Bounds<Int> bounds{values[0], values[0]};
    for (Int const& value : values)
        bounds = {min(bounds.min, value), max(bounds.max, value)};
    return bounds;
}

/// Of the pairs' first and second values.
inline Bounds<Shorts> boundsOf(Pairs const& pairs) {
    auto const [lowest, highest] = boundingBox(pairs);
    return {min(lowerBytes(lowest.shorts()), upperBytes(lowest.shorts())),
            max(lowerBytes(highest.shorts()), upperBytes(highest.shorts()))};
}

/// What chroma of 0 is as a byte.
constexpr int neutral = 128;

/// 1, 2 or 4: what the chroma of a block can be multiplied with and still be bytes around 128. Blocks of
/// little colour keep more of it through the quantisation.
inline Shorts chromaScale(Bounds<Shorts> const& co, Bounds<Shorts> const& cg) {
    auto const extent = [](Bounds<Shorts> const& bounds) {
        return max(abs(bounds.min - neutral), abs(bounds.max - neutral));
    };
    Shorts const most = max(extent(co), extent(cg));
    return 4 - (((most > 63) & 1) + ((most > 31) & 2));
}

/// Scales the pixels and gives their bounds.
inline Bounds<Shorts> scaleChroma(Pairs& chroma, Bounds<Shorts> const& bounds, Shorts const& scale) {
    Bytes const isDoubled((scale > 1).ints()), isDoubledAgain((scale > 2).ints());
    for (Bytes& value : chroma) {
        Bytes const doubled = (value ^ neutral) + ((value ^ neutral) & isDoubled);
        value = (doubled + (doubled & isDoubledAgain)) ^ neutral;
    }
    auto const scaled = [&](Shorts const& bound) { return (bound - neutral) * scale + neutral; };
    return {scaled(bounds.min), scaled(bounds.max)};
}

/// The bounds moved inwards by 1 / 2^shift of their distance, less half a step: outliers cost the rest of the
/// block less. Bounds closer than half a step move apart, so that a flat block, of 0 excepted, has two
/// endpoints. The maximum cannot pass 255.
template <int shift>
Bounds<Shorts> insetRounded(Bounds<Shorts> const& bounds) {
    Shorts const amount = (bounds.max - bounds.min) - ((1 << (shift - 1)) - 1);
    return {max(((bounds.min << shift) + amount) >> shift, 0), ((bounds.max << shift) - amount) >> shift};
}

/// The bounds moved inwards by a sixteenth of their distance; they stay in 0..255.
inline Bounds<Shorts> inset(Bounds<Shorts> const& bounds) {
    Shorts const amount = (bounds.max - bounds.min) >> 4;
    return {bounds.min + amount, bounds.max - amount};
}

/// The 8-bit value that stands for the high `bits` bits of another: they are repeated below themselves.
template <int bits>
Shorts quantised(Shorts const& value) {
    return (value & (256 - (256 >> bits))) | (value >> bits);
}

template <int bits>
Endpoints quantisedEndpoints(Bounds<Shorts> const& bounds) {
    return {quantised<bits>(bounds.max), quantised<bits>(bounds.min)};
}

/// Chooses the diagonal of the box of Co and Cg: where the one is mostly large while the other is small, it
/// runs from large Co and small Cg to small Co and large Cg. Returns where Cg's endpoints were exchanged.
inline Shorts chooseDiagonal(YCoCgPixels const& pixels, Endpoints const& co, Endpoints& cg) {
    auto const middle = [](Endpoints const& ends) {
        return inBothBytes((ends.first + ends.second + 1) >> 1);
    };
    Bytes const middleCo = middle(co), middleCg = middle(cg);
    Bytes opposed = 0;
    unrolled<blockPixels / 2>(
        [&](auto i) { opposed = opposed - ((middleCo > pixels.co[i]) ^ (middleCg > pixels.cg[i])); });
    Shorts const isExchanged = lowerBytes(opposed.shorts()) + upperBytes(opposed.shorts()) > blockPixels / 2;
    Shorts const exchange = (cg.first - cg.second) & isExchanged;
    cg = {cg.first - exchange, cg.second + exchange};
    return isExchanged;
}

/// The limits up to which (inclusive) luma belongs below one step of the interpolation: each step plus about
/// half the distance to the next.
inline std::array<Shorts, 7> lumaThresholds(Bounds<Shorts> const& luma) {
    Shorts const half = (luma.max - luma.min) / 14;
    std::array<Shorts, 7> thresholds;
    for (int step = 1; step <= 7; ++step)
        thresholds[step - 1] = ((7 - step) * luma.max + step * luma.min) / 7 + half;
    return thresholds;
}

/// The indices of 3 bits as words, pixel 0 lowest. The steps have, from the minimum upwards, the indices 1,
/// then 7 down to 2, then 0: each threshold that luma is above adds the difference.
inline std::array<Shorts, 3> lumaIndices(Pairs const& luma, Bounds<Shorts> const& bounds) {
    auto const limits = lumaThresholds(bounds);
    std::array<Bytes, 7> thresholds;
    unrolled<7>([&](auto i) { thresholds[i] = inBothBytes(limits[i]); });
    auto const index = [&](Bytes const& value) {
        Bytes sum = 1 + ((value > thresholds[6]) & 6);
        unrolled<5>([&](auto step) { sum = sum + (value > thresholds[5 - step]); });
        return (sum - ((value > thresholds[0]) & 2)).shorts();
    };
    std::array<Shorts, 3> words{0, 0, 0};
    unrolled<4>([&](auto i) {
        Shorts const sixBits = index(luma[2 * i]) | index(luma[2 * i + 1]) << 3;
        auto const put = [&](auto bit, Shorts const& bits) {
            constexpr int word = bit / 16, shift = bit % 16;
            words[word] = words[word] | bits << shift;
            if constexpr (shift > 10)
                words[word + 1] = words[word + 1] | bits >> (16 - shift);
        };
        put(std::integral_constant<int, 6 * i>(), lowerBytes(sixBits));
        put(std::integral_constant<int, 6 * i + 24>(), upperBytes(sixBits));
    });
    return words;
}

/// The values that a component takes with the indices 0..3.
using Steps = std::array<Shorts, 4>;

inline Steps steps(Endpoints const& ends) {
    return {ends.first, ends.second, (2 * ends.first + ends.second) / 3, (ends.first + 2 * ends.second) / 3};
}

/// The indices of the nearest colours of Co and Cg, by the sum of both distances: 2 bits each as words, pixel
/// 0 lowest.
///
/// Limited to the box of the endpoints, a pixel is nearer to all four colours by the same distance. Sums are
/// limited to 255, which changes no index: those of the two endpoints add up to at most twice 255, so that
/// the smaller one is as it should be, and so is the fourth colour's wherever it is smaller than the first's.
inline std::array<Shorts, 2> chromaIndices(YCoCgPixels const& pixels, Steps const& coSteps,
                                           Steps const& cgSteps, Shorts const& isExchanged) {
    // Cg's endpoints that were exchanged are mirrored with all values, so that the first is the larger one.
    Bytes const mirror(isExchanged.ints());
    std::array<Bytes, 4> co, cg;
    unrolled<4>([&](auto k) {
        co[k] = inBothBytes(coSteps[k]);
        cg[k] = inBothBytes(cgSteps[k]) ^ mirror;
    });
    auto const distance = [](Bytes const& a, Bytes const& b) {
        return limitedDifference(a, b) | limitedDifference(b, a);
    };
    auto const isLarger = [](Bytes const& a, Bytes const& b) { return min(limitedDifference(a, b), 1); };
    auto const index = [&](auto i) {
        Bytes const x = max(min(pixels.co[i], co[0]), co[1]);
        Bytes const y = max(min(pixels.cg[i] ^ mirror, cg[0]), cg[1]);
        Bytes const first = limitedSum(co[0] - x, cg[0] - y), second = limitedSum(x - co[1], y - cg[1]);
        Bytes const third = limitedSum(distance(co[2], x), distance(cg[2], y));
        Bytes const fourth = limitedSum(distance(co[3], x), distance(cg[3], y));
        Bytes const isBetween = isLarger(min(first, second), min(third, fourth));
        return isLarger(min(first, third), fourth) + isBetween + isBetween;
    };
    std::array<Shorts, 2> fourPixels{0, 0};
    unrolled<blockPixels / 2>([&](auto i) {
        constexpr int shift = 2 * i % 8;
        fourPixels[i / 4] = fourPixels[i / 4] | index(i).shorts() << shift;
    });
    return {lowerBytes(fourPixels[0]) | fourPixels[1] << 8,
            upperBytes(fourPixels[0]) | (fourPixels[1] & ~0xff)};
}

/// The indices of the nearest colours of the palette, by the sum of the components' distances: 2 bits each as
/// words, pixel 0 lowest.
inline std::array<Shorts, 2> colourIndices(RgbPixels<Channel> const& rgb, Steps const& red,
                                           Steps const& green, Steps const& blue) {
    std::array<Shorts, 2> words{0, 0};
    unrolled<blockPixels>([&](auto i) {
        std::array<Shorts, 4> distance;
        for (int k = 0; k < 4; ++k)
            distance[k] =
                abs(red[k] - rgb.red[i]) + abs(green[k] - rgb.green[i]) + abs(blue[k] - rgb.blue[i]);

        Shorts const isThird = min(distance[0], distance[2]) > distance[3];
        Shorts const isBetween = min(distance[0], distance[1]) > min(distance[2], distance[3]);
        constexpr int shift = 2 * i % 16;
        words[i / 8] = words[i / 8] | (isThird & 1 << shift) | (isBetween & 2 << shift);
    });
    return words;
}

/// Luma with eight steps of its own; Co and Cg, scaled to use the bits of the endpoints, with four.
struct YCoCgDxt5Encoder : Block<2> {
    using Values = Pairs;

    static std::array<Piece, pieces> encode(RgbPixels<Values> const& rgb) {
        YCoCgPixels pixels = toYCoCg(rgb);
        auto const coBounds = boundsOf(pixels.co), cgBounds = boundsOf(pixels.cg);
        auto const luma = insetRounded<5>(boundsOf(pixels.y));

        Shorts const scale = chromaScale(coBounds, cgBounds), scaleCode = (scale - 1) << 3;
        auto const co = quantisedEndpoints<5>(insetRounded<4>(scaleChroma(pixels.co, coBounds, scale)));
        auto cg = quantisedEndpoints<6>(insetRounded<4>(scaleChroma(pixels.cg, cgBounds, scale)));
        Shorts const isExchanged = chooseDiagonal(pixels, co, cg);

        return {LumaPiece::pack(luma.max, luma.min, lumaIndices(pixels.y, luma)),
                ColourPiece::pack(Rgb565::pack(co.first, cg.first, scaleCode),
                                  Rgb565::pack(co.second, cg.second, scaleCode),
                                  chromaIndices(pixels, steps(co), steps(cg), isExchanged))};
    }
};

struct Dxt1Encoder : Block<1> {
    using Values = Channel;

    static std::array<Piece, pieces> encode(RgbPixels<Values> const& rgb) {
        auto const red = quantisedEndpoints<5>(inset(boundingBox(rgb.red)));
        auto const green = quantisedEndpoints<6>(inset(boundingBox(rgb.green)));
        auto const blue = quantisedEndpoints<5>(inset(boundingBox(rgb.blue)));
        return {ColourPiece::pack(Rgb565::pack(red.first, green.first, blue.first),
                                  Rgb565::pack(red.second, green.second, blue.second),
                                  colourIndices(rgb, steps(red), steps(green), steps(blue)))};
    }
};

} // namespace
} // namespace MediaConversion::Dxt
