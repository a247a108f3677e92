// What a whole media file looks like from outside: its head and its length.
#pragma once

#include "Picture.h"

#include <plugin/OutputFormats.h>

#include <cstdint>
#include <filesystem>
#include <string>

namespace ZetTool {

/// The shape of every file with one frame of a format and size.
class MediaFileShape {
public:
    /// Throws std::runtime_error, with the nearest sizes that would do, when the format's blocks do not
    /// divide the size, and for a side of more than 65535 pixels, which the file's 16-bit size fields cannot
    /// hold.
    MediaFileShape(const OutputFormat& output, const PictureSize& size);

    const PictureSize& size() const { return pictureSize; }
    /// The length of the file.
    std::uint64_t bytes() const { return length; }
    /// The file and frame headers that it begins with.
    const std::string& head() const { return headers; }

    /// Whether the file has exactly this length and head. False when it cannot be read.
    bool matches(const std::filesystem::path& file) const;

private:
    PictureSize pictureSize;
    std::string headers;
    std::uint64_t length;
};

} // namespace ZetTool
