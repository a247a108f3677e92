// Full 8-bit frames to the block compressions YCoCg-DXT5 and DXT1.
#pragma once

#include <MediaConversion/MediaPipeline/FrameDispatch.h>
#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/MediaPipeline/PackedFrame.h>
#include <MediaConversion/converters/TableProcessor.h>

namespace MediaConversion {

class ImageRGBtoYCoCgDXT5 final
    : public TableProcessor<ImageRGBtoYCoCgDXT5, Zentrel::FullFrame, Zentrel::PackedFrame> {
public:
    static const ConversionTable yccConversion;

    using TableProcessor::TableProcessor;

    static ConversionTable const& conversions() { return yccConversion; }
    static constexpr const char* wrongFrameKind = "Can only convert FullFrame images";
    static constexpr const char* unsupported = "DXT conversion is not supported from ";
};

class ConvertRGBtoYCoCgDXT5 final
    : public DispatchingFilter<ConvertRGBtoYCoCgDXT5, ImageRGBtoYCoCgDXT5, NullTextureProcessor> {
public:
    using DispatchingFilter::DispatchingFilter;
};

} // namespace MediaConversion
