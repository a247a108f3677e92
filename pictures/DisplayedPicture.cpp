#include "DisplayedPicture.h"

#include <MediaConversion/MediaPipeline/FullFrame.h>

#include <host/TransferCurves.h>

#include <vector>

namespace ZetTool {
namespace {

using EmbeddedHost::PictureChannel;
using EmbeddedHost::RenderSettings;

constexpr PictureChannel order[] = {PictureChannel::Blue, PictureChannel::Green, PictureChannel::Red};
constexpr int stride = 4;

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
            EmbeddedHost::encodeRow(settings.transfer, to++, colour.data(),
                                    settings.premultiplied ? alpha.data() : nullptr, pixels.cols, stride);
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
