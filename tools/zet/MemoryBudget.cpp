#include "MemoryBudget.h"

#include "Progress.h"

#include <fmt/format.h>

#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <limits>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

namespace fs = std::filesystem;

namespace ZetTool {
namespace {

/// The program, its libraries and what they keep.
constexpr std::uint64_t programBytes = 160'000'000;

/// What a pixel takes in the stages of its road, at most.
constexpr std::uint64_t picture = 16;      // four floats as they come from the file, if it holds no more
constexpr std::uint64_t writersFrame = 32; // four floats, and as many that the pool may hold ready
constexpr std::uint64_t between = 4;       // between two steps of a conversion
constexpr std::uint64_t verifying = 20;    // the floats and the step once more

std::uint64_t frameBytes(const WritePlan& plan, const PictureHeader& header, bool verify) {
    const std::uint64_t pixels =
        std::uint64_t(plan.shape->size().width) * std::uint64_t(plan.shape->size().height);
    const std::uint64_t stages = writersFrame + between + (verify ? verifying : 0);
    const std::uint64_t results = verify ? 3 : 1; // what is written, what is expected, what is read back
    // A file may hold more than is seen: pixels around the picture, channels between its own.
    return std::max(pixels * picture, header.bytes) + pixels * stages + results * plan.shape->bytes();
}

/// Rounded up, as --memory takes it.
std::string megabytes(std::uint64_t bytes) {
    constexpr std::uint64_t step = 1'000'000;
    return fmt::format("{}MB", (bytes + step - 1) / step);
}

/// The limit of a control group and of those around it.
std::uint64_t groupLimit(fs::path group, const fs::path& mount, const char* file) {
    std::uint64_t limit = std::numeric_limits<std::uint64_t>::max();
    for (group = group.relative_path();; group = group.parent_path()) {
        std::uint64_t bytes = 0;
        if (std::ifstream(mount / group / file) >> bytes)
            limit = std::min(limit, bytes);
        if (group.empty())
            return limit;
    }
}

/// What the control groups that the process runs in leave it, of the second version or the first. In a
/// container their paths may lead nowhere; the root is then the container's own.
std::uint64_t groupLimit() {
    std::uint64_t limit = std::numeric_limits<std::uint64_t>::max();
    std::ifstream groups("/proc/self/cgroup");
    for (std::string line; std::getline(groups, line);) {
        const auto first = line.find(':'), second = line.find(':', first + 1);
        if (first == line.npos || second == line.npos)
            continue;
        const std::string controllers = line.substr(first + 1, second - first - 1),
                          path = line.substr(second + 1);
        if (controllers.empty())
            limit = std::min(limit, groupLimit(path, "/sys/fs/cgroup", "memory.max"));
        else if (controllers == "memory")
            limit = std::min(limit, groupLimit(path, "/sys/fs/cgroup/memory", "memory.limit_in_bytes"));
    }
    return limit;
}

} // namespace

const char memoryEstimate[] =
    "--memory: a frame is taken to need 52 bytes for each pixel (72 with --verify), more where the\n"
    "picture's file holds more than is seen, and its file once (three times), the program itself 160 MB.\n"
    "As many frames are in hand at once as fit, up to --jobs. A picture that needs more than its frame's\n"
    "share of the memory fails.";

std::uint64_t defaultMemoryBudget() {
    const std::uint64_t machine =
        std::uint64_t(::sysconf(_SC_PHYS_PAGES)) * std::uint64_t(::sysconf(_SC_PAGESIZE));
    return std::min(machine, groupLimit()) / 2;
}

std::uint64_t parseMemory(const std::string& text) {
    constexpr std::pair<const char*, double> units[] = {{"", 1},         {"kB", 1e3},     {"MB", 1e6},
                                                        {"GB", 1e9},     {"TB", 1e12},    {"KiB", 0x1p10},
                                                        {"MiB", 0x1p20}, {"GiB", 0x1p30}, {"TiB", 0x1p40}};
    constexpr double most = 0x1p60;
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    for (const auto& [unit, bytes] : units)
        if (error == std::errc{} && number > 0 && number * bytes <= most && ::strcasecmp(end, unit) == 0)
            return static_cast<std::uint64_t>(number * bytes);
    throw std::runtime_error(
        fmt::format("cannot read --memory \"{}\": expected a size such as 2GB or 1500MB", text));
}

MemoryShare shareMemory(const WritePlan& plan, std::uint64_t budget, unsigned jobs, bool verify) {
    const auto most = static_cast<unsigned>(std::clamp<std::size_t>(plan.frames.size(), 1, jobs));
    if (!plan.shape)
        return {most, 0}; // no frame can be read
    const std::uint64_t each = frameBytes(plan, *plan.picture, verify);
    if (budget < programBytes + each)
        throw std::runtime_error(
            fmt::format("{} of memory is too little (--memory): a frame of {} as \"{}\"{} needs {}",
                        byteText(budget), plan.shape->size().text(), plan.format->label,
                        verify ? " with --verify" : "", megabytes(programBytes + each)));
    const std::uint64_t shared = budget - programBytes;
    const auto frames = static_cast<unsigned>(std::min<std::uint64_t>(most, shared / each));
    return {frames, shared / frames};
}

void checkMemory(const WritePlan& plan, int frame, const PictureHeader& header, std::uint64_t bytes,
                 bool verify) {
    const std::uint64_t needed = frameBytes(plan, header, verify);
    if (needed > bytes)
        throw std::runtime_error(fmt::format(
            "{} needs {} of memory on its way, and each of the frames at once has {} (--memory, --jobs)",
            plan.source->name(frame), megabytes(needed), byteText(bytes)));
}

} // namespace ZetTool
