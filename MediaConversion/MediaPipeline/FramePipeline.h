// A chain of filters.
#pragma once

#include <MediaConversion/MediaPipeline/FrameInterfaces.h>

#include <vector>

namespace MediaConversion {

/// Chains filters, which it does not own, upstream first. Frames enter through `feed` and leave at the sink.
class FramePipeline final : public IFrameSource, public IFrameControl {
public:
    /// Appends a filter. Throws std::invalid_argument for null.
    void addFilter(IFrameFilter* filter);

    void connect(IFrameSink* sink) override;
    /// Throws std::runtime_error for a sink that is not the connected one.
    void disconnect(IFrameSink* sink) override;

    /// Start and stop the first filter, which passes it on. Throw std::runtime_error without a sink or
    /// filters.
    void start() override;
    void stop() override;

    /// Pushes a frame through the whole chain; there must be at least one filter.
    void feed(std::unique_ptr<Zentrel::IFrame> frame);

    /// Disconnects the sink and lets go of a single filter. With two filters or more it throws
    /// std::runtime_error once the sink is disconnected, and keeps the filters: a long-standing quirk that
    /// callers may rely on.
    void clear();

private:
    IFrameControl* firstControl() const;

    IFrameSink* frameSink = nullptr;
    std::vector<IFrameFilter*> filters;
};

} // namespace MediaConversion
