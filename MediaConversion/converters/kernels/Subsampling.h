// RGB to the chroma-subsampled YCbCr formats.
//
// How far values are off in single precision, in units of 2^-24, on samples of 0..1: a rounding costs at most
// half the distance between floats, which is 1 unit for results of 0.5..1, 2 for 1..2, 4 for 2..4, half of
// one for 0.25..0.5 and so on.
//
//                                  luma   Cb     Cr
//     the mean of four pixels             1      1      (of two: 0.5)
//     constants                    0.82   0.38   0.32
//     products with them           0.82   0.38   0.32
//     sums                         1      1      1
//     the codes' two roundings     1      1      1
//     at most                      3.64   3.76   3.64
//
// On samples of 0..2 all of them are twice that. Integers, which are taken as they are, and their sums are
// exact; the rounding of the factor that makes their codes costs at most 1 instead. Units are then those of
// their full scale, which is a power of two or one less: roundings are as large as above, or larger by at
// most 1/255.
//
// Of 8-bit samples the weighted sums are integers below 2^24 and exact: luma has weights in thousandths,
// chroma in parts of 31250. Half of full scale, added to the chroma of four pixels, takes some of it above
// 2^24, where a rounding costs 0.53 units; with the factor and the codes' two roundings that is 2.53 at most.
#pragma once

#include <MediaConversion/converters/ColourTransforms.h>
#include <MediaConversion/converters/kernels/EncodeRows.h>
#include <MediaConversion/converters/kernels/Kernels.h>
#include <MediaConversion/converters/kernels/YCbCrBlocks.h>

namespace MediaConversion {
namespace {

template <class Real>
Real lumaOf(Colours<Real> const& pixel) {
    Real y;
    BgrToY<Real>(pixel.blue, pixel.green, pixel.red, y);
    return y;
}

template <class Order>
Floats lumaOf(BytePixel<Order> const& pixel) {
    return pixel.template weighted<114, 587, 299>();
}

template <class Real>
struct Chroma {
    Real cb, cr;
};

template <class Real>
Chroma<Real> operator+(Chroma<Real> const& a, Chroma<Real> const& b) {
    return {a.cb + b.cb, a.cr + b.cr};
}

/// Of a pixel, or of the sum of several; `half` is the middle of the range.
template <class Real>
Chroma<Real> chromaOf(Colours<Real> const& pixel, double half) {
    Real y;
    Chroma<Real> chroma;
    BgrToYuv<Real>(pixel.blue, pixel.green, pixel.red, y, chroma.cb, chroma.cr, half);
    return chroma;
}

template <class Order>
Chroma<Floats> chromaOf(BytePixel<Order> const& pixel, double half) {
    return {pixel.template weighted<15625, -10352, -5273>() + half,
            pixel.template weighted<-2541, -13084, 15625>() + half};
}

/// The sum of the pixels' chroma. In single precision it is the chroma of their sum: that is made sooner, and
/// the same but for the roundings.
template <class Codes, class Pixel, std::size_t count>
Chroma<typename Codes::Real> chromaSum(std::array<Pixel, count> const& pixels) {
    if constexpr (std::is_same_v<typename Codes::Real, Floats>) {
        auto sums = pixels;
        for (std::size_t half = count / 2; half > 0; half /= 2)
            for (std::size_t i = 0; i < half; ++i)
                sums[i] = sums[i] + sums[i + half];
        return chromaOf(sums[0], count * 0.5 * Codes::fullScale);
    } else {
        auto sum = chromaOf(pixels[0], 0.5);
        for (std::size_t i = 1; i < count; ++i)
            sum = sum + chromaOf(pixels[i], 0.5);
        return sum;
    }
}

struct Part {
    static constexpr int luma = 0, chroma = 1;
};

/// What the formats have in common.
struct Subsampled {
    static constexpr int columns = 2, errorUnits = 4, parts = 2;
    template <int part>
    static constexpr int weightScale = part == Part::luma ? 1000 : 31250;
    using SameDepth = void; // no sample is a code
    template <class Depth>
    static constexpr bool limits = std::is_same_v<Depth, F32>;
};

/// The chroma of a block is the mean of its pixels'.
template <class Block>
struct Encode422 : Subsampled {
    static constexpr int rows = 1, bytes = Block::bytes;

    template <int part, class Pixel, class Codes>
    static auto encode(std::array<Pixel, 2> const& pixels, Codes& codes) {
        auto const code = [&](auto const& value, double weight = 1) {
            return codes(value, Block::bits, weight);
        };
        if constexpr (part == Part::luma)
            return Block::pack(Codes422{code(lumaOf(pixels[0])), 0, code(lumaOf(pixels[1])), 0});
        auto const sum = chromaSum<Codes>(pixels);
        return Block::pack(Codes422{0, code(sum.cb, 0.5), 0, code(sum.cr, 0.5)});
    }
};

/// The chroma of a block is the mean of its pixels'.
struct Encode420 : Subsampled {
    static constexpr int rows = 2, bytes = EightBit420::bytes;

    template <int part, class Pixel, class Codes>
    static auto encode(std::array<Pixel, 4> const& pixels, Codes& codes) {
        auto const code = [&](auto const& value, double weight = 1) {
            return codes(value, EightBit420::bits, weight);
        };
        auto const luma = [&](int pixel) { return code(lumaOf(pixels[pixel])); };
        if constexpr (part == Part::luma)
            return EightBit420::pack(Codes420{0, 0, luma(0), luma(1), luma(2), luma(3)});
        auto const sum = chromaSum<Codes>(pixels);
        return EightBit420::pack(Codes420{code(sum.cb, 0.25), code(sum.cr, 0.25), 0, 0, 0, 0});
    }
};

/// The chroma of a block is that of its left pixel alone, not the mean as in 4:2:2.
struct Encode4224 : Subsampled {
    static constexpr int rows = 1, bytes = Hybrid4224::bytes;

    template <int part, class Pixel, class Codes>
    static auto encode(std::array<Pixel, 2> const& pixels, Codes& codes) {
        using H = Hybrid4224;
        auto const luma = [&](int pixel) { return codes(lumaOf(pixels[pixel]), H::lumaBits); };
        auto const alpha = [&](int pixel) { return codes(pixels[pixel].alpha, H::alphaBits); };
        if constexpr (part == Part::luma)
            return H::pack(Codes4224{luma(0), luma(1), 0, 0, alpha(0), alpha(1)});
        auto const chroma = chromaOf(pixels[0], 0.5);
        return H::pack(
            Codes4224{0, 0, codes(chroma.cb, H::chromaBits), codes(chroma.cr, H::chromaBits), 0, 0});
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
