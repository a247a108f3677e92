// The chroma-subsampled YCbCr formats to RGB.
#pragma once

#include <MediaConversion/converters/ColourTransforms.h>
#include <MediaConversion/converters/kernels/DecodeRows.h>
#include <MediaConversion/converters/kernels/Fractions.h>
#include <MediaConversion/converters/kernels/YCbCrBlocks.h>

namespace MediaConversion {
namespace {

/// A value, nominally 0..1, as a sample of the depth, limited to what it holds.
template <class Depth>
Ints sampleOf(Doubles value) {
    if constexpr (std::is_same_v<Depth, F32>)
        return limited(Floats(value), 1).bits();
    else
        return max(min(truncatedNumbers(value * Depth::fullScale + 0.5), Depth::fullScale), 0);
}

/// What an 8-bit code of chroma adds to one of luma, for a factor of the transform, in units of 2^-23.
inline Ints chromaPart(double factor, Ints code) {
    return static_cast<std::int32_t>(factor * (1 << 22) + 0.5) * (2 * code - 255);
}

inline Ints rounded(Ints part) { return (part + (1 << 22)) >> 23; }

/// 8-bit samples from 8-bit codes with integers. What the chroma adds is a multiple of 1/100000 and never a
/// half, nor nearer to one than to its neighbours: double precision and these integers round it to the same.
template <std::size_t count>
std::array<Samples, count> eightBitPixelsOf(std::array<Ints, count> const& lumas, Ints cb, Ints cr) {
    Ints const blue = rounded(chromaPart(1.772, cb)), red = rounded(chromaPart(1.402, cr));
    Ints const green = rounded(0 - chromaPart(0.34414, cb) - chromaPart(0.71414, cr));
    auto const limited = [](Ints sample) { return max(min(sample, 255), 0); };
    std::array<Samples, count> pixels;
    unrolled<count>([&](auto i) {
        pixels[i] = {limited(lumas[i] + red), limited(lumas[i] + green), limited(lumas[i] + blue), 255};
    });
    return pixels;
}

/// Opaque pixels with common chroma, from the codes.
template <int lumaScale, int chromaScale, class Depth, std::size_t count>
std::array<Samples, count> pixelsOf(std::array<Ints, count> const& lumas, Ints cb, Ints cr) {
    if constexpr (std::is_same_v<Depth, U8>) {
        static_assert(lumaScale == 255 && chromaScale == 255);
        return eightBitPixelsOf(lumas, cb, cr);
    } else {
        Doubles const u = fraction<chromaScale>(cb), v = fraction<chromaScale>(cr);
        std::array<Samples, count> pixels;
        unrolled<count>([&](auto i) {
            Doubles blue, green, red;
            YuvToBgr(fraction<lumaScale>(lumas[i]), u, v, blue, green, red);
            pixels[i] = {sampleOf<Depth>(red), sampleOf<Depth>(green), sampleOf<Depth>(blue),
                         opaque<Depth>()};
        });
        return pixels;
    }
}

template <class Block>
struct Decode422 {
    static constexpr int rows = 1, columns = 2, bytes = Block::bytes;

    template <class Depth, class Words>
    static std::array<Samples, 2> decode(Words const& words) {
        auto const [y0, cb, y1, cr] = Block::unpack(words);
        return pixelsOf<Block::fullScale, Block::fullScale, Depth, 2>({y0, y1}, cb, cr);
    }
};

struct Decode420 {
    static constexpr int rows = 2, columns = 2, bytes = EightBit420::bytes;

    template <class Depth, class Words>
    static std::array<Samples, 4> decode(Words const& words) {
        auto const [cb, cr, y00, y01, y10, y11] = EightBit420::unpack(words);
        return pixelsOf<EightBit420::fullScale, EightBit420::fullScale, Depth, 4>({y00, y01, y10, y11}, cb,
                                                                                  cr);
    }
};

struct Decode4224 {
    static constexpr int rows = 1, columns = 2, bytes = Hybrid4224::bytes;

