// The manifest that a run of "zet write" keeps of its files.
#pragma once

#include "Manifest.h"

#include <filesystem>
#include <functional>
#include <mutex>
#include <string>

namespace ZetTool {

/// What the manifest lists is always true of the files that the tool wrote: whoever kills a run leaves the
/// frames in hand without their entries, never a wrong entry, and takes none from a file that stays.
class WriteManifest {
public:
    /// Saves the earlier entries. `output` is what the files are called. Throws std::runtime_error when that
    /// fails.
    WriteManifest(std::filesystem::path file, Manifest earlier, const std::filesystem::path& output);
    ~WriteManifest();
    WriteManifest(const WriteManifest&) = delete;
    WriteManifest& operator=(const WriteManifest&) = delete;

    /// Takes back what was listed of a file, lets `commit` put the new one in its place and adds that; from
    /// any thread. When `commit` throws, what was listed stays. Throws EndOfRun when the manifest takes no
    /// more entries, or when another run has put one of its own into its place: before the file is replaced,
    /// if that can be known.
    void replace(const std::filesystem::path& media, const FileSum& sum, const std::function<void()>& commit);

private:
    void append(const std::filesystem::path& media, const char* outcome, const std::string& line);

    const std::filesystem::path file;
    const Manifest earlier;
    std::mutex mutex;
    int entries; ///< an open file's descriptor; -1 once it takes no more
};

} // namespace ZetTool
