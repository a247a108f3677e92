#include <MediaConversion/MediaPipeline/Encoder.h>

#include <MediaConversion/converters/ConvertBitDepth.h>
#include <MediaConversion/converters/ConvertNoOperation.h>
#include <MediaConversion/converters/ImageColourspace.h>
#include <MediaConversion/converters/ImageRGBtoYCbCr42x.h>
#include <MediaConversion/converters/ImageRGBtoYCoCgDXT5.h>
#include <MediaConversion/converters/ImageToFullFrame.h>
#include <MediaConversion/converters/ImageToPackedFrame.h>
#include <MediaConversion/converters/ImageYCbCr42xToRGB.h>
#include <MediaConversion/converters/ImageYCoCgDXT5toRGB.h>

#include <stdexcept>
#include <typeindex>

namespace MediaConversion {

using Zentrel::FrameFormat;

namespace {

const char* nameOf(IFrameFilter const& filter) {
    static const std::map<std::type_index, const char*> names{
        {typeid(ConvertBitDepth), "ConvertBitDepth"},
        {typeid(ConvertColourspace), "ConvertColourspace"},
        {typeid(ConvertNoOperation), "ConvertNoOperation"},
        {typeid(ConvertRGBtoYCbCr42x), "ConvertRGBtoYCbCr42x"},
        {typeid(ConvertRGBtoYCoCgDXT5), "ConvertRGBtoYCoCgDXT5"},
        {typeid(ConvertToFullFrame), "ConvertToFullFrame"},
        {typeid(ConvertToPackedFrame), "ConvertToPackedFrame"},
        {typeid(ConvertYCbCr42xToRGB), "ConvertYCbCr42xToRGB"},
        {typeid(ConvertYCoCgDXT5toRGB), "ConvertYCoCgDXT5toRGB"},
    };
    return names.at(typeid(filter));
}

} // namespace

Encoder::Encoder(FrameFormat in, FrameFormat out) : inputFormat(std::move(in)), outputFormat(std::move(out)) {
    for (auto const& [create, produced] : stepsBetween(inputFormat, outputFormat))
        addFilter(create(produced));
}

void Encoder::addFilter(std::unique_ptr<IFrameFilter> filter) {
    pipeline.addFilter(filter.get());
    filters.push_back(std::move(filter));
}

void Encoder::start() {
    checkState(EncoderState::Idle);
    pipeline.start();
    currentState = EncoderState::Encoding;
}

void Encoder::stop() {
    checkState(EncoderState::Encoding);
    pipeline.stop();
    currentState = EncoderState::Idle;
}

void Encoder::connect(IFrameSink* sink) {
    checkState(EncoderState::Idle);
    pipeline.connect(sink);
}

void Encoder::disconnect(IFrameSink* sink) {
    checkState(EncoderState::Idle);
    pipeline.disconnect(sink);
}

void Encoder::encodeFrame(std::unique_ptr<Zentrel::IFrame> frame) {
    checkState(EncoderState::Encoding);
    if (!frame)
        throw std::runtime_error("no frame data");
    if (frame->format() != inputFormat)
        throw std::runtime_error("input format must be " + FrameFormat::toString(inputFormat));
    pipeline.feed(std::move(frame));
}

void Encoder::checkState(EncoderState required) const {
    if (currentState != required)
        throw std::runtime_error("Encoder state must be " + toString(required) + " for this operation");
}

Encoder::Chain Encoder::describe(std::vector<EncodingStep> const& steps) {
    Chain chain;
    for (auto const& [create, produced] : steps)
        chain.push_back({nameOf(*create(produced)), produced});
    return chain;
}

std::string Encoder::toString(Chain const& chain) {
    std::string text;
    for (auto const& [filter, produced] : chain)
        text += (text.empty() ? "" : ", ") + filter + " to " + FrameFormat::toString(produced);
    return text;
}

std::string Encoder::toString(EncoderState state) {
    switch (state) {
    case EncoderState::Idle:
        return "Idle";
    case EncoderState::Encoding:
        return "Encoding";
    }
    return "Unknown EncoderState " + std::to_string(static_cast<std::uint32_t>(state));
}

std::vector<Encoder::EncodingStep> Encoder::stepsBetween(FrameFormat const& in, FrameFormat const& out) {
    if (in == out)
        return {{ConvertNoOperation::create, out}};
    return selectEncodingSteps(in, out);
}

std::vector<Encoder::EncodingStep> Encoder::selectEncodingSteps(FrameFormat const& in,
                                                                FrameFormat const& out) {
    auto const found = encodingSteps.find({in, out});
    return found != encodingSteps.end() ? found->second : selectIndirectEncodingStepsViaBgra32f(in, out);
}

std::vector<Encoder::EncodingStep> Encoder::selectIndirectEncodingStepsViaBgra32f(FrameFormat const& in,
                                                                                  FrameFormat const& out) {
    FrameFormat const middle = Zentrel::FullFrameFormat::BGRA_F32();
    auto const first = encodingSteps.find({in, middle});
    auto const second = encodingSteps.find({middle, out});
    if (first == encodingSteps.end() || second == encodingSteps.end())
        throw std::runtime_error("Encoding is not supported from " + FrameFormat::toString(in) + " to " +
                                 FrameFormat::toString(out));

    std::vector<EncodingStep> steps = first->second;
    steps.insert(steps.end(), second->second.begin(), second->second.end());
    return steps;
}

} // namespace MediaConversion
