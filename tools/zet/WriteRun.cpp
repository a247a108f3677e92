#include "WriteRun.h"

#include "EndOfRun.h"
#include "FileTime.h"
#include "MemoryBudget.h"
#include "PictureFile.h"
#include "ReadBack.h"

#include <fmt/format.h>
#include <opencv2/core/utility.hpp>
#include <pictures/OutputFile.h>

#include <algorithm>
#include <mutex>
#include <stdexcept>
#include <system_error>
#include <thread>

namespace ZetTool {
namespace {

using EmbeddedHost::WriteNode;

/// Several frames at once leave each one its share of the machine, so that they do not fight over it.
void shareThreads(unsigned jobs) {
    const unsigned each = std::max(1u, std::thread::hardware_concurrency() / jobs);
    setPictureThreads(static_cast<int>(each));
    cv::setNumThreads(static_cast<int>(each));
}

class Run {
public:
    Run(const WritePlan& toDo, const RunSettings& how, Progress& reportTo, const std::atomic<bool>& stopWhen)
        : plan(toDo), settings(how), progress(reportTo), stop(stopWhen) {}

    /// Takes frame after frame; one thread and one node each.
    void work(WriteNode& node) {
        while (!stop && !ended && !(settings.failFast && anyFailed)) {
            const std::size_t next = taken++;
            if (next >= plan.frames.size())
                return;
            attempt(node, plan.frames[next]);
        }
    }

    RunResult result;

private:
    void attempt(WriteNode& node, int frame) {
        try {
            const std::uint64_t bytes = write(node, frame);
            progress.written(bytes);
            const std::lock_guard lock(mutex);
            result.written.push_back(frame);
        } catch (const std::exception& error) {
            anyFailed = true;
            if (dynamic_cast<const EndOfRun*>(&error))
                ended = true;
            progress.failed(fmt::format("zet: frame {}: {}", frame, error.what()));
            const std::lock_guard lock(mutex);
            result.failed.push_back(frame);
        }
    }

    std::uint64_t write(WriteNode& node, int frame) {
        const std::filesystem::path pictureFile = plan.source->file(frame);
        const auto pictureTime = timeChanged(pictureFile);
        Picture picture = plan.source->read(frame, [&](const PictureHeader& header) {
            plan.shapeFor(frame, header);
            checkMemory(plan, frame, header, settings.frameBytes, settings.verify);
        });
        const MediaFileShape& shape = *plan.shape;
        const std::filesystem::path target = plan.target.frame(frame);
        OutputFile file(target);
        const EmbeddedHost::RenderSettings how{chooseTransfer(settings.transfer, picture.header()),
                                               picture.header().premultiplied};
        const auto rendered = node.render(picture, file.temporary(), how);
        if (!rendered.succeeded()) {
            const std::string reason =
                fmt::format("{}: {}", target.string(), fmt::join(rendered.criticalErrors, "; "));
            if (file.diskIsFull(shape.bytes()))
                throw EndOfRun(reason + "; the disk is full");
            throw std::runtime_error(reason);
        }
        const FileSum sum = readBack(frame, file.temporary(), picture, how);
        if (timeChanged(pictureFile) != pictureTime) // the file would pass for newer than what came meanwhile
            throw std::runtime_error(fmt::format("{} changed while it was converted", pictureFile.string()));
        const auto commit = [&] { file.commit(shape.bytes()); };
        if (settings.manifest)
            settings.manifest->replace(target, sum, commit);
        else
            commit();
        return shape.bytes();
    }

    /// While the file is still in the system's memory. The sum is empty when nobody asked for it.
    FileSum readBack(int frame, const std::filesystem::path& file, Picture& picture,
                     const EmbeddedHost::RenderSettings& how) const {
        try {
            return settings.verify     ? verifyFile(file, picture, how, *plan.format)
                   : settings.manifest ? sumFile(file)
                                       : FileSum{};
        } catch (const std::exception& error) {
            throw std::runtime_error(fmt::format("{}: read back, it is not what was written: {}",
                                                 plan.target.frame(frame).string(), error.what()));
        }
    }

    const WritePlan& plan;
    const RunSettings& settings;
    Progress& progress;
    const std::atomic<bool>& stop;
    std::atomic<std::size_t> taken{0};
    std::atomic<bool> anyFailed{false};
    std::atomic<bool> ended{false}; ///< no other frame has a chance
    std::mutex mutex;
};

} // namespace

std::vector<WriteNode> makeNodes(const WritePlan& plan, unsigned jobs) {
    std::vector<WriteNode> nodes;
    do {
        nodes.emplace_back(plan.fileType);
        nodes.back().setMenu("Output format", plan.format->label);
    } while (nodes.size() < std::min<std::size_t>(jobs, plan.frames.size()));
    return nodes;
}

RunResult runWrite(const WritePlan& plan, std::vector<WriteNode>& nodes, const RunSettings& settings,
                   Progress& progress, const std::atomic<bool>& stop) {
    shareThreads(static_cast<unsigned>(nodes.size()));
    removeAbandonedFiles(plan.target.path().parent_path());
    Run run(plan, settings, progress, stop);
    std::vector<std::thread> threads;
    try {
        for (std::size_t job = 1; job < nodes.size(); ++job)
            threads.emplace_back([&run, &node = nodes[job]] { run.work(node); });
    } catch (const std::system_error&) {
        // The system gives no more threads: those that there are do the work.
    }
    run.work(nodes.front());
    for (std::thread& thread : threads)
        thread.join();
    std::sort(run.result.written.begin(), run.result.written.end());
    std::sort(run.result.failed.begin(), run.result.failed.end());
    return std::move(run.result);
}

} // namespace ZetTool
