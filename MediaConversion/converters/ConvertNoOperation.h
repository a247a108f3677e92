// The filter between equal formats.
#pragma once

#include <MediaConversion/MediaPipeline/ControllableFilter.h>

namespace MediaConversion {

/// Passes the very frame on that it is given.
class ConvertNoOperation final : public ControllableFilter<ConvertNoOperation> {
public:
    explicit ConvertNoOperation(Zentrel::FrameFormat const& destination) : destination(destination) {}
    static std::unique_ptr<ConvertNoOperation> create(Zentrel::FrameFormat const& destination);

    /// Throws std::runtime_error for a frame of another format.
    std::unique_ptr<Zentrel::IFrame> doOnNewFrame(std::unique_ptr<Zentrel::IFrame> frame);

private:
    Zentrel::FrameFormat destination;
};

} // namespace MediaConversion
