#include <MediaConversion/MediaPipeline/NullProcessors.h>

#include <stdexcept>

namespace MediaConversion {

std::unique_ptr<Zentrel::IFrame> NullImageProcessor::onNewImage(std::unique_ptr<Zentrel::IImageFrame> frame) {
    if (!frame)
        throw std::runtime_error("invalid frame");
    throw std::runtime_error("NullImageProcessor::onNewImage not implemented");
}

std::unique_ptr<Zentrel::IFrame>
NullTextureProcessor::onNewTexture(std::unique_ptr<Zentrel::ITextureFrame> frame) {
    if (!frame)
        throw std::runtime_error("invalid frame");
    throw std::runtime_error("NullTextureProcessor::onNewTexture " + reason);
}

} // namespace MediaConversion
