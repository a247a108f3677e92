#include "Manifest.h"

#include <fmt/format.h>
#include <pictures/OutputFile.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>
#include <optional>
#include <stdexcept>

namespace ZetTool {
namespace {

constexpr std::string_view mark = "# zet manifest 1";
constexpr std::string_view withdrawn = "- ";
constexpr std::size_t checksumDigits = 32;

struct Entry {
    std::string name;
    FileSum sum;
};

/// "CHECKSUM BYTES NAME"
std::optional<Entry> parseEntry(const std::string& line) {
    const std::string checksum = line.substr(0, line.find(' '));
    if (checksum.size() != checksumDigits || checksum.find_first_not_of("0123456789abcdef") != checksum.npos)
        return std::nullopt;
    FileSum sum{checksum, 0};
    const char* const end = line.data() + line.size();
    const auto bytes =
        std::from_chars(line.data() + std::min(line.size(), checksumDigits + 1), end, sum.bytes);
    if (bytes.ec != std::errc{} || end - bytes.ptr < 2 || *bytes.ptr != ' ')
        return std::nullopt;
    return Entry{{bytes.ptr + 1, end}, sum};
}

} // namespace

const char* const Manifest::description =
    "A manifest is text. Its first line begins with \"# zet manifest 1\"; each other line has the XXH128\n"
    "checksum of a whole file in 32 hexadecimal digits, its length in bytes and its name without folder,\n"
    "with one blank between them. A line of a dash, a blank and a name takes back what the lines above it\n"
    "say of that file: it was about to be replaced. Further lines that begin with # mean nothing.";

Manifest Manifest::load(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::string line(mark.size(), '\0'); // of a foreign file, no more than this is read
    if (!stream.read(line.data(), static_cast<std::streamsize>(line.size())) || line != mark)
        throw std::runtime_error(fmt::format(
            "\"{}\" {}", file.string(),
            stream.is_open() ? "is not a manifest: it does not begin with \"" + std::string(mark) + "\""
                             : std::string("cannot be opened: ") + std::strerror(errno)));
    std::getline(stream, line);
    Manifest manifest;
    for (std::size_t number = 2; std::getline(stream, line); ++number) {
        if (stream.eof()) {
            manifest.isCut = true;
            break;
        }
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (line.empty() || line.front() == '#')
            continue;
        if (line.compare(0, withdrawn.size(), withdrawn) == 0) {
            manifest.sums.erase(line.substr(withdrawn.size()));
            continue;
        }
        const auto entry = parseEntry(line);
        if (!entry)
            throw std::runtime_error(
                fmt::format("line {} of manifest \"{}\" is \"{}\", expected {} lower-case "
                            "hexadecimal digits, a length and a file name",
                            number, file.string(), line, checksumDigits));
        if (!(manifest.sums.emplace(entry->name, entry->sum).first->second == entry->sum))
            throw std::runtime_error(
                fmt::format("line {} of manifest \"{}\" lists \"{}\" once more, differently", number,
                            file.string(), entry->name));
    }
    if (stream.bad())
        throw std::runtime_error(fmt::format("manifest \"{}\" cannot be read to its end", file.string()));
    return manifest;
}

std::string Manifest::faultOf(const std::filesystem::path& file) const {
    const auto listed = sums.find(file.filename().string());
    if (listed == sums.end())
        return "not in the manifest";
    try {
        if (const auto bytes = std::filesystem::file_size(file); bytes != listed->second.bytes)
            return fmt::format("{} bytes long, the manifest says {}", bytes, listed->second.bytes);
        return sumFile(file) == listed->second ? "" : "content differs from the manifest's checksum";
    } catch (const std::exception& error) {
        return error.what();
    }
}

std::string Manifest::line(const std::string& name, const FileSum& sum) {
    return fmt::format("{} {} {}\n", sum.checksum, sum.bytes, name);
}

std::string Manifest::withdrawal(const std::string& name) { return fmt::format("{}{}\n", withdrawn, name); }

void Manifest::save(const std::filesystem::path& file) const {
    std::string text = fmt::format("{}: XXH128 of the whole file, bytes, name\n", mark);
    for (const auto& [name, sum] : sums)
        text += line(name, sum);
    OutputFile output(file);
    std::ofstream stream(output.temporary(), std::ios::binary);
    if (!stream)
        throw std::runtime_error(
            fmt::format("cannot write manifest \"{}\": {}", file.string(), std::strerror(errno)));
    stream << text;
    stream.close();
    output.commit(text.size());
}

} // namespace ZetTool
