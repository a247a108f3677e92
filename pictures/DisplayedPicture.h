// A picture as it is shown and as the writer gets it, in one piece of memory.
#pragma once

#include "Picture.h"

#include <MediaConversion/MediaPipeline/Frame.h>

#include <host/EmbeddedHost.h>
#include <opencv2/core/mat.hpp>

#include <memory>

namespace ZetTool {

/// The picture after its transfer curve: floats in the order blue, green, red, alpha (CV_32FC4), the top row
/// first. Without an alpha, pixels are opaque.
cv::Mat displayedPixels(Picture& picture, const EmbeddedHost::RenderSettings& settings);

/// The same as a frame of float BGRA.
std::unique_ptr<Zentrel::IFrame> displayedFrame(Picture& picture,
                                                const EmbeddedHost::RenderSettings& settings);

} // namespace ZetTool
