// Reorders, adds and drops the channels of full RGB and RGBA frames.
#pragma once

#include <MediaConversion/MediaPipeline/FrameDispatch.h>
#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/MediaPipeline/TextureProcessors.h>

#include <functional>
#include <map>
#include <string>
#include <tuple>

namespace MediaConversion {

/// Changes neither depth nor colour model. Alpha that is added has the full value of the container: 65535 for
/// 10- and 12-bit samples too.
class ImageColourspace final : public IImageProcessor {
public:
    using Conversion = std::function<cv::Mat(cv::Mat const&)>;
    /// Source colourspace and channel order, destination colourspace and channel order.
    using ConversionKey = std::tuple<Zentrel::Colourspace, std::string, Zentrel::Colourspace, std::string>;

    static const std::map<ConversionKey, Conversion> openCvConversion;

    explicit ImageColourspace(Zentrel::FrameFormat const& destination) : destination(destination) {}

    /// Equal formats share their pixels. Throws std::runtime_error for other pairs that are not in the table.
    static Conversion selectConversion(Zentrel::FrameFormat const& source,
                                       Zentrel::FrameFormat const& destination);

    /// The result may outlive the frame. Equal formats share their pixels, unless they lie in raw data.
    Zentrel::FullFrame convert(Zentrel::FullFrame const& frame) const;
    /// Throws std::runtime_error for no frame or one that is not full.
    std::unique_ptr<Zentrel::IFrame> onNewImage(std::unique_ptr<Zentrel::IImageFrame> frame) override;

private:
    /// A header over the same pixels.
    static cv::Mat passThrough(cv::Mat const& image) { return image; }
    /// What cv::cvtColor does for the code.
    template <int code>
    static cv::Mat openCvConvert(cv::Mat const& image);
    /// The three channels with these indices, in this order.
    template <int i0, int i1, int i2>
    static cv::Mat swapChannels(cv::Mat const& image);

    Zentrel::FrameFormat destination;
};

class ConvertColourspace final
    : public DispatchingFilter<ConvertColourspace, ImageColourspace, TextureColourspace> {
public:
    using DispatchingFilter::DispatchingFilter;
};

} // namespace MediaConversion
