// Rows of blocks in groups that fill the vectors, and how the groups are loaded and stored.
#pragma once

#include <MediaConversion/converters/kernels/Vectors.h>

#include <algorithm>
#include <array>
#include <utility>

namespace MediaConversion {
namespace {

/// In each quad of numbers: those of `a` (0..3) and `b` (4..7) that are named.
template <int i0, int i1, int i2, int i3, int... lane>
FloatVector quadsOf(FloatVector a, FloatVector b, std::integer_sequence<int, lane...>) {
    constexpr int chosen[] = {i0, i1, i2, i3};
    return __builtin_shufflevector(
        a, b, (lane / 4 * 4 + chosen[lane % 4] + (chosen[lane % 4] < 4 ? 0 : lanes - 4))...);
}

template <int i0, int i1, int i2, int i3>
FloatVector quadsOf(FloatVector a, FloatVector b) {
    return quadsOf<i0, i1, i2, i3>(a, b, std::make_integer_sequence<int, lanes>());
}

/// Four vectors as the rows of squares of four numbers each; returns their columns.
inline std::array<FloatVector, 4> transposed(FloatVector a, FloatVector b, FloatVector c, FloatVector d) {
    FloatVector const ab01 = quadsOf<0, 4, 1, 5>(a, b), cd01 = quadsOf<0, 4, 1, 5>(c, d);
    FloatVector const ab23 = quadsOf<2, 6, 3, 7>(a, b), cd23 = quadsOf<2, 6, 3, 7>(c, d);
    return {quadsOf<0, 1, 4, 5>(ab01, cd01), quadsOf<2, 3, 6, 7>(ab01, cd01), //
            quadsOf<0, 1, 4, 5>(ab23, cd23), quadsOf<2, 3, 6, 7>(ab23, cd23)};
}

/// Four vectors, the first with the first number of every quad of 16 bytes, the second with the second one
/// and so on. The quads, `lanes` in all, start `stride` bytes apart.
inline std::array<FloatVector, 4> loadTransposed(std::uint8_t const* first, int stride) {
    auto const quads = [=](int i) { return loadQuads(first + i * stride, 4 * stride); };
    return transposed(quads(0), quads(1), quads(2), quads(3));
}

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "words are written as they lie in memory");

/// Writes the first `bytes` bytes of the words of each lane, lane by lane.
template <int bytes, std::size_t count>
void storeBlocks(std::array<Ints, count> const& words, std::uint8_t* blocks) {
    if constexpr (count == 1) {
        std::memcpy(blocks, words.data(), sizeof words);
    } else if constexpr (count == 4 || lanes == 4) {
        FloatVector rows[4] = {};
        std::memcpy(rows, words.data(), sizeof words);
        auto const quads = transposed(rows[0], rows[1], rows[2], rows[3]);
        auto const* const quadBytes = reinterpret_cast<std::uint8_t const*>(quads.data());
        // What is too much of a quad is overwritten by the next one.
        for (int lane = 0; lane < lanes; ++lane)
            std::memcpy(blocks + lane * bytes, quadBytes + lane % 4 * sizeof(FloatVector) + lane / 4 * 16,
                        std::min(16, (lanes - lane) * bytes));
    } else {
        // Stores that overlap are slower than small ones when there are many of them at once.
        std::int32_t numbers[count][lanes];
        std::memcpy(numbers, words.data(), sizeof numbers);
        for (int lane = 0; lane < lanes; ++lane)
            for (std::size_t word = 0; word < count; ++word)
                std::memcpy(blocks + lane * bytes + 4 * word, &numbers[word][lane],
                            std::min<std::size_t>(4, bytes - 4 * word));
    }
}

/// Has the processor load what will be read soon. The address may lie behind the picture, where a pointer may
/// not.
inline void fetch(std::uint8_t const* bytes, std::size_t ahead) {
    __builtin_prefetch(reinterpret_cast<void const*>(reinterpret_cast<std::uintptr_t>(bytes) + ahead));
}

/// A `Group` names its type of pixels (`Source`), the number of its blocks, the rows and columns of pixels
/// and the bytes of each block, and encodes all of its blocks at once. Flattened: only with everything in one
/// function the compilers keep the vectors in registers.
template <class Group>
[[gnu::flatten]] void encodeGroups(std::uint8_t const* pixels, std::size_t rowBytes, std::uint8_t* blocks,
                                   int groups) {
    constexpr int groupBytes = Group::blocks * Group::columns * sizeof(typename Group::Source),
                  fetchedAhead = 2048;
    for (; groups > 0; --groups, pixels += groupBytes, blocks += Group::blocks * Group::bytes) {
        for (int row = 0; row < Group::rows; ++row)
            for (int byte = 0; byte < groupBytes; byte += 64)
                fetch(pixels + row * rowBytes + byte, fetchedAhead);
        Group::encode(pixels, rowBytes, blocks);
    }
}

/// An `EncodeRow`.
template <class Group>
void encodeInGroups(std::uint8_t const* pixels, std::size_t rowBytes, std::uint8_t* blocks, int count) {
    constexpr int blockPixelBytes = Group::columns * sizeof(typename Group::Source);
    constexpr int groupBytes = Group::blocks * blockPixelBytes;
    int const groups = count / Group::blocks, encoded = groups * Group::blocks, rest = count - encoded;
    encodeGroups<Group>(pixels, rowBytes, blocks, groups);
    if (rest == 0)
        return;

    // The rest is encoded as a group elsewhere.
    alignas(64) std::uint8_t lastPixels[Group::rows * groupBytes] = {};
    std::uint8_t lastBlocks[Group::blocks * Group::bytes];
    for (int row = 0; row < Group::rows; ++row)
        std::memcpy(lastPixels + row * groupBytes, pixels + row * rowBytes + encoded * blockPixelBytes,
                    rest * blockPixelBytes);
    encodeGroups<Group>(lastPixels, groupBytes, lastBlocks, 1);
    std::memcpy(blocks + encoded * Group::bytes, lastBlocks, rest * Group::bytes);
}

} // namespace
} // namespace MediaConversion
