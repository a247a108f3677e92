// Kernels that make pixels of blocks: each lane takes as many blocks side by side as give four pixels in a
// row.
//
// A `Format` names the rows and columns of pixels in a block, and its bytes. `Format::decode<Depth>(words)`
// gives the samples of a block's pixels, row by row, from the block as 32-bit words, the lowest byte first;
// if a block has four columns, `Format::decode(words)` gives its rows as `PixelBytes`.
#pragma once

#include <MediaConversion/converters/PixelTypes.h>
#include <MediaConversion/converters/kernels/Bytes.h>
#include <MediaConversion/converters/kernels/Groups.h>
#include <MediaConversion/converters/kernels/Kernels.h>
#include <MediaConversion/converters/kernels/Unrolled.h>
#include <MediaConversion/converters/kernels/Words.h>

#include <algorithm>
#include <array>

namespace MediaConversion {
namespace {

/// Pixels that a lane decodes in each row: the least number of which any kind fills whole words.
constexpr int lanePixels = 4;

/// Full scale as it is stored.
template <class Depth>
Ints opaque() {
    if constexpr (std::is_same_v<Depth, F32>)
        return Floats(1).bits();
    else
        return Depth::fullScale;
}

/// A pixel of every lane, the samples as they are stored: of a float its bits.
struct Samples {
    Ints red, green, blue, alpha;
};

/// The pixels of a lane as words.
template <class Destination>
std::array<Ints, sizeof(Destination)> packPixels(std::array<Samples, lanePixels> const& pixels) {
    using Order = typename Destination::Order;
    constexpr int bits = 8 * sizeof(typename Destination::Sample);
    std::array<Ints, sizeof(Destination)> words;
    words.fill(0);
    unrolled<lanePixels>([&](auto i) {
        auto const put = [&](int channel, Ints sample) {
            int const bit = (i * Destination::channels + channel) * bits;
            words[bit / 32] = words[bit / 32] | sample << bit % 32;
        };
        put(Order::red, pixels[i].red);
        put(Order::green, pixels[i].green);
        put(Order::blue, pixels[i].blue);
        if constexpr (Destination::channels == 4)
            put(Order::alpha, pixels[i].alpha);
    });
    return words;
}

/// `bytes` bytes for each lane as words; the last quad may be read beyond them. Lane 4 q + i of the vectors
/// takes the place i * lanes / 4 + q: transposed again, the lanes stand in the order of memory.
template <int bytes>
auto loadLanes(std::uint8_t const* first) {
    std::array<Ints, 4 * quadsFor(bytes)> words;
    unrolled<quadsFor(bytes)>([&](auto quad) {
        auto const quads = [&](int i) {
            return loadQuads(first + i * (lanes / 4) * bytes + 16 * quad, bytes);
        };
        auto const columns = transposed(quads(0), quads(1), quads(2), quads(3));
        unrolled<4>([&](auto i) { words[4 * quad + i] = Ints(reinterpret_cast<IntVector>(columns[i])); });
    });
    return words;
}

/// Half `half` (0, 1) of what arises when two vectors take turns, each with `unit` numbers at a time.
template <int half, int unit, int... i>
FloatVector inTurns(FloatVector a, FloatVector b, std::integer_sequence<int, i...>) {
    return shuffled<((half * lanes + i) / (2 * unit) * unit + i % unit + (i / unit % 2 == 0 ? 0 : lanes))...>(
        a, b);
}

/// What arises when the vectors take turns, each with `unit` numbers at a time.
template <int unit, std::size_t count>
std::array<FloatVector, count> inTurns(std::array<FloatVector, count> const& vectors) {
    if constexpr (count == 1 || unit == lanes) {
        return vectors;
    } else {
        using Numbers = std::make_integer_sequence<int, lanes>;
        std::array<FloatVector, count / 2> first, second;
        unrolled<count / 2>([&](auto i) {
            first[i] = inTurns<0, unit>(vectors[2 * i], vectors[2 * i + 1], Numbers());
            second[i] = inTurns<1, unit>(vectors[2 * i], vectors[2 * i + 1], Numbers());
        });
        first = inTurns<2 * unit>(first);
        second = inTurns<2 * unit>(second);
        std::array<FloatVector, count> result;
        unrolled<count / 2>([&](auto i) {
            result[i] = first[i];
            result[count / 2 + i] = second[i];
        });
        return result;
    }
}

/// Vector `part` of what three of every four numbers in these vectors make.
template <int part, int... i>
FloatVector threeOfFour(FloatVector a, FloatVector b, std::integer_sequence<int, i...>) {
    return shuffled<((part * lanes + i) / 3 * 4 + (part * lanes + i) % 3 - part * lanes)...>(a, b);
}

/// Writes the quads of each lane, lane by lane: four words of each, or the lower three.
template <int wordsOfQuad, std::size_t quads>
void storeQuads(std::array<std::array<FloatVector, 4>, quads> const& columns, std::uint8_t* to) {
    std::array<FloatVector, 4 * quads> vectors;
    unrolled<4>([&](auto i) {
        std::array<FloatVector, quads> column;
        unrolled<quads>([&](auto quad) { column[quad] = columns[quad][i]; });
        column = inTurns<4>(column);
        unrolled<quads>([&](auto quad) { vectors[quads * i + quad] = column[quad]; });
    });

    unrolled<wordsOfQuad * quads>([&](auto i) {
        FloatVector vector;
        if constexpr (wordsOfQuad == 4)
            vector = vectors[i];
        else
            vector = threeOfFour<i % 3>(vectors[i / 3 * 4 + i % 3], vectors[i / 3 * 4 + i % 3 + 1],
                                        std::make_integer_sequence<int, lanes>());
        std::memcpy(to + i * sizeof vector, &vector, sizeof vector);
    });
}

/// Writes the words of each lane, lane by lane.
template <std::size_t count>
void storeLanes(std::array<Ints, count> const& words, std::uint8_t* to) {
    constexpr int wordsOfQuad = count % 4 == 0 ? 4 : 3, quads = count / wordsOfQuad;
    std::array<std::array<FloatVector, 4>, quads> columns;
    unrolled<quads>([&](auto quad) {
        auto const row = [&](int i) {
            return reinterpret_cast<FloatVector>(words[wordsOfQuad * quad + i % wordsOfQuad].vector);
        };
        columns[quad] = transposed(row(0), row(1), row(2), row(3));
    });
    storeQuads<wordsOfQuad>(columns, to);
}

/// In each quad the lower three bytes of every four.
template <int... i>
ByteVector lowerThreeBytes(ByteVector quads, std::integer_sequence<int, i...>) {
    return shuffled<(i % 16 < 12 ? i / 16 * 16 + i % 16 / 3 * 4 + i % 16 % 3 : i)...>(quads, quads);
}

/// Writes the pixels of each lane, lane by lane.
template <class Destination>
void storePixels(std::array<Samples, lanePixels> const& pixels, std::uint8_t* to) {
    storeLanes(packPixels<Destination>(pixels), to);
}

/// Pixels of three bytes each: for vectors that cannot shuffle bytes.
inline void storeTriples(Ints a, Ints b, Ints c, std::uint8_t* to) {
    constexpr int even = 0x00ff00ff, odd = ~even, low = 0xffff, high = ~low;
    Ints const a0b0a2b2 = (a & even) | (b & even) << 8;
    Ints const c0a1c2a3 = (c & even) | (a & odd);
    Ints const b1c1b3c3 = (b >> 8 & even) | (c & odd);
    storeLanes<3>({(a0b0a2b2 & low) | c0a1c2a3 << 16, (b1c1b3c3 & low) | (a0b0a2b2 & high),
                   (c0a1c2a3 >> 16 & low) | (b1c1b3c3 & high)},
                  to);
}

/// Pixels that are opaque.
template <class Destination>
void storePixels(PixelBytes const& pixels, std::uint8_t* to) {
    using Order = typename Destination::Order;
    constexpr int channels = Destination::channels;
    std::array<Ints, 4> bytes;
    bytes.fill(-1);
    bytes[Order::red] = pixels.red;
    bytes[Order::green] = pixels.green;
    bytes[Order::blue] = pixels.blue;
    if constexpr (channels == 3 && !shufflesBytes) {
        storeTriples(bytes[0], bytes[1], bytes[2], to);
    } else {
        // In each quad the four pixels of a lane.
        std::array<FloatVector, 4> quads;
        unrolled<2>([&](auto half) {
            auto const pair = [&](int i) {
                return Shorts::Vector(interleaved<half>(Bytes(bytes[i]).vector, Bytes(bytes[i + 1]).vector));
            };
            quads[2 * half] = FloatVector(interleaved<0>(pair(0), pair(2)));
            quads[2 * half + 1] = FloatVector(interleaved<1>(pair(0), pair(2)));
        });
        if constexpr (channels == 3)
            for (auto& quad : quads)
                quad = FloatVector(
                    lowerThreeBytes(ByteVector(quad), std::make_integer_sequence<int, 4 * lanes>()));
        storeQuads<channels, 1>({quads}, to);
    }
}

template <class Format, class Destination>
struct DecodedGroup {
    static constexpr int rows = Format::rows, laneBlocks = lanePixels / Format::columns;
    static constexpr int blocks = lanes * laneBlocks, bytes = blocks * Format::bytes;
    static constexpr int pixelBytes = lanes * lanePixels * sizeof(Destination);
    /// What is read behind the group's last block.
    static constexpr int bytesBehind = 16 * quadsFor(laneBlocks * Format::bytes) - laneBlocks * Format::bytes;

