#include "MemoryBudget.h"

#include "Progress.h"

#include <fmt/format.h>

#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <limits>
#include <stdexcept>

namespace ZetTool {
namespace {

/// The program, its libraries and what they keep.
constexpr std::uint64_t programBytes = 160'000'000;

/// What a pixel takes in the stages of its road, at most.
constexpr std::uint64_t picture = 16;      // four floats as they come from the file
constexpr std::uint64_t writersFrame = 32; // four floats, and as many that the pool may hold ready
constexpr std::uint64_t between = 4;       // between two steps of a conversion
constexpr std::uint64_t verifying = 20;    // the floats and the step once more

std::uint64_t frameBytes(const MediaFileShape& shape, bool verify) {
    const std::uint64_t pixels = std::uint64_t(shape.size().width) * std::uint64_t(shape.size().height);
    const std::uint64_t stages = picture + writersFrame + between + (verify ? verifying : 0);
    const std::uint64_t results = verify ? 3 : 1; // what is written, what is expected, what is read back
    return pixels * stages + results * shape.bytes();
}

/// The limit of the control group that the process runs in; none where there is no such file or number.
std::uint64_t groupLimit() {
    std::uint64_t bytes = 0;
    return std::ifstream("/sys/fs/cgroup/memory.max") >> bytes ? bytes
                                                               : std::numeric_limits<std::uint64_t>::max();
}

} // namespace

const char memoryEstimate[] =
    "--memory: a frame is taken to need 52 bytes for each pixel (72 with --verify) and its file once\n"
    "(three times), the program itself 160 MB. As many frames are in hand at once as fit, up to --jobs.";

std::uint64_t defaultMemoryBudget() {
    const std::uint64_t machine =
        std::uint64_t(::sysconf(_SC_PHYS_PAGES)) * std::uint64_t(::sysconf(_SC_PAGESIZE));
    return std::min(machine, groupLimit()) / 2;
}

unsigned framesAtOnce(const WritePlan& plan, std::uint64_t budget, unsigned jobs, bool verify) {
    if (!plan.shape)
        return jobs; // no frame can be read
    const std::uint64_t each = frameBytes(*plan.shape, verify);
    if (budget < programBytes + each) {
        constexpr std::uint64_t step = 1'000'000;
        throw std::runtime_error(
            fmt::format("--memory {} is too little: a frame of {} as \"{}\"{} needs {}MB", byteText(budget),
                        plan.shape->size().text(), plan.format->label, verify ? " with --verify" : "",
                        (programBytes + each + step - 1) / step));
    }
    return static_cast<unsigned>(std::min<std::uint64_t>(jobs, (budget - programBytes) / each));
}

} // namespace ZetTool
