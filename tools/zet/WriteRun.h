// Carrying out a plan: pictures in, media files out, several frames at once.
#pragma once

#include "Progress.h"
#include "WriteManifest.h"
#include "WritePlan.h"

#include <host/EmbeddedHost.h>
#include <pictures/Transfer.h>

#include <atomic>
#include <vector>

namespace ZetTool {

struct RunSettings {
    TransferChoice transfer = TransferChoice::Auto;
    bool failFast = false;             ///< begin no further frame once one has failed
    std::uint64_t frameBytes = 0;      ///< of memory for each frame in hand
    bool verify = false;               ///< compare each file with its picture before it gets its name
    WriteManifest* manifest = nullptr; ///< to list the files in, if anywhere
};

/// Both ascending; frames in neither list were not begun.
struct RunResult {
    std::vector<int> written;
    std::vector<int> failed;
};

/// A node of the loaded plug-in for each of the frames that are to be in hand at once, up to `jobs`. Throws
/// std::runtime_error when it cannot write the plan's format.
std::vector<EmbeddedHost::WriteNode> makeNodes(const WritePlan& plan, unsigned jobs);

/// Writes the plan's frames, one at a time with each node, until all are done, one has met the end of the run
/// or `stop` is set; frames in hand are finished. Failures are reported as they come.
RunResult runWrite(const WritePlan& plan, std::vector<EmbeddedHost::WriteNode>& nodes,
                   const RunSettings& settings, Progress& progress, const std::atomic<bool>& stop);

} // namespace ZetTool
