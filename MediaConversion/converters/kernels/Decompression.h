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

    static Dxt::PixelRows decode(std::array<Ints, bytes / 4> const& words) {
        return BlockDecoder::decode(words);
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
