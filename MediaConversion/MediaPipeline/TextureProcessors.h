// The graphics card's side of the filters, in a library that is built without it: nothing can be constructed,
// and the filters fall back to a NullTextureProcessor.
#pragma once

#include <MediaConversion/MediaPipeline/FrameInterfaces.h>

#include <stdexcept>

namespace MediaConversion {

/// Its constructor always throws std::runtime_error.
class UnavailableTextureProcessor : public ITextureProcessor {
public:
    explicit UnavailableTextureProcessor(Zentrel::FrameFormat const&) { refuse(); }
    std::unique_ptr<Zentrel::IFrame> onNewTexture(std::unique_ptr<Zentrel::ITextureFrame>) final { refuse(); }

private:
    [[noreturn]] static void refuse() { throw std::runtime_error("Not built with OpenGL support"); }
};

struct TextureColourspace final : UnavailableTextureProcessor {
    using UnavailableTextureProcessor::UnavailableTextureProcessor;
};
struct TextureRGBtoYCbCr42x final : UnavailableTextureProcessor {
    using UnavailableTextureProcessor::UnavailableTextureProcessor;
};
struct TextureYCbCr42xToRGB final : UnavailableTextureProcessor {
    using UnavailableTextureProcessor::UnavailableTextureProcessor;
};
struct TextureToPackedFrame final : UnavailableTextureProcessor {
    using UnavailableTextureProcessor::UnavailableTextureProcessor;
};
struct TextureToFullFrame final : UnavailableTextureProcessor {
    using UnavailableTextureProcessor::UnavailableTextureProcessor;
};

} // namespace MediaConversion
