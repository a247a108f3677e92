// What a long run tells its user while it goes on.
#pragma once

#include <chrono>
#include <cstdint>
#include <iosfwd>
#include <mutex>
#include <string>

namespace ZetTool {

/// How far a run has come.
struct ProgressCount {
    std::size_t done = 0; ///< frames whose files are there
    std::size_t total = 0;
    std::uint64_t bytes = 0; ///< written so far
    double seconds = 0;      ///< since the start
    std::size_t failed = 0;  ///< frames that will not be done
    std::size_t before = 0;  ///< of those that are done, those that were at the start
};

/// "50% 12/24 frames, 2 failed, 7.5 frames/s, 46.7 MB/s, 0:02 left": the first number is for schedulers to
/// find.
std::string progressLine(const ProgressCount& count);
/// The same behind a bar, in at most `columns` columns.
std::string progressBar(const ProgressCount& count, std::size_t columns);
/// "7.5 frames/s, 46.7 MB/s", of what was written.
std::string rates(const ProgressCount& count);
/// "1 frame", "24 frames".
std::string frameCount(std::size_t frames);
/// "1.5 GB", "46.7 MB", "512 bytes": in powers of 1000, as disks and networks are sold.
std::string byteText(std::uint64_t bytes);

/// Shows the progress of a run. Errors always come through; nothing else does when silent. May be used from
/// several threads at once.
class Progress {
public:
    enum class Style {
        Bar,   ///< one line that is drawn over and over, on a terminal
        Lines, ///< a line every few seconds, in a log
        Silent
    };
    /// What suits the process's standard output.
    static Style styleForOutput(bool quiet);

    /// `doneBefore` counts those of the frames that there is nothing to do for.
    Progress(Style style, std::ostream& output, std::ostream& errors, std::size_t totalFrames,
             std::size_t doneBefore = 0);

    void written(std::uint64_t bytes);
    void failed(const std::string& message);
    /// Clears the bar away, or says the last line; call it when no more is to come.
    ProgressCount finish();

private:
    using Clock = std::chrono::steady_clock;

    void step();
    void show();
    void clear();

    const Style style;
    std::ostream& output;
    std::ostream& errors;
    const Clock::time_point start = Clock::now();
    Clock::time_point shown = start;
    ProgressCount count;
    std::mutex mutex;
};

} // namespace ZetTool
