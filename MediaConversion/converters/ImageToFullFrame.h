// 10- and 12-bit samples packed to the bit to full RGB and RGBA frames.
#pragma once

#include <MediaConversion/MediaPipeline/FrameDispatch.h>
#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/MediaPipeline/PackedFrame.h>
#include <MediaConversion/MediaPipeline/TextureProcessors.h>
#include <MediaConversion/converters/TableProcessor.h>

namespace MediaConversion {

class ImageToFullFrame final
    : public TableProcessor<ImageToFullFrame, Zentrel::PackedFrame, Zentrel::FullFrame> {
public:
    static const ConversionTable packingConversion;

    using TableProcessor::TableProcessor;

    static ConversionTable const& conversions() { return packingConversion; }
    static constexpr const char* wrongFrameKind = "Can only convert packed images";
    static constexpr const char* unsupported = "Unpacking is not supported from ";
};

class ConvertToFullFrame final
    : public DispatchingFilter<ConvertToFullFrame, ImageToFullFrame, TextureToFullFrame> {
public:
    using DispatchingFilter::DispatchingFilter;
};

} // namespace MediaConversion
