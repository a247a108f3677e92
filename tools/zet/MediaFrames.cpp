#include "MediaFrames.h"

#include "FrameRange.h"
#include "FrameSource.h"

#include <fmt/format.h>

#include <stdexcept>

namespace ZetTool {

std::vector<MediaFrame> findMediaFrames(const std::vector<std::string>& arguments,
                                        const std::optional<std::string>& ranges) {
    const auto files = openPictureFiles(arguments); // opens none of them
    std::vector<MediaFrame> frames;
    for (const int frame : ranges ? parseFrameRange(*ranges) : files->frames())
        try {
            frames.push_back({frame, files->name(frame)});
        } catch (const std::exception&) {
            throw std::runtime_error(
                fmt::format("frame {}: none of the listed files has this number", frame));
        }
    if (frames.empty())
        throw std::runtime_error(fmt::format("no file matches \"{}\"", fmt::join(arguments, " ")));
    return frames;
}

} // namespace ZetTool
