#include "InfoCommand.h"

#include "CommonOptions.h"
#include "FrameRange.h"
#include "MediaFiles.h"
#include "Parallel.h"
#include "Progress.h"
#include "SequencePattern.h"
#include "Table.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <iostream>
#include <memory>
#include <optional>
#include <thread>

namespace fs = std::filesystem;

namespace ZetTool {
namespace {

using Json = nlohmann::ordered_json;

struct Options {
    std::vector<std::string> files;
    bool json = false;
};

/// A place in a sequence.
struct Place {
    SequencePattern pattern;
    int frame;
};

struct Listed {
    fs::path path;
    std::optional<Place> place;
};

/// Neighbours in the list that are alike and of one sequence.
struct Run {
    fs::path first;
    std::optional<Place> place;
    std::vector<int> frames;
    MediaFileInfo info;
    std::size_t files = 1;

    bool takes(const Listed& file, const MediaFileInfo& its) const {
        return place && file.place && place->pattern.frame(file.place->frame) == file.path &&
               lookOf(info) == lookOf(its) && info.fileBytes == its.fileBytes;
    }
};

/// The place in a sequence that the number at the end of the name tells, as in "shot.1001.zet".
std::optional<Place> placeOf(const fs::path& file) {
    const std::string digits = frameDigits(file), stem = file.stem().string();
    const std::string before = stem.substr(0, stem.size() - digits.size());
    const std::string after = file.extension().string();
    // The marks would be taken for fields of the pattern.
    if (digits.empty() || (before + after).find_first_of("%#@") != before.npos)
        return std::nullopt;
    const std::string field = digits.front() == '0' ? fmt::format("%0{}d", digits.size()) : "%d";
    return Place{SequencePattern(file.parent_path() / (before + field + after)), std::stoi(digits)};
}

std::vector<Listed> listFiles(const std::vector<std::string>& arguments) {
    std::vector<Listed> files;
    for (const std::string& argument : arguments) {
        // A file of exactly this name is meant as it is, whatever marks its name has.
        if (std::error_code error; fs::exists(argument, error)) {
            files.push_back({argument, placeOf(argument)});
            continue;
        }
        const SequencePattern pattern{argument};
        const std::vector<int> frames = pattern.hasField() ? pattern.framesOnDisk() : std::vector<int>{};
        if (frames.empty())
            files.push_back({argument, std::nullopt}); // nothing there: a fault of its own
        for (const int frame : frames)
            files.push_back({pattern.frame(frame), Place{pattern, frame}});
    }
    return files;
}

std::vector<Run> drawTogether(const std::vector<Listed>& files, const std::vector<FoundFile>& found) {
    std::vector<Run> runs;
    for (std::size_t i = 0; i < files.size(); ++i) {
        if (!found[i].info)
            continue;
        if (runs.empty() || !runs.back().takes(files[i], *found[i].info))
            runs.push_back({files[i].path, files[i].place, {}, *found[i].info, 0});
        ++runs.back().files;
        if (files[i].place)
            runs.back().frames.push_back(files[i].place->frame);
    }
    return runs;
}

void print(const std::vector<Run>& runs) {
    std::vector<std::vector<std::string>> cells;
    std::uint64_t bytes = 0;
    std::size_t files = 0;
    for (const Run& run : runs) {
        const bool one = run.files == 1;
        cells.push_back(
            {one ? run.first.string() : run.place->pattern.path().string(),
             one ? "" : formatFrameRange(run.frames), formatText(run.info), sizeOf(run.info).text(),
             "version " + versionText(run.info), fmt::format("bits 0x{:08X}", run.info.mediaFormat),
             (one ? "" : fmt::format("{} x ", run.files)) + fmt::format("{} bytes", run.info.fileBytes)});
        bytes += run.info.fileBytes * run.files;
        files += run.files;
    }
    std::cout << alignedTable(cells, "lllrllr");
    if (files > 1)
        std::cout << fmt::format("{} files, {}\n", files, byteText(bytes));
}

Json toJson(const FoundFile& file) {
    Json json{{"file", file.path.string()}};
    if (!file.info) {
        json["fault"] = file.fault;
        return json;
    }
    const MediaFileInfo& info = *file.info;
    json.update({{"format", formatText(info)},
                 {"layout", Zentrel::FrameFormat::toString(info.format)},
                 {"formatBits", info.mediaFormat},
                 {"width", info.width},
                 {"height", info.height},
                 {"version", versionText(info)},
                 {"frameCount", info.frameCount},
                 {"targetFrameCount", info.targetFrameCount},
                 {"frameFlags", info.frameFlags},
                 {"pixelOffset", info.pixelOffset},
                 {"bytes", info.fileBytes}});
    return json;
}

ExitCode run(const Options& options) {
    const std::vector<Listed> files = listFiles(options.files);
    std::vector<FoundFile> found(files.size());
    forEachIndex(files.size(), std::max(1u, std::thread::hardware_concurrency()),
                 [&](std::size_t i) { found[i] = inspect(files[i].path); });

    if (options.json) {
        Json list = Json::array();
        for (const FoundFile& file : found)
            list.push_back(toJson(file));
        // A file name need not be UTF-8.
        std::cout << list.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
    } else {
        print(drawTogether(files, found));
    }
    ExitCode outcome = ExitCode::Done;
    for (const FoundFile& file : found) {
        if (file.info)
            continue;
        std::cerr << fmt::format("zet: {}: {}\n", file.path.string(), file.fault);
        outcome = ExitCode::FramesFailed;
    }
    return outcome;
}

} // namespace

void addInfoCommand(CLI::App& program, ExitCode& exitCode) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand("info", "Tell what media files say of themselves");
    command->add_option("FILES", options->files, mediaFilesOrSequences)->required();
    command->add_flag("--json", options->json, "Print JSON: an array with an object for each file");
    command->footer(
        "Headers and lengths are checked, pixels are not read. Neighbours in a sequence that are\n"
        "alike share a line, which has the range of their frames.\n\n"
        "Exit status: 0 all files are in order; 1 some are not, and were named;\n"
        "2 there was nothing to look at.");
    command->callback([options, &exitCode] { exitCode = run(*options); });
}

} // namespace ZetTool
