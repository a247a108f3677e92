#include <MediaConversion/MediaPipeline/PackedFrame.h>

#include <stdexcept>

namespace Zentrel {

namespace {

using Packed = PackedFrameFormat;

/// Throws when `size` pixels of a picture's `direction` are not whole blocks.
void checkAlignment(const char* direction, const char* sizes, std::uint32_t block, int size) {
    if (size % static_cast<int>(block) != 0)
        throw std::runtime_error(std::string("Frame format ") + direction + " pixel packing of " +
                                 std::to_string(block) + " pixels is incompatible with supplied image " +
                                 sizes + " of " + std::to_string(size));
}

int blocks(std::uint32_t block, int size) {
    auto const pixels = static_cast<std::uint32_t>(size);
    return static_cast<int>((pixels + (block - pixels % block) % block) / block);
}

} // namespace

const OpenCvTypeTable PackedFrame::openCvTypes{
    {Packed::RGB_DPX_FILLED_U10(), CV_32SC1},
    {Packed::BGR_DPX_FILLED_U10(), CV_32SC1},
    {Packed::RGB_DPX_PACKED_U12(), CV_8UC(9)},
    {Packed::BGR_DPX_PACKED_U12(), CV_8UC(9)},
    {Packed::RGB_SMPTE_2110_U12(), CV_8UC(9)},
    {Packed::BGR_SMPTE_2110_U12(), CV_8UC(9)},
    {Packed::RGB_DXT1_U8(), CV_8UC(8)},
    {Packed::YCBCR_ITU_T871_YUYV_422_U8(), CV_8UC4},
    {Packed::YCBCR_ITU_T871_9ZT_422_U10(), CV_8UC(5)},
    {Packed::YCBCRA_ITU_T871_9ZT_4224_HYBRID_U12(), CV_32SC2},
    {Packed::YCBCR_ITU_T871_9ZT_420_U8(), CV_8UC(6)},
    {Packed::YCOCG_DXT5_U8(), CV_8UC(16)},
};

bool PackedFrame::is(FrameFormat const& format) { return hasOpenCvTypeForFrameFormat(format, openCvTypes); }

std::unique_ptr<PackedFrame> PackedFrame::create(FrameFormat const& format, int rows, int columns) {
    return std::make_unique<PackedFrame>(format, rows, columns);
}

std::unique_ptr<PackedFrame> PackedFrame::createRaw(FrameFormat const& format, int rows, int columns,
                                                    std::unique_ptr<RawFrameData> rawFrameData) {
    return std::make_unique<PackedFrame>(format, rows, columns, std::move(rawFrameData));
}

PackedFrame::PackedFrame(FrameFormat const& format) : ImageFrame(openCvTypes, format) {}

PackedFrame::PackedFrame(FrameFormat const& format, int rows, int columns) : ImageFrame(openCvTypes, format) {
    checkSize(rows, columns);
    int const matrixRows = packedRows(format, rows);
    int const matrixColumns = packedColumns(format, columns);
    setImage(cv::Mat(matrixRows, matrixColumns, openCvType()));
}

PackedFrame::PackedFrame(FrameFormat const& format, int rows, int columns,
                         std::vector<std::uint8_t> const& bytes)
    : ImageFrame(openCvTypes, format) {
    // The header only reads, but OpenCV has none for constant data.
    auto* const data = const_cast<std::uint8_t*>(bytes.data());
    setImage(createMatrixHeaderForData(format, rows, columns, data, bytes.size()).clone());
}

PackedFrame::PackedFrame(FrameFormat const& format, int rows, int columns,
                         std::unique_ptr<RawFrameData> rawFrameData)
    : ImageFrame(openCvTypes, format) {
    attach(std::move(rawFrameData));
    RawFrameData const& raw = this->rawFrameData();
    setImage(createMatrixHeaderForData(format, rows, columns, raw.pixelData(), raw.pixelDataSize()));
}

PackedFrame::PackedFrame(FrameFormat const& format, cv::Mat const& matrix, Frame::Origin origin)
    : ImageFrame(openCvTypes, format, matrix, origin) {}

int PackedFrame::rows() const { return image().rows * static_cast<int>(format().pixelPacking.pixels().rows); }

int PackedFrame::cols() const {
    return image().cols * static_cast<int>(format().pixelPacking.pixels().columns);
}

std::unique_ptr<IImageFrame> PackedFrame::clone() const {
    if (containsRawFrameData())
        return createRaw(format(), rows(), cols(), std::make_unique<RawFrameData>(rawFrameData().clone()));
    if (image().empty())
        return std::make_unique<PackedFrame>(format());
    return std::make_unique<PackedFrame>(format(), image().clone(), Frame::Origin::TopLeft);
}

int PackedFrame::packedRows(FrameFormat const& format, int rows) {
    return packedRows(format, findOpenCvTypeForFrameFormatOrThrow(format, openCvTypes), rows);
}

int PackedFrame::packedColumns(FrameFormat const& format, int columns) {
    return packedColumns(format, findOpenCvTypeForFrameFormatOrThrow(format, openCvTypes), columns);
}

int PackedFrame::packedRows(FrameFormat const& format, int openCvType, int rows) {
    checkRowPixelAlignment(format, rows);
    checkPixelBlockAlignment(format.pixelPacking, openCvType);
    return blocks(format.pixelPacking.pixels().rows, rows);
}

int PackedFrame::packedColumns(FrameFormat const& format, int openCvType, int columns) {
    checkColumnPixelAlignment(format, columns);
    checkPixelBlockAlignment(format.pixelPacking, openCvType);
    return blocks(format.pixelPacking.pixels().columns, columns);
}

void PackedFrame::checkRowPixelAlignment(FrameFormat const& format, int rows) {
    checkAlignment("row", "rows", format.pixelPacking.pixels().rows, rows);
}

void PackedFrame::checkColumnPixelAlignment(FrameFormat const& format, int columns) {
    checkAlignment("column", "columns", format.pixelPacking.pixels().columns, columns);
}

void PackedFrame::checkPixelBlockAlignment(PixelPacking const& packing, int openCvType) {
    if (CV_ELEM_SIZE(openCvType) != static_cast<int>(packing.bytes()))
        throw std::runtime_error("Mismatch in channel count between packing format (" +
                                 std::to_string(packing.bytes()) + ") and underlying image matrix (" +
                                 std::to_string(CV_ELEM_SIZE1(openCvType)) + " bytes per channel, " +
                                 std::to_string(CV_MAT_CN(openCvType)) + " channels)");
}

cv::Mat PackedFrame::createMatrixHeaderForData(FrameFormat const& format, int rows, int columns, void* data,
                                               std::uint64_t size) {
    int const openCvType = findOpenCvTypeForFrameFormatOrThrow(format, openCvTypes);
    int const matrixRows = packedRows(format, openCvType, rows);
    int const matrixColumns = packedColumns(format, openCvType, columns);
    std::uint32_t const elementBytes = format.pixelPacking.bytes();
    std::uint64_t const expected = elementCount(matrixRows, matrixColumns) * elementBytes;
    if (size != expected)
        throw std::runtime_error("Expecting input byte count " + std::to_string(expected) + " (" +
                                 std::to_string(matrixRows) + "x" + std::to_string(matrixColumns) + "x" +
                                 std::to_string(elementBytes) + " matrix), got " + std::to_string(size) +
                                 " bytes");
    return cv::Mat(matrixRows, matrixColumns, openCvType, data);
}

} // namespace Zentrel
