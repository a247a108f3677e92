// How many frames may be in memory at once.
#pragma once

#include "WritePlan.h"

#include <cstdint>
#include <string>

namespace ZetTool {

/// Half of the machine's memory, or of what a control group leaves this process if that is less.
std::uint64_t defaultMemoryBudget();

/// Bytes, written as in "2GB", "1.5GB" or "1500MiB". Throws std::runtime_error that quotes what cannot be
/// read.
std::uint64_t parseMemory(const std::string& text);

/// A budget that is divided among the frames that are in memory at once.
struct MemoryShare {
    unsigned frames;
    std::uint64_t bytesEach;
};

/// For as many of the plan's frames, up to `jobs`, as `budget` bytes have room for. Throws std::runtime_error
/// that tells how much is needed when there is not room for one.
MemoryShare shareMemory(const WritePlan& plan, std::uint64_t budget, unsigned jobs, bool verify);

/// Throws std::runtime_error that names the frame's picture, with both numbers, when a frame from a picture
/// with this header needs more than `bytes`.
void checkMemory(const WritePlan& plan, int frame, const PictureHeader& header, std::uint64_t bytes,
                 bool verify);

/// How the memory of a frame is counted, for users to read.
extern const char memoryEstimate[];

} // namespace ZetTool
