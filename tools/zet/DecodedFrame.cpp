#include "DecodedFrame.h"

#include <MediaConversion/MediaPipeline/Encoder.h>
#include <MediaConversion/MediaPipeline/FrameSinkDestination.h>
#include <MediaConversion/converters/ImageYCoCgDXT5toRGB.h>
#include <MediaConversion/mediafile/ZentrelMediaFileReader.h>

#include <stdexcept>

namespace ZetTool {
namespace {

using Zentrel::FrameFormat;
using Zentrel::FullFrameFormat;
using Zentrel::IFrame;
using Zentrel::IImageFrame;
using Zentrel::PackedFrameFormat;

MediaFileInfo infoOf(const std::filesystem::path& file) {
    const FoundFile found = inspect(file);
    if (!found.info)
        throw std::runtime_error(found.fault);
    return *found.info;
}

template <class Filter>
std::unique_ptr<IFrame> pass(Filter&& filter, std::unique_ptr<IFrame> frame) {
    FrameSinkDestination destination;
    filter.connect(&destination);
    filter.start();
    filter.onNewFrame(std::move(frame));
    filter.stop();
    return destination.frame();
}

std::unique_ptr<IFrame> decode(std::unique_ptr<IFrame> frame) {
    using namespace MediaConversion;
    const FrameFormat format = frame->format();
    if (format == PackedFrameFormat::RGB_DXT1_U8()) // no Encoder starts from it
        return pass(ConvertYCoCgDXT5toRGB(FullFrameFormat::BGRA_U8()), std::move(frame));
    const FrameFormat decoded =
        bitsOf(format) == 8 ? FullFrameFormat::BGRA_U8() : FullFrameFormat::BGRA_F32();
    return pass(Encoder(format, decoded), std::move(frame));
}

std::unique_ptr<IImageFrame> imageFrame(std::unique_ptr<IFrame> frame) {
    auto* const image = dynamic_cast<IImageFrame*>(frame.get());
    if (!image)
        throw std::runtime_error("decoding gave no image");
    frame.release();
    return std::unique_ptr<IImageFrame>(image);
}

} // namespace

DecodedFrame::DecodedFrame(const std::filesystem::path& file) : about(infoOf(file)) {
    MediaConversion::FileStreamFactory streams;
    frame = imageFrame(decode(MediaConversion::ZentrelMediaFileReader(streams).readFrame(file)));
}

bool holdsAlpha(const FrameFormat& format) {
    using Zentrel::Colourspace;
    return format.colourspace == Colourspace::RGBA || format.colourspace == Colourspace::YCbCrA_ITU_T871;
}

int bitsOf(const FrameFormat& format) {
    switch (format.channelType) {
    case Zentrel::ChannelType::U8:
        return 8;
    case Zentrel::ChannelType::U10:
        return 10;
    default: // media files hold none that are deeper
        return 12;
    }
}

} // namespace ZetTool
