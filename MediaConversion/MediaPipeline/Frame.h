// The interfaces of frames, and where a matrix that becomes a frame has its first row.
#pragma once

#include <MediaConversion/MediaPipeline/FrameFormat.h>
#include <MediaConversion/MediaPipeline/RawFrameData.h>

#include <opencv2/core/mat.hpp>

#include <memory>

namespace Zentrel {

/// One picture in one format.
class IFrame {
public:
    virtual ~IFrame() = default;

    virtual FrameFormat format() const = 0;
    /// Height in pixels.
    virtual int rows() const = 0;
    /// Width in pixels.
    virtual int cols() const = 0;
};

/// A frame in host memory.
class IImageFrame : public IFrame {
public:
    /// The matrix, one element for each pixel or pixel block; it shares the frame's pixels and must not
    /// outlive a frame over raw data. Empty in a frame that was made from a format alone.
    virtual cv::Mat image() const = 0;
    /// Throws std::runtime_error when the frame has none.
    virtual RawFrameData const& rawFrameData() const = 0;
    virtual bool containsRawFrameData() const = 0;
    /// The type of the matrix.
    virtual int openCvType() const = 0;
    /// A frame of the same format, size and pixels that shares nothing with this one.
    virtual std::unique_ptr<IImageFrame> clone() const = 0;
};

/// A frame in the memory of a graphics card.
class ITextureFrame : public IFrame {};

struct Frame {
    /// Where the first row of a matrix lies in the picture.
    enum class Origin { TopLeft, BottomLeft };
};

} // namespace Zentrel
