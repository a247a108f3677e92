// Routes a frame to the processor for the memory that it lives in.
#pragma once

#include <MediaConversion/MediaPipeline/ControllableFilter.h>
#include <MediaConversion/MediaPipeline/NullProcessors.h>

#include <stdexcept>

namespace MediaConversion {

/// The second base of the filter `Convert`, which it gives its `doOnNewFrame`. A processor that cannot be
/// constructed is replaced by a null processor: a filter serves frames in host memory even where its half for
/// the graphics card cannot exist.
template <class Convert, class ImageProcessor, class TextureProcessor>
class FrameDispatch {
public:
    /// Throws std::runtime_error for frames of no known kind and for image frames without pixels.
    std::unique_ptr<Zentrel::IFrame> doOnNewFrame(std::unique_ptr<Zentrel::IFrame> frame) {
        if (auto image = castOrKeep<Zentrel::IImageFrame>(frame)) {
            if (!image->image().data)
                throw std::runtime_error("no image data in frame");
            return imageProcessor->onNewImage(std::move(image));
        }
        if (auto texture = castOrKeep<Zentrel::ITextureFrame>(frame))
            return textureProcessor->onNewTexture(std::move(texture));
        throw std::runtime_error("frame is not an IImageFrame or ITextureFrame");
    }

protected:
    explicit FrameDispatch(Zentrel::FrameFormat const& destination)
        : imageProcessor(makeImageProcessor(destination)),
          textureProcessor(makeTextureProcessor(destination)) {}

private:
    /// The frame as a `Kind` when it is one, else null and the frame stays where it is.
    template <class Kind>
    static std::unique_ptr<Kind> castOrKeep(std::unique_ptr<Zentrel::IFrame>& frame) {
        auto* const kind = dynamic_cast<Kind*>(frame.get());
        if (kind)
            frame.release();
        return std::unique_ptr<Kind>(kind);
    }

    static std::unique_ptr<IImageProcessor> makeImageProcessor(Zentrel::FrameFormat const& destination) {
        try {
            return std::make_unique<ImageProcessor>(destination);
        } catch (std::exception const&) {
            return std::make_unique<NullImageProcessor>(destination);
        }
    }

    static std::unique_ptr<ITextureProcessor> makeTextureProcessor(Zentrel::FrameFormat const& destination) {
        try {
            return std::make_unique<TextureProcessor>(destination);
        } catch (std::exception const& reason) {
            auto processor = std::make_unique<NullTextureProcessor>(destination);
            processor->underlyingReasonForNullTextureProcessor(reason.what());
            return processor;
        }
    }

    std::unique_ptr<IImageProcessor> imageProcessor;
    std::unique_ptr<ITextureProcessor> textureProcessor;
};

/// Base of the filters that do nothing but dispatch.
template <class Convert, class ImageProcessor, class TextureProcessor>
class DispatchingFilter : public ControllableFilter<Convert>,
                          public FrameDispatch<Convert, ImageProcessor, TextureProcessor> {
public:
    explicit DispatchingFilter(Zentrel::FrameFormat const& destination)
        : FrameDispatch<Convert, ImageProcessor, TextureProcessor>(destination) {}

    /// A filter that produces frames of the given format. Any format will do; one that cannot be served is
    /// refused when a frame arrives.
    static std::unique_ptr<Convert> create(Zentrel::FrameFormat const& destination) {
        return std::make_unique<Convert>(destination);
    }
};

} // namespace MediaConversion
