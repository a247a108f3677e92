// Full RGB and RGBA frames to 10- and 12-bit samples packed to the bit.
#pragma once

#include <MediaConversion/MediaPipeline/FrameDispatch.h>
#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/MediaPipeline/PackedFrame.h>
#include <MediaConversion/MediaPipeline/TextureProcessors.h>
#include <MediaConversion/converters/TableProcessor.h>

namespace MediaConversion {

class ImageToPackedFrame final
    : public TableProcessor<ImageToPackedFrame, Zentrel::FullFrame, Zentrel::PackedFrame> {
public:
    static const ConversionTable packingConversion;

    using TableProcessor::TableProcessor;

    static ConversionTable const& conversions() { return packingConversion; }
    static constexpr const char* wrongFrameKind = "Can only convert FullFrame images";
    static constexpr const char* unsupported = "Packing is not supported from ";
};

class ConvertToPackedFrame final
    : public DispatchingFilter<ConvertToPackedFrame, ImageToPackedFrame, TextureToPackedFrame> {
public:
    using DispatchingFilter::DispatchingFilter;
};

} // namespace MediaConversion
