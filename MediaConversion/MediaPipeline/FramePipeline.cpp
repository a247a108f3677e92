#include <MediaConversion/MediaPipeline/FramePipeline.h>

#include <stdexcept>

namespace MediaConversion {

void FramePipeline::addFilter(IFrameFilter* filter) {
    if (!filter)
        throw std::invalid_argument("filter is nullptr");
    if (!filters.empty())
        filters.back()->connect(filter);
    filters.push_back(filter);
    connect(frameSink);
}

void FramePipeline::connect(IFrameSink* sink) {
    frameSink = sink;
    if (!filters.empty())
        filters.back()->connect(sink);
}

void FramePipeline::disconnect(IFrameSink* sink) {
    if (sink != frameSink)
        throw std::runtime_error("frameSink was not connected");
    if (!filters.empty())
        filters.back()->disconnect(sink);
    frameSink = nullptr;
}

IFrameControl* FramePipeline::firstControl() const {
    if (!frameSink)
        throw std::runtime_error("No frameSink connected");
    if (filters.empty())
        throw std::runtime_error("Pipeline is empty");
    return dynamic_cast<IFrameControl*>(filters.front());
}

void FramePipeline::start() {
    if (auto* const control = firstControl())
        control->start();
}

void FramePipeline::stop() {
    if (auto* const control = firstControl())
        control->stop();
}

void FramePipeline::feed(std::unique_ptr<Zentrel::IFrame> frame) {
    filters.front()->onNewFrame(std::move(frame));
}

void FramePipeline::clear() {
    disconnect(frameSink);
    while (filters.size() >= 2) {
        // A filter is never its own sink, so this always throws.
        filters.front()->disconnect(filters.front());
        filters.erase(filters.begin());
    }
    filters.clear();
}

} // namespace MediaConversion
