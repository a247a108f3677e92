// The manifest that a run of "zet write" keeps of its files.
#pragma once

#include "Manifest.h"
#include "WritePlan.h"

#include <filesystem>
#include <mutex>

namespace ZetTool {

/// What the manifest lists is always true of the files that the tool wrote: whoever kills a run leaves a file
/// without an entry, never a wrong entry.
class WriteManifest {
public:
    /// Saves the earlier entries without those of the files that the plan is about to write. Throws
    /// std::runtime_error when that fails.
    WriteManifest(std::filesystem::path file, Manifest earlier, const WritePlan& plan);
    ~WriteManifest();
    WriteManifest(const WriteManifest&) = delete;
    WriteManifest& operator=(const WriteManifest&) = delete;

    /// Adds a file that has just got its name, at once and from any thread. Throws std::runtime_error when it
    /// cannot be written, or when another run has put a manifest of its own into the place of this one.
    void add(const std::filesystem::path& written, const FileSum& sum);

private:
    const std::filesystem::path file;
    std::mutex mutex;
    int entries; ///< an open file's descriptor; -1 once it takes no more
};

} // namespace ZetTool
