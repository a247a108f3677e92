#include "ReadCommand.h"

#include "CommonOptions.h"
#include "DecodedFrame.h"
#include "FrameRun.h"
#include "Interruption.h"
#include "MediaFiles.h"
#include "MediaFrames.h"
#include "PictureFile.h"
#include "SequencePattern.h"

#include <fmt/format.h>
#include <opencv2/imgproc.hpp>
#include <pictures/FormatChoice.h>
#include <pictures/OutputFile.h>

#include <iostream>
#include <memory>
#include <stdexcept>

namespace fs = std::filesystem;

namespace ZetTool {
namespace {

struct Options {
    std::vector<std::string> files;
    std::string output;
    std::optional<std::string> frames;
    std::string colourSpace = "sRGB";
    bool premultiplied = false;
    unsigned jobs = 1;
    bool quiet = false;
};

struct Plan {
    std::vector<MediaFrame> frames;
    SequencePattern target;
    std::unique_ptr<const PictureFileType> type;
};

Plan planRead(const Options& options) {
    Plan plan{findMediaFrames(options.files, options.frames), SequencePattern(options.output),
              pictureFileType(options.output)};
    plan.type->checkColourSpace(options.colourSpace);
    if (!plan.target.hasField() && plan.frames.size() > 1)
        throw std::runtime_error(fmt::format(
            "the output name \"{}\" would take {}; give it a place for the frame number, such as \"%04d\"",
            options.output, frameCount(plan.frames.size())));
    checkOutputFolder(plan.target.path());
    return plan;
}

void noteAlpha(const Plan& plan, bool premultiplied) {
    const FoundFile first = inspect(plan.frames.front().file);
    if (!first.info || !holdsAlpha(first.info->format))
        return;
    if (!plan.type->holdsAlpha())
        std::cout << fmt::format("note: the media files have alpha, which {} pictures do not hold\n",
                                 plan.target.path().extension().string());
    else if (plan.type->isLinear() && !premultiplied)
        std::cout
            << "note: the colour is multiplied by alpha on its way; if it is already, as in files that were "
               "made from EXR, give --premultiplied\n";
}

DecodedFrame decode(const fs::path& file) {
    try {
        return DecodedFrame(file);
    } catch (const std::exception& error) {
        throw std::runtime_error(fmt::format("{}: {}", file.string(), error.what()));
    }
}

std::uint64_t readFrame(const Plan& plan, const MediaFrame& media, const Options& options) {
    const DecodedFrame decoded = decode(media.file);
    const Zentrel::FrameFormat& format = decoded.info().format;
    OutputPicture picture{decoded.pixels(), bitsOf(format), options.colourSpace, options.premultiplied};
    if (!holdsAlpha(format))
        cv::cvtColor(decoded.pixels(), picture.pixels, cv::COLOR_BGRA2BGR);
    return plan.type->write(picture, plan.target.frame(media.frame));
}

FrameResult readFrames(const Plan& plan, const Options& options, Progress& progress) {
    removeAbandonedFiles(plan.target.path().parent_path());
    std::vector<int> frames;
    for (const MediaFrame& media : plan.frames)
        frames.push_back(media.frame);
    return runFrames(frames, options.jobs, false, progress, [&](std::size_t place, unsigned) {
        return readFrame(plan, plan.frames[place], options);
    });
}

ExitCode run(const Options& options) {
    const Plan plan = planRead(options);
    if (!options.quiet)
        noteAlpha(plan, options.premultiplied);

    const Interruption interruption;
    Progress progress(Progress::styleForOutput(options.quiet), std::cout, std::cerr, plan.frames.size());
    const FrameResult result = readFrames(plan, options, progress);
    const ProgressCount count = progress.finish();
    if (!options.quiet)
        printWritten("wrote", plan.target, result, "", count);
    return judge(result, plan.frames.size());
}

const char samplesAndColour[] =
    "8-bit formats become 8-bit samples, deeper ones 16-bit, in EXR half and for 12 bits float.\n"
    "Pictures have an alpha channel only where the media format has one.\n\n"
    "Samples are written as they are and tagged with --colorspace as far as the file type can hold\n"
    "a tag. EXR and HDR are linear light by convention: for them, samples are taken back from\n"
    "sRGB or Rec709, and colour is multiplied by alpha.\n\n";

const char status[] = "\n\n"
                      "Exit status: 0 every frame was written; 1 some frames failed, and were named;\n"
                      "2 the run could not start, or standard output took no more; 130 interrupted.";

} // namespace

void addReadCommand(CLI::App& program, ExitCode& exitCode) {
    const auto options = std::make_shared<Options>();

    CLI::App* command = program.add_subcommand("read", "Read media files back into pictures");
    command->add_option("FILES", options->files, oneSequenceOrList(".zet"))->required();
    command
        ->add_option("-o,--output", options->output,
                     "Output file, with a place for the frame number as in a sequence; its extension chooses "
                     "the type: .png, .tif, .exr, .dpx, .jpg or another that OpenImageIO writes")
        ->type_name("FILE")
        ->required();
    addFrames(*command, options->frames,
              "Frames to read, as in 1001-1100, 1-10x3, 2,5-6 or 9-7x-1; without it all that are "
              "there. --frames=-5-5 for negative ones");
    command
        ->add_option("--colorspace,--colourspace", options->colourSpace,
                     "Colour space of the media files' samples, which do not tell it: sRGB, Rec709, Linear "
                     "or whatever tag the pictures are to have")
        ->type_name("NAME")
        ->capture_default_str();
    command->add_flag(
        "--premultiplied", options->premultiplied,
        "The media files' colour is multiplied by alpha, as it is when they were made from EXR");
    addJobs(*command, options->jobs, "Frames to read at once");
    addQuiet(*command, options->quiet);
    command->footer(samplesAndColour + std::string(temporaryNames) + status);
    command->callback([options, &exitCode] { exitCode = run(*options); });
}

} // namespace ZetTool
