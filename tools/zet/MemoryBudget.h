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

/// The frames of the plan, up to `jobs`, that `budget` bytes have room for at once. Throws
/// std::runtime_error that tells how much is needed when there is not room for one.
unsigned framesAtOnce(const WritePlan& plan, std::uint64_t budget, unsigned jobs, bool verify);

/// How the memory of a frame is counted, for users to read.
extern const char memoryEstimate[];

} // namespace ZetTool
