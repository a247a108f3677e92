#include "WriteCommand.h"

#include "CommonOptions.h"
#include "FrameRun.h"
#include "Interruption.h"
#include "MemoryBudget.h"
#include "OwnModules.h"
#include "WriteManifest.h"
#include "WritePlan.h"
#include "WriteRun.h"

#include <fmt/format.h>
#include <host/EmbeddedHost.h>

#include <algorithm>
#include <iostream>
#include <memory>
#include <stdexcept>

namespace fs = std::filesystem;

namespace ZetTool {
namespace {

struct Options {
    WriteRequest request;
    RunSettings run;
    std::string chart;
    std::string transfer = "auto";
    std::string plugin;
    std::string manifest;
    std::string memory; ///< empty: the default
    unsigned jobs = 1;  ///< frames at once
    bool resume = false;
    bool dryRun = false;
    bool quiet = false;
};

void noteLostAlpha(const WritePlan& plan, const WriteRequest& request) {
    if (!request.chart && plan.picture && plan.picture->hasAlpha && !holdsAlpha(plan.format->format()))
        std::cout << fmt::format("note: the pictures have alpha, which \"{}\" does not hold\n",
                                 plan.format->label);
}

/// A sequence that was not asked for by its numbers may have holes that nobody knows of.
void noteHoles(const WritePlan& plan, const WriteRequest& request) {
    if (request.frames)
        return;
    std::vector<int> there = plan.frames;
    there.insert(there.end(), plan.whole.begin(), plan.whole.end());
    std::sort(there.begin(), there.end());
    const auto hole =
        std::adjacent_find(there.begin(), there.end(), [](int one, int next) { return next - 1L > one; });
    if (hole == there.end())
        return;
    const auto span = static_cast<std::size_t>(static_cast<long>(there.back()) - there.front() + 1);
    const std::size_t missing = span - there.size();
    std::cout << fmt::format("note: {} between {} and {} {}, first {}\n", frameCount(missing), there.front(),
                             there.back(), missing == 1 ? "has no picture" : "have no pictures", *hole + 1);
}

void printSummary(const WritePlan& plan, const FrameResult& result, const ProgressCount& count,
                  const RunSettings& settings) {
    if (!plan.whole.empty())
        std::cout << fmt::format("whole already: {}\n", frameCount(plan.whole.size()));
    const std::string look =
        plan.shape ? fmt::format(" of {} \"{}\"{}", plan.shape->size().text(), plan.format->label,
                                 transferNote(chooseTransfer(settings.transfer, *plan.picture)))
                   : "";
    printWritten(settings.verify ? "wrote and verified" : "wrote", plan.target, result, look, count);
}

/// The command line of a run that goes on where this one ended. The option comes first: behind a "--" it
/// would be a picture's name.
std::string resuming(std::string commandLine) {
    constexpr std::string_view name = " write ";
    return commandLine.insert(commandLine.find(name) + name.size(), "--resume ");
}

/// That of an earlier run, empty when this is the first; nothing when none is kept.
std::optional<Manifest> earlierManifest(const std::string& file) {
    if (file.empty())
        return std::nullopt;
    return fs::exists(file) ? Manifest::load(file) : Manifest{};
}

void limitJobs(Options& options, const WritePlan& plan) {
    const std::uint64_t budget = options.memory.empty() ? defaultMemoryBudget() : parseMemory(options.memory);
    if (plan.frames.empty())
        return;
    const MemoryShare share = shareMemory(plan, budget, options.jobs, options.run.verify);
    if (share.frames < options.jobs && share.frames < plan.frames.size() && !options.quiet)
        std::cout << fmt::format("note: {} at once, which is what {} of memory has room for\n",
                                 frameCount(share.frames), byteText(budget));
    options.jobs = share.frames;
    options.run.frameBytes = share.bytesEach;
}

ExitCode run(Options options, const std::string& commandLine) {
    if (!options.chart.empty())
        options.request.chart = parseSize(options.chart);
    else if (options.request.pictures.empty())
        throw std::runtime_error("no pictures: give a sequence, a list of files, or --chart WIDTHxHEIGHT");
    options.run.transfer = parseTransferChoice(options.transfer);
    EmbeddedHost::loadPlugin(options.plugin.empty() ? ownPlugin() : fs::path(options.plugin));
    WritePlan plan = planWrite(options.request);
    std::optional<Manifest> earlier = earlierManifest(options.manifest);
    if (options.resume) {
        if (earlier && !options.quiet) // which may take a while
            std::cout << fmt::format("comparing the files of {} with {}\n", frameCount(plan.frames.size()),
                                     options.manifest)
                      << std::flush;
        leaveOutWhole(plan, earlier ? &*earlier : nullptr, options.jobs);
    }
    limitJobs(options, plan);

    if (!options.quiet) {
        noteHoles(plan, options.request);
        noteLostAlpha(plan, options.request);
    }
    if (options.dryRun) {
        std::ostream silent(nullptr);
        const auto failing =
            printPlan(plan, options.run.transfer, options.quiet ? silent : std::cout, std::cerr);
        return failing == 0 ? ExitCode::Done : ExitCode::FramesFailed;
    }

    auto nodes = makeNodes(plan, options.jobs); // all that can refuse the run comes before the manifest
    std::optional<WriteManifest> manifest;
    if (earlier)
        options.run.manifest = &manifest.emplace(options.manifest, std::move(*earlier), plan.target.path());

    const Interruption interruption;
    Progress progress(Progress::styleForOutput(options.quiet), std::cout, std::cerr,
                      plan.frames.size() + plan.whole.size(), plan.whole.size());
    const FrameResult result = runWrite(plan, nodes, options.run, progress);
    const ProgressCount count = progress.finish();
    if (!options.quiet)
        printSummary(plan, result, count, options.run);
    return judge(result, plan.frames.size(), options.resume ? commandLine : resuming(commandLine));
}

const char verifyAndResume[] =
    "--verify checks the headers and the length of the file that was written, and compares every\n"
    "byte of its pixels with a second conversion of the picture, which the library makes in memory\n"
    "without the plug-in. It finds what goes wrong between conversion and file, not what the\n"
    "conversion itself may do wrong; the system may answer from its memory instead of the disk.\n"
    "\n"
    "--resume leaves out a frame when the file under its name has the headers and the length that\n"
    "would be written and is newer than the picture. With --manifest it must have the checksum of its\n"
    "entry, too; a file without an entry is written again. It cannot see that other options, such as\n"
    "--transfer, have changed. What it leaves out is not verified.\n\n";

const char manifestAndStatus[] =
    "\nEach file gets its entry as soon as it has its name. Entries of files that a run does not write\n"
    "are kept. Runs at the same time need a manifest each: \"zet check\" takes several.\n\n"
    "Exit status: 0 every frame was written; 1 some frames failed, and were named;\n"
    "2 the run could not start, or standard output took no more; 130 interrupted.";

} // namespace

void addWriteCommand(CLI::App& program, const std::string& commandLine, ExitCode& exitCode) {
    const auto options = std::make_shared<Options>();

    CLI::App* command =
        program.add_subcommand("write", "Write pictures, or the line-up chart, as media files");
    auto* pictures = command->add_option("PICTURES", options->request.pictures, oneSequenceOrList(".exr"));
    command->add_option("--chart", options->chart, "An animated line-up chart instead of pictures")
        ->type_name("WIDTHxHEIGHT")
        ->excludes(pictures);
    command
        ->add_option("-o,--output", options->request.output,
                     "Output file, with a place for the frame number as in a sequence; .zet, .z9zt or .9zt")
        ->type_name("FILE")
        ->required();
    command->add_option("-f,--format", options->request.format, "Output format: label, short name or index")
        ->type_name("FORMAT")
        ->capture_default_str();
    addFrames(*command, options->request.frames,
              "Frames to write, as in 1001-1100, 1-10x3, 2,5-6 or 9-7x-1; without it all that are there "
              "(chart: 1-24). --frames=-5-5 for negative ones");
    addTransfer(*command, options->transfer,
                "Transfer function: auto takes scene-linear pictures to sRGB and leaves others as they are, "
                "none leaves all as they are, srgb and rec709 take all from linear");
    addJobs(*command, options->jobs, "Frames to write at once");
    command
        ->add_option("--memory", options->memory,
                     "Memory to stay within, as in 2GB or 1500MB; without it half of the machine's")
        ->type_name("SIZE");
    command->add_flag(
        "--resume", options->resume,
        "Leave out the frames whose files are whole and newer than their pictures; with --manifest "
        "those whose files are as it lists them");
    command->add_flag("--verify", options->run.verify,
                      "Read each file back and compare it with its picture before it gets its name");
    command
        ->add_option("--manifest", options->manifest,
                     "Keep a list of the files with their checksums, for \"zet check --manifest\"")
        ->type_name("FILE");
    command->add_flag("--dry-run", options->dryRun, "List what would be written, and write nothing");
    command->add_flag("--fail-fast", options->run.failFast, "Begin no further frame once one has failed");
    addQuiet(*command, options->quiet);
    command
        ->add_option("--plugin", options->plugin, "Writer plug-in to use instead of the one of this program")
        ->type_name("FILE");
    command->footer("Formats (index, short name, label):\n" + listOutputFormats() + "\n\n" + temporaryNames +
                    "\n\n" + memoryEstimate + "\n\n" + verifyAndResume + Manifest::description +
                    manifestAndStatus);
    command->callback([options, &commandLine, &exitCode] { exitCode = run(*options, commandLine); });
}

} // namespace ZetTool
