// Carrying out a plan: pictures in, media files out, several frames at once.
#pragma once

#include "Progress.h"
#include "WriteManifest.h"
#include "WritePlan.h"

#include <pictures/Transfer.h>

#include <atomic>
#include <vector>

namespace ZetTool {

struct RunSettings {
    unsigned jobs = 1; ///< frames at once
    TransferChoice transfer = TransferChoice::Auto;
    bool failFast = false;             ///< begin no further frame once one has failed
    bool verify = false;               ///< compare each file with its picture before it gets its name
    WriteManifest* manifest = nullptr; ///< to list the files in, if anywhere
};

/// Both ascending; frames in neither list were not begun.
struct RunResult {
    std::vector<int> written;
    std::vector<int> failed;
};

/// Writes the plan's frames with the loaded plug-in until all are done, the disk is full or `stop` is set;
/// frames in hand are finished. Failures are reported as they come. Throws std::runtime_error when no plug-in
/// can write the format.
RunResult runWrite(const WritePlan& plan, const RunSettings& settings, Progress& progress,
                   const std::atomic<bool>& stop);

} // namespace ZetTool
