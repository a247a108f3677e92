// Media files as the library writes them, and what it says against them.
#pragma once

#include <MediaConversion/MediaPipeline/ImageFrame.h>
#include <MediaConversion/mediafile/Exceptions.h>
#include <MediaConversion/mediafile/FileStream.h>
#include <MediaConversion/mediafile/ZentrelMediaFileWriter.h>

#include <tests/TestSupport.h>

#include <opencv2/core.hpp>

#include <utility>

namespace TestSupport {

inline void writeMediaFile(std::filesystem::path const& path, std::unique_ptr<Zentrel::IFrame> frame) {
    MediaConversion::FileStreamFactory files;
    MediaConversion::ZentrelMediaFileWriter(files).writeFrame(path, std::move(frame));
}

inline Bytes pixelsOf(Zentrel::IImageFrame const& frame) {
    cv::Mat const image = frame.image();
    return Bytes(image.data, image.data + image.total() * image.elemSize());
}

/// What is said against the file, which must be named too; empty when nothing is.
template <class Action>
std::string refusalOf(std::filesystem::path const& path, Action const& action) {
    try {
        action();
        return {};
    } catch (MediaConversion::MediaFileAccessException const& exception) {
        EXPECT_EQ(exception.filePath(), path.string());
        return exception.what();
    }
}

} // namespace TestSupport
