#include <MediaConversion/MediaPipeline/FrameSinkDestination.h>

#include <stdexcept>

void FrameSinkDestination::onNewFrame(std::unique_ptr<Zentrel::IFrame> frame) {
    if (!frame)
        throw std::runtime_error("no frame data");
    held = std::move(frame);
}

std::unique_ptr<Zentrel::IFrame> FrameSinkDestination::frame() { return std::move(held); }
