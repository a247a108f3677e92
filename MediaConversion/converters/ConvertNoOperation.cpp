#include <MediaConversion/converters/ConvertNoOperation.h>

#include <stdexcept>

namespace MediaConversion {

using Zentrel::FrameFormat;

std::unique_ptr<ConvertNoOperation> ConvertNoOperation::create(FrameFormat const& destination) {
    return std::make_unique<ConvertNoOperation>(destination);
}

std::unique_ptr<Zentrel::IFrame> ConvertNoOperation::doOnNewFrame(std::unique_ptr<Zentrel::IFrame> frame) {
    if (frame->format() != destination)
        throw std::runtime_error("Source format " + FrameFormat::toString(frame->format()) +
                                 " does not match destination format " + FrameFormat::toString(destination));
    return frame;
}

} // namespace MediaConversion
