// Frame numbers as people write them: "1001-1100", "1-10x3", "2,5-6", "9-7x-1".
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ZetTool {

/// The most frames that one range may name: hours of film, yet a slip of the keyboard eats no memory.
inline constexpr long maxFrames = 1'000'000;

/// The frames of a comma-separated list of FRAME, FIRST-LAST and FIRST-LASTxSTEP, in the order written, each
/// once. Frames may be negative; FIRST above LAST counts down, with or without a sign on the step. Throws
/// std::runtime_error that quotes the piece that cannot be read.
std::vector<int> parseFrameRange(std::string_view text);

/// The frames as a list with runs drawn together: "1-3,7". Neighbours in the vector make a run when each is
/// one above the last.
std::string formatFrameRange(const std::vector<int>& frames);

} // namespace ZetTool
