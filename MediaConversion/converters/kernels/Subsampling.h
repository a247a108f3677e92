// RGB to the chroma-subsampled YCbCr formats.
//
// How far values are off in single precision, in units of 2^-24, on samples of 0..1: a rounding costs at most
// half the distance between floats, which is 1 unit for results of 0.5..1, 2 for 1..2, 4 for 2..4, half of
// one for 0.25..0.5 and so on.
//
//                                  luma   Cb     Cr
//     constants                    0.82   0.38   0.32
//     products with them           0.82   0.38   0.32
//     sums                         1      1      1
//     the mean of four pixels             1.25   1.25   (of two: 0.5)
//     the codes' two roundings     1      1      1
//     at most                      3.64   4      3.88
#pragma once

#include <MediaConversion/converters/ColourTransforms.h>
#include <MediaConversion/converters/YCbCrBlocks.h>
#include <MediaConversion/converters/kernels/EncodeRows.h>
#include <MediaConversion/converters/kernels/Kernels.h>

namespace MediaConversion {
namespace {

template <class Real>
struct YCbCr {
    Real y, cb, cr;
};

template <class Real>
YCbCr<Real> yCbCrOf(Colours<Real> const& pixel) {
    YCbCr<Real> result;
    BgrToYuv<Real>(pixel.blue, pixel.green, pixel.red, result.y, result.cb, result.cr);
    return result;
}

template <class Real>
Real lumaOf(Colours<Real> const& pixel) {
    Real y;
    BgrToY<Real>(pixel.blue, pixel.green, pixel.red, y);
    return y;
}

/// The chroma of a block is the mean of its pixels'.
template <class Block>
struct Encode422 {
    static constexpr int rows = 1, columns = 2, bytes = Block::bytes, errorUnits = 4;
    using SameDepth = void; // no sample is a code
    template <class Depth>
    static constexpr bool limits = std::is_same_v<Depth, F32>;

    template <class Real, class Codes>
    static auto encode(std::array<Colours<Real>, 2> const& pixels, Codes& codes) {
        auto const left = yCbCrOf(pixels[0]), right = yCbCrOf(pixels[1]);
        auto const code = [&](Real const& value) { return codes(value, Block::bits); };
        return Block::pack(Codes422<Ints>{code(left.y), code((left.cb + right.cb) * 0.5), //
                                          code(right.y), code((left.cr + right.cr) * 0.5)});
    }
};

/// The chroma of a block is the mean of its pixels'.
struct Encode420 {
    static constexpr int rows = 2, columns = 2, bytes = EightBit420::bytes, errorUnits = 4;
    using SameDepth = void; // no sample is a code
    template <class Depth>
    static constexpr bool limits = std::is_same_v<Depth, F32>;

    template <class Real, class Codes>
    static auto encode(std::array<Colours<Real>, 4> const& pixels, Codes& codes) {
        auto const p00 = yCbCrOf(pixels[0]), p01 = yCbCrOf(pixels[1]);
        auto const p10 = yCbCrOf(pixels[2]), p11 = yCbCrOf(pixels[3]);
        auto const code = [&](Real const& value) { return codes(value, EightBit420::bits); };
        return EightBit420::pack(Codes420<Ints>{code((p00.cb + p01.cb + p10.cb + p11.cb) * 0.25),
                                                code((p00.cr + p01.cr + p10.cr + p11.cr) * 0.25), //
                                                code(p00.y), code(p01.y), code(p10.y), code(p11.y)});
    }
};

/// The chroma of a block is that of its left pixel alone, not the mean as in 4:2:2.
struct Encode4224 {
    static constexpr int rows = 1, columns = 2, bytes = Hybrid4224::bytes, errorUnits = 4;
    using SameDepth = void; // no sample is a code
    template <class Depth>
    static constexpr bool limits = std::is_same_v<Depth, F32>;

