#include "FrameRun.h"

#include "FrameRange.h"
#include "Interruption.h"
#include "Parallel.h"

#include <fmt/format.h>
#include <opencv2/core/utility.hpp>

#include <algorithm>
#include <atomic>
#include <iostream>
#include <mutex>
#include <thread>

namespace ZetTool {
namespace {

/// Several frames at once leave each one its share of the machine, so that they do not fight over it.
void shareThreads(std::size_t jobs) {
    const auto each = static_cast<int>(std::max<std::size_t>(1, std::thread::hardware_concurrency() / jobs));
    cv::setNumThreads(each);
}

} // namespace

FrameResult runFrames(const std::vector<int>& frames, unsigned jobs, bool failFast, Progress& progress,
                      const FrameWork& work) {
    FrameResult result;
    std::mutex mutex;
    std::atomic<bool> ended{false};
    const auto attempt = [&](std::size_t place, unsigned job) {
        const int frame = frames[place];
        try {
            progress.written(work(place, job));
            const std::lock_guard lock(mutex);
            result.written.push_back(frame);
        } catch (const std::exception& error) {
            if (failFast || dynamic_cast<const EndOfRun*>(&error))
                ended = true;
            progress.failed(fmt::format("zet: frame {}: {}", frame, error.what()));
            const std::lock_guard lock(mutex);
            result.failed.push_back(frame);
        }
    };
    const std::size_t atOnce = std::clamp<std::size_t>(frames.size(), 1, jobs);
    shareThreads(atOnce);
    forEachIndex(frames.size(), static_cast<unsigned>(atOnce), [&](std::size_t place, unsigned job) {
        if (!ended && !Interruption::requested())
            attempt(place, job);
    });
    std::sort(result.written.begin(), result.written.end());
    std::sort(result.failed.begin(), result.failed.end());
    return result;
}

void printWritten(const char* done, const SequencePattern& target, const FrameResult& result,
                  const std::string& look, const ProgressCount& count) {
    if (result.written.empty())
        return;
    const auto file = [&](int frame) { return target.frame(frame).string(); };
    std::cout << fmt::format("{} {}{} ({}{}, {}) in {:.1f} s: {}\n", done, file(result.written.front()),
                             result.written.size() == 1 ? "" : " to " + file(result.written.back()),
                             frameCount(result.written.size()), look, byteText(count.bytes), count.seconds,
                             rates(count));
}

ExitCode judge(const FrameResult& result, std::size_t frames, const std::string& resuming) {
    const std::size_t missing = frames - result.written.size() - result.failed.size();
    if (!result.failed.empty())
        std::cerr << fmt::format("zet: {} of {} failed: {}\n", result.failed.size(), frameCount(frames),
                                 formatFrameRange(result.failed));
    if (missing > 0)
        std::cerr << fmt::format("zet: {} with {} of {} not begun{}{}\n",
                                 Interruption::requested() ? "interrupted" : "stopped", missing,
                                 frameCount(frames), resuming.empty() ? "" : "; to go on:\n  ", resuming);
    if (missing > 0 && Interruption::requested())
        return ExitCode::Interrupted;
    return result.failed.empty() ? ExitCode::Done : ExitCode::FramesFailed;
}

} // namespace ZetTool
