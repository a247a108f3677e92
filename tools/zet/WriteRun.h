// Carrying out a plan: pictures in, media files out, several frames at once.
#pragma once

#include "FrameRun.h"
#include "WriteManifest.h"
#include "WritePlan.h"

#include <host/EmbeddedHost.h>
#include <pictures/Transfer.h>

#include <cstdint>
#include <vector>

namespace ZetTool {

struct RunSettings {
    TransferChoice transfer = TransferChoice::Auto;
    std::uint64_t frameBytes = 0;      ///< of memory for each frame in hand
    bool failFast = false;             ///< begin no further frame once one has failed
    bool verify = false;               ///< compare each file with its picture before it gets its name
    WriteManifest* manifest = nullptr; ///< to list the files in, if anywhere
};

/// A node of the loaded plug-in for each of the frames that are to be in hand at once, up to `jobs`. Throws
/// std::runtime_error when it cannot write the plan's format.
std::vector<EmbeddedHost::WriteNode> makeNodes(const WritePlan& plan, unsigned jobs);

/// Writes the plan's frames, one at a time with each node.
FrameResult runWrite(const WritePlan& plan, std::vector<EmbeddedHost::WriteNode>& nodes,
                     const RunSettings& settings, Progress& progress);

} // namespace ZetTool
