// The end of a chain.
#pragma once

#include <MediaConversion/MediaPipeline/FrameInterfaces.h>

/// Keeps the last frame until it is taken.
class FrameSinkDestination final : public IFrameSinkDestination {
public:
    /// Throws std::runtime_error for an empty frame.
    void onNewFrame(std::unique_ptr<Zentrel::IFrame> frame) override;
    /// The held frame; empty when there is none or it has been taken.
    std::unique_ptr<Zentrel::IFrame> frame() override;

private:
    std::unique_ptr<Zentrel::IFrame> held;
};
