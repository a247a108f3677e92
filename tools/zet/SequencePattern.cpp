#include "SequencePattern.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <stdexcept>

namespace fs = std::filesystem;

namespace ZetTool {
namespace {

constexpr std::size_t maxDigits = 32;

struct Field {
    std::size_t length; // in the pattern
    std::size_t width;  // in digits
};

/// The field that begins at `at`, if one does.
std::optional<Field> fieldAt(const std::string& name, std::size_t at) {
    const char mark = name[at];
    if (mark == '#' || mark == '@') {
        const std::size_t length = std::min(name.find_first_not_of(mark, at), name.size()) - at;
        return Field{length, length};
    }
    if (mark != '%')
        return std::nullopt;
    const std::size_t end = name.find_first_not_of("0123456789", at + 1);
    if (end == name.npos || name[end] != 'd')
        return std::nullopt;
    std::size_t width = 0;
    const auto parsed = std::from_chars(name.data() + at + 1, name.data() + end, width);
    return Field{end + 1 - at, parsed.ec == std::errc::result_out_of_range ? maxDigits + 1 : width};
}

std::optional<int> wholeNumber(const std::string& digits) {
    int value = 0;
    const char* end = digits.data() + digits.size();
    const auto parsed = std::from_chars(digits.data(), end, value);
    return parsed.ec == std::errc{} && parsed.ptr == end ? std::optional(value) : std::nullopt;
}

} // namespace

SequencePattern::SequencePattern(fs::path path) : given(std::move(path)) {
    const std::string name = given.filename().string();
    for (std::size_t at = 0; at < name.size();) {
        const auto found = fieldAt(name, at);
        if (!found) {
            (field ? suffix : prefix) += name[at++];
            continue;
        }
        if (field)
            throw std::runtime_error(
                fmt::format("\"{}\" has more than one place for the frame number", given.string()));
        if (found->width > maxDigits)
            throw std::runtime_error(fmt::format("the frame number in \"{}\" may have at most {} digits",
                                                 given.string(), maxDigits));
        field = true;
        width = static_cast<int>(found->width);
        at += found->length;
    }
}

std::string SequencePattern::fileName(int number) const {
    return field ? fmt::format("{}{:0{}}{}", prefix, number, width, suffix) : prefix;
}

fs::path SequencePattern::frame(int number) const { return given.parent_path() / fileName(number); }

std::optional<int> SequencePattern::numberOf(const std::string& name) const {
    if (!field || name.size() <= prefix.size() + suffix.size())
        return std::nullopt;
    const auto number = wholeNumber(name.substr(prefix.size(), name.size() - prefix.size() - suffix.size()));
    return number && fileName(*number) == name ? number : std::nullopt;
}

std::vector<int> SequencePattern::framesOnDisk() const {
    const fs::path folder = given.has_parent_path() ? given.parent_path() : fs::path(".");
    std::error_code error;
    std::vector<int> frames;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        const auto number = numberOf(entry->path().filename().string());
        std::error_code ignored; // a dangling link is a frame that cannot be read, not a folder
        if (number && !entry->is_directory(ignored))
            frames.push_back(*number);
    }
    if (error)
        throw std::runtime_error(
            fmt::format("cannot read folder \"{}\": {}", folder.string(), error.message()));
    std::sort(frames.begin(), frames.end());
    return frames;
}

std::string frameDigits(const fs::path& file) {
    constexpr std::size_t most = 9;
    const std::string stem = file.stem().string();
    const std::string digits = stem.substr(stem.find_last_not_of("0123456789") + 1);
    return digits.size() > most ? "" : digits;
}

} // namespace ZetTool
