// Chroma-subsampled YCbCr to full RGB and RGBA frames.
#pragma once

#include <MediaConversion/MediaPipeline/FrameDispatch.h>
#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/MediaPipeline/PackedFrame.h>
#include <MediaConversion/MediaPipeline/TextureProcessors.h>
#include <MediaConversion/converters/TableProcessor.h>

namespace MediaConversion {

class ImageYCbCr42xToRGB final
    : public TableProcessor<ImageYCbCr42xToRGB, Zentrel::PackedFrame, Zentrel::FullFrame> {
public:
    static const ConversionTable rgbConversion;

    using TableProcessor::TableProcessor;

    static ConversionTable const& conversions() { return rgbConversion; }
    static constexpr const char* wrongFrameKind = "Can only convert PackedFrame images";
    static constexpr const char* unsupported = "RGB conversion is not supported from ";
};

class ConvertYCbCr42xToRGB final
    : public DispatchingFilter<ConvertYCbCr42xToRGB, ImageYCbCr42xToRGB, TextureYCbCr42xToRGB> {
public:
    using DispatchingFilter::DispatchingFilter;
};

} // namespace MediaConversion
