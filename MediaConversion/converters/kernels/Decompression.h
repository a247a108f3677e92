// The block compressions to RGB.
#pragma once

#include <MediaConversion/converters/kernels/DecodeRows.h>
#include <MediaConversion/converters/kernels/DxtDecoder.h>

namespace MediaConversion {
namespace {

using F = Zentrel::FullFrameFormat;
using P = Zentrel::PackedFrameFormat;

// clang-format off
constexpr RowDecoder decompression[] = {
    {P::YCOCG_DXT5_U8, F::RGB_U8,  decodeRow<Dxt::YCoCgDxt5Decoder, Pixel<Rgb,  U8>>},
    {P::YCOCG_DXT5_U8, F::BGR_U8,  decodeRow<Dxt::YCoCgDxt5Decoder, Pixel<Bgr,  U8>>},
    {P::YCOCG_DXT5_U8, F::BGRA_U8, decodeRow<Dxt::YCoCgDxt5Decoder, Pixel<Bgra, U8>>},
    {P::RGB_DXT1_U8,   F::RGB_U8,  decodeRow<Dxt::Dxt1Decoder,      Pixel<Rgb,  U8>>},
    {P::RGB_DXT1_U8,   F::BGR_U8,  decodeRow<Dxt::Dxt1Decoder,      Pixel<Bgr,  U8>>},
    {P::RGB_DXT1_U8,   F::BGRA_U8, decodeRow<Dxt::Dxt1Decoder,      Pixel<Bgra, U8>>},
};
// clang-format on

} // namespace
} // namespace MediaConversion
