// A run over many frames, of which each succeeds or fails by itself.
#pragma once

#include "ExitCode.h"
#include "Progress.h"
#include "SequencePattern.h"

#include <pictures/EndOfRun.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace ZetTool {

/// Both ascending; frames in neither list were not begun.
struct FrameResult {
    std::vector<int> written;
    std::vector<int> failed;
};

/// Writes the file of the frame at a place in the list and returns its length. No two frames have the same
/// job at once.
using FrameWork = std::function<std::uint64_t(std::size_t place, unsigned job)>;

/// Does the work for all frames, up to `jobs` at once, each on its share of the processors, until all are
/// done, one has met the end of the run, Interruption is requested or, with `failFast`, one has failed;
/// frames in hand are finished. Failures are reported as they come.
FrameResult runFrames(const std::vector<int>& frames, unsigned jobs, bool failFast, Progress& progress,
                      const FrameWork& work);

/// Prints one line of what was written, if anything: `done` says how, `look` what the frames are like.
void printWritten(const char* done, const SequencePattern& target, const FrameResult& result,
                  const std::string& look, const ProgressCount& count);

/// Says which of so many frames failed, how many were not begun and, where one is given, the command line to
/// go on with.
ExitCode judge(const FrameResult& result, std::size_t frames, const std::string& resuming = {});

} // namespace ZetTool
