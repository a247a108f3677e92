#include <MediaConversion/MediaPipeline/ImageFrame.h>

#include <MediaConversion/MediaPipeline/OpenCvMatAllocator.h>

#include <opencv2/core.hpp>

#include <stdexcept>

namespace Zentrel {

namespace {

struct ClassWide {
    std::shared_ptr<IMemoryPool> m_memoryPool;
    std::shared_ptr<OpenCvMatAllocator> m_cvMatAllocator;
};

/// Never destroyed: matrices in other static objects may still be made and freed after any destructor of
/// ours.
ClassWide& classWide() {
    static auto* const members = new ClassWide;
    return *members;
}

} // namespace

ImageFrame::ImageFrame(OpenCvTypeTable const& table, FrameFormat const& format)
    : m_openCvType(findOpenCvTypeForFrameFormatOrThrow(format, table)), m_format(format) {}

ImageFrame::ImageFrame(OpenCvTypeTable const& table, FrameFormat const& format, int rows, int columns)
    : ImageFrame(table, format) {
    checkSize(rows, columns);
    m_image.create(rows, columns, m_openCvType);
}

ImageFrame::ImageFrame(OpenCvTypeTable const& table, FrameFormat const& format, cv::Mat const& matrix,
                       Frame::Origin origin)
    : ImageFrame(table, format) {
    verifyImageIsCompatibleWithFrameFormatOrThrow(format, matrix);
    verifyImageIsCompatibleWithPixelPackingOrThrow(matrix);
    if (origin == Frame::Origin::TopLeft)
        m_image = matrix;
    else
        cv::flip(matrix, m_image, 0);
}

RawFrameData const& ImageFrame::rawFrameData() const {
    if (!m_rawFrameData)
        throw std::runtime_error("ImageFrame does not contain any raw data");
    return *m_rawFrameData;
}

void ImageFrame::attach(std::unique_ptr<RawFrameData> rawFrameData) {
    if (!rawFrameData)
        throw std::runtime_error("no rawFrameData");
    m_rawFrameData = std::move(rawFrameData);
}

void ImageFrame::checkSize(int rows, int columns) {
    if (rows < 0 || columns < 0)
        throw std::runtime_error("Frame size of " + std::to_string(rows) + " rows and " +
                                 std::to_string(columns) + " columns is negative");
}

std::uint64_t ImageFrame::elementCount(int rows, int columns) {
    checkSize(rows, columns);
    return static_cast<std::uint64_t>(rows) * static_cast<std::uint64_t>(columns);
}

bool ImageFrame::hasMemoryPool() { return classWide().m_memoryPool != nullptr; }

std::shared_ptr<IMemoryPool> ImageFrame::memoryPool() {
    if (!hasMemoryPool())
        throw std::runtime_error("ImageFrame has no memory pool - did you forget to set it?");
    return classWide().m_memoryPool;
}

void ImageFrame::setMemoryPool(std::shared_ptr<IMemoryPool> pool) {
    auto allocator = pool ? std::make_shared<OpenCvMatAllocator>(pool) : nullptr;
    cv::Mat::setDefaultAllocator(allocator ? allocator.get() : cv::Mat::getStdAllocator());
    classWide() = {std::move(pool), std::move(allocator)};
}

bool ImageFrame::hasOpenCvTypeForFrameFormat(FrameFormat const& format, OpenCvTypeTable const& table) {
    return table.count(format) != 0;
}

int ImageFrame::findOpenCvTypeForFrameFormatOrThrow(FrameFormat const& format, OpenCvTypeTable const& table) {
    auto const found = table.find(format);
    if (found == table.end())
        throw std::runtime_error("OpenCV type not defined for frame format " + FrameFormat::toString(format));
    return found->second;
}

void ImageFrame::verifyImageIsCompatibleWithFrameFormatOrThrow(FrameFormat const& format,
                                                               cv::Mat const& matrix) const {
    if (matrix.type() != m_openCvType)
        throw std::runtime_error("Frame format " + FrameFormat::toString(format) + " needs OpenCV type " +
                                 std::to_string(m_openCvType) +
                                 " and is incompatible with supplied image of type " +
                                 std::to_string(matrix.type()));
}

void ImageFrame::verifyImageIsCompatibleWithPixelPackingOrThrow(cv::Mat const& matrix) const {
    std::uint32_t const bytes = m_format.pixelPacking.bytes();
    if (matrix.elemSize() != bytes)
        throw std::runtime_error("Frame pixel packing of " + std::to_string(bytes) +
                                 " bytes is incompatible with supplied image element size of " +
                                 std::to_string(matrix.elemSize()));
}

} // namespace Zentrel
