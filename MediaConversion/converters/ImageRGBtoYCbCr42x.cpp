#include <MediaConversion/converters/ImageRGBtoYCbCr42x.h>

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

struct YCbCr {
    double y, cb, cr;
};

template <class Order, class Depth>
YCbCr yCbCrOf(Pixel<Order, Depth> const& pixel) {
    YCbCr result;
    BgrToYuv(normalised<Depth>(pixel.blue()), normalised<Depth>(pixel.green()),
             normalised<Depth>(pixel.red()), result.y, result.cb, result.cr);
    return result;
}

template <class Order, class Depth>
double lumaOf(Pixel<Order, Depth> const& pixel) {
    double y;
    BgrToY(normalised<Depth>(pixel.blue()), normalised<Depth>(pixel.green()), normalised<Depth>(pixel.red()),
           y);
    return y;
}

/// The chroma of a block is the mean of its pixels'.
template <class Source, class Block>
void encodeRow422(Source const* pixels, Block* blocks, int count) {
    auto const code = [](double value) { return codeOf(value, Block::fullScale); };
    for (int block = 0; block < count; ++block, pixels += 2) {
        auto const left = yCbCrOf(pixels[0]), right = yCbCrOf(pixels[1]);
        blocks[block] = Block::pack({code(left.y), code((left.cb + right.cb) * 0.5), //
                                     code(right.y), code((left.cr + right.cr) * 0.5)});
    }
}

/// The chroma of a block is the mean of its pixels'.
template <class Source>
void encodeRow420(Source const* upper, Source const* lower, EightBit420* blocks, int count) {
    auto const code = [](double value) { return codeOf(value, EightBit420::fullScale); };
    for (int block = 0; block < count; ++block, upper += 2, lower += 2) {
        auto const p00 = yCbCrOf(upper[0]), p01 = yCbCrOf(upper[1]);
        auto const p10 = yCbCrOf(lower[0]), p11 = yCbCrOf(lower[1]);
        blocks[block] = EightBit420::pack({code((p00.cb + p01.cb + p10.cb + p11.cb) * 0.25),
                                           code((p00.cr + p01.cr + p10.cr + p11.cr) * 0.25), //
                                           code(p00.y), code(p01.y), code(p10.y), code(p11.y)});
    }
}

/// The chroma of a block is that of its left pixel alone, not the mean as in 4:2:2.
template <class Source>
void encodeRow4224(Source const* pixels, Hybrid4224* blocks, int count) {
    using Depth = typename Source::Depth;
    using H = Hybrid4224;
    for (int block = 0; block < count; ++block, pixels += 2) {
        auto const left = yCbCrOf(pixels[0]);
        blocks[block] = H::pack({codeOf(left.y, H::lumaScale), codeOf(lumaOf(pixels[1]), H::lumaScale),
                                 codeOf(left.cb, H::chromaScale), codeOf(left.cr, H::chromaScale),
                                 codeOf(normalised<Depth>(pixels[0].alpha()), H::alphaScale),
                                 codeOf(normalised<Depth>(pixels[1].alpha()), H::alphaScale)});
    }
}

/// Calls `encodeRow(pixels, row, blocks, count)` for every row of blocks of a new frame.
template <class Block, class EncodeRow>
PackedFrame encoded(FullFrame const& source, FrameFormat const& destination, EncodeRow const& encodeRow) {
    PackedFrame packed(destination, source.rows(), source.cols());
    cv::Mat const from = source.image();
    cv::Mat to = packed.image();
    parallelRows(to.rows, [&](int row) { encodeRow(from, row, to.ptr<Block>(row), to.cols); });
    return packed;
}

template <class Source, class Block>
PackedFrame convertRgbToYcc422(FullFrame const& source, FrameFormat const& destination) {
    return encoded<Block>(source, destination, [](cv::Mat const& pixels, int row, Block* blocks, int count) {
        encodeRow422(pixels.ptr<Source>(row), blocks, count);
    });
}

template <class Source>
PackedFrame convertRgbToYcc420(FullFrame const& source, FrameFormat const& destination) {
    using Block = EightBit420;
    return encoded<Block>(source, destination, [](cv::Mat const& pixels, int row, Block* blocks, int count) {
        encodeRow420(pixels.ptr<Source>(2 * row), pixels.ptr<Source>(2 * row + 1), blocks, count);
    });
}

template <class Source>
PackedFrame convertRgbaToYcca4224(FullFrame const& source, FrameFormat const& destination) {
    using Block = Hybrid4224;
    return encoded<Block>(source, destination, [](cv::Mat const& pixels, int row, Block* blocks, int count) {
        encodeRow4224(pixels.ptr<Source>(row), blocks, count);
    });
}

} // namespace

