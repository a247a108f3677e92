// The bit layouts of the packed RGB formats: how samples of 10 and 12 bits lie in bytes.
//
// A layout is a type that names the pixels of a block, the bytes of its words and where in a word each sample
// lies; `packBlock` and `unpackBlock` follow it. In the diagrams A, B and C are the samples of a pixel in the
// order of the format (R, G, B or B, G, R) with the numbers of their bits. Bytes stand in the order of
// memory, each with its most significant bit on the left.
#pragma once

#include <MediaConversion/MediaPipeline/FrameFormat.h>
#include <MediaConversion/converters/PixelTypes.h>
#include <MediaConversion/converters/kernels/Words.h>

#include <array>
#include <iterator>

namespace MediaConversion {
namespace {

/// Which byte of a word comes first in memory.
enum class FirstByte { Least, Most };

/// Each pixel is a 32-bit word with the first sample on top and two bits of zero at the bottom.
///
///     |         byte 0        |         byte 1        |         byte 2        |         byte 3        |
///     |      C 5..0     |  0  |   B 3..0  |   C 9..6  |A1..0|      B 9..4     |         A 9..2        |
struct DpxFilled {
    using Depth = U10;
    static constexpr int bits = 10, pixels = 1;
    static constexpr int wordBytes = 4, lowestBits[] = {22, 12, 2};
    static constexpr auto firstByte = FirstByte::Least;

    static constexpr auto rgbFormat = Zentrel::PackedFrameFormat::RGB_DPX_FILLED_U10;
    static constexpr auto bgrFormat = Zentrel::PackedFrameFormat::BGR_DPX_FILLED_U10;
};

/// The samples of two pixels end to end, upwards from the least significant bit. Two fill three bytes; C of
/// the left pixel with A of the right, then B with C of the right follow in the same way.
///
///     |         byte 0        |         byte 1        |         byte 2        |
///     |         A 7..0        |   B 3..0  |  A 11..8  |        B 11..4        |
struct DpxPacked {
    using Depth = U12;
    static constexpr int bits = 12, pixels = 2;
    static constexpr int wordBytes = 3, lowestBits[] = {0, 12};
    static constexpr auto firstByte = FirstByte::Least;

    static constexpr auto rgbFormat = Zentrel::PackedFrameFormat::RGB_DPX_PACKED_U12;
    static constexpr auto bgrFormat = Zentrel::PackedFrameFormat::BGR_DPX_PACKED_U12;
};

/// The samples of two pixels end to end, downwards from the most significant bit, in the same pairs.
///
///     |         byte 0        |         byte 1        |         byte 2        |
///     |        A 11..4        |   A 3..0  |  B 11..8  |         B 7..0        |
struct SmpteSt2110 {
    using Depth = U12;
    static constexpr int bits = 12, pixels = 2;
    static constexpr int wordBytes = 3, lowestBits[] = {12, 0};
    static constexpr auto firstByte = FirstByte::Most;

    static constexpr auto rgbFormat = Zentrel::PackedFrameFormat::RGB_SMPTE_2110_U12;
    static constexpr auto bgrFormat = Zentrel::PackedFrameFormat::BGR_SMPTE_2110_U12;
};

/// The samples of a block, pixel by pixel.
template <class Layout>
using BlockSamples = std::array<Ints, 3 * Layout::pixels>;

template <class Layout>
constexpr int blockBytes = Layout::wordBytes * 3 * Layout::pixels /
                           static_cast<int>(std::size(Layout::lowestBits));

/// A layout's word, of which the byte that comes first in memory is to be the lowest.
template <class Layout>
Ints firstByteLowest(Ints const& word) {
    if constexpr (Layout::firstByte == FirstByte::Least)
        return word;
    Ints bytes = 0;
    for (int byte = 0; byte < Layout::wordBytes; ++byte)
        bytes = bytes | ((word >> (8 * (Layout::wordBytes - 1 - byte))) & 0xff) << (8 * byte);
    return bytes;
}

/// The block as 32-bit words, the lowest byte first; of the last word the block may take fewer bytes.
template <class Layout>
std::array<Ints, wordsFor(blockBytes<Layout>)> packBlock(BlockSamples<Layout> const& samples) {
    std::array<Ints, wordsFor(blockBytes<Layout>)> block;
    block.fill(0);
    auto sample = samples.begin();
    for (int bit = 0; sample != samples.end(); bit += 8 * Layout::wordBytes) {
        Ints word = 0;
        for (int const lowestBit : Layout::lowestBits)
            word = word | *sample++ << lowestBit;
        word = firstByteLowest<Layout>(word);
        block[bit / 32] = block[bit / 32] | word << bit % 32;
        if (bit % 32 + 8 * Layout::wordBytes > 32)
            block[bit / 32 + 1] = word >> (32 - bit % 32);
    }
    return block;
}

/// The samples of a block, from its words as `packBlock` gives them.
template <class Layout>
BlockSamples<Layout> unpackBlock(std::array<Ints, wordsFor(blockBytes<Layout>)> const& block) {
    BlockSamples<Layout> samples;
    auto sample = samples.begin();
    for (int bit = 0; sample != samples.end(); bit += 8 * Layout::wordBytes) {
        Ints const word = firstByteLowest<Layout>(wordAt(block, bit)); // undoes itself
        for (int const lowestBit : Layout::lowestBits)
            *sample++ = word >> lowestBit & Layout::Depth::fullScale;
    }
    return samples;
}

} // namespace
} // namespace MediaConversion
