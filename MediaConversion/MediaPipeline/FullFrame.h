// Frames with one matrix element for each pixel.
#pragma once

#include <MediaConversion/MediaPipeline/ImageFrame.h>

namespace Zentrel {

/// Its matrix has rows() x cols() pixels. All constructors throw std::runtime_error for a format that is not
/// one of full frames.
class FullFrame final : public ImageFrame {
public:
    /// The 27 formats that a full frame can have.
    static const OpenCvTypeTable openCvTypes;

    static bool is(FrameFormat const& format);

    /// A new frame with uninitialised pixels.
    static std::unique_ptr<FullFrame> create(FrameFormat const& format, int rows, int columns);
    /// A frame over the pixels in `rawFrameData`, without a copy. Throws std::runtime_error when their size
    /// is not exactly that of the picture.
    static std::unique_ptr<FullFrame> createRaw(FrameFormat const& format, int rows, int columns,
                                                std::unique_ptr<RawFrameData> rawFrameData);

    explicit FullFrame(FrameFormat const& format);
    FullFrame(FrameFormat const& format, int rows, int columns);
    FullFrame(FrameFormat const& format, int rows, int columns, std::unique_ptr<RawFrameData> rawFrameData);
    /// Throws std::runtime_error for a matrix of another type than the format's.
    FullFrame(FrameFormat const& format, cv::Mat const& matrix, Frame::Origin origin);

    int rows() const override { return image().rows; }
    int cols() const override { return image().cols; }
    std::unique_ptr<IImageFrame> clone() const override;
};

} // namespace Zentrel