    /// Flattened: only with everything in one function the compilers keep the vectors in registers.
    [[gnu::flatten, gnu::noinline]] static void decode(std::uint8_t const* blocks, std::uint8_t* pixels,
                                                       std::size_t rowBytes, int groups) {
        for (; groups > 0; --groups, blocks += bytes, pixels += pixelBytes)
            decode(blocks, pixels, rowBytes);
    }

private:
    static void decode(std::uint8_t const* blocks, std::uint8_t* pixels, std::size_t rowBytes) {
        auto const decoded = decodedRows(loadLanes<laneBlocks * Format::bytes>(blocks));
        unrolled<rows>([&](auto row) { storePixels<Destination>(decoded[row], pixels + row * rowBytes); });
    }

    template <class Words>
    static auto decodedRows(Words const& words) {
        constexpr int blockWords = wordsFor(Format::bytes);
        if constexpr (laneBlocks == 1) {
            return Format::decode(wordsAt<blockWords>(words, 0));
        } else {
            std::array<std::array<Samples, lanePixels>, rows> samples;
            unrolled<laneBlocks>([&](auto block) {
                auto const decoded = Format::template decode<typename Destination::Depth>(
                    wordsAt<blockWords>(words, 8 * Format::bytes * block));
                unrolled<rows * Format::columns>([&](auto i) {
                    samples[i / Format::columns][block * Format::columns + i % Format::columns] = decoded[i];
                });
            });
            return samples;
        }
    }
};

template <class Format, class Destination>
constexpr DecodeRow decodeRow = decodeInGroups<DecodedGroup<Format, Destination>>;

} // namespace
} // namespace MediaConversion
