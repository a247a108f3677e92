#include "WritePlan.h"

#include "FileTime.h"
#include "FrameRange.h"
#include "Parallel.h"
#include "Progress.h"

#include <fmt/format.h>
#include <pictures/OutputFile.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <ostream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace ZetTool {
namespace {

struct FileType {
    const char* extension;
    const char* writer; ///< the type under which the plug-in registers its writer
};

constexpr std::array<FileType, 3> fileTypes{{{".zet", "zet"}, {".z9zt", "z9zt"}, {".9zt", "zet"}}};

std::string findFileType(const fs::path& output) {
    std::string extension = output.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return std::tolower(c); });
    for (const FileType& type : fileTypes)
        if (extension == type.extension)
            return type.writer;
    throw std::runtime_error(
        fmt::format("unknown extension \"{}\" of output \"{}\": expected .zet, .z9zt or .9zt",
                    output.extension().string(), output.string()));
}

void refuseFolder(const fs::path& output) {
    std::error_code ignored;
    if (fs::is_directory(output, ignored))
        throw std::runtime_error(
            fmt::format("output \"{}\" is a folder; give a file name in it, such as \"{}\"", output.string(),
                        (output / "out.%04d.zet").string()));
}

void refuseOwnPicture(const fs::path& output, const fs::path& picture) {
    std::error_code ignored;
    if (fs::equivalent(output, picture, ignored))
        throw std::runtime_error(
            fmt::format("output \"{}\" is the picture that it would be made from", output.string()));
}

SequencePattern planTarget(const fs::path& output, const FrameSource& source,
                           const std::vector<int>& frames) {
    SequencePattern target(output);
    if (!target.hasField() && frames.size() > 1) {
        const fs::path numbered = fs::path(output).replace_extension(".%04d" + output.extension().string());
        throw std::runtime_error(fmt::format(
            "the output name \"{}\" would take several frames ({}); give it a place for the frame "
            "number, such as \"{}\"",
            output.string(), formatFrameRange(frames), numbered.string()));
    }
    for (const int frame : frames) {
        refuseFolder(target.frame(frame));
        refuseOwnPicture(target.frame(frame), source.file(frame));
    }
    return target;
}

std::vector<int> planFrames(const FrameSource& source, const WriteRequest& request) {
    std::vector<int> frames = request.frames ? parseFrameRange(*request.frames) : source.frames();
    if (frames.empty())
        throw std::runtime_error(fmt::format("no picture matches \"{}\"", fmt::join(request.pictures, " ")));
    return frames;
}

std::optional<PictureHeader> firstHeader(const FrameSource& source, const std::vector<int>& frames) {
    for (const int frame : frames)
        try {
            return source.header(frame);
        } catch (const std::exception&) {
            continue; // told again, by name, when the frame's turn comes
        }
    return std::nullopt;
}

/// No file holds the chart's pictures.
bool isNewer(const fs::path& file, const fs::path& picture) {
    const auto written = timeWritten(file), changed = timeChanged(picture);
    return written && (picture.empty() || (changed && *written > *changed));
}

bool isWhole(const WritePlan& plan, int frame, const Manifest* manifest) {
    try {
        const fs::path file = plan.target.frame(frame);
        return plan.shape->matches(file) && isNewer(file, plan.source->file(frame)) &&
               (!manifest || manifest->faultOf(file).empty());
    } catch (const std::exception&) {
        return false; // the frame's turn will tell why
    }
}

} // namespace

const MediaFileShape& WritePlan::shapeFor(int frame, const PictureHeader& header) const {
    if (!shape)
        throw std::runtime_error("no picture could be read when the run was planned");
    if (header.size != shape->size())
        throw std::runtime_error(fmt::format("{} is {}, but the sequence is {}", source->name(frame),
                                             header.size.text(), shape->size().text()));
    return *shape;
}

WritePlan planWrite(const WriteRequest& request) {
    const fs::path output = request.output;
    refuseFolder(output);
    const std::string fileType = findFileType(output);
    const OutputFormat& format = findOutputFormat(request.format);
    checkOutputFolder(output);

    auto source = request.chart ? openChart(*request.chart) : openPictureFiles(request.pictures);
    std::vector<int> frames = planFrames(*source, request);
    SequencePattern target = planTarget(output, *source, frames);
    WritePlan plan{std::move(source), &format, fileType, std::move(target), std::move(frames), {}, {}, {}};

    plan.picture = firstHeader(*plan.source, plan.frames);
    if (plan.picture)
        plan.shape.emplace(format, plan.picture->size);
    return plan;
}

void leaveOutWhole(WritePlan& plan, const Manifest* manifest, unsigned jobs) {
    if (!plan.shape)
        return;
    const std::vector<int> all = std::move(plan.frames);
    std::vector<char> whole(all.size());
    forEachIndex(all.size(), jobs, [&](std::size_t i) { whole[i] = isWhole(plan, all[i], manifest); });
    plan.frames.clear();
    for (std::size_t i = 0; i < all.size(); ++i)
        (whole[i] ? plan.whole : plan.frames).push_back(all[i]);
}

std::size_t printPlan(const WritePlan& plan, TransferChoice transfer, std::ostream& output,
                      std::ostream& errors) {
    std::size_t failing = 0;
    std::uint64_t total = 0;
    for (const int frame : plan.whole)
        output << fmt::format("{} is whole\n", plan.target.frame(frame).string());
    for (const int frame : plan.frames)
        try {
            const PictureHeader picture = plan.source->header(frame);
            const MediaFileShape& shape = plan.shapeFor(frame, picture);
            output << fmt::format("{} -> {}  {}{}  {} bytes\n", plan.source->name(frame),
                                  plan.target.frame(frame).string(), shape.size().text(),
                                  transferNote(chooseTransfer(transfer, picture)), shape.bytes());
            total += shape.bytes();
        } catch (const std::exception& error) {
            errors << fmt::format("zet: frame {}: {}\n", frame, error.what());
            ++failing;
        }
    output << fmt::format("{} of \"{}\" would be written, {}\n", frameCount(plan.frames.size() - failing),
                          plan.format->label, byteText(total));
    return failing;
}

} // namespace ZetTool
