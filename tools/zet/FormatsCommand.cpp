#include "FormatsCommand.h"

#include "Table.h"

#include <MediaConversion/MediaPipeline/Encoder.h>

#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <pictures/FormatChoice.h>
#include <pictures/MediaFileShape.h>
#include <pictures/Picture.h>

#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string_view>

namespace ZetTool {
namespace {

using Json = nlohmann::ordered_json;

struct Options {
    std::string size = "1920x1080";
    double rate = 25;
    bool chain = false;
    bool json = false;
};

/// What one format is and costs.
struct Row {
    std::size_t index;
    const OutputFormat& output;
    std::string bits;  ///< of a sample, "10/12" where they differ
    PictureSize block; ///< of pixels that are stored together
    unsigned blockBytes;
    std::optional<std::uint64_t> fileBytes; ///< empty when the format cannot hold the size
    std::string refusal;                    ///< why
    MediaConversion::Encoder::Chain chain;  ///< from the float pixels that the writer makes of its input

    double bytesPerPixel() const { return double(blockBytes) / (block.width * block.height); }
    double megabytesPerSecond(double rate) const { return static_cast<double>(*fileBytes) * rate / 1e6; }
};

Row describe(std::size_t index, const PictureSize& size) {
    const OutputFormat& output = outputFormats[index];
    const Zentrel::FrameFormat format = output.format();
    const std::string_view label = output.label;
    const auto block = format.pixelPacking.pixels();
    Row row{index,
            output,
            std::string(label.substr(0, label.find("-bit"))),
            {static_cast<int>(block.columns), static_cast<int>(block.rows)},
            format.pixelPacking.bytes(),
            {},
            {},
            MediaConversion::Encoder(Zentrel::FullFrameFormat::BGRA_F32(), format).chain()};
    try {
        row.fileBytes = MediaFileShape(output, size).bytes();
    } catch (const std::runtime_error& reason) {
        row.refusal = reason.what();
    }
    return row;
}

void print(const std::vector<Row>& rows, const PictureSize& size, const Options& options) {
    std::vector<std::vector<std::string>> cells{
        {"index", "name", "label", "bits", "alpha", "block", "bytes/pixel", "bytes/frame", "MB/s"}};
    for (const Row& row : rows)
        cells.push_back({std::to_string(row.index), row.output.shortName, row.output.label, row.bits,
                         holdsAlpha(row.output.format()) ? "yes" : "no", row.block.text(),
                         fmt::format("{:.4g}", row.bytesPerPixel()),
                         row.fileBytes ? std::to_string(*row.fileBytes) : "-",
                         row.fileBytes ? fmt::format("{:.1f}", row.megabytesPerSecond(options.rate)) : "-"});
    std::cout << fmt::format(
                     "Frames of {}, {:g} of them a second; bytes/frame is the length of the file.\n\n",
                     size.text(), options.rate)
              << alignedTable(cells, "rllrllrrr");
    for (const Row& row : rows)
        if (!row.refusal.empty())
            std::cout << row.refusal << '\n';
    if (!options.chain)
        return;
    std::cout << "\nSteps from float BGRA:\n";
    for (const Row& row : rows) {
        std::cout << fmt::format("  {}\n", row.output.shortName);
        for (const auto& [filter, produced] : row.chain)
            std::cout << fmt::format("    {:<22} {}\n", filter, Zentrel::FrameFormat::toString(produced));
    }
}

Json toJson(const Row& row, const PictureSize& size, const Options& options) {
    Json json{{"index", row.index},
              {"name", row.output.shortName},
              {"label", row.output.label},
              {"layout", Zentrel::FrameFormat::toString(row.output.format())},
              {"bits", row.bits},
              {"alpha", holdsAlpha(row.output.format())},
              {"blockWidth", row.block.width},
              {"blockHeight", row.block.height},
              {"blockBytes", row.blockBytes},
              {"bytesPerPixel", row.bytesPerPixel()},
              {"width", size.width},
              {"height", size.height},
              {"fileBytes", nullptr},
              {"megabytesPerSecond", nullptr}};
    if (row.fileBytes) {
        json["fileBytes"] = *row.fileBytes;
        json["megabytesPerSecond"] = row.megabytesPerSecond(options.rate);
    } else {
        json["refusal"] = row.refusal;
    }
    if (options.chain)
        for (const auto& [filter, produced] : row.chain)
            json["chain"].push_back(
                {{"filter", filter}, {"produces", Zentrel::FrameFormat::toString(produced)}});
    return json;
}

ExitCode run(const Options& options) {
    const PictureSize size = parseSize(options.size);
    if (size.width < 1 || size.height < 1)
        throw std::runtime_error(fmt::format("size {} has no pixels", size.text()));
    std::vector<Row> rows;
    for (std::size_t index = 0; index < outputFormats.size(); ++index)
        rows.push_back(describe(index, size));
    if (!options.json) {
        print(rows, size, options);
        return ExitCode::Done;
    }
    Json list = Json::array();
    for (const Row& row : rows)
        list.push_back(toJson(row, size, options));
    std::cout << list.dump(2) << '\n';
    return ExitCode::Done;
}

} // namespace

void addFormatsCommand(CLI::App& program, ExitCode& exitCode) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand("formats", "List the output formats and what they cost");
    command->add_option("--size", options->size, "Size of the pictures")
        ->type_name("WIDTHxHEIGHT")
        ->capture_default_str();
    command->add_option("--rate", options->rate, "Frames per second")
        ->type_name("FPS")
        ->check(CLI::PositiveNumber.description(""))
        ->capture_default_str();
    command->add_flag("--chain", options->chain, "Show the steps of conversion to each format");
    command->add_flag("--json", options->json, "Print JSON: an array with an object for each format");
    command->callback([options, &exitCode] { exitCode = run(*options); });
}

} // namespace ZetTool