// clang-format off
const ImageRGBtoYCbCr42x::ConversionTable ImageRGBtoYCbCr42x::yccConversion{
    {{F::RGB_U8(),        P::YCBCR_ITU_T871_YUYV_422_U8()},          convertRgbToYcc422<Pixel<Rgb, U8>, Yuyv422>},
    {{F::RGB_U8(),        P::YCBCR_ITU_T871_9ZT_420_U8()},           convertRgbToYcc420<Pixel<Rgb, U8>>},
    {{F::RGB_U15plus1(),  P::YCBCR_ITU_T871_9ZT_422_U10()},          convertRgbToYcc422<Pixel<Rgb, U15plus1>, TenBit422>},
    {{F::BGR_U8(),        P::YCBCR_ITU_T871_YUYV_422_U8()},          convertRgbToYcc422<Pixel<Bgr, U8>, Yuyv422>},
    {{F::BGR_U8(),        P::YCBCR_ITU_T871_9ZT_420_U8()},           convertRgbToYcc420<Pixel<Bgr, U8>>},
    {{F::BGR_U16(),       P::YCBCR_ITU_T871_YUYV_422_U8()},          convertRgbToYcc422<Pixel<Bgr, U16>, Yuyv422>},
    {{F::BGR_U16(),       P::YCBCR_ITU_T871_9ZT_422_U10()},          convertRgbToYcc422<Pixel<Bgr, U16>, TenBit422>},
    {{F::BGR_U16(),       P::YCBCR_ITU_T871_9ZT_420_U8()},           convertRgbToYcc420<Pixel<Bgr, U16>>},
    {{F::BGR_F32(),       P::YCBCR_ITU_T871_YUYV_422_U8()},          convertRgbToYcc422<Pixel<Bgr, F32>, Yuyv422>},
    {{F::BGR_F32(),       P::YCBCR_ITU_T871_9ZT_422_U10()},          convertRgbToYcc422<Pixel<Bgr, F32>, TenBit422>},
    {{F::BGR_F32(),       P::YCBCR_ITU_T871_9ZT_420_U8()},           convertRgbToYcc420<Pixel<Bgr, F32>>},
    {{F::BGRA_U8(),       P::YCBCR_ITU_T871_YUYV_422_U8()},          convertRgbToYcc422<Pixel<Bgra, U8>, Yuyv422>},
    {{F::BGRA_U8(),       P::YCBCR_ITU_T871_9ZT_422_U10()},          convertRgbToYcc422<Pixel<Bgra, U8>, TenBit422>},
    {{F::BGRA_U8(),       P::YCBCR_ITU_T871_9ZT_420_U8()},           convertRgbToYcc420<Pixel<Bgra, U8>>},
    {{F::BGRA_U16(),      P::YCBCR_ITU_T871_YUYV_422_U8()},          convertRgbToYcc422<Pixel<Bgra, U16>, Yuyv422>},
    {{F::BGRA_U16(),      P::YCBCR_ITU_T871_9ZT_422_U10()},          convertRgbToYcc422<Pixel<Bgra, U16>, TenBit422>},
    {{F::BGRA_U16(),      P::YCBCR_ITU_T871_9ZT_420_U8()},           convertRgbToYcc420<Pixel<Bgra, U16>>},
    {{F::BGRA_F32(),      P::YCBCR_ITU_T871_YUYV_422_U8()},          convertRgbToYcc422<Pixel<Bgra, F32>, Yuyv422>},
    {{F::BGRA_F32(),      P::YCBCR_ITU_T871_9ZT_422_U10()},          convertRgbToYcc422<Pixel<Bgra, F32>, TenBit422>},
    {{F::BGRA_F32(),      P::YCBCRA_ITU_T871_9ZT_4224_HYBRID_U12()}, convertRgbaToYcca4224<Pixel<Bgra, F32>>},
    {{F::BGRA_F32(),      P::YCBCR_ITU_T871_9ZT_420_U8()},           convertRgbToYcc420<Pixel<Bgra, F32>>},
    {{F::ARGB_U8(),       P::YCBCR_ITU_T871_YUYV_422_U8()},          convertRgbToYcc422<Pixel<Argb, U8>, Yuyv422>},
    {{F::ARGB_U8(),       P::YCBCR_ITU_T871_9ZT_422_U10()},          convertRgbToYcc422<Pixel<Argb, U8>, TenBit422>},
    {{F::ARGB_U15plus1(), P::YCBCR_ITU_T871_YUYV_422_U8()},          convertRgbToYcc422<Pixel<Argb, U15plus1>, Yuyv422>},
    {{F::ARGB_U15plus1(), P::YCBCR_ITU_T871_9ZT_422_U10()},          convertRgbToYcc422<Pixel<Argb, U15plus1>, TenBit422>},
};
// clang-format on

} // namespace MediaConversion
