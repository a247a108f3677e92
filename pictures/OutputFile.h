// A file that appears under its name only when it is whole.
#pragma once

#include <cstdint>
#include <filesystem>

namespace ZetTool {

/// Reserves a temporary name beside the final one; what stands under it is removed again unless it is
/// committed. A symbolic link under the final name is replaced by the file: what it leads to may be a frame
/// of another version, which nobody asked to change.
class OutputFile {
public:
    explicit OutputFile(std::filesystem::path finalPath);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Where to write: a hidden name in the final folder that no "*.zet" finds. It has the machine and the
    /// process, by which it is known once abandoned, and random digits, which even clones of a running
    /// machine do not share.
    const std::filesystem::path& temporary() const { return temporaryPath; }
    /// Whether so little space is left that a file of this length cannot have been written.
    bool diskIsFull(std::uint64_t expectedBytes) const;
    /// Gives the file its final name. Throws std::runtime_error when it is not there with this length, or
    /// cannot be renamed.
    void commit(std::uint64_t expectedBytes);

private:
    std::filesystem::path finalPath;
    std::filesystem::path temporaryPath;
};

/// Throws std::runtime_error when the folder that the file is to stand in is missing or closed to writing.
void checkOutputFolder(const std::filesystem::path& file);

/// Removes the temporary files that killed processes of this machine left in the folder. Those of other
/// machines, containers and earlier starts of the machine stay: whether their processes still write cannot be
/// seen.
void removeAbandonedFiles(const std::filesystem::path& folder);

} // namespace ZetTool
