// A list of files with their checksums, to tell later and elsewhere whether they are still the same.
#pragma once

#include "Checksum.h"

#include <filesystem>
#include <map>
#include <string>

namespace ZetTool {

/// File names without folders, so that the list stays true when the files move. As text: a head line, then a
/// line for each file with checksum, bytes and name, one blank between them; other lines that begin with #,
/// and empty ones, mean nothing.
class Manifest {
public:
    /// What a help text tells of the format.
    static const char* const description;

    /// Throws std::runtime_error that names the file, the line and what was expected in it.
    static Manifest load(const std::filesystem::path& file);

    /// Sums by file name.
    std::map<std::string, FileSum> sums;

    /// Takes in the other's entries. Throws std::runtime_error, with the name, when both list a file
    /// differently.
    void merge(const Manifest& other);

    /// Writes it under a temporary name and renames that. Throws std::runtime_error that names the file.
    void save(const std::filesystem::path& file) const;
};

} // namespace ZetTool
