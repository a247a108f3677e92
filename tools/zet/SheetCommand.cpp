#include "SheetCommand.h"

#include "CommonOptions.h"
#include "ContactSheet.h"
#include "DecodedFrame.h"
#include "Difference.h"
#include "MediaFrames.h"
#include "Parallel.h"
#include "PictureFile.h"
#include "Progress.h"
#include "SheetSource.h"
#include "Table.h"

#include <fmt/format.h>
#include <opencv2/imgproc.hpp>
#include <pictures/FormatChoice.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>
#include <stdexcept>

namespace fs = std::filesystem;

namespace ZetTool {
namespace {

constexpr std::size_t maxFiles = 400; // more would be too small to tell apart, or too large to open

struct Options {
    std::vector<std::string> files;
    std::string output;
    std::optional<std::string> frames;
    std::string against;
    bool againstChart = false;
    std::string transfer = "auto";
    double amplify = 8;
    int width = 320;
    int columns = 0; // to be chosen
    unsigned jobs = 1;
    bool quiet = false;
};

/// A media file on its way to the sheet.
struct Entry {
    MediaFrame media;
    std::optional<MediaFileInfo> info;
    std::optional<Difference> difference; ///< its picture has moved to the cell
    SheetCell cell;
    int sourceFrame = 0;
    std::optional<SheetTile> source; ///< when there is one
    std::string fault;
};

std::string nameOf(const fs::path& file) { return file.filename().string(); }

std::vector<Entry> listEntries(const Options& options) {
    std::vector<Entry> entries;
    for (const std::string& argument : options.files) {
        std::error_code error;
        const bool single = fs::exists(argument, error);
        for (MediaFrame& media : findMediaFrames({argument}, single ? std::nullopt : options.frames))
            entries.push_back({std::move(media), {}, {}, {}, {}, {}, {}});
    }
    if (entries.size() > maxFiles)
        throw std::runtime_error(fmt::format(
            "{} files are too many for one sheet; choose at most {} of a sequence with --frames, as in "
            "1-1000x10",
            entries.size(), maxFiles));
    return entries;
}

/// The size of the first file that tells one.
PictureSize firstSize(const std::vector<Entry>& entries) {
    std::string faults;
    for (const Entry& entry : entries) {
        const FoundFile found = inspect(entry.media.file);
        if (found.info)
            return sizeOf(*found.info);
        faults += fmt::format("\n  {}: {}", found.path.string(), found.fault);
    }
    throw std::runtime_error("none of the files can be shown:" + faults);
}

PictureSize tileSize(const PictureSize& picture, int width) {
    const double height = static_cast<double>(width) * picture.height / picture.width;
    return {width, std::clamp(static_cast<int>(std::lround(height)), width / 4, width * 2)};
}

std::unique_ptr<SheetSource> openSource(const Options& options, const PictureSize& size) {
    const TransferChoice transfer = parseTransferChoice(options.transfer);
    if (options.againstChart)
        return std::make_unique<SheetSource>(openChart(size), transfer);
    if (options.against.empty())
        return nullptr;
    auto pictures = openPictureFiles({options.against});
    if (pictures->frames().empty())
        throw std::runtime_error(fmt::format("no picture matches \"{}\"", options.against));
    for (const int frame : pictures->frames())
        if (std::error_code none; fs::equivalent(options.output, pictures->file(frame), none))
            throw std::runtime_error(
                fmt::format("output \"{}\" is a picture to be compared with", options.output));
    return std::make_unique<SheetSource>(std::move(pictures), transfer);
}

/// Without alpha, in the size of a tile.
cv::Mat thumbnail(const cv::Mat& pixels, const PictureSize& tile) {
    cv::Mat bytes, colours;
    pixels.convertTo(bytes, CV_8U, pixels.depth() == CV_8U ? 1 : 255);
    cv::cvtColor(bytes, colours, cv::COLOR_BGRA2BGR);
    return fitTile(colours, tile);
}

SheetTile sourceTile(const SheetSource::Frame& source, const PictureSize& tile) {
    return {thumbnail(source.pixels, tile),
            {},
            {fmt::format("{} (source)", nameOf(source.name)), fmt::format("frame {}", source.number),
             source.size().text() + transferNote(source.transfer)}};
}

std::string percentText(double fraction) { return fmt::format("{:.3g} %", 100 * fraction); }

void compareWith(const SheetSource::Frame& source, const DecodedFrame& decoded, const PictureSize& tile,
                 double amplify, Entry& entry) {
    entry.sourceFrame = source.number;
    entry.source = sourceTile(source, tile);
    if (source.size() != sizeOf(decoded.info()))
        throw std::runtime_error(fmt::format("the source {} is {}, not {}", source.name, source.size().text(),
                                             sizeOf(decoded.info()).text()));
    const bool alpha = source.hasAlpha && holdsAlpha(decoded.info().format);
    Difference difference = compare(decoded.pixels(), source.pixels, alpha, amplify);
    std::string psnr = "PSNR RGB " + psnrText(difference.colourPsnr);
    if (alpha)
        psnr += ", alpha " + psnrText(*difference.alphaPsnr);
    entry.cell.push_back(
        {fitTile(difference.colours, tile),
         {},
         {fmt::format("difference x {:g}", amplify), psnr, "largest " + percentText(difference.largest)}});
    difference.colours.release();
    entry.difference = std::move(difference);
}

void fill(Entry& entry, SheetSource* source, const PictureSize& tile, double amplify) {
    const std::string name = nameOf(entry.media.file);
    try {
        const DecodedFrame decoded(entry.media.file);
        entry.info = decoded.info();
        entry.cell.push_back(
            {thumbnail(decoded.pixels(), tile),
             {},
             {name, formatText(*entry.info),
              fmt::format("{}, {}", sizeOf(*entry.info).text(), byteText(entry.info->fileBytes))}});
        if (source)
            compareWith(*source->frame(entry.media.frame), decoded, tile, amplify, entry);
    } catch (const std::exception& error) {
        entry.fault = error.what();
        entry.cell.push_back({{}, entry.fault, {}});
        if (!entry.info)
            entry.cell.back().caption = {name};
        if (source && entry.cell.size() < 2)
            entry.cell.emplace_back();
    }
}

/// The source goes before the first file of each of its frames.
std::vector<SheetCell> collectCells(std::vector<Entry>& entries, double amplify) {
    std::vector<SheetCell> cells;
    std::optional<int> shown;
    for (Entry& entry : entries) {
        if (entry.source && shown != entry.sourceFrame) {
            SheetTile legend;
            if (!shown)
                legend.text = fmt::format(
                    "Differences are drawn {:g} times as large as they are. PSNR is that of red, green and "
                    "blue together, over all pixels, and of alpha alone; 100 % is full scale.",
                    amplify);
            cells.push_back({std::move(*entry.source), std::move(legend)});
            shown = entry.sourceFrame;
        }
        cells.push_back(std::move(entry.cell));
    }
    return cells;
}

void printTable(const std::vector<Entry>& entries) {
    std::vector<std::vector<std::string>> rows;
    for (const Entry& entry : entries) {
        if (!entry.info)
            continue;
        std::vector<std::string> row{entry.media.file.string(), formatText(*entry.info),
                                     sizeOf(*entry.info).text(),
                                     fmt::format("{} bytes", entry.info->fileBytes)};
        row.resize(7);
        if (const auto& difference = entry.difference) {
            row[4] = "PSNR RGB " + psnrText(difference->colourPsnr);
            row[5] = difference->alphaPsnr ? "alpha " + psnrText(*difference->alphaPsnr) : "";
            row[6] = "largest " + percentText(difference->largest);
        }
        rows.push_back(std::move(row));
    }
    std::cout << alignedTable(rows, "llrrlll");
}

ExitCode run(const Options& options) {
    const auto type = pictureFileType(options.output);
    std::vector<Entry> entries = listEntries(options);
    const PictureSize size = firstSize(entries);
    const PictureSize tile = tileSize(size, options.width);
    const std::unique_ptr<SheetSource> source = openSource(options, size);
    forEachIndex(entries.size(), options.jobs,
                 [&](std::size_t i) { fill(entries[i], source.get(), tile, options.amplify); });

    const std::vector<SheetCell> cells = collectCells(entries, options.amplify);
    const int columns = options.columns > 0 ? options.columns : chooseColumns(cells, tile);
    const cv::Mat sheet = drawSheet(cells, tile, columns);
    type->write({sheet}, options.output);
    if (!options.quiet) {
        printTable(entries);
        std::cout << fmt::format("wrote {} ({}x{})\n", options.output, sheet.cols, sheet.rows);
    }
    ExitCode outcome = ExitCode::Done;
    for (const Entry& entry : entries) {
        if (entry.fault.empty())
            continue;
        std::cerr << fmt::format("zet: {}: {}\n", entry.media.file.string(), entry.fault);
        outcome = ExitCode::FramesFailed;
    }
    return outcome;
}

} // namespace

void addSheetCommand(CLI::App& program, ExitCode& exitCode) {
    const auto options = std::make_shared<Options>();

    CLI::App* command = program.add_subcommand(
        "sheet", "Draw media files on a contact sheet, and compare them with a source");
    command->add_option("FILES", options->files, mediaFilesOrSequences)->required();
    command->add_option("-o,--output", options->output, "The sheet: .png or another type of picture")
        ->type_name("FILE")
        ->required();
    addFrames(*command, options->frames,
              "Frames of the sequences, as in 1001-1100 or 1-1000x10; without it all that are there");
    auto* against =
        command
            ->add_option("--against", options->against,
                         "A picture to compare all files with, or a sequence, of which each file is compared "
                         "with the frame whose number its name ends with")
            ->type_name("SOURCE");
    command
        ->add_flag("--against-chart", options->againstChart,
                   "Compare with the line-up chart that \"zet write --chart\" writes")
        ->excludes(against);
    addTransfer(*command, options->transfer,
                "Transfer function that the source goes through, as it did for \"zet write\"");
    command->add_option("--amplify", options->amplify, "How many times as large differences are drawn")
        ->type_name("FACTOR")
        ->check(CLI::Range(1.0, 1000.0).description(""))
        ->capture_default_str();
    command->add_option("--width", options->width, "Width of each small picture, in pixels")
        ->type_name("N")
        ->check(CLI::Range(64, 2048).description(""))
        ->capture_default_str();
    command->add_option("--columns", options->columns, "Files in a row; without it as many as look well")
        ->type_name("N")
        ->check(CLI::Range(1, 100).description(""));
    addJobs(*command, options->jobs, "Files to read at once");
    addQuiet(*command, options->quiet);
    command->footer(
        "Pictures are shown without their alpha. PSNR is printed as well: of red, green and blue\n"
        "together over all pixels, and of alpha alone where both file and source have it. Samples of\n"
        "the source beyond 0 to 1 count as 0 or 1, which is all that a media file can hold. \"exact\"\n"
        "means no difference beyond the rounding of float arithmetic.\n\n"
        "Exit status: 0 all files are on the sheet; 1 some could not be read or compared, and were\n"
        "named; 2 there is no sheet.");
    command->callback([options, &exitCode] { exitCode = run(*options); });
}

} // namespace ZetTool
