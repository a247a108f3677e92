#include <MediaConversion/converters/ConvertBitDepth.h>

#include <MediaConversion/MediaPipeline/FullFrame.h>
#include <MediaConversion/converters/ParallelRows.h>

#include <stdexcept>

namespace MediaConversion {

using Zentrel::FrameFormat;
using Zentrel::FullFrame;
using T = Zentrel::ChannelType;

// clang-format off
const std::map<std::pair<T, T>, ConvertBitDepth::ScaleFactorAndOpenCvType> ConvertBitDepth::bitDepthConversion{
    {{T::U8,       T::U8},       {1.0,             CV_8U}},
    {{T::U8,       T::U12},      {4095.0 / 255.0,  CV_16U}},
    {{T::U8,       T::U15plus1}, {32768.0 / 255.0, CV_16U}},
    {{T::U8,       T::F32},      {1.0 / 255.0,     CV_32F}},
    {{T::U12,      T::U8},       {255.0 / 4095.0,  CV_8U}},
    {{T::U12,      T::U15plus1}, {32768.0 / 4095.0, CV_16U}},
    {{T::U12,      T::F32},      {1.0 / 4095.0,    CV_32F}},
    {{T::U15plus1, T::U12},      {4095.0 / 32768.0, CV_16U}},
    {{T::U16,      T::U8},       {255.0 / 65535.0, CV_8U}},
    {{T::F32,      T::U8},       {255.0,           CV_8U}},
    {{T::F32,      T::U10},      {1023.0,          CV_16U}},
    {{T::F32,      T::U12},      {4095.0,          CV_16U}},
};
// clang-format on

namespace {

/// `cv::Mat::convertTo` uses one thread only, so that it gets ranges of rows, on several threads.
cv::Mat converted(cv::Mat const& image, ConvertBitDepth::ScaleFactorAndOpenCvType const& conversion) {
    cv::Mat result(image.size(), CV_MAKETYPE(conversion.openCvType, image.channels()));
    parallelRanges(image.rows, [&](cv::Range const& rows) {
        cv::Mat to = result.rowRange(rows);
        image.rowRange(rows).convertTo(to, conversion.openCvType, conversion.scaleFactor, 0.0);
    });
    return result;
}

} // namespace

std::unique_ptr<ConvertBitDepth> ConvertBitDepth::create(FrameFormat const& destination) {
    return std::make_unique<ConvertBitDepth>(destination);
}

ConvertBitDepth::ScaleFactorAndOpenCvType ConvertBitDepth::selectConversion(T const& source,
                                                                            T const& destination) {
    auto const found = bitDepthConversion.find({source, destination});
    if (found == bitDepthConversion.end())
        throw std::runtime_error("Bit depth conversion is not supported from " +
                                 FrameFormat::toString(source) + " to " + FrameFormat::toString(destination));
    return found->second;
}

std::unique_ptr<Zentrel::IFrame> ConvertBitDepth::convert(std::unique_ptr<Zentrel::IFrame> frame) {
    auto const* const full = dynamic_cast<FullFrame const*>(frame.get());
    if (!full)
        throw std::runtime_error("Can only convert FullFrame images");

    FrameFormat const source = full->format();
    if (source.colourspace != destination.colourspace)
        throw std::runtime_error("Source colourspace " + FrameFormat::toString(source.colourspace) +
                                 " does not match destination colourspace " +
                                 FrameFormat::toString(destination.colourspace));
    if (source.layoutName != destination.layoutName)
        throw std::runtime_error("Source channel format " + source.layoutName +
                                 " does not match destination channel format " + destination.layoutName);

    auto const conversion = selectConversion(source.channelType, destination.channelType);
    return std::make_unique<FullFrame>(destination, converted(full->image(), conversion),
                                       Zentrel::Frame::Origin::TopLeft);
}

std::unique_ptr<Zentrel::IFrame> ConvertBitDepth::doOnNewFrame(std::unique_ptr<Zentrel::IFrame> frame) {
    return convert(std::move(frame));
}

} // namespace MediaConversion
