// RGB to the block compressions.
#pragma once

#include <MediaConversion/converters/PixelTypes.h>
#include <MediaConversion/converters/kernels/DxtEncoder.h>
#include <MediaConversion/converters/kernels/Groups.h>
#include <MediaConversion/converters/kernels/Kernels.h>
#include <MediaConversion/converters/kernels/Shorts.h>

namespace MediaConversion {
namespace {

/// Two blocks in each lane of 32 bits: one of the first half of the group and one of the second.
template <class BlockEncoder, class Source>
struct CompressedGroup {
    static constexpr int blocks = 2 * lanes, rows = Dxt::blockSize,
                         blockRowBytes = Dxt::blockSize * sizeof(Source),
                         readBytes = lanes * blockRowBytes + loadedBytes<blockRowBytes>;
    static constexpr int pieces = BlockEncoder::pieces, bytes = pieces * Dxt::pieceBytes;

    static void encode(std::uint8_t const* pixels, std::size_t stride, std::uint8_t* blocks) {
        store(BlockEncoder::encode(load(pixels, stride)), blocks);
    }

private:
    static Dxt::RgbPixels<Shorts> load(std::uint8_t const* pixels, std::size_t stride) {
        using Order = typename Source::Order;
        Dxt::RgbPixels<Shorts> rgb;
        unrolled<Dxt::blockSize>([&](auto y) {
            auto const* const row = pixels + y * stride;
            auto const firstHalf = loadBlocks<blockRowBytes>(row),
                       secondHalf = loadBlocks<blockRowBytes>(row + lanes * blockRowBytes);
            unrolled<Dxt::blockSize>([&](auto x) {
                auto const channel = [&](int number) {
                    return Shorts(sampleOf<Source>(firstHalf, x, number) |
                                  sampleOf<Source>(secondHalf, x, number) << 16);
                };
                constexpr int i = y * Dxt::blockSize + x;
                rgb.red[i] = channel(Order::red);
                rgb.green[i] = channel(Order::green);
                rgb.blue[i] = channel(Order::blue);
            });
        });
        return rgb;
    }

    static void store(std::array<Dxt::Piece<Shorts>, pieces> const& block, std::uint8_t* to) {
        std::array<Ints, 2 * pieces> firstHalf, secondHalf;
        for (int i = 0; i < 2 * pieces; ++i) {
            Ints const low(block[i / 2][i % 2 * 2].ints()), high(block[i / 2][i % 2 * 2 + 1].ints());
            firstHalf[i] = (low & 0xffff) | high << 16;
            secondHalf[i] = (low >> 16 & 0xffff) | (high & ~0xffff);
        }
        storeBlocks<bytes>(firstHalf, to);
        storeBlocks<bytes>(secondHalf, to + lanes * bytes);
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
