// Checksums of whole files.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace ZetTool {

/// What tells two files apart without keeping either.
struct FileSum {
    std::string checksum; ///< XXH128 of all bytes, as 32 hexadecimal digits
    std::uint64_t bytes = 0;

    bool operator==(const FileSum& other) const { return checksum == other.checksum && bytes == other.bytes; }
};

/// The sum of bytes in memory.
FileSum sumBytes(const void* data, std::size_t bytes);

/// The sum of a file, read in pieces. Throws std::runtime_error, without the file's name, when it cannot be
/// read to its end.
FileSum sumFile(const std::filesystem::path& file);

} // namespace ZetTool
