// RGB to the block compressions.
#pragma once

#include <MediaConversion/converters/PixelTypes.h>
#include <MediaConversion/converters/kernels/DxtEncoder.h>
#include <MediaConversion/converters/kernels/Groups.h>
#include <MediaConversion/converters/kernels/Kernels.h>
#include <MediaConversion/converters/kernels/Shorts.h>

namespace MediaConversion {
namespace {

/// Half `half` (0, 1) of each quad of two vectors.
template <int half, int... i>
FloatVector halvesOfQuads(FloatVector a, FloatVector b, std::integer_sequence<int, i...>) {
    return shuffled<(i / 2 * 4 + 2 * half + i % 2)...>(a, b);
}

template <int half>
FloatVector halvesOfQuads(FloatVector a, FloatVector b) {
    return halvesOfQuads<half>(a, b, std::make_integer_sequence<int, lanes>());
}

/// Two blocks in each lane of 32 bits: one of the first half of the group and one of the second.
template <class BlockEncoder, class Source>
struct CompressedGroup {
    static constexpr int blocks = 2 * lanes, rows = BlockEncoder::rows, bytes = BlockEncoder::bytes;
    static constexpr int blockRowBytes = BlockEncoder::columns * sizeof(Source),
                         readBytes = (blocks - 1) * blockRowBytes + 16;

    static void encode(std::uint8_t const* pixels, std::size_t stride, std::uint8_t* blocks) {
        store(BlockEncoder::encode(load(pixels, stride)), blocks);
    }

private:
    using Pixels = Dxt::RgbPixels<typename BlockEncoder::Values>;
    static constexpr int pieces = BlockEncoder::pieces;
    /// A row of every block.
    using Row = std::array<Shorts, 8>;

    static Pixels load(std::uint8_t const* pixels, std::size_t stride) {
        using Order = typename Source::Order;
        Pixels rgb;
        constexpr int half = Dxt::blockSize / 2;
        unrolled<half>([&](auto y) {
            Row const first = loadRow(pixels + y * stride), second = loadRow(pixels + (y + half) * stride);
            unrolled<Dxt::blockSize>([&](auto x) {
                constexpr int i = y * Dxt::blockSize + x, byte = x * Source::channels;
                setPixels<i, byte + Order::red>(rgb.red, first, second);
                setPixels<i, byte + Order::green>(rgb.green, first, second);
                setPixels<i, byte + Order::blue>(rgb.blue, first, second);
            });
        });
        return rgb;
    }

    /// The pixels i and i + 8 from one byte of two rows.
    template <int i, int byte>
    static void setPixels(Dxt::Channel& values, Row const& first, Row const& second) {
        auto const value = [](Shorts const& pair) {
            return byte % 2 == 0 ? lowerBytes(pair) : upperBytes(pair);
        };
        values[i] = value(first[byte / 2]);
        values[i + Dxt::blockPixels / 2] = value(second[byte / 2]);
    }
    template <int i, int byte>
    static void setPixels(Dxt::Pairs& values, Row const& first, Row const& second) {
        Shorts const a = first[byte / 2], b = second[byte / 2];
        values[i] = Bytes((byte % 2 == 0 ? lowerBytes(a) | b << 8 : upperBytes(a) | (b & ~0xff)).ints());
    }

    /// The bytes of each block in a row of pixels, two by two. The lanes stand as transposing makes them;
    /// transposed again, they are in the order of memory.
    static Row loadRow(std::uint8_t const* row) {
        std::array<FloatVector, 4> low, high;
        unrolled<4>([&](auto i) {
            auto const quads = [&](int number) {
                return Shorts::Vector(loadQuads(row + number * (lanes / 4) * blockRowBytes, blockRowBytes));
            };
            low[i] = FloatVector(interleaved<0>(quads(i), quads(4 + i)));
            high[i] = FloatVector(interleaved<1>(quads(i), quads(4 + i)));
        });
        auto const first = transposed(low[0], low[1], low[2], low[3]);
        auto const second = transposed(high[0], high[1], high[2], high[3]);
        Row pairs;
        unrolled<4>([&](auto i) {
            pairs[i] = Shorts(Shorts::Vector(first[i]));
            pairs[4 + i] = Shorts(Shorts::Vector(second[i]));
        });
        return pairs;
    }

    static void store(std::array<Dxt::Piece, pieces> const& block, std::uint8_t* to) {
        std::array<FloatVector, 2 * pieces> firstHalf, secondHalf;
        unrolled<2 * pieces>([&](auto i) {
            Ints const low = block[i / 2][i % 2 * 2].ints(), high = block[i / 2][i % 2 * 2 + 1].ints();
            firstHalf[i] = FloatVector(((low & 0xffff) | high << 16).vector);
            secondHalf[i] = FloatVector(((low >> 16 & 0xffff) | (high & ~0xffff)).vector);
        });
        std::array<FloatVector, 4 * pieces> vectors;
        if constexpr (pieces == 2) {
            auto const first = transposed(firstHalf[0], firstHalf[1], firstHalf[2], firstHalf[3]);
            auto const second = transposed(secondHalf[0], secondHalf[1], secondHalf[2], secondHalf[3]);
            vectors = {first[0], first[1], first[2], first[3], second[0], second[1], second[2], second[3]};
        } else {
            auto const both = transposed(firstHalf[0], firstHalf[1], secondHalf[0], secondHalf[1]);
            vectors = {halvesOfQuads<0>(both[0], both[1]), halvesOfQuads<0>(both[2], both[3]),
                       halvesOfQuads<1>(both[0], both[1]), halvesOfQuads<1>(both[2], both[3])};
        }
        std::memcpy(to, vectors.data(), sizeof vectors);
    }
};

using F = Zentrel::FullFrameFormat;
using P = Zentrel::PackedFrameFormat;

// clang-format off
constexpr RowEncoder compression[] = {
    {F::RGB_U8,  P::YCOCG_DXT5_U8, encodeInGroups<CompressedGroup<Dxt::YCoCgDxt5Encoder, Pixel<Rgb,  U8>>>},
    {F::BGR_U8,  P::YCOCG_DXT5_U8, encodeInGroups<CompressedGroup<Dxt::YCoCgDxt5Encoder, Pixel<Bgr,  U8>>>},
    {F::RGBA_U8, P::YCOCG_DXT5_U8, encodeInGroups<CompressedGroup<Dxt::YCoCgDxt5Encoder, Pixel<Rgba, U8>>>},
    {F::BGRA_U8, P::YCOCG_DXT5_U8, encodeInGroups<CompressedGroup<Dxt::YCoCgDxt5Encoder, Pixel<Bgra, U8>>>},
    {F::RGBA_U8, P::RGB_DXT1_U8,   encodeInGroups<CompressedGroup<Dxt::Dxt1Encoder,      Pixel<Rgba, U8>>>},
};
// clang-format on

} // namespace
} // namespace MediaConversion
