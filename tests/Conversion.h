// Frames through the library's Encoder.
#pragma once

#include <MediaConversion/MediaPipeline/Encoder.h>
#include <MediaConversion/MediaPipeline/FrameSinkDestination.h>
#include <MediaConversion/MediaPipeline/ImageFrame.h>

#include <memory>
#include <utility>

namespace TestSupport {

/// What an Encoder makes of the frame.
inline std::unique_ptr<Zentrel::IImageFrame> encoded(std::unique_ptr<Zentrel::IFrame> frame,
                                                     Zentrel::FrameFormat const& destination) {
    FrameSinkDestination sink;
    MediaConversion::Encoder encoder(frame->format(), destination);
    encoder.connect(&sink);
    encoder.start();
    encoder.encodeFrame(std::move(frame));
    return std::unique_ptr<Zentrel::IImageFrame>(
        &dynamic_cast<Zentrel::IImageFrame&>(*sink.frame().release()));
}

} // namespace TestSupport
