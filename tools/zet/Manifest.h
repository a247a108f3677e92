// A list of files with their checksums, to tell later and elsewhere whether they are still the same.
#pragma once

#include "Checksum.h"

#include <filesystem>
#include <map>
#include <string>

namespace ZetTool {

/// File names without folders, so that the list stays true when the files move. As text: a head line, then a
/// line for each file with checksum, bytes and name, one blank between them; a line with a dash, a blank and
/// a name takes back what the lines above say of that file; other lines that begin with #, and empty ones,
/// mean nothing. Nor does a last line that does not end.
class Manifest {
public:
    /// What a help text tells of the format.
    static const char* const description;

    /// Throws std::runtime_error that names the file, the line and what was expected in it, which a second
    /// and different entry of a file is not.
    static Manifest load(const std::filesystem::path& file);

    /// Sums by file name.
    std::map<std::string, FileSum> sums;
    /// The last line does not end: whoever wrote it was killed, or it was cut since.
    bool isCut = false;

    /// What is wrong with a file, by its name, its length and its content; empty when it is as listed.
    std::string faultOf(const std::filesystem::path& file) const;

    /// Writes it under a temporary name and renames that. Throws std::runtime_error that names the file.
    void save(const std::filesystem::path& file) const;
    /// The line of a file, and the one that takes it back.
    static std::string line(const std::string& name, const FileSum& sum);
    static std::string withdrawal(const std::string& name);
};

} // namespace ZetTool
