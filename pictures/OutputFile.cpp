#include "OutputFile.h"

#include <fmt/format.h>

#include <unistd.h>

#include <array>
#include <stdexcept>
#include <string>

namespace ZetTool {
namespace {

std::string hostName() {
    std::array<char, 65> name{};
    ::gethostname(name.data(), name.size() - 1);
    return name.data();
}

} // namespace

OutputFile::OutputFile(std::filesystem::path path, int number)
    : finalPath(std::move(path)),
      temporaryPath(finalPath.parent_path() /
                    fmt::format(".zet-{}-{}-{}.part", hostName(), ::getpid(), number)) {}

OutputFile::~OutputFile() {
    std::error_code ignored; // after a commit there is nothing under this name
    std::filesystem::remove(temporaryPath, ignored);
}

bool OutputFile::diskIsFull(std::uint64_t expectedBytes) const {
    std::error_code error;
    const std::uint64_t written = std::filesystem::file_size(temporaryPath, error);
    if (error)
        return false;
    const auto space = std::filesystem::space(temporaryPath, error);
    return !error && written + space.available < expectedBytes;
}

void OutputFile::commit(std::uint64_t expectedBytes) {
    std::error_code error;
    const std::uint64_t bytes = std::filesystem::file_size(temporaryPath, error);
    if (error)
        throw std::runtime_error(fmt::format("{}: was not written: {}", finalPath.string(), error.message()));
    if (bytes != expectedBytes)
        throw std::runtime_error(
            fmt::format("{}: {} bytes were written instead of {}", finalPath.string(), bytes, expectedBytes));
    std::filesystem::rename(temporaryPath, finalPath, error);
    if (error)
        throw std::runtime_error(fmt::format("{}: cannot be renamed from {}: {}", finalPath.string(),
                                             temporaryPath.filename().string(), error.message()));
}

} // namespace ZetTool
