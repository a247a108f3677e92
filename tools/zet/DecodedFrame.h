// The picture in a media file, decoded.
#pragma once

#include "MediaFiles.h"

#include <MediaConversion/MediaPipeline/Frame.h>

#include <filesystem>
#include <memory>

namespace ZetTool {

/// Pixels of a media file in the order blue, green, red, alpha. Files of 8-bit formats give bytes, deeper
/// ones floats; without an alpha in the file, pixels are opaque.
class DecodedFrame {
public:
    /// Throws std::runtime_error, without the file's name, when it is not a media file in order.
    explicit DecodedFrame(const std::filesystem::path& file);

    /// What the file says of itself.
    const MediaFileInfo& info() const { return about; }
    /// CV_8UC4 or CV_32FC4. It must not outlive this object.
    cv::Mat pixels() const { return frame->image(); }

private:
    MediaFileInfo about;
    std::unique_ptr<Zentrel::IImageFrame> frame;
};

} // namespace ZetTool
