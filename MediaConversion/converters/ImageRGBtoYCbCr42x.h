// Full RGB and RGBA frames to chroma-subsampled YCbCr: 4:2:2, 4:2:0 and the 4:2:2:4 hybrid.
#pragma once

#include <MediaConversion/MediaPipeline/FrameDispatch.h>
#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/MediaPipeline/PackedFrame.h>
#include <MediaConversion/MediaPipeline/TextureProcessors.h>
#include <MediaConversion/converters/TableProcessor.h>

namespace MediaConversion {

class ImageRGBtoYCbCr42x final
    : public TableProcessor<ImageRGBtoYCbCr42x, Zentrel::FullFrame, Zentrel::PackedFrame> {
public:
    static const ConversionTable yccConversion;

    using TableProcessor::TableProcessor;

    static ConversionTable const& conversions() { return yccConversion; }
    static constexpr const char* wrongFrameKind = "Can only convert FullFrame images";
    static constexpr const char* unsupported = "YCbCr 4:2:2 conversion is not supported from ";
};

class ConvertRGBtoYCbCr42x final
    : public DispatchingFilter<ConvertRGBtoYCbCr42x, ImageRGBtoYCbCr42x, TextureRGBtoYCbCr42x> {
public:
    using DispatchingFilter::DispatchingFilter;
};

} // namespace MediaConversion
