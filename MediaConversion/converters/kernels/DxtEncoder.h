// The block encoder, step by step: a fixed number of integer operations, without search, so that a frame is
// compressed at the rate of playback. All values fit 16 bits.
#pragma once

#include <MediaConversion/converters/ColourTransforms.h>
#include <MediaConversion/converters/DxtBlocks.h>

#include <array>
#include <cstddef>

namespace MediaConversion::Dxt {
namespace {

/// The pixels of a block as 8-bit samples.
template <class Int>
struct RgbPixels {
    Channel<Int> red, green, blue;
};

/// Pixels for a YCoCg-DXT5 block: Co and Cg as bytes, 128 being neutral.
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
        Int co, cg;
        RgbToYCoCg(rgb.red[i], rgb.green[i], rgb.blue[i], pixels.y[i], co, cg);
        // The transform's -127..128 leaves a byte at the upper end only.
        pixels.co[i] = min(co + 128, Int(255));
        pixels.cg[i] = min(cg + 128, Int(255));
    }
    return pixels;
}

template <class Int>
Bounds<Int> boundingBox(Channel<Int> const& channel) {
    Bounds<Int> bounds{channel[0], channel[0]};
    for (Int const& value : channel)
        bounds = {min(bounds.min, value), max(bounds.max, value)};
    return bounds;
}

/// 1, 2 or 4: what the chroma of a block can be multiplied with and still be bytes around 128. Blocks of
/// little colour keep more of it through the quantisation.
template <class Int>
Int chromaScale(Bounds<Int> const& co, Bounds<Int> const& cg) {
    Int const coExtent = max(abs(co.min - 128), abs(co.max - 128));
    Int const cgExtent = max(abs(cg.min - 128), abs(cg.max - 128));
    Int const extent = max(coExtent, cgExtent);
    return 1 + (extent < 64) + ((extent < 32) << 1);
}

template <class Int>
Int scaled(Int const& chroma, Int const& scale) {
    return ((chroma - 128) * scale + 128) & 255;
}

template <class Int>
void scaleChroma(Channel<Int>& chroma, Bounds<Int>& bounds, Int const& scale) {
    for (Int& value : chroma)
        value = scaled(value, scale);
    bounds = {scaled(bounds.min, scale), scaled(bounds.max, scale)};
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
    Int const coMiddle = (co.first + co.second + 1) >> 1;
    Int const cgMiddle = (cg.first + cg.second + 1) >> 1;
    Int opposed = 0;
    for (int i = 0; i < blockPixels; ++i)
        opposed = opposed + ((pixels.co[i] >= coMiddle) ^ (pixels.cg[i] >= cgMiddle));
    Int const exchange = (cg.first - cg.second) * (opposed > blockPixels / 2);
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

template <class Int>
Channel<Int> lumaIndices(Channel<Int> const& luma, Bounds<Int> const& bounds) {
    auto const thresholds = lumaThresholds(bounds);
    Channel<Int> indices;
    for (int i = 0; i < blockPixels; ++i) {
        Int number = 1;
        for (Int const& threshold : thresholds)
            number = number + (luma[i] <= threshold);
        // Numbers count 1 (maximum), 2, .. 8 (minimum) along the interpolation; the indices of its ends are 0
        // and 1.
        number = number & 7;
        indices[i] = number ^ (number < 2);
    }
    return indices;
}

/// The values that a component takes with the indices 0..3.
template <class Int>
std::array<Int, 4> palette(Endpoints<Int> const& ends) {
    return {ends.first, ends.second, (2 * ends.first + ends.second) / 3, (ends.first + 2 * ends.second) / 3};
}

/// The indices of the nearest colours of the palette, by the sum of the components' distances.
template <class Int, std::size_t components>
Channel<Int> colourIndices(std::array<Channel<Int> const*, components> const& channels,
                           std::array<Endpoints<Int>, components> const& endpoints) {
    std::array<std::array<Int, 4>, components> palettes;
    for (std::size_t c = 0; c < components; ++c)
        palettes[c] = palette(endpoints[c]);

    Channel<Int> indices;
    for (int i = 0; i < blockPixels; ++i) {
        std::array<Int, 4> distance;
        distance.fill(0);
        for (std::size_t c = 0; c < components; ++c)
            for (int k = 0; k < 4; ++k)
                distance[k] = distance[k] + abs(palettes[c][k] - (*channels[c])[i]);

        Int const b0 = distance[0] > distance[3];
        Int const b1 = distance[1] > distance[2];
        Int const b2 = distance[0] > distance[2];
        Int const b3 = distance[1] > distance[3];
        Int const b4 = distance[2] > distance[3];
        indices[i] = (b0 & b4) | (((b1 & b2) | (b0 & b3)) << 1);
    }
    return indices;
}

/// Luma with eight steps of its own; Co and Cg, scaled to use the bits of the endpoints, with four.
struct YCoCgDxt5Encoder {
    static constexpr int pieces = 2;

    template <class Int>
    static std::array<Piece<Int>, pieces> encode(RgbPixels<Int> const& rgb) {
        YCoCgPixels<Int> pixels = toYCoCg(rgb);
        auto coBounds = boundingBox(pixels.co);
        auto cgBounds = boundingBox(pixels.cg);
        auto const luma = insetRounded<5>(boundingBox(pixels.y));

        Int const scale = chromaScale(coBounds, cgBounds);
        scaleChroma(pixels.co, coBounds, scale);
        scaleChroma(pixels.cg, cgBounds, scale);
        auto const co = quantisedEndpoints<5>(insetRounded<4>(coBounds));
        auto cg = quantisedEndpoints<6>(insetRounded<4>(cgBounds));
        chooseDiagonal(pixels, co, cg);

        Int const scaleCode = (scale - 1) << 3;
        return {LumaPiece::pack(luma.max, luma.min, lumaIndices(pixels.y, luma)),
                ColourPiece::pack(Rgb565::pack(co.first, cg.first, scaleCode),
                                  Rgb565::pack(co.second, cg.second, scaleCode),
                                  colourIndices<Int, 2>({&pixels.co, &pixels.cg}, {co, cg}))};
    }
};

struct Dxt1Encoder {
    static constexpr int pieces = 1;

    template <class Int>
    static std::array<Piece<Int>, pieces> encode(RgbPixels<Int> const& rgb) {
        auto const red = quantisedEndpoints<5>(inset(boundingBox(rgb.red)));
        auto const green = quantisedEndpoints<6>(inset(boundingBox(rgb.green)));
        auto const blue = quantisedEndpoints<5>(inset(boundingBox(rgb.blue)));
        return {
            ColourPiece::pack(Rgb565::pack(red.first, green.first, blue.first),
                              Rgb565::pack(red.second, green.second, blue.second),
                              colourIndices<Int, 3>({&rgb.red, &rgb.green, &rgb.blue}, {red, green, blue}))};
    }
};

} // namespace
} // namespace MediaConversion::Dxt
