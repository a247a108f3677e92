// Changes the depth of samples and nothing else.
#pragma once

#include <MediaConversion/MediaPipeline/ControllableFilter.h>

#include <map>
#include <utility>

namespace MediaConversion {

/// Multiplies every sample by the quotient of the two full scales, as cv::Mat::convertTo does: rounded to
/// nearest, and limited to the range of the container only, so that float above 1.0 gives 10- and 12-bit
/// codes above full scale. Float beyond the range of an int once multiplied (infinity, too) becomes what
/// OpenCV makes of it: 0 on x86-64.
class ConvertBitDepth final : public ControllableFilter<ConvertBitDepth> {
public:
    struct ScaleFactorAndOpenCvType {
        double scaleFactor;
        int openCvType; ///< the depth of the result: CV_8U, CV_16U or CV_32F
    };

    /// The twelve conversions, by source and destination depth.
    static const std::map<std::pair<Zentrel::ChannelType, Zentrel::ChannelType>, ScaleFactorAndOpenCvType>
        bitDepthConversion;

    explicit ConvertBitDepth(Zentrel::FrameFormat const& destination) : destination(destination) {}
    /// Any destination will do; one that cannot be served is refused when a frame arrives.
    static std::unique_ptr<ConvertBitDepth> create(Zentrel::FrameFormat const& destination);

    /// Throws std::runtime_error for a pair of depths that is not in the table.
    static ScaleFactorAndOpenCvType selectConversion(Zentrel::ChannelType const& source,
                                                     Zentrel::ChannelType const& destination);

    /// Throws std::runtime_error for a frame that is not full, or whose colourspace or channel order is not
    /// the destination's.
    std::unique_ptr<Zentrel::IFrame> convert(std::unique_ptr<Zentrel::IFrame> frame);
    std::unique_ptr<Zentrel::IFrame> doOnNewFrame(std::unique_ptr<Zentrel::IFrame> frame);

private:
    Zentrel::FrameFormat destination;
};

} // namespace MediaConversion
