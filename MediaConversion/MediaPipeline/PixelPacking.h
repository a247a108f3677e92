// How samples are grouped into the stored elements of a frame's matrix.
#pragma once

#include <cstdint>
#include <string>

/// The shape of one stored element: its bytes, the samples in it and the block of pixels that it covers.
class PixelPacking {
public:
    struct Bytes {
        std::uint32_t value;
    };
    struct Samples {
        std::uint32_t value;
    };
    /// A block of pixels, rows first: {1, 2} is a pair of neighbours, {2, 2} a square.
    struct Pixels {
        std::uint32_t rows;
        std::uint32_t columns;
    };

    PixelPacking(Bytes bytes, Samples samples, Pixels pixels)
        : elementBytes(bytes), elementSamples(samples), block(pixels) {}

    /// Bytes of one stored element.
    std::uint32_t bytes() const { return elementBytes.value; }
    /// Samples in one element, over all channels of all its pixels.
    std::uint32_t samples() const { return elementSamples.value; }
    /// The pixels that one element covers; {1, 1} in every full format.
    Pixels pixels() const { return block; }

    /// Lexicographic over bytes, samples, pixel rows, pixel columns.
    bool operator<(PixelPacking const& other) const;
    bool operator==(PixelPacking const& other) const;
    bool operator!=(PixelPacking const& other) const { return !(*this == other); }

    /// Bytes, samples and block, as in "5,4,1x2".
    static std::string toString(PixelPacking const& packing);

private:
    Bytes elementBytes;
    Samples elementSamples;
    Pixels block;
};
