#include "WriteManifest.h"

#include <fmt/format.h>

#include <stdexcept>

namespace fs = std::filesystem;

namespace ZetTool {

WriteManifest::WriteManifest(fs::path path, Manifest earlier, const WritePlan& plan) : file(std::move(path)) {
    if (plan.target.path().filename().string().find_first_of("\r\n") != std::string::npos)
        throw std::runtime_error("a file name with a line break cannot stand in a manifest");
    for (const int frame : plan.frames)
        earlier.sums.erase(plan.target.frame(frame).filename().string());
    earlier.save(file);
    stream.open(file, std::ios::binary | std::ios::app);
}

void WriteManifest::add(const fs::path& written, const FileSum& sum) {
    const std::lock_guard lock(mutex);
    // After a failure the stream takes no more, so that nothing follows half a line.
    if (!(stream << Manifest::line(written.filename().string(), sum) << std::flush))
        throw std::runtime_error(fmt::format("{}: was written, but manifest \"{}\" takes no more entries",
                                             written.string(), file.string()));
}

} // namespace ZetTool
