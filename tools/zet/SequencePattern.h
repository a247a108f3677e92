// File names with a place for the frame number: "shot.%04d.exr", "shot.####.exr", "shot.@@@@.exr".
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace ZetTool {

/// A path whose file name may hold one frame field: %d, %04d (%4d is the same), or a run of # or @ with one
/// for each digit. Numbers are padded with zeros to the field's width; longer ones are written whole. Fields
/// in the folder part are plain text.
class SequencePattern {
public:
    /// Throws std::runtime_error for a name with more than one field or a field wider than 32 digits.
    explicit SequencePattern(std::filesystem::path path);

    bool hasField() const { return field; }
    /// The path as it was given.
    const std::filesystem::path& path() const { return given; }
    /// The path of one frame; the same for every frame when there is no field.
    std::filesystem::path frame(int number) const;
    /// The frame that a file name without folder is of. Only a name that this pattern would make is a frame:
    /// "shot.7.exr" is not one of "shot.%04d.exr".
    std::optional<int> numberOf(const std::string& name) const;
    /// The frames whose files exist, ascending. Throws std::runtime_error when the folder cannot be read.
    std::vector<int> framesOnDisk() const;

private:
    std::string fileName(int number) const;

    std::filesystem::path given;
    std::string prefix; // of the file name, before the field
    std::string suffix; // after it
    int width = 0;
    bool field = false;
};

/// The digits that a file's name ends with before its extension, as in "shot.1001.exr"; empty when there are
/// none, or more than nine, which no frame number needs.
std::string frameDigits(const std::filesystem::path& file);

} // namespace ZetTool
