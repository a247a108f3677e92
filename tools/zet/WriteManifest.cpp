#include "WriteManifest.h"

#include <fmt/format.h>

#include <cstring>
#include <stdexcept>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace ZetTool {

WriteManifest::WriteManifest(fs::path path, Manifest earlier, const WritePlan& plan) : file(std::move(path)) {
    if (plan.target.path().filename().string().find_first_of("\r\n") != std::string::npos)
        throw std::runtime_error("a file name with a line break cannot stand in a manifest");
    for (const int frame : plan.frames)
        earlier.sums.erase(plan.target.frame(frame).filename().string());
    earlier.save(file);
    entries = ::open(file.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
    if (entries < 0)
        throw std::runtime_error(
            fmt::format("cannot write manifest \"{}\": {}", file.string(), std::strerror(errno)));
}

WriteManifest::~WriteManifest() { ::close(entries); }

void WriteManifest::add(const fs::path& written, const FileSum& sum) {
    const std::lock_guard lock(mutex);
    const auto refuse = [&](const char* reason) {
        throw std::runtime_error(
            fmt::format("{}: was written, but manifest \"{}\" {}", written.string(), file.string(), reason));
    };
    struct stat ours, named;
    if (::fstat(entries, &ours) == 0 && (::stat(file.c_str(), &named) != 0 || named.st_ino != ours.st_ino))
        refuse("is another run's now");
    // In one piece, and nothing ever follows half a line.
    const std::string line = Manifest::line(written.filename().string(), sum);
    if (::write(entries, line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
        ::close(std::exchange(entries, -1));
        refuse("takes no more entries");
    }
}

} // namespace ZetTool
