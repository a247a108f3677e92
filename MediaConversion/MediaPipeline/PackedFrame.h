// Frames with one matrix element for each block of pixels of a packed format.
#pragma once

#include <MediaConversion/MediaPipeline/ImageFrame.h>

#include <vector>

namespace Zentrel {

/// Rows and columns are those of the picture, in pixels, and must be multiples of the format's block. All
/// constructors throw std::runtime_error for other sizes and for a format that is not one of packed frames.
class PackedFrame final : public ImageFrame {
public:
    /// The 12 formats that a packed frame can have.
    static const OpenCvTypeTable openCvTypes;

    static bool is(FrameFormat const& format);

    /// A new frame with uninitialised pixels.
    static std::unique_ptr<PackedFrame> create(FrameFormat const& format, int rows, int columns);
    /// A frame over the pixels in `rawFrameData`, without a copy. Throws std::runtime_error when their size
    /// is not exactly that of the picture.
    static std::unique_ptr<PackedFrame> createRaw(FrameFormat const& format, int rows, int columns,
                                                  std::unique_ptr<RawFrameData> rawFrameData);

    explicit PackedFrame(FrameFormat const& format);
    PackedFrame(FrameFormat const& format, int rows, int columns);
    /// A copy of the bytes, whose count must be exactly that of the picture.
    PackedFrame(FrameFormat const& format, int rows, int columns, std::vector<std::uint8_t> const& bytes);
    PackedFrame(FrameFormat const& format, int rows, int columns, std::unique_ptr<RawFrameData> rawFrameData);
    /// A frame of a matrix of blocks. Throws std::runtime_error for a matrix of another type than the
    /// format's.
    PackedFrame(FrameFormat const& format, cv::Mat const& matrix, Frame::Origin origin);

    int rows() const override;
    int cols() const override;
    std::unique_ptr<IImageFrame> clone() const override;

    /// The rows and columns of the matrix of a picture of this size.
    static int packedRows(FrameFormat const& format, int rows);
    static int packedColumns(FrameFormat const& format, int columns);
    static int packedRows(FrameFormat const& format, int openCvType, int rows);
    static int packedColumns(FrameFormat const& format, int openCvType, int columns);

    /// Throw std::runtime_error for a size that is not a multiple of the format's block.
    static void checkRowPixelAlignment(FrameFormat const& format, int rows);
    static void checkColumnPixelAlignment(FrameFormat const& format, int columns);
    /// Throws std::runtime_error when the type's element size is not the packing's.
    static void checkPixelBlockAlignment(PixelPacking const& packing, int openCvType);

    /// A matrix header over the caller's bytes. Throws std::runtime_error when `size` is not exactly the
    /// picture's.
    static cv::Mat createMatrixHeaderForData(FrameFormat const& format, int rows, int columns, void* data,
                                             std::uint64_t size);
};

} // namespace Zentrel
