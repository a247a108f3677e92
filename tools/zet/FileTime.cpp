#include "FileTime.h"

#include <algorithm>

#include <sys/stat.h>

namespace ZetTool {
namespace {

FileTime timeOf(const timespec& time) { return {time.tv_sec, time.tv_nsec}; }

} // namespace

std::optional<FileTime> timeWritten(const std::filesystem::path& file) {
    struct stat content;
    if (::stat(file.c_str(), &content) != 0)
        return std::nullopt;
    return timeOf(content.st_mtim);
}

std::optional<FileTime> timeChanged(const std::filesystem::path& file) {
    struct stat content, entry;
    if (::stat(file.c_str(), &content) != 0 || ::lstat(file.c_str(), &entry) != 0)
        return std::nullopt;
    return std::max({timeOf(content.st_mtim), timeOf(content.st_ctim), timeOf(entry.st_ctim)});
}

} // namespace ZetTool
