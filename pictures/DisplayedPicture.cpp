#include "DisplayedPicture.h"

#include <MediaConversion/MediaPipeline/FullFrame.h>

#include <host/TransferCurves.h>

#include <vector>

namespace ZetTool {
namespace {

using EmbeddedHost::PictureChannel;
using EmbeddedHost::RenderSettings;
using EmbeddedHost::Transfer;

constexpr PictureChannel order[] = {PictureChannel::Blue, PictureChannel::Green, PictureChannel::Red};
constexpr int stride = 4;

void storeColour(const RenderSettings& settings, float* to, const float* from, const float* alpha,
                 int count) {
    using namespace EmbeddedHost;
    const float* const divisor = settings.premultiplied ? alpha : nullptr;
    static const TabledCurve<SrgbCurve> srgb;
    static const TabledCurve<Rec709Curve> rec709;
    switch (settings.transfer) {
    case Transfer::None:
        return encodeRow([](float sample) { return sample; }, to, from, nullptr, count, stride);
    case Transfer::Srgb:
        return encodeRow(srgb, to, from, divisor, count, stride);
    case Transfer::Rec709:
        return encodeRow(rec709, to, from, divisor, count, stride);
    }
}

} // namespace

cv::Mat displayedPixels(Picture& picture, const RenderSettings& settings) {
    cv::Mat pixels(picture.height(), picture.width(), CV_32FC(stride));
    std::vector<float> alpha(static_cast<std::size_t>(pixels.cols), 1.0f);
    std::vector<float> colour(static_cast<std::size_t>(pixels.cols));
    for (int row = 0; row < pixels.rows; ++row) {
        const int fromBottom = pixels.rows - 1 - row;
        if (picture.hasAlpha())
            picture.readRow(fromBottom, 0, pixels.cols, PictureChannel::Alpha, alpha.data());
        float* to = pixels.ptr<float>(row);
        for (const PictureChannel channel : order) {
            picture.readRow(fromBottom, 0, pixels.cols, channel, colour.data());
            storeColour(settings, to++, colour.data(), picture.hasAlpha() ? alpha.data() : nullptr,
                        pixels.cols);
        }
        for (const float sample : alpha) {
            *to = sample;
            to += stride;
        }
    }
    return pixels;
}

std::unique_ptr<Zentrel::IFrame> displayedFrame(Picture& picture, const RenderSettings& settings) {
    return std::make_unique<Zentrel::FullFrame>(Zentrel::FullFrameFormat::BGRA_F32(),
                                                displayedPixels(picture, settings),
                                                Zentrel::Frame::Origin::TopLeft);
}

} // namespace ZetTool
