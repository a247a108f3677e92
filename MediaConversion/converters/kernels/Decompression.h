// The block compressions to RGB.
#pragma once

#include <MediaConversion/converters/kernels/DecodeRows.h>
#include <MediaConversion/converters/kernels/DxtDecoder.h>

namespace MediaConversion {
namespace {

template <class BlockDecoder>
struct DecodeBlock {
    static constexpr int rows = Dxt::blockSize, columns = Dxt::blockSize;
    static constexpr int bytes = BlockDecoder::pieces * Dxt::pieceBytes;

    template <class Depth>
    static std::array<Samples, Dxt::blockPixels> decode(std::array<Ints, bytes / 4> const& words) {
        auto const pairs = BlockDecoder::decode(words);
        std::array<Samples, Dxt::blockPixels> pixels;
        unrolled<Dxt::blockPixels / 2>([&](auto i) {
            auto const [red, green, blue] = pairs[i];
            pixels[i] = {red.ints() & 0xffff, green.ints() & 0xffff, blue.ints() & 0xffff, opaque<Depth>()};
            pixels[i + Dxt::blockPixels / 2] = {red.ints() >> 16, green.ints() >> 16, blue.ints() >> 16,
                                                opaque<Depth>()};
        });
        return pixels;
    }
};

using F = Zentrel::FullFrameFormat;
using P = Zentrel::PackedFrameFormat;

// clang-format off
constexpr RowDecoder decompression[] = {
    {P::YCOCG_DXT5_U8, F::RGB_U8,  decodeRow<DecodeBlock<Dxt::YCoCgDxt5Decoder>, Pixel<Rgb,  U8>>},
    {P::YCOCG_DXT5_U8, F::BGR_U8,  decodeRow<DecodeBlock<Dxt::YCoCgDxt5Decoder>, Pixel<Bgr,  U8>>},
    {P::YCOCG_DXT5_U8, F::BGRA_U8, decodeRow<DecodeBlock<Dxt::YCoCgDxt5Decoder>, Pixel<Bgra, U8>>},
    {P::RGB_DXT1_U8,   F::RGB_U8,  decodeRow<DecodeBlock<Dxt::Dxt1Decoder>,      Pixel<Rgb,  U8>>},
    {P::RGB_DXT1_U8,   F::BGR_U8,  decodeRow<DecodeBlock<Dxt::Dxt1Decoder>,      Pixel<Bgr,  U8>>},
    {P::RGB_DXT1_U8,   F::BGRA_U8, decodeRow<DecodeBlock<Dxt::Dxt1Decoder>,      Pixel<Bgra, U8>>},
};
// clang-format on

} // namespace
} // namespace MediaConversion
