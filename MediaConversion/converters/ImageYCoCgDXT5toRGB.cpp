#include <MediaConversion/converters/ImageYCoCgDXT5toRGB.h>

#include <MediaConversion/converters/DxtDecoder.h>
#include <MediaConversion/converters/ParallelRows.h>
#include <MediaConversion/converters/PixelTypes.h>

#include <opencv2/core/mat.hpp>

#include <algorithm>
#include <array>

namespace MediaConversion {

using namespace Dxt;
using Zentrel::FrameFormat;
using Zentrel::FullFrame;
using Zentrel::PackedFrame;
using F = Zentrel::FullFrameFormat;
using P = Zentrel::PackedFrameFormat;

namespace {

/// An opaque pixel.
template <class Pixel>
Pixel pixelOf(Colour const& colour) {
    Pixel pixel;
    std::fill_n(pixel.samples, Pixel::channels, Pixel::Depth::fullScale);
    pixel.samples[Pixel::Order::red] = static_cast<std::uint8_t>(colour.red);
    pixel.samples[Pixel::Order::green] = static_cast<std::uint8_t>(colour.green);
    pixel.samples[Pixel::Order::blue] = static_cast<std::uint8_t>(colour.blue);
    return pixel;
}

/// Decodes a row of blocks into the four rows of pixels that it covers.
template <class BlockDecoder, class Pixel>
void decodeRow(std::uint8_t const* bytes, int count, std::array<Pixel*, blockSize> const& rows) {
    for (int block = 0; block < count; ++block) {
        auto const colours = BlockDecoder::decode(bytes + block * BlockDecoder::pieces * pieceBytes);
        for (int i = 0; i < blockPixels; ++i)
            rows[i / blockSize][block * blockSize + i % blockSize] = pixelOf<Pixel>(colours[i]);
    }
}

template <class BlockDecoder, class Pixel>
FullFrame decode(PackedFrame const& source, FrameFormat const& destination) {
    FullFrame result(destination, source.rows(), source.cols());
    cv::Mat const blocks = source.image();
    cv::Mat pixels = result.image();
    parallelRows(blocks.rows, [&](int row) {
        std::array<Pixel*, blockSize> rows;
        for (int y = 0; y < blockSize; ++y)
            rows[y] = pixels.ptr<Pixel>(row * blockSize + y);
        decodeRow<BlockDecoder>(blocks.ptr(row), blocks.cols, rows);
    });
    return result;
}

template <class Pixel>
FullFrame convertYCoCgDxt5toRgb(PackedFrame const& source, FrameFormat const& destination) {
    return decode<YCoCgDxt5Decoder, Pixel>(source, destination);
}

template <class Pixel>
FullFrame convertRgbDxt1toRgb(PackedFrame const& source, FrameFormat const& destination) {
    return decode<Dxt1Decoder, Pixel>(source, destination);
}

} // namespace

// clang-format off
const ImageYCoCgDXT5toRGB::ConversionTable ImageYCoCgDXT5toRGB::rgbConversion{
    {{P::YCOCG_DXT5_U8(), F::RGB_U8()},  convertYCoCgDxt5toRgb<Pixel<Rgb, U8>>},
    {{P::YCOCG_DXT5_U8(), F::BGR_U8()},  convertYCoCgDxt5toRgb<Pixel<Bgr, U8>>},
    {{P::YCOCG_DXT5_U8(), F::BGRA_U8()}, convertYCoCgDxt5toRgb<Pixel<Bgra, U8>>},
    {{P::RGB_DXT1_U8(),   F::RGB_U8()},  convertRgbDxt1toRgb<Pixel<Rgb, U8>>},
    {{P::RGB_DXT1_U8(),   F::BGR_U8()},  convertRgbDxt1toRgb<Pixel<Bgr, U8>>},
    {{P::RGB_DXT1_U8(),   F::BGRA_U8()}, convertRgbDxt1toRgb<Pixel<Bgra, U8>>},
};
// clang-format on

} // namespace MediaConversion