    template <class Real, class Codes>
    static auto encode(std::array<Colours<Real>, 2> const& pixels, Codes& codes) {
        using H = Hybrid4224;
        auto const left = yCbCrOf(pixels[0]);
        return H::pack(Codes4224<Ints>{codes(left.y, H::lumaBits), codes(lumaOf(pixels[1]), H::lumaBits),
                                       codes(left.cb, H::chromaBits), codes(left.cr, H::chromaBits),
                                       codes(pixels[0].alpha, H::alphaBits),
                                       codes(pixels[1].alpha, H::alphaBits)});
    }
};

using F = Zentrel::FullFrameFormat;
using P = Zentrel::PackedFrameFormat;

// clang-format off
constexpr RowEncoder subsampling[] = {
    {F::RGB_U8,        P::YCBCR_ITU_T871_YUYV_422_U8,         encodeRow<Encode422<Yuyv422>,   Pixel<Rgb, U8>>},
    {F::RGB_U8,        P::YCBCR_ITU_T871_9ZT_420_U8,          encodeRow<Encode420,            Pixel<Rgb, U8>>},
    {F::RGB_U15plus1,  P::YCBCR_ITU_T871_9ZT_422_U10,         encodeRow<Encode422<TenBit422>, Pixel<Rgb, U15plus1>>},
    {F::BGR_U8,        P::YCBCR_ITU_T871_YUYV_422_U8,         encodeRow<Encode422<Yuyv422>,   Pixel<Bgr, U8>>},
    {F::BGR_U8,        P::YCBCR_ITU_T871_9ZT_420_U8,          encodeRow<Encode420,            Pixel<Bgr, U8>>},
    {F::BGR_U16,       P::YCBCR_ITU_T871_YUYV_422_U8,         encodeRow<Encode422<Yuyv422>,   Pixel<Bgr, U16>>},
    {F::BGR_U16,       P::YCBCR_ITU_T871_9ZT_422_U10,         encodeRow<Encode422<TenBit422>, Pixel<Bgr, U16>>},
    {F::BGR_U16,       P::YCBCR_ITU_T871_9ZT_420_U8,          encodeRow<Encode420,            Pixel<Bgr, U16>>},
    {F::BGR_F32,       P::YCBCR_ITU_T871_YUYV_422_U8,         encodeRow<Encode422<Yuyv422>,   Pixel<Bgr, F32>>},
    {F::BGR_F32,       P::YCBCR_ITU_T871_9ZT_422_U10,         encodeRow<Encode422<TenBit422>, Pixel<Bgr, F32>>},
    {F::BGR_F32,       P::YCBCR_ITU_T871_9ZT_420_U8,          encodeRow<Encode420,            Pixel<Bgr, F32>>},
    {F::BGRA_U8,       P::YCBCR_ITU_T871_YUYV_422_U8,         encodeRow<Encode422<Yuyv422>,   Pixel<Bgra, U8>>},
    {F::BGRA_U8,       P::YCBCR_ITU_T871_9ZT_422_U10,         encodeRow<Encode422<TenBit422>, Pixel<Bgra, U8>>},
    {F::BGRA_U8,       P::YCBCR_ITU_T871_9ZT_420_U8,          encodeRow<Encode420,            Pixel<Bgra, U8>>},
    {F::BGRA_U16,      P::YCBCR_ITU_T871_YUYV_422_U8,         encodeRow<Encode422<Yuyv422>,   Pixel<Bgra, U16>>},
    {F::BGRA_U16,      P::YCBCR_ITU_T871_9ZT_422_U10,         encodeRow<Encode422<TenBit422>, Pixel<Bgra, U16>>},
    {F::BGRA_U16,      P::YCBCR_ITU_T871_9ZT_420_U8,          encodeRow<Encode420,            Pixel<Bgra, U16>>},
    {F::BGRA_F32,      P::YCBCR_ITU_T871_YUYV_422_U8,         encodeRow<Encode422<Yuyv422>,   Pixel<Bgra, F32>>},
    {F::BGRA_F32,      P::YCBCR_ITU_T871_9ZT_422_U10,         encodeRow<Encode422<TenBit422>, Pixel<Bgra, F32>>},
    {F::BGRA_F32,      P::YCBCRA_ITU_T871_9ZT_4224_HYBRID_U12, encodeRow<Encode4224,           Pixel<Bgra, F32>>},
    {F::BGRA_F32,      P::YCBCR_ITU_T871_9ZT_420_U8,          encodeRow<Encode420,            Pixel<Bgra, F32>>},
    {F::ARGB_U8,       P::YCBCR_ITU_T871_YUYV_422_U8,         encodeRow<Encode422<Yuyv422>,   Pixel<Argb, U8>>},
    {F::ARGB_U8,       P::YCBCR_ITU_T871_9ZT_422_U10,         encodeRow<Encode422<TenBit422>, Pixel<Argb, U8>>},
    {F::ARGB_U15plus1, P::YCBCR_ITU_T871_YUYV_422_U8,         encodeRow<Encode422<Yuyv422>,   Pixel<Argb, U15plus1>>},
    {F::ARGB_U15plus1, P::YCBCR_ITU_T871_9ZT_422_U10,         encodeRow<Encode422<TenBit422>, Pixel<Argb, U15plus1>>},
};
// clang-format on

} // namespace
} // namespace MediaConversion
