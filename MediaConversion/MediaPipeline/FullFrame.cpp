#include <MediaConversion/MediaPipeline/FullFrame.h>

#include <stdexcept>

namespace Zentrel {

namespace {

using C = Colourspace;
using T = ChannelType;
using Full = FullFrameFormat;

/// A format that the catalogue does not name but that frames may have.
FrameFormat unnamed(ChannelType channelType, const char* layout) {
    return {C::RGBA, channelType, PixelPacking({8}, {4}, {1, 1}), layout};
}

} // namespace

const OpenCvTypeTable FullFrame::openCvTypes{
    {Full::RGB_U8(), CV_8UC3},
    {Full::BGR_U8(), CV_8UC3},
    {Full::RGB_U10(), CV_16UC3},
    {Full::BGR_U10(), CV_16UC3},
    {Full::RGB_U12(), CV_16UC3},
    {Full::BGR_U12(), CV_16UC3},
    {Full::RGB_U15plus1(), CV_16UC3},
    {Full::BGR_U15plus1(), CV_16UC3},
    {Full::RGB_U16(), CV_16UC3},
    {Full::BGR_U16(), CV_16UC3},
    {Full::RGB_F32(), CV_32FC3},
    {Full::BGR_F32(), CV_32FC3},
    {Full::RGBA_U8(), CV_8UC4},
    {Full::BGRA_U8(), CV_8UC4},
    {Full::ARGB_U8(), CV_8UC4},
    {unnamed(T::U10, "RGBA"), CV_16UC4},
    {unnamed(T::U10, "BGRA"), CV_16UC4},
    {unnamed(T::U12, "RGBA"), CV_16UC4},
    {unnamed(T::U12, "BGRA"), CV_16UC4},
    {Full::ARGB_U15plus1(), CV_16UC4},
    {Full::BGRA_U16(), CV_16UC4},
    {Full::RGBA_F32(), CV_32FC4},
    {Full::BGRA_F32(), CV_32FC4},
    {Full::YCBCR_ITU_T871_YCBCR_U8(), CV_8UC3},
    {Full::YCBCR_ITU_T871_YCBCR_F32(), CV_32FC3},
    {Full::YCBCR_ITU_T871_YCRCB_U8(), CV_8UC3},
    {Full::YCOCGA_COCGAY_U8(), CV_8UC4},
};

bool FullFrame::is(FrameFormat const& format) { return hasOpenCvTypeForFrameFormat(format, openCvTypes); }

std::unique_ptr<FullFrame> FullFrame::create(FrameFormat const& format, int rows, int columns) {
    return std::make_unique<FullFrame>(format, rows, columns);
}

std::unique_ptr<FullFrame> FullFrame::createRaw(FrameFormat const& format, int rows, int columns,
                                                std::unique_ptr<RawFrameData> rawFrameData) {
    return std::make_unique<FullFrame>(format, rows, columns, std::move(rawFrameData));
}

FullFrame::FullFrame(FrameFormat const& format) : ImageFrame(openCvTypes, format) {}

FullFrame::FullFrame(FrameFormat const& format, int rows, int columns)
    : ImageFrame(openCvTypes, format, rows, columns) {}

FullFrame::FullFrame(FrameFormat const& format, int rows, int columns,
                     std::unique_ptr<RawFrameData> rawFrameData)
    : ImageFrame(openCvTypes, format) {
    attach(std::move(rawFrameData));
    RawFrameData const& raw = this->rawFrameData();
    std::uint64_t const expected = elementCount(rows, columns) * CV_ELEM_SIZE(openCvType());
    if (raw.pixelDataSize() != expected)
        throw std::runtime_error("Expecting input data byte count " + std::to_string(expected) + ", got " +
                                 std::to_string(raw.pixelDataSize()));
    setImage(cv::Mat(rows, columns, openCvType(), raw.pixelData()));
}

FullFrame::FullFrame(FrameFormat const& format, cv::Mat const& matrix, Frame::Origin origin)
    : ImageFrame(openCvTypes, format, matrix, origin) {}

std::unique_ptr<IImageFrame> FullFrame::clone() const {
    if (containsRawFrameData())
        return createRaw(format(), rows(), cols(), std::make_unique<RawFrameData>(rawFrameData().clone()));
    if (image().empty())
        return std::make_unique<FullFrame>(format());
    return std::make_unique<FullFrame>(format(), image().clone(), Frame::Origin::TopLeft);
}

} // namespace Zentrel
