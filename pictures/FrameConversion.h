// One frame at a time from format to format.
#pragma once

#include <MediaConversion/MediaPipeline/Frame.h>

#include <memory>

namespace ZetTool {

/// Takes the frame through the library's conversion to the format; DXT1 too, from which no Encoder starts.
/// Throws std::runtime_error for a pair of formats that is not supported.
std::unique_ptr<Zentrel::IImageFrame> convertFrame(std::unique_ptr<Zentrel::IFrame> frame,
                                                   const Zentrel::FrameFormat& format);

} // namespace ZetTool
