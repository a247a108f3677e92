// The manifest that a run of "zet write" keeps of its files.
#pragma once

#include "Manifest.h"
#include "WritePlan.h"
#include "WriteRun.h"

#include <atomic>
#include <filesystem>

namespace ZetTool {

/// What the manifest lists is always true of the files that the tool wrote: whoever kills a run leaves a file
/// without an entry, never a wrong entry.
class WriteManifest {
public:
    /// Takes over an existing manifest without the files that the plan is about to write, and saves it.
    /// Throws std::runtime_error when it is there but no manifest, or cannot be written.
    WriteManifest(std::filesystem::path file, const WritePlan& plan);

    /// Adds the files that were written, and those that the plan left out as whole and that the manifest did
    /// not have, unless `stop` is set; saves it. Throws std::runtime_error that names the file it failed for.
    void finish(const RunResult& result, unsigned jobs, const std::atomic<bool>& stop);

private:
    std::string nameOf(int frame) const;
    void sumWholeFiles(unsigned jobs, const std::atomic<bool>& stop);

    const std::filesystem::path file;
    const WritePlan& plan;
    Manifest manifest;
};

} // namespace ZetTool
