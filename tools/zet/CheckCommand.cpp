#include "CheckCommand.h"

#include "CommonOptions.h"
#include "FrameRange.h"
#include "Manifest.h"
#include "SequenceCheck.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <pictures/FormatChoice.h>

#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>

namespace ZetTool {
namespace {

using Json = nlohmann::ordered_json;

struct Options {
    CheckRequest request;
    std::optional<std::string> format;
    std::optional<std::string> size;
    bool json = false;
    bool quiet = false;
};

std::size_t framesWithFaults(const CheckResult& result) {
    std::set<int> frames;
    for (const Fault& fault : result.faults)
        frames.insert(fault.frame);
    return frames.size();
}

/// One line for each kind of fault, in the order of the first frame that has it.
void printFaults(const std::vector<Fault>& faults) {
    std::map<std::string, std::vector<int>> frames;
    std::vector<std::string> order;
    for (const Fault& fault : faults) {
        auto& having = frames[fault.text];
        if (having.empty())
            order.push_back(fault.text);
        having.push_back(fault.frame);
    }
    for (const std::string& text : order)
        std::cout << fmt::format("frame{} {}: {}\n", frames[text].size() == 1 ? "" : "s",
                                 formatFrameRange(frames[text]), text);
}

void print(const Options& options, const CheckResult& result) {
    printFaults(result.faults);
    if (!result.faults.empty()) {
        std::cout << fmt::format("FAIL {}: {} with faults, {} expected\n", options.request.pattern,
                                 frameCount(framesWithFaults(result)), result.frames.size());
        return;
    }
    if (options.quiet)
        return;
    std::cout << fmt::format("PASS {}: {} ({}) of {} \"{}\", {}{}\n", options.request.pattern,
                             formatFrameRange(result.frames), frameCount(result.frames.size()),
                             sizeOf(*result.look).text(), formatText(*result.look), byteText(result.bytes),
                             options.request.manifests.empty() ? "" : ", content as in the manifest");
}

void printJson(const Options& options, const CheckResult& result) {
    Json json{{"pattern", options.request.pattern},
              {"pass", result.faults.empty()},
              {"frames", formatFrameRange(result.frames)},
              {"expected", result.frames.size()},
              {"found", result.files},
              {"bytes", result.bytes},
              {"contentChecked", !options.request.manifests.empty()},
              {"format", nullptr},
              {"width", nullptr},
              {"height", nullptr},
              {"faults", Json::array()}};
    if (result.look) {
        json["format"] = formatText(*result.look);
        json["width"] = result.look->width;
        json["height"] = result.look->height;
    }
    for (const Fault& fault : result.faults)
        json["faults"].push_back(
            {{"frame", fault.frame}, {"file", fault.file.string()}, {"fault", fault.text}});
    // A file name need not be UTF-8.
    std::cout << json.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

/// Headers are a matter of moments; only the reading of whole files is worth a bar, and only on a terminal.
Progress::Style progressStyle(const Options& options) {
    const bool worthIt = !options.request.manifests.empty() && !options.quiet && !options.json;
    return worthIt && ::isatty(STDOUT_FILENO) ? Progress::Style::Bar : Progress::Style::Silent;
}

/// A sequence that follows the manifests is taken for one more of them, but no file has its name.
void findPattern(CheckRequest& request) {
    auto& names = request.manifests;
    const auto isSequence = [](const std::string& name) {
        return !std::filesystem::exists(name) && SequencePattern(name).hasField();
    };
    if (const auto found = std::find_if(names.begin(), names.end(), isSequence); found != names.end()) {
        request.pattern = *found;
        names.erase(found);
    }
}

ExitCode run(Options options) {
    if (options.request.pattern.empty())
        findPattern(options.request);
    if (options.request.pattern.empty())
        throw std::runtime_error("no sequence to check: name one such as \"shot.%04d.zet\"");
    if (options.format)
        options.request.format = &findOutputFormat(*options.format);
    if (options.size)
        options.request.size = parseSize(*options.size);
    SequenceCheck check(options.request);
    Progress progress(progressStyle(options), std::cout, std::cerr, check.fileCount());
    const CheckResult result = check.run(progress);
    progress.finish();
    if (options.json)
        printJson(options, result);
    else
        print(options, result);
    return result.faults.empty() ? ExitCode::Done : ExitCode::FramesFailed;
}

} // namespace

void addCheckCommand(CLI::App& program, ExitCode& exitCode) {
    const auto options = std::make_shared<Options>();

    CLI::App* command = program.add_subcommand("check", "Check that a whole sequence is fit to be played");
    command->add_option("PATTERN", options->request.pattern,
                        "The sequence: shot.%04d.zet, shot.####.zet or shot.@@@@.zet");
    addFrames(*command, options->request.frames,
              "Frames that there should be, no more and no less, as in 1001-1100, 1-10x3 or 2,5-6; "
              "without it all from the first to the last that is there or in a manifest");
    command
        ->add_option("--manifest", options->request.manifests,
                     "Compare the content with the checksums that \"zet write --manifest\" wrote; takes "
                     "several files, as in manifests/*.txt, and may come several times")
        ->type_name("FILE");
    command
        ->add_option("-f,--format", options->format,
                     "Format that all files should have: label, short name or index; without it that of most")
        ->type_name("FORMAT");
    command->add_option("--size", options->size, "Size that all files should have; without it that of most")
        ->type_name("WIDTHxHEIGHT");
    addJobs(*command, options->request.jobs, "Files to look at at once");
    command->add_flag("--json", options->json, "Print JSON: an object with one entry for each fault");
    addQuiet(*command, options->quiet, "Print nothing but faults");
    command->footer(
        std::string("Every frame must be there, its headers and length must be right, and all must "
                    "be alike in\nformat, size and version. Pixels are read only to compare them "
                    "with a manifest.\n\n") +
        Manifest::description +
        "\n\n"
        "Exit status: 0 PASS; 1 FAIL, every fault was named; 2 there was nothing to check.");
    command->callback([options, &exitCode] { exitCode = run(*options); });
}

} // namespace ZetTool
