#include "WriteManifest.h"

#include "FrameRun.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace ZetTool {

WriteManifest::WriteManifest(fs::path path, Manifest known, const fs::path& output)
    : file(std::move(path)), earlier(std::move(known)) {
    if (output.filename().string().find_first_of("\r\n") != std::string::npos)
        throw std::runtime_error("a file name with a line break cannot stand in a manifest");
    earlier.save(file);
    entries = ::open(file.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
    if (entries < 0)
        throw std::runtime_error(
            fmt::format("cannot write manifest \"{}\": {}", file.string(), std::strerror(errno)));
}

WriteManifest::~WriteManifest() { ::close(entries); }

void WriteManifest::replace(const fs::path& media, const FileSum& sum, const std::function<void()>& commit) {
    const std::string name = media.filename().string();
    const auto before = earlier.sums.find(name);
    const bool listed = before != earlier.sums.end();
    append(media, "was not put in its place", listed ? Manifest::withdrawal(name) : "");
    try {
        commit();
    } catch (...) {
        append(media, "was not put in its place", listed ? Manifest::line(name, before->second) : "");
        throw;
    }
    append(media, "was written", Manifest::line(name, sum));
}

void WriteManifest::append(const fs::path& media, const char* outcome, const std::string& line) {
    const std::lock_guard lock(mutex);
    const auto refuse = [&](const char* reason) {
        throw EndOfRun(
            fmt::format("{}: {}: manifest \"{}\" {}", media.string(), outcome, file.string(), reason));
    };
    struct stat ours, named;
    if (entries < 0)
        refuse("takes no more entries");
    if (::fstat(entries, &ours) != 0 || ::stat(file.c_str(), &named) != 0 || named.st_ino != ours.st_ino)
        refuse("is another run's now");
    // In one piece, and nothing ever follows half a line.
    if (::write(entries, line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
        ::close(std::exchange(entries, -1));
        refuse("takes no more entries");
    }
}

} // namespace ZetTool
