// Blocks between memory and vectors. A block's bytes are words of 32 bits, the lowest byte first; a vector
// holds one word of each of `lanes` blocks.
#pragma once

#include <MediaConversion/converters/kernels/Unrolled.h>
#include <MediaConversion/converters/kernels/Vectors.h>
#include <MediaConversion/converters/kernels/Words.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <type_traits>
#include <utility>

namespace MediaConversion {
namespace {

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "words are read and written as they lie in memory");

/// How many quads of words so many bytes take.
constexpr int quadsFor(int bytes) { return (bytes + 15) / 16; }

/// The words of blocks of so many bytes. The last one may have bytes that are not the block's.
template <int bytes>
using BlockWords = std::array<Ints, wordsFor(bytes)>;

// Blocks are loaded and stored in quads of four words, or with shuffles of whole vectors. What is faster was
// measured: shuffles pay where vectors can shuffle bytes, for loading only from 64 bytes on, and never for
// blocks made of quads. Vectors that load quads take blocks of two words in pairs, two in each quad; those of
// 32 bytes store them so, too.
template <int bytes>
constexpr bool loadedInQuads = lanes < 16 || bytes % 16 == 0;
template <int bytes>
constexpr bool storedInQuads = !shufflesBytes || bytes % 16 == 0;
template <int bytes>
constexpr bool loadedInPairs = lanes < 16 && bytes == 8;
template <int bytes>
constexpr bool storedInPairs = lanes == 8 && bytes > 4 && bytes < 8;

// Quads: squares of four words are transposed.

/// In each quad of numbers: those of `a` (0..3) and `b` (4..7) that are named.
template <int i0, int i1, int i2, int i3, int... lane>
FloatVector quadsOf(FloatVector a, FloatVector b, std::integer_sequence<int, lane...>) {
    constexpr int chosen[] = {i0, i1, i2, i3};
    return shuffled<(lane / 4 * 4 + chosen[lane % 4] + (chosen[lane % 4] < 4 ? 0 : lanes - 4))...>(a, b);
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

/// The words of blocks of two: `even` has the first two of every four blocks in a quad, `odd` the others.
inline std::array<Ints, 2> firstAndSecond(FloatVector even, FloatVector odd) {
    return {Ints(reinterpret_cast<IntVector>(quadsOf<0, 2, 4, 6>(even, odd))),
            Ints(reinterpret_cast<IntVector>(quadsOf<1, 3, 5, 7>(even, odd)))};
}

/// In each quad the first `bytes` bytes of its halves side by side.
template <int bytes, int... i>
ByteVector closedUp(FloatVector quads, std::integer_sequence<int, i...>) {
    auto const halves = reinterpret_cast<ByteVector>(quads);
    return shuffled<(i % 16 < 2 * bytes ? i / 16 * 16 + i % 16 / bytes * 8 + i % 16 % bytes : i)...>(halves,
                                                                                                     halves);
}

/// One quad of several. By way of memory it takes longer.
template <int number>
auto quadOf(ByteVector quads) {
    auto const halves = reinterpret_cast<VectorOf<std::int64_t, sizeof quads>>(quads);
    return VectorOf<std::int64_t, 16>{halves[2 * number], halves[2 * number + 1]};
}

/// Half `half` (0, 1) of each quad of two vectors whose numbers take turns.
template <int half, class Vector, int... i>
Vector interleaved(Vector a, Vector b, std::integer_sequence<int, i...>) {
    constexpr int width = sizeof...(i), ofQuad = width / (lanes / 4);
    return shuffled<(i / ofQuad * ofQuad + half * ofQuad / 2 + i % ofQuad / 2 + i % 2 * width)...>(a, b);
}

template <int half, class Vector>
Vector interleaved(Vector a, Vector b) {
    return interleaved<half>(a, b, std::make_integer_sequence<int, sizeof(Vector) / sizeof(a[0])>());
}

// Whole vectors of quads: transposed as they lie in memory, with the lanes put into order afterwards. It pays
// for the widest vectors only, to which quads are added one by one.

template <int bytes>
constexpr bool loadedWhole = lanes == 16 && (bytes == 16 || bytes == 32);

/// A word of quad `quad` of every block, from the same word of all quads as transposing leaves them.
template <int quadsOfBlock, int quad, int... block>
FloatVector inOrder(FloatVector a, FloatVector b, std::integer_sequence<int, block...>) {
    constexpr int width = lanes / 4; // of vectors, in quads
    // Transposing four vectors takes quad q of vector v to lane 4 q + v.
    constexpr auto placeOf = [](int number) {
        return number % width * 4 + number / width % 4 + number / lanes * lanes;
    };
    return shuffled<placeOf(block * quadsOfBlock + quad)...>(a, b);
}

// Shuffles: whole vectors, from which each vector of the other side takes its pieces.

/// What is moved: words where blocks are made of them.
template <int bytes>
using Unit = std::conditional_t<bytes % 4 == 0, std::int32_t, std::uint8_t>;

template <int bytes>
using Units = VectorOf<Unit<bytes>, sizeof(IntVector)>;

template <int bytes>
constexpr int wordUnits = 4 / sizeof(Unit<bytes>);
template <int bytes>
constexpr int blockUnits = bytes / sizeof(Unit<bytes>);
template <int bytes>
constexpr int vectorUnits = lanes* wordUnits<bytes>;

/// Where in the blocks piece `i` of the vector of a word comes from.
template <int bytes, int word>
struct InBlocks {
    static constexpr int pieceFor(int i) {
        constexpr int n = wordUnits<bytes>;
        return i / n * blockUnits<bytes> + word * n + i % n;
    }
};

/// Where in the vectors of all words piece `i` of a certain vector of the blocks comes from.
template <int bytes, int vector>
struct InWords {
    static constexpr int pieceFor(int i) {
        constexpr int n = wordUnits<bytes>;
        int const piece = vector * vectorUnits<bytes> + i;
        int const block = piece / blockUnits<bytes>, inBlock = piece % blockUnits<bytes>;
        return block < lanes ? inBlock / n * vectorUnits<bytes> + block * n + inBlock % n : 0;
    }
};

/// `before` with the pieces that come from `vector`, number `k`. For the first two `before` is vector 0,
/// whose pieces are taken too.
template <class Place, int k, class Vector, int... i>
Vector withPiecesOf(Vector vector, Vector before, std::integer_sequence<int, i...>) {
    constexpr int width = sizeof...(i);
    return shuffled<(Place::pieceFor(i) / width == k ? width + Place::pieceFor(i) % width
                     : k <= 1                        ? Place::pieceFor(i) % width
                                                     : i)...>(before, vector);
}

/// A vector of the pieces of several, from where `Place` says, counted through all of them.
template <class Place, class Vector, std::size_t count>
Vector gathered(std::array<Vector, count> const& from) {
    using Numbers = std::make_integer_sequence<int, sizeof(Vector) / sizeof(from[0][0])>;
    constexpr int first = count > 1;
    Vector result = from[0];
    unrolled<count - first>(
        [&](auto i) { result = withPiecesOf<Place, first + i>(from[first + i], result, Numbers()); });
    return result;
}

/// How many bytes `loadBlocks` reads: some more than the blocks have.
template <int bytes>
constexpr int loadedBytes = loadedInPairs<bytes>   ? lanes* bytes
                            : loadedInQuads<bytes> ? (lanes - 1) * bytes + 16 * quadsFor(bytes)
                                                   : lanes * 4 * wordsFor(bytes);

// Vectors are taken out of arrays with constants as indices and are never copied in pieces: by way of memory
// all of this takes up to twice as long.

template <int bytes>
BlockWords<bytes> loadBlocks(std::uint8_t const* blocks) {
    constexpr int count = wordsFor(bytes);
    BlockWords<bytes> words;
    if constexpr (loadedWhole<bytes>) {
        constexpr int quads = bytes / 16;
        std::array<std::array<FloatVector, 4>, quads> columns;
        unrolled<quads>([&](auto number) {
            auto const vector = [&](int i) {
                return loadQuads(blocks + (4 * number + i) * sizeof(FloatVector), 16);
            };
            columns[number] = transposed(vector(0), vector(1), vector(2), vector(3));
        });
        unrolled<count>([&](auto i) {
            words[i] = Ints(reinterpret_cast<IntVector>(inOrder<quads, i / 4>(
                columns[0][i % 4], columns[quads - 1][i % 4], std::make_integer_sequence<int, lanes>())));
        });
    } else if constexpr (loadedInPairs<bytes>) {
        return firstAndSecond(loadQuads(blocks, 32), loadQuads(blocks + 16, 32));
    } else if constexpr (loadedInQuads<bytes>) {
        unrolled<quadsFor(bytes)>([&](auto number) {
            auto const quads = [&](int i) { return loadQuads(blocks + i * bytes + number * 16, 4 * bytes); };
            auto const columns = transposed(quads(0), quads(1), quads(2), quads(3));
            unrolled<std::min(4, count - 4 * number)>(
                [&](auto i) { words[4 * number + i] = Ints(reinterpret_cast<IntVector>(columns[i])); });
        });
    } else {
        std::array<Units<bytes>, count> vectors;
        std::memcpy(&vectors, blocks, sizeof vectors);
        unrolled<count>([&](auto word) {
            words[word] = Ints(reinterpret_cast<IntVector>(gathered<InBlocks<bytes, word>>(vectors)));
        });
    }
    return words;
}

template <int bytes>
void storeBlocks(BlockWords<bytes> const& words, std::uint8_t* blocks) {
    constexpr int count = wordsFor(bytes);
    if constexpr (bytes == 4) {
        IntVector const vector = words[0].vector;
        std::memcpy(blocks, &vector, sizeof vector);
    } else if constexpr (storedInPairs<bytes>) {
        auto const first = reinterpret_cast<FloatVector>(words[0].vector),
                   second = reinterpret_cast<FloatVector>(words[1].vector);
        using Numbers = std::make_integer_sequence<int, 4 * lanes>;
        ByteVector const even = closedUp<bytes>(quadsOf<0, 4, 1, 5>(first, second), Numbers()),
                         odd = closedUp<bytes>(quadsOf<2, 6, 3, 7>(first, second), Numbers());
        // What is too much of a quad is overwritten by the next one.
        unrolled<lanes / 2>([&](auto pair) {
            auto const quad = quadOf<pair / 2>(pair % 2 == 0 ? even : odd);
            std::memcpy(blocks + 2 * pair * bytes, &quad, std::min(16, (lanes - 2 * pair) * bytes));
        });
    } else if constexpr (storedInQuads<bytes>) {
        FloatVector rows[4] = {};
        unrolled<count>([&](auto i) { rows[i] = reinterpret_cast<FloatVector>(words[i].vector); });
        auto const quads = transposed(rows[0], rows[1], rows[2], rows[3]);
        auto const* const quadBytes = reinterpret_cast<std::uint8_t const*>(quads.data());
        // What is too much of a quad is overwritten by the next one.
        for (int lane = 0; lane < lanes; ++lane)
            std::memcpy(blocks + lane * bytes, quadBytes + lane % 4 * sizeof(FloatVector) + lane / 4 * 16,
                        std::min(16, (lanes - lane) * bytes));
    } else {
        std::array<Units<bytes>, count> vectors;
        unrolled<count>([&](auto i) { vectors[i] = reinterpret_cast<Units<bytes>>(words[i].vector); });
        unrolled<count>([&](auto number) {
            constexpr int offset = number * sizeof(IntVector);
            auto const pieces = gathered<InWords<bytes, number>>(vectors);
            std::memcpy(blocks + offset, &pieces, std::min<int>(sizeof pieces, lanes * bytes - offset));
        });
    }
}

} // namespace
} // namespace MediaConversion
