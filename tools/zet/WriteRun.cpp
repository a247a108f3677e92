#include "WriteRun.h"

#include "FileTime.h"
#include "MemoryBudget.h"
#include "ReadBack.h"

#include <fmt/format.h>
#include <pictures/OutputFile.h>

#include <algorithm>
#include <stdexcept>

namespace ZetTool {
namespace {

using EmbeddedHost::RenderSettings;
using EmbeddedHost::WriteNode;

void render(WriteNode& node, Picture& picture, const OutputFile& file, const RenderSettings& how,
            const std::filesystem::path& target, std::uint64_t bytes) {
    const auto rendered = node.render(picture, file.temporary(), how);
    if (rendered.succeeded())
        return;
    const std::string reason =
        fmt::format("{}: {}", target.string(), fmt::join(rendered.criticalErrors, "; "));
    if (file.diskIsFull(bytes))
        throw EndOfRun(reason + "; the disk is full");
    throw std::runtime_error(reason);
}

/// While the file is still in the system's memory. The sum is empty when nobody asked for it.
FileSum readBack(const WritePlan& plan, const RunSettings& settings, Picture& picture, const OutputFile& file,
                 const RenderSettings& how, const std::filesystem::path& target) {
    try {
        return settings.verify     ? verifyFile(file.temporary(), picture, how, *plan.format)
               : settings.manifest ? sumFile(file.temporary())
                                   : FileSum{};
    } catch (const std::exception& error) {
        throw std::runtime_error(
            fmt::format("{}: read back, it is not what was written: {}", target.string(), error.what()));
    }
}

std::uint64_t writeFrame(const WritePlan& plan, const RunSettings& settings, WriteNode& node, int frame) {
    const std::filesystem::path pictureFile = plan.source->file(frame), target = plan.target.frame(frame);
    const auto pictureTime = timeChanged(pictureFile);
    Picture picture = plan.source->read(frame, [&](const PictureHeader& header) {
        plan.shapeFor(frame, header);
        checkMemory(plan, frame, header, settings.frameBytes, settings.verify);
    });
    const RenderSettings how{chooseTransfer(settings.transfer, picture.header()),
                             picture.header().premultiplied};
    const std::uint64_t bytes = plan.shape->bytes();
    OutputFile file(target);
    render(node, picture, file, how, target, bytes);
    const FileSum sum = readBack(plan, settings, picture, file, how, target);
    if (timeChanged(pictureFile) != pictureTime) // the file would pass for newer than what came meanwhile
        throw std::runtime_error(fmt::format("{} changed while it was converted", pictureFile.string()));
    const auto commit = [&] { file.commit(bytes); };
    if (settings.manifest)
        settings.manifest->replace(target, sum, commit);
    else
        commit();
    return bytes;
}

} // namespace

std::vector<WriteNode> makeNodes(const WritePlan& plan, unsigned jobs) {
    std::vector<WriteNode> nodes;
    do {
        nodes.emplace_back(plan.fileType);
        nodes.back().setMenu("Output format", plan.format->label);
    } while (nodes.size() < std::min<std::size_t>(jobs, plan.frames.size()));
    return nodes;
}

FrameResult runWrite(const WritePlan& plan, std::vector<WriteNode>& nodes, const RunSettings& settings,
                     Progress& progress) {
    removeAbandonedFiles(plan.target.path().parent_path());
    return runFrames(plan.frames, static_cast<unsigned>(nodes.size()), settings.failFast, progress,
                     [&](std::size_t place, unsigned job) {
                         return writeFrame(plan, settings, nodes[job], plan.frames[place]);
                     });
}

} // namespace ZetTool
