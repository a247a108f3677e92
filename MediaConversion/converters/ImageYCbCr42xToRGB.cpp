#include <MediaConversion/converters/ImageYCbCr42xToRGB.h>

#include <MediaConversion/converters/ColourTransforms.h>
#include <MediaConversion/converters/ParallelRows.h>
#include <MediaConversion/converters/Quantisation.h>
#include <MediaConversion/converters/YCbCrBlocks.h>

namespace MediaConversion {

namespace {

using Zentrel::FrameFormat;
using Zentrel::FullFrame;
using Zentrel::PackedFrame;
using F = Zentrel::FullFrameFormat;
using P = Zentrel::PackedFrameFormat;

/// A code as a fraction of full scale.
double fraction(int code, int fullScale) { return code / static_cast<double>(fullScale); }

/// All arguments are fractions of full scale; without an alpha the pixel is opaque.
template <class Out>
Out pixelOf(double y, double cb, double cr, double alpha = 1) {
    using Order = typename Out::Order;
    constexpr auto sample = sampleOf<typename Out::Depth>;
    double blue, green, red;
    YuvToBgr(y, cb, cr, blue, green, red);
    Out pixel;
    pixel.samples[Order::blue] = sample(blue);
    pixel.samples[Order::green] = sample(green);
    pixel.samples[Order::red] = sample(red);
    if constexpr (Out::channels == 4)
        pixel.samples[Order::alpha] = sample(alpha);
    return pixel;
}

template <class Block, class Out>
void decodeRow422(Block const* blocks, Out* pixels, int count) {
    auto const value = [](int code) { return fraction(code, Block::fullScale); };
    for (int block = 0; block < count; ++block, pixels += 2) {
        auto const codes = blocks[block].unpack();
        double const cb = value(codes.cb), cr = value(codes.cr);
        pixels[0] = pixelOf<Out>(value(codes.y0), cb, cr);
        pixels[1] = pixelOf<Out>(value(codes.y1), cb, cr);
    }
}

template <class Out>
void decodeRow420(EightBit420 const* blocks, Out* upper, Out* lower, int count) {
    auto const value = [](int code) { return fraction(code, EightBit420::fullScale); };
    for (int block = 0; block < count; ++block, upper += 2, lower += 2) {
        auto const codes = blocks[block].unpack();
        double const cb = value(codes.cb), cr = value(codes.cr);
        upper[0] = pixelOf<Out>(value(codes.y00), cb, cr);
        upper[1] = pixelOf<Out>(value(codes.y01), cb, cr);
        lower[0] = pixelOf<Out>(value(codes.y10), cb, cr);
        lower[1] = pixelOf<Out>(value(codes.y11), cb, cr);
    }
}

template <class Out>
void decodeRow4224(Hybrid4224 const* blocks, Out* pixels, int count) {
    using H = Hybrid4224;
    for (int block = 0; block < count; ++block, pixels += 2) {
        auto const codes = blocks[block].unpack();
        double const cb = fraction(codes.cb, H::chromaScale), cr = fraction(codes.cr, H::chromaScale);
        pixels[0] = pixelOf<Out>(fraction(codes.y0, H::lumaScale), cb, cr, fraction(codes.a0, H::alphaScale));
        pixels[1] = pixelOf<Out>(fraction(codes.y1, H::lumaScale), cb, cr, fraction(codes.a1, H::alphaScale));
    }
}

/// Calls `decodeRow(blocks, count, pixels, row)` for every row of blocks, with the pixels of a new frame.
template <class Block, class DecodeRow>
FullFrame decoded(PackedFrame const& source, FrameFormat const& destination, DecodeRow const& decodeRow) {
    FullFrame full(destination, source.rows(), source.cols());
    cv::Mat const from = source.image();
    cv::Mat to = full.image();
    parallelRows(from.rows, [&](int row) { decodeRow(from.ptr<Block>(row), from.cols, to, row); });
    return full;
}

template <class Block, class Out>
FullFrame convertYcc422ToRgb(PackedFrame const& source, FrameFormat const& destination) {
    return decoded<Block>(source, destination, [](Block const* blocks, int count, cv::Mat& pixels, int row) {
        decodeRow422(blocks, pixels.ptr<Out>(row), count);
    });
}

template <class Out>
FullFrame convertYcc420ToRgb(PackedFrame const& source, FrameFormat const& destination) {
    using Block = EightBit420;
    return decoded<Block>(source, destination, [](Block const* blocks, int count, cv::Mat& pixels, int row) {
        decodeRow420(blocks, pixels.ptr<Out>(2 * row), pixels.ptr<Out>(2 * row + 1), count);
    });
}

template <class Out>
FullFrame convertYcca4224ToRgba(PackedFrame const& source, FrameFormat const& destination) {
    using Block = Hybrid4224;
    return decoded<Block>(source, destination, [](Block const* blocks, int count, cv::Mat& pixels, int row) {
        decodeRow4224(blocks, pixels.ptr<Out>(row), count);
    });
}

} // namespace

// 8-bit destinations take the upper eight bits of 10-bit codes.
// clang-format off
const ImageYCbCr42xToRGB::ConversionTable ImageYCbCr42xToRGB::rgbConversion{
    {{P::YCBCR_ITU_T871_YUYV_422_U8(),          F::RGB_U8()},        convertYcc422ToRgb<Yuyv422, Pixel<Rgb, U8>>},
    {{P::YCBCR_ITU_T871_YUYV_422_U8(),          F::BGR_U8()},        convertYcc422ToRgb<Yuyv422, Pixel<Bgr, U8>>},
    {{P::YCBCR_ITU_T871_YUYV_422_U8(),          F::BGRA_U8()},       convertYcc422ToRgb<Yuyv422, Pixel<Bgra, U8>>},
    {{P::YCBCR_ITU_T871_YUYV_422_U8(),          F::BGRA_U16()},      convertYcc422ToRgb<Yuyv422, Pixel<Bgra, U16>>},
    {{P::YCBCR_ITU_T871_YUYV_422_U8(),          F::ARGB_U8()},       convertYcc422ToRgb<Yuyv422, Pixel<Argb, U8>>},
    {{P::YCBCR_ITU_T871_YUYV_422_U8(),          F::ARGB_U15plus1()}, convertYcc422ToRgb<Yuyv422, Pixel<Argb, U15plus1>>},
    {{P::YCBCR_ITU_T871_YUYV_422_U8(),          F::BGRA_F32()},      convertYcc422ToRgb<Yuyv422, Pixel<Bgra, F32>>},
    {{P::YCBCR_ITU_T871_9ZT_422_U10(),          F::RGB_U8()},        convertYcc422ToRgb<TenBit422UpperBytes, Pixel<Rgb, U8>>},
    {{P::YCBCR_ITU_T871_9ZT_422_U10(),          F::BGR_U8()},        convertYcc422ToRgb<TenBit422UpperBytes, Pixel<Bgr, U8>>},
    {{P::YCBCR_ITU_T871_9ZT_422_U10(),          F::RGB_U16()},       convertYcc422ToRgb<TenBit422, Pixel<Rgb, U16>>},
    {{P::YCBCR_ITU_T871_9ZT_422_U10(),          F::RGB_U15plus1()},  convertYcc422ToRgb<TenBit422, Pixel<Rgb, U15plus1>>},
    {{P::YCBCR_ITU_T871_9ZT_422_U10(),          F::ARGB_U8()},       convertYcc422ToRgb<TenBit422UpperBytes, Pixel<Argb, U8>>},
    {{P::YCBCR_ITU_T871_9ZT_422_U10(),          F::ARGB_U15plus1()}, convertYcc422ToRgb<TenBit422, Pixel<Argb, U15plus1>>},
    {{P::YCBCR_ITU_T871_9ZT_422_U10(),          F::BGRA_U16()},      convertYcc422ToRgb<TenBit422, Pixel<Bgra, U16>>},
    {{P::YCBCR_ITU_T871_9ZT_422_U10(),          F::BGRA_U8()},       convertYcc422ToRgb<TenBit422UpperBytes, Pixel<Bgra, U8>>},
    {{P::YCBCR_ITU_T871_9ZT_422_U10(),          F::BGRA_F32()},      convertYcc422ToRgb<TenBit422, Pixel<Bgra, F32>>},
    {{P::YCBCRA_ITU_T871_9ZT_4224_HYBRID_U12(), F::BGRA_F32()},      convertYcca4224ToRgba<Pixel<Bgra, F32>>},
    {{P::YCBCR_ITU_T871_9ZT_420_U8(),           F::RGB_U8()},        convertYcc420ToRgb<Pixel<Rgb, U8>>},
    {{P::YCBCR_ITU_T871_9ZT_420_U8(),           F::BGR_U8()},        convertYcc420ToRgb<Pixel<Bgr, U8>>},
    {{P::YCBCR_ITU_T871_9ZT_420_U8(),           F::BGRA_U8()},       convertYcc420ToRgb<Pixel<Bgra, U8>>},
    {{P::YCBCR_ITU_T871_9ZT_420_U8(),           F::BGRA_U16()},      convertYcc420ToRgb<Pixel<Bgra, U16>>},
    {{P::YCBCR_ITU_T871_9ZT_420_U8(),           F::BGRA_F32()},      convertYcc420ToRgb<Pixel<Bgra, F32>>},
};
// clang-format on

} // namespace MediaConversion
