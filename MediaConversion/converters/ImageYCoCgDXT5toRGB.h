// YCoCg-DXT5 and DXT1 blocks to full 8-bit frames.
#pragma once

#include <MediaConversion/MediaPipeline/FrameDispatch.h>
#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/MediaPipeline/PackedFrame.h>
#include <MediaConversion/converters/TableProcessor.h>

namespace MediaConversion {

class ImageYCoCgDXT5toRGB final
    : public TableProcessor<ImageYCoCgDXT5toRGB, Zentrel::PackedFrame, Zentrel::FullFrame> {
public:
    static const ConversionTable rgbConversion;

    using TableProcessor::TableProcessor;

    static ConversionTable const& conversions() { return rgbConversion; }
    static constexpr const char* wrongFrameKind = "Can only convert PackedFrame images";
    static constexpr const char* unsupported = "RGB conversion is not supported from ";
};

class ConvertYCoCgDXT5toRGB final
    : public DispatchingFilter<ConvertYCoCgDXT5toRGB, ImageYCoCgDXT5toRGB, NullTextureProcessor> {
public:
    using DispatchingFilter::DispatchingFilter;
};

} // namespace MediaConversion
