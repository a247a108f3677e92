// The media files that a command line names, by frame number.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace ZetTool {

struct MediaFrame {
    int frame;
    std::filesystem::path file;
};

/// One sequence or a list of files, with the frame numbers that picture files would have; in the order of the
/// ranges, or without them ascending. Throws std::runtime_error when nothing matches and when a list has no
/// file for a frame; the missing files of a sequence are for its reader to find.
std::vector<MediaFrame> findMediaFrames(const std::vector<std::string>& arguments,
                                        const std::optional<std::string>& ranges);

} // namespace ZetTool
