// The block encoder, step by step: a fixed number of integer operations, without search, so that a frame is
// compressed at the rate of playback. All values fit 16 bits.
#pragma once

#include <MediaConversion/converters/ColourTransforms.h>
#include <MediaConversion/converters/DxtBlocks.h>
#include <MediaConversion/converters/kernels/Bytes.h>
#include <MediaConversion/converters/kernels/Unrolled.h>

#include <array>
#include <cstddef>

namespace MediaConversion::Dxt {
namespace {

/// The pixels of a block as 8-bit samples.
template <class Int>
struct RgbPixels {
    Channel<Int> red, green, blue;
};

/// Pixels for a YCoCg-DXT5 block: Co and Cg around 0.
template <class Int>
struct YCoCgPixels {
    Channel<Int> y, co, cg;
};

/// The smallest and the largest value of a channel in a block.
template <class Int>
struct Bounds {
    Int min, max;
};

/// One component of the two endpoints, between which the values of a block are interpolated. They are never
/// put into order: decoders read the mode of a block from it.
template <class Int>
struct Endpoints {
    Int first, second;
};

template <class Int>
YCoCgPixels<Int> toYCoCg(RgbPixels<Int> const& rgb) {
    YCoCgPixels<Int> pixels;
    for (int i = 0; i < blockPixels; ++i) {
        RgbToYCoCg(rgb.red[i], rgb.green[i], rgb.blue[i], pixels.y[i], pixels.co[i], pixels.cg[i]);
        // The transform's -127..128 leaves a byte at the upper end only.
        pixels.co[i] = min(pixels.co[i], Int(127));
        pixels.cg[i] = min(pixels.cg[i], Int(127));
    }
    return pixels;
}

template <class Int, std::size_t count>
Bounds<Int> boundingBox(std::array<Int, count> const& values) {
    Bounds<Int> bounds{values[0], values[0]};
    for (Int const& value : values)
        bounds = {min(bounds.min, value), max(bounds.max, value)};
    return bounds;
}

/// 1, 2 or 4: what the chroma of a block can be multiplied with and still be bytes around 128. Blocks of
/// little colour keep more of it through the quantisation.
template <class Int>
Int chromaScale(Bounds<Int> const& co, Bounds<Int> const& cg) {
    Int const extent = max(max(abs(co.min), abs(co.max)), max(abs(cg.min), abs(cg.max)));
    return 4 - (((extent > 63) & 1) + ((extent > 31) & 2));
}

/// What chroma of 0 is as a byte.
constexpr int neutral = 128;

/// Scales the pixels and gives their bounds as bytes.
template <class Int>
Bounds<Int> scaleChroma(Channel<Int>& chroma, Bounds<Int> const& bounds, Int const& scale) {
    for (Int& value : chroma)
        value = value * scale;
    return {bounds.min * scale + neutral, bounds.max * scale + neutral};
}

/// The bounds moved inwards by 1 / 2^shift of their distance, less half a step: outliers cost the rest of the
/// block less. Bounds closer than half a step move apart, so that a flat block has two endpoints. The maximum
/// cannot pass 255.
template <int shift, class Int>
Bounds<Int> insetRounded(Bounds<Int> const& bounds) {
    Int const amount = (bounds.max - bounds.min) - ((1 << (shift - 1)) - 1);
    return {max(((bounds.min << shift) + amount) >> shift, Int(0)),
            ((bounds.max << shift) - amount) >> shift};
}

/// The bounds moved inwards by a sixteenth of their distance; they stay in 0..255.
template <class Int>
Bounds<Int> inset(Bounds<Int> const& bounds) {
    Int const amount = (bounds.max - bounds.min) >> 4;
    return {bounds.min + amount, bounds.max - amount};
}

/// The 8-bit value that stands for the high `bits` bits of another: they are repeated below themselves.
template <int bits, class Int>
Int quantised(Int const& value) {
    return (value & (256 - (256 >> bits))) | (value >> bits);
}

template <int bits, class Int>
Endpoints<Int> quantisedEndpoints(Bounds<Int> const& bounds) {
    return {quantised<bits>(bounds.max), quantised<bits>(bounds.min)};
}

/// Chooses the diagonal of the box of Co and Cg. Where the one is mostly large while the other is small, it
/// runs from large Co and small Cg to small Co and large Cg.
template <class Int>
void chooseDiagonal(YCoCgPixels<Int> const& pixels, Endpoints<Int> const& co, Endpoints<Int>& cg) {
    // The largest values below the middles.
    auto const low = [](Endpoints<Int> const& ends) {
        return ((ends.first + ends.second - 1) >> 1) - neutral;
    };
    Int const lowCo = low(co), lowCg = low(cg);
    Int opposed = 0;
    unrolled<blockPixels>(
        [&](auto i) { opposed = opposed - ((pixels.co[i] > lowCo) ^ (pixels.cg[i] > lowCg)); });
    Int const exchange = (cg.first - cg.second) & (opposed > blockPixels / 2);
    cg = {cg.first - exchange, cg.second + exchange};
}

/// The limits up to which (inclusive) luma belongs below one step of the interpolation: each step plus about
/// half the distance to the next.
template <class Int>
std::array<Int, 7> lumaThresholds(Bounds<Int> const& luma) {
    Int const half = (luma.max - luma.min) / 14;
    std::array<Int, 7> thresholds;
    for (int step = 1; step <= 7; ++step)
        thresholds[step - 1] = ((7 - step) * luma.max + step * luma.min) / 7 + half;
    return thresholds;
}

/// Values of the pixels i and i + 8 of every block.
using LumaPairs = std::array<Bytes, blockPixels / 2>;

inline LumaPairs paired(Channel<Shorts> const& luma) {
    LumaPairs pairs;
    unrolled<blockPixels / 2>([&](auto i) { pairs[i] = Bytes(luma[i], luma[i + blockPixels / 2]); });
    return pairs;
}

inline Bounds<Shorts> boundingBox(LumaPairs const& pairs) {
    auto const bounds = boundingBox<Bytes, blockPixels / 2>(pairs);
    Shorts const lowest = bounds.min.shorts(), highest = bounds.max.shorts();
    return {min(lowerBytes(lowest), upperBytes(lowest)), max(lowerBytes(highest), upperBytes(highest))};
}

/// The indices of 3 bits as words, pixel 0 lowest. The steps have, from the minimum upwards, the indices 1,
/// then 7 down to 2, then 0: each threshold that luma is above adds the difference.
inline std::array<Shorts, 3> lumaIndices(LumaPairs const& luma, Bounds<Shorts> const& bounds) {
    auto const limits = lumaThresholds(bounds);
    std::array<Bytes, 7> thresholds;
    unrolled<7>([&](auto i) { thresholds[i] = Bytes(limits[i], limits[i]); });
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
template <class Int>
using Steps = std::array<Int, 4>;

template <class Int>
Steps<Int> steps(Endpoints<Int> const& ends) {
    return {ends.first, ends.second, (2 * ends.first + ends.second) / 3, (ends.first + 2 * ends.second) / 3};
}

template <class Int>
Steps<Int> chromaSteps(Endpoints<Int> const& ends) {
    auto values = steps(ends);
    for (Int& value : values)
        value = value - neutral;
    return values;
}

/// The indices of the nearest colours of the palette, by the sum of the components' distances: 2 bits each as
/// words, pixel 0 lowest.
template <class Int, std::size_t components>
std::array<Int, 2> colourIndices(std::array<Channel<Int> const*, components> const& channels,
                                 std::array<Steps<Int>, components> const& steps) {
    std::array<Int, 2> words{0, 0};
    unrolled<blockPixels>([&](auto i) {
        std::array<Int, 4> distance;
        distance.fill(0);
        for (std::size_t c = 0; c < components; ++c)
            for (int k = 0; k < 4; ++k)
                distance[k] = distance[k] + abs(steps[c][k] - (*channels[c])[i]);

        Int const isThird = min(distance[0], distance[2]) > distance[3];
        Int const isBetween = min(distance[0], distance[1]) > min(distance[2], distance[3]);
        constexpr int shift = 2 * i % 16;
        words[i / 8] = words[i / 8] | (isThird & 1 << shift) | (isBetween & 2 << shift);
    });
    return words;
}

/// Luma with eight steps of its own; Co and Cg, scaled to use the bits of the endpoints, with four.
struct YCoCgDxt5Encoder {
    static constexpr int pieces = 2;

    template <class Int>
    static std::array<Piece<Int>, pieces> encode(RgbPixels<Int> const& rgb) {
        YCoCgPixels<Int> pixels = toYCoCg(rgb);
        auto const coBounds = boundingBox(pixels.co), cgBounds = boundingBox(pixels.cg);
        auto const lumas = paired(pixels.y);
        auto const luma = insetRounded<5>(boundingBox(lumas));

        Int const scale = chromaScale(coBounds, cgBounds);
        auto const co = quantisedEndpoints<5>(insetRounded<4>(scaleChroma(pixels.co, coBounds, scale)));
        auto cg = quantisedEndpoints<6>(insetRounded<4>(scaleChroma(pixels.cg, cgBounds, scale)));
        chooseDiagonal(pixels, co, cg);

        Int const scaleCode = (scale - 1) << 3;
        return {LumaPiece::pack(luma.max, luma.min, lumaIndices(lumas, luma)),
                ColourPiece::pack(
                    Rgb565::pack(co.first, cg.first, scaleCode),
                    Rgb565::pack(co.second, cg.second, scaleCode),
                    colourIndices<Int, 2>({&pixels.co, &pixels.cg}, {chromaSteps(co), chromaSteps(cg)}))};
    }
};

struct Dxt1Encoder {
    static constexpr int pieces = 1;

    template <class Int>
    static std::array<Piece<Int>, pieces> encode(RgbPixels<Int> const& rgb) {
        auto const red = quantisedEndpoints<5>(inset(boundingBox(rgb.red)));
        auto const green = quantisedEndpoints<6>(inset(boundingBox(rgb.green)));
        auto const blue = quantisedEndpoints<5>(inset(boundingBox(rgb.blue)));
        return {ColourPiece::pack(Rgb565::pack(red.first, green.first, blue.first),
                                  Rgb565::pack(red.second, green.second, blue.second),
                                  colourIndices<Int, 3>({&rgb.red, &rgb.green, &rgb.blue},
                                                        {steps(red), steps(green), steps(blue)}))};
    }
};

} // namespace
} // namespace MediaConversion::Dxt
