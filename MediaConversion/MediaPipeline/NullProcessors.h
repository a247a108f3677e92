// Stand in for processors that could not be made.
#pragma once

#include <MediaConversion/MediaPipeline/FrameInterfaces.h>

#include <string>

namespace MediaConversion {

/// Refuses every frame with std::runtime_error.
class NullImageProcessor final : public IImageProcessor {
public:
    explicit NullImageProcessor(Zentrel::FrameFormat const& destination) : destination(destination) {}
    std::unique_ptr<Zentrel::IFrame> onNewImage(std::unique_ptr<Zentrel::IImageFrame> frame) override;

private:
    Zentrel::FrameFormat destination;
};

/// Refuses every frame with std::runtime_error that tells why there is no real processor.
class NullTextureProcessor final : public ITextureProcessor {
public:
    explicit NullTextureProcessor(Zentrel::FrameFormat const& destination) : destination(destination) {}
    std::unique_ptr<Zentrel::IFrame> onNewTexture(std::unique_ptr<Zentrel::ITextureFrame> frame) override;

    void underlyingReasonForNullTextureProcessor(std::string text) { reason = std::move(text); }
    std::string const& underlyingReasonForNullTextureProcessor() const { return reason; }

private:
    Zentrel::FrameFormat destination;
    std::string reason = "not implemented";
};

} // namespace MediaConversion
