#include <MediaConversion/converters/ImageRGBtoYCoCgDXT5.h>

#include <MediaConversion/converters/DxtEncoder.h>
#include <MediaConversion/converters/Lanes.h>
#include <MediaConversion/converters/ParallelRows.h>
#include <MediaConversion/converters/PixelTypes.h>

#include <opencv2/core/mat.hpp>

#include <array>
#include <stdexcept>
#include <string>

namespace MediaConversion {

using namespace Dxt;
using Zentrel::FrameFormat;
using Zentrel::FullFrame;
using Zentrel::PackedFrame;
using F = Zentrel::FullFrameFormat;
using P = Zentrel::PackedFrameFormat;

namespace {

/// The four rows of pixels that a row of blocks covers.
template <class Pixel>
using PixelRows = std::array<Pixel const*, blockSize>;

/// The pixels of neighbouring blocks from column `x` on, one block in each lane.
template <class Int, class Pixel>
RgbPixels<Int> loadBlocks(PixelRows<Pixel> const& rows, int x) {
    RgbPixels<Int> blocks;
    for (int i = 0; i < blockPixels; ++i) {
        Pixel const* const pixels = rows[i / blockSize] + x + i % blockSize;
        typename Int::Numbers red, green, blue;
        for (int lane = 0; lane < Int::count; ++lane) {
            Pixel const& pixel = pixels[lane * blockSize];
            red[lane] = pixel.red();
            green[lane] = pixel.green();
            blue[lane] = pixel.blue();
        }
        blocks.red[i] = Int(red);
        blocks.green[i] = Int(green);
        blocks.blue[i] = Int(blue);
    }
    return blocks;
}

/// Writes the blocks in the lanes one after the other.
template <class Int, std::size_t pieces>
void storeBlocks(std::array<Piece<Int>, pieces> const& blocks, std::uint8_t* bytes) {
    for (std::size_t p = 0; p < pieces; ++p)
        for (std::size_t w = 0; w < blocks[p].size(); ++w) {
            auto const words = blocks[p][w].numbers();
            std::uint8_t* const place = bytes + p * pieceBytes + w * 2;
            for (int lane = 0; lane < Int::count; ++lane) {
                place[lane * pieces * pieceBytes] = static_cast<std::uint8_t>(words[lane]);
                place[lane * pieces * pieceBytes + 1] = static_cast<std::uint8_t>(words[lane] >> 8);
            }
        }
}

/// Encodes as many blocks of a row at once as fit into `Int`, from block `first` on; returns the first one
/// left.
template <class BlockEncoder, class Int, class Pixel>
int encodeBlocks(PixelRows<Pixel> const& rows, std::uint8_t* bytes, int first, int count) {
    for (; first + Int::count <= count; first += Int::count)
        storeBlocks(BlockEncoder::encode(loadBlocks<Int>(rows, first * blockSize)),
                    bytes + first * BlockEncoder::pieces * pieceBytes);
    return first;
}

template <class BlockEncoder, class Pixel>
void encodeRow(PixelRows<Pixel> const& rows, std::uint8_t* bytes, int count) {
    int const first = encodeBlocks<BlockEncoder, Lanes<8>>(rows, bytes, 0, count);
    encodeBlocks<BlockEncoder, Lanes<1>>(rows, bytes, first, count);
}

template <class BlockEncoder, class Pixel>
PackedFrame encode(const char* compression, FrameFormat const& supported, FullFrame const& source,
                   FrameFormat const& destination) {
    if (destination != supported)
        throw std::runtime_error(std::string(compression) + " conversion destination format only supports " +
                                 FrameFormat::toString(supported) + ", no support for  " +
                                 FrameFormat::toString(destination));

    PackedFrame result(destination, source.rows(), source.cols());
    cv::Mat const pixels = source.image();
    cv::Mat blocks = result.image();
    parallelRows(blocks.rows, [&](int row) {
        PixelRows<Pixel> rows;
        for (int y = 0; y < blockSize; ++y)
            rows[y] = pixels.ptr<Pixel>(row * blockSize + y);
        encodeRow<BlockEncoder>(rows, blocks.ptr(row), blocks.cols);
    });
    return result;
}

template <class Pixel>
PackedFrame convertRgbToYCoCgDxt5(FullFrame const& source, FrameFormat const& destination) {
    return encode<YCoCgDxt5Encoder, Pixel>("DXT5", P::YCOCG_DXT5_U8(), source, destination);
}

PackedFrame convertRgbaToRgbDxt1(FullFrame const& source, FrameFormat const& destination) {
    return encode<Dxt1Encoder, Pixel<Rgba, U8>>("DXT1", P::RGB_DXT1_U8(), source, destination);
}

} // namespace

// clang-format off
const ImageRGBtoYCoCgDXT5::ConversionTable ImageRGBtoYCoCgDXT5::yccConversion{
    {{F::RGB_U8(),  P::YCOCG_DXT5_U8()}, convertRgbToYCoCgDxt5<Pixel<Rgb, U8>>},
    {{F::BGR_U8(),  P::YCOCG_DXT5_U8()}, convertRgbToYCoCgDxt5<Pixel<Bgr, U8>>},
    {{F::RGBA_U8(), P::YCOCG_DXT5_U8()}, convertRgbToYCoCgDxt5<Pixel<Rgba, U8>>},
    {{F::BGRA_U8(), P::YCOCG_DXT5_U8()}, convertRgbToYCoCgDxt5<Pixel<Bgra, U8>>},
    {{F::RGBA_U8(), P::RGB_DXT1_U8()},   convertRgbaToRgbDxt1},
};
// clang-format on

} // namespace MediaConversion
