// What full and packed frames have in common.
#pragma once

#include <MediaConversion/MediaPipeline/Frame.h>
#include <MediaConversion/MediaPipeline/MemoryPool.h>

#include <map>

namespace Zentrel {

/// The OpenCV matrix type of each format that a kind of frame can have.
using OpenCvTypeTable = std::map<FrameFormat, int>;

/// A frame held as an OpenCV matrix, whose format and type never change.
class ImageFrame : public IImageFrame {
public:
    FrameFormat format() const override { return m_format; }
    cv::Mat image() const override { return m_image; }
    RawFrameData const& rawFrameData() const override;
    bool containsRawFrameData() const override { return m_rawFrameData != nullptr; }
    int openCvType() const override { return m_openCvType; }

    static bool hasMemoryPool();
    /// The pool of all frames; throws std::runtime_error when none has been set.
    static std::shared_ptr<IMemoryPool> memoryPool();
    /// Has all matrices, those of frames among them, take their memory from `pool`; null goes back to
    /// OpenCV's own allocator. Earlier matrices keep their memory, and the pool that it came from, as long as
    /// they live. Not to be called while other threads make matrices.
    static void setMemoryPool(std::shared_ptr<IMemoryPool> pool);

    static bool hasOpenCvTypeForFrameFormat(FrameFormat const& format, OpenCvTypeTable const& table);
    /// Throws std::runtime_error for a format that the table lacks.
    static int findOpenCvTypeForFrameFormatOrThrow(FrameFormat const& format, OpenCvTypeTable const& table);

protected:
    /// An empty frame.
    ImageFrame(OpenCvTypeTable const& table, FrameFormat const& format);
    /// A frame of its own memory; the size is that of the matrix.
    ImageFrame(OpenCvTypeTable const& table, FrameFormat const& format, int rows, int columns);
    /// A frame that shares the matrix, or holds it flipped when its first row is the picture's last.
    ImageFrame(OpenCvTypeTable const& table, FrameFormat const& format, cv::Mat const& matrix,
               Frame::Origin origin);

    ImageFrame(ImageFrame&&) = default;
    ImageFrame& operator=(ImageFrame&&) = default;

    void setImage(cv::Mat const& matrix) { m_image = matrix; }
    /// Throws std::runtime_error for a null pointer.
    void attach(std::unique_ptr<RawFrameData> rawFrameData);

    /// Throws std::runtime_error for a negative size, before it can pass for a huge one.
    static void checkSize(int rows, int columns);
    /// rows * columns; throws std::runtime_error when either is negative.
    static std::uint64_t elementCount(int rows, int columns);

private:
    void verifyImageIsCompatibleWithFrameFormatOrThrow(FrameFormat const& format,
                                                       cv::Mat const& matrix) const;
    void verifyImageIsCompatibleWithPixelPackingOrThrow(cv::Mat const& matrix) const;

    int m_openCvType;
    FrameFormat m_format;
    cv::Mat m_image;
    std::unique_ptr<RawFrameData> m_rawFrameData;
};

} // namespace Zentrel