    template <class Depth, class Words>
    static std::array<Samples, 2> decode(Words const& words) {
        using H = Hybrid4224;
        auto const [y0, y1, cb, cr, a0, a1] = H::unpack(words);
        auto pixels = pixelsOf<H::lumaScale, H::chromaScale, Depth, 2>({y0, y1}, cb, cr);
        pixels[0].alpha = sampleOf<Depth>(fraction<H::alphaScale>(a0));
        pixels[1].alpha = sampleOf<Depth>(fraction<H::alphaScale>(a1));
        return pixels;
    }
};

using F = Zentrel::FullFrameFormat;
using P = Zentrel::PackedFrameFormat;

// 8-bit destinations take the upper eight bits of 10-bit codes.
// clang-format off
constexpr RowDecoder upsampling[] = {
    {P::YCBCR_ITU_T871_YUYV_422_U8,          F::RGB_U8,        decodeRow<Decode422<Yuyv422>, Pixel<Rgb, U8>>},
    {P::YCBCR_ITU_T871_YUYV_422_U8,          F::BGR_U8,        decodeRow<Decode422<Yuyv422>, Pixel<Bgr, U8>>},
    {P::YCBCR_ITU_T871_YUYV_422_U8,          F::BGRA_U8,       decodeRow<Decode422<Yuyv422>, Pixel<Bgra, U8>>},
    {P::YCBCR_ITU_T871_YUYV_422_U8,          F::BGRA_U16,      decodeRow<Decode422<Yuyv422>, Pixel<Bgra, U16>>},
    {P::YCBCR_ITU_T871_YUYV_422_U8,          F::ARGB_U8,       decodeRow<Decode422<Yuyv422>, Pixel<Argb, U8>>},
    {P::YCBCR_ITU_T871_YUYV_422_U8,          F::ARGB_U15plus1, decodeRow<Decode422<Yuyv422>, Pixel<Argb, U15plus1>>},
    {P::YCBCR_ITU_T871_YUYV_422_U8,          F::BGRA_F32,      decodeRow<Decode422<Yuyv422>, Pixel<Bgra, F32>>},
    {P::YCBCR_ITU_T871_9ZT_422_U10,          F::RGB_U8,        decodeRow<Decode422<TenBit422UpperBytes>, Pixel<Rgb, U8>>},
    {P::YCBCR_ITU_T871_9ZT_422_U10,          F::BGR_U8,        decodeRow<Decode422<TenBit422UpperBytes>, Pixel<Bgr, U8>>},
    {P::YCBCR_ITU_T871_9ZT_422_U10,          F::RGB_U16,       decodeRow<Decode422<TenBit422>, Pixel<Rgb, U16>>},
    {P::YCBCR_ITU_T871_9ZT_422_U10,          F::RGB_U15plus1,  decodeRow<Decode422<TenBit422>, Pixel<Rgb, U15plus1>>},
    {P::YCBCR_ITU_T871_9ZT_422_U10,          F::ARGB_U8,       decodeRow<Decode422<TenBit422UpperBytes>, Pixel<Argb, U8>>},
    {P::YCBCR_ITU_T871_9ZT_422_U10,          F::ARGB_U15plus1, decodeRow<Decode422<TenBit422>, Pixel<Argb, U15plus1>>},
    {P::YCBCR_ITU_T871_9ZT_422_U10,          F::BGRA_U16,      decodeRow<Decode422<TenBit422>, Pixel<Bgra, U16>>},
    {P::YCBCR_ITU_T871_9ZT_422_U10,          F::BGRA_U8,       decodeRow<Decode422<TenBit422UpperBytes>, Pixel<Bgra, U8>>},
    {P::YCBCR_ITU_T871_9ZT_422_U10,          F::BGRA_F32,      decodeRow<Decode422<TenBit422>, Pixel<Bgra, F32>>},
    {P::YCBCRA_ITU_T871_9ZT_4224_HYBRID_U12, F::BGRA_F32,      decodeRow<Decode4224, Pixel<Bgra, F32>>},
    {P::YCBCR_ITU_T871_9ZT_420_U8,           F::RGB_U8,        decodeRow<Decode420, Pixel<Rgb, U8>>},
    {P::YCBCR_ITU_T871_9ZT_420_U8,           F::BGR_U8,        decodeRow<Decode420, Pixel<Bgr, U8>>},
    {P::YCBCR_ITU_T871_9ZT_420_U8,           F::BGRA_U8,       decodeRow<Decode420, Pixel<Bgra, U8>>},
    {P::YCBCR_ITU_T871_9ZT_420_U8,           F::BGRA_U16,      decodeRow<Decode420, Pixel<Bgra, U16>>},
    {P::YCBCR_ITU_T871_9ZT_420_U8,           F::BGRA_F32,      decodeRow<Decode420, Pixel<Bgra, F32>>},
};
// clang-format on

} // namespace
} // namespace MediaConversion
