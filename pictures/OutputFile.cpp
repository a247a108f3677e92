#include "OutputFile.h"

#include <fmt/format.h>

#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstring>
#include <fstream>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>

namespace fs = std::filesystem;

namespace ZetTool {
namespace {

constexpr std::string_view suffix = ".part";

std::string hostName() {
    std::array<char, 65> name{};
    ::gethostname(name.data(), name.size() - 1);
    return name.data();
}

/// Where a process number means the same process: until the machine starts again, and within a container.
/// Machines that share a folder may share their names. Empty when the system does not tell.
std::string realm() {
    std::string boot;
    std::error_code error;
    const auto container = fs::read_symlink("/proc/self/ns/pid", error).string(); // "pid:[4026531836]"
    const auto digits = container.find_first_of("0123456789");
    if (!(std::ifstream("/proc/sys/kernel/random/boot_id") >> boot) || boot.size() < 8 ||
        digits == container.npos)
        return {};
    return boot.substr(0, 8) + container.substr(digits, container.size() - digits - 1);
}

/// What the names of all temporary files begin with whose processes can be seen from here.
const std::string& prefix() {
    static const std::string text = fmt::format(".zet-{}-{}-", hostName(), realm());
    return text;
}

std::string randomDigits() {
    std::random_device source;
    return fmt::format("{:08x}{:08x}", source(), source());
}

/// Whether the name is that of a process which no longer is.
bool isAbandoned(std::string_view name) {
    if (name.size() < prefix().size() + suffix.size() || name.substr(0, prefix().size()) != prefix() ||
        name.substr(name.size() - suffix.size()) != suffix)
        return false;
    name.remove_prefix(prefix().size());
    pid_t process = 0;
    const auto parsed = std::from_chars(name.data(), name.data() + name.size(), process);
    return parsed.ec == std::errc{} && *parsed.ptr == '-' && process > 0 && ::kill(process, 0) != 0 &&
           errno == ESRCH;
}

} // namespace

OutputFile::OutputFile(fs::path path)
    : finalPath(std::move(path)),
      temporaryPath(finalPath.parent_path() /
                    fmt::format("{}{}-{}{}", prefix(), ::getpid(), randomDigits(), suffix)) {}

OutputFile::~OutputFile() {
    std::error_code ignored; // after a commit there is nothing under this name
    fs::remove(temporaryPath, ignored);
}

bool OutputFile::diskIsFull(std::uint64_t expectedBytes) const {
    std::error_code error;
    const std::uint64_t written = fs::file_size(temporaryPath, error);
    if (error)
        return false;
    const auto space = fs::space(temporaryPath, error);
    return !error && written + space.available < expectedBytes;
}

void OutputFile::commit(std::uint64_t expectedBytes) {
    std::error_code error;
    const std::uint64_t bytes = fs::file_size(temporaryPath, error);
    if (error)
        throw std::runtime_error(fmt::format("{}: was not written: {}", finalPath.string(), error.message()));
    if (bytes != expectedBytes)
        throw std::runtime_error(
            fmt::format("{}: {} bytes were written instead of {}", finalPath.string(), bytes, expectedBytes));
    fs::rename(temporaryPath, finalPath, error);
    if (error)
        throw std::runtime_error(fmt::format("{}: cannot be renamed from {}: {}", finalPath.string(),
                                             temporaryPath.filename().string(), error.message()));
}

void checkOutputFolder(const fs::path& file) {
    const fs::path folder = file.has_parent_path() ? file.parent_path() : fs::path(".");
    std::error_code ignored;
    if (!fs::is_directory(folder, ignored))
        throw std::runtime_error(fmt::format("the output's folder \"{}\" {}", folder.string(),
                                             fs::exists(folder, ignored) ? "is a file" : "does not exist"));
    if (::access(folder.c_str(), W_OK | X_OK) != 0)
        throw std::runtime_error(fmt::format("cannot write to the output's folder \"{}\": {}",
                                             folder.string(), std::strerror(errno)));
}

void removeAbandonedFiles(const fs::path& folder) {
    if (realm().empty())
        return;
    std::error_code error; // whoever writes here next will tell of a folder that cannot be read
    for (fs::directory_iterator entry(folder.empty() ? "." : folder, error), end; !error && entry != end;
         entry.increment(error)) {
        std::error_code ignored; // another run may have been faster
        if (isAbandoned(entry->path().filename().string()))
            fs::remove(entry->path(), ignored);
    }
}

} // namespace ZetTool
