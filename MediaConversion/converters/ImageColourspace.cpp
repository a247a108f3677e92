#include <MediaConversion/converters/ImageColourspace.h>

#include <opencv2/imgproc.hpp>

#include <stdexcept>
#include <vector>

namespace MediaConversion {

using Zentrel::FrameFormat;
using Zentrel::FullFrame;
using C = Zentrel::Colourspace;

template <int code>
cv::Mat ImageColourspace::openCvConvert(cv::Mat const& image) {
    cv::Mat result;
    cv::cvtColor(image, result, code);
    return result;
}

template <int i0, int i1, int i2>
cv::Mat ImageColourspace::swapChannels(cv::Mat const& image) {
    std::vector<cv::Mat> planes;
    cv::split(image, planes);
    cv::Mat result;
    cv::merge(std::vector<cv::Mat>{planes[i0], planes[i1], planes[i2]}, result);
    return result;
}

// clang-format off
const std::map<ImageColourspace::ConversionKey, ImageColourspace::Conversion> ImageColourspace::openCvConversion{
    {{C::RGB,  "RGB",  C::RGB,  "BGR"},  openCvConvert<cv::COLOR_BGR2RGB>},
    {{C::RGB,  "RGB",  C::RGBA, "RGBA"}, openCvConvert<cv::COLOR_BGR2BGRA>},
    {{C::RGB,  "RGB",  C::RGBA, "BGRA"}, openCvConvert<cv::COLOR_BGR2RGBA>},
    {{C::RGB,  "BGR",  C::RGB,  "RGB"},  openCvConvert<cv::COLOR_BGR2RGB>},
    {{C::RGB,  "BGR",  C::RGBA, "RGBA"}, openCvConvert<cv::COLOR_BGR2RGBA>},
    {{C::RGB,  "BGR",  C::RGBA, "BGRA"}, openCvConvert<cv::COLOR_BGR2BGRA>},
    {{C::RGBA, "RGBA", C::RGB,  "RGB"},  openCvConvert<cv::COLOR_BGRA2BGR>},
    {{C::RGBA, "RGBA", C::RGB,  "BGR"},  openCvConvert<cv::COLOR_RGBA2BGR>},
    {{C::RGBA, "RGBA", C::RGBA, "BGRA"}, openCvConvert<cv::COLOR_BGRA2RGBA>},
    {{C::RGBA, "BGRA", C::RGB,  "RGB"},  openCvConvert<cv::COLOR_RGBA2BGR>},
    {{C::RGBA, "BGRA", C::RGB,  "BGR"},  openCvConvert<cv::COLOR_BGRA2BGR>},
    {{C::RGBA, "BGRA", C::RGBA, "RGBA"}, openCvConvert<cv::COLOR_BGRA2RGBA>},
    {{C::RGBA, "ARGB", C::RGB,  "RGB"},  swapChannels<1, 2, 3>},
    {{C::RGBA, "ARGB", C::RGB,  "BGR"},  swapChannels<3, 2, 1>},
};
// clang-format on

ImageColourspace::Conversion ImageColourspace::selectConversion(FrameFormat const& source,
                                                                FrameFormat const& destination) {
    if (source == destination)
        return passThrough;
    auto const found = openCvConversion.find(
        {source.colourspace, source.layoutName, destination.colourspace, destination.layoutName});
    if (found == openCvConversion.end())
        throw std::runtime_error("Colourspace conversion is not supported from " +
                                 FrameFormat::toString(source) + " to " + FrameFormat::toString(destination));
    return found->second;
}

FullFrame ImageColourspace::convert(FullFrame const& frame) const {
    cv::Mat image = selectConversion(frame.format(), destination)(frame.image());
    // The pixels of raw data are not the matrix's own, and would be gone with the frame.
    if (frame.containsRawFrameData() && frame.format() == destination)
        image = image.clone();
    return FullFrame(destination, image, Zentrel::Frame::Origin::TopLeft);
}

std::unique_ptr<Zentrel::IFrame> ImageColourspace::onNewImage(std::unique_ptr<Zentrel::IImageFrame> frame) {
    auto const* const full = dynamic_cast<FullFrame const*>(frame.get());
    if (!full)
        throw std::runtime_error("Can only convert FullFrame images");
    return std::make_unique<FullFrame>(convert(*full));
}

} // namespace MediaConversion
