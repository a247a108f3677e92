// RGB to the block compressions.
#pragma once

#include <MediaConversion/converters/PixelTypes.h>
#include <MediaConversion/converters/kernels/DxtEncoder.h>
#include <MediaConversion/converters/kernels/Groups.h>
#include <MediaConversion/converters/kernels/Kernels.h>
#include <MediaConversion/converters/kernels/Shorts.h>

namespace MediaConversion {
namespace {

/// Of a row of blocks: the first pixel of each, the second and so on. Each number holds the pixel's samples,
/// the first one lowest.
template <class Source>
std::array<Ints, Dxt::blockSize> loadBlockRows(Source const* pixels) {
    std::array<Ints, Dxt::blockSize> columns;
    if constexpr (sizeof(Source) == sizeof(std::int32_t)) {
        auto const transposed =
            loadTransposed(reinterpret_cast<std::uint8_t const*>(pixels), Dxt::blockSize * sizeof(Source));
        std::memcpy(&columns, &transposed, sizeof columns);
    } else {
        std::int32_t numbers[Dxt::blockSize][lanes] = {};
        for (int i = 0; i < Dxt::blockSize * lanes; ++i)
            std::memcpy(&numbers[i % Dxt::blockSize][i / Dxt::blockSize], pixels + i, sizeof(Source));
        std::memcpy(&columns, numbers, sizeof columns);
    }
    return columns;
}

/// Two blocks in each lane of 32 bits: one of the first half of the group and one of the second.
template <class BlockEncoder, class Source_>
struct CompressedGroup {
    using Source = Source_;
    static constexpr int blocks = 2 * lanes, rows = Dxt::blockSize, columns = Dxt::blockSize;
    static constexpr int pieces = BlockEncoder::pieces, bytes = pieces * Dxt::pieceBytes;

    static void encode(std::uint8_t const* pixels, std::size_t rowBytes, std::uint8_t* blocks) {
        store(BlockEncoder::encode(load(pixels, rowBytes)), blocks);
    }

private:
    static Dxt::RgbPixels<Shorts> load(std::uint8_t const* pixels, std::size_t rowBytes) {
        using Order = typename Source::Order;
        Dxt::RgbPixels<Shorts> rgb;
        for (int i = 0; i < Dxt::blockPixels; i += Dxt::blockSize) {
            auto const* const row = reinterpret_cast<Source const*>(pixels + i / Dxt::blockSize * rowBytes);
            auto const firstHalf = loadBlockRows(row),
                       secondHalf = loadBlockRows(row + Dxt::blockSize * lanes);
            for (int x = 0; x < Dxt::blockSize; ++x) {
                auto const channel = [&](int number) {
                    return Shorts((firstHalf[x] >> (8 * number) & 0xff) |
                                  (secondHalf[x] >> (8 * number) & 0xff) << 16);
                };
                rgb.red[i + x] = channel(Order::red);
                rgb.green[i + x] = channel(Order::green);
                rgb.blue[i + x] = channel(Order::blue);
            }
        }
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
