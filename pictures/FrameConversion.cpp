#include "FrameConversion.h"

#include <MediaConversion/MediaPipeline/Encoder.h>
#include <MediaConversion/MediaPipeline/FrameSinkDestination.h>
#include <MediaConversion/converters/ImageYCoCgDXT5toRGB.h>

#include <stdexcept>

namespace ZetTool {
namespace {

using Zentrel::IFrame;
using Zentrel::IImageFrame;

template <class Filter>
std::unique_ptr<IFrame> pass(Filter&& filter, std::unique_ptr<IFrame> frame) {
    FrameSinkDestination destination;
    filter.connect(&destination);
    filter.start();
    filter.onNewFrame(std::move(frame));
    filter.stop();
    return destination.frame();
}

} // namespace

std::unique_ptr<IImageFrame> convertFrame(std::unique_ptr<IFrame> frame, const Zentrel::FrameFormat& format) {
    using namespace MediaConversion;
    const Zentrel::FrameFormat source = frame->format();
    auto converted = source == Zentrel::PackedFrameFormat::RGB_DXT1_U8()
                         ? pass(ConvertYCoCgDXT5toRGB(format), std::move(frame))
                         : pass(Encoder(source, format), std::move(frame));
    auto* const image = dynamic_cast<IImageFrame*>(converted.get());
    if (!image)
        throw std::runtime_error("the conversion gave no image");
    converted.release();
    return std::unique_ptr<IImageFrame>(image);
}

} // namespace ZetTool
