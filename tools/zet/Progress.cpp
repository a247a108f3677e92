#include "Progress.h"

#include <fmt/format.h>

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <ostream>

namespace ZetTool {
namespace {

using namespace std::chrono_literals;

constexpr auto barInterval = 100ms;
constexpr auto lineInterval = 10s;

std::size_t terminalColumns() {
    winsize size{};
    constexpr std::size_t usual = 80;
    return ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : usual;
}

double perSecond(double amount, const ProgressCount& count) {
    return count.seconds > 0 ? amount / count.seconds : 0;
}

std::string timeText(double seconds) {
    const auto whole = std::llround(seconds);
    return whole < 3600 ? fmt::format("{}:{:02}", whole / 60, whole % 60)
                        : fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
}

} // namespace

std::string frameCount(std::size_t frames) {
    return fmt::format("{} frame{}", frames, frames == 1 ? "" : "s");
}

std::string byteText(std::uint64_t bytes) {
    constexpr const char* units[] = {"kB", "MB", "GB", "TB", "PB"};
    if (bytes < 1000)
        return fmt::format("{} bytes", bytes);
    double amount = static_cast<double>(bytes) / 1000;
    std::size_t unit = 0;
    for (; amount >= 999.95 && unit + 1 < std::size(units); ++unit)
        amount /= 1000;
    return fmt::format("{:.1f} {}", amount, units[unit]);
}

std::string rates(const ProgressCount& count) {
    return fmt::format("{:.1f} frames/s, {:.1f} MB/s",
                       perSecond(static_cast<double>(count.done - count.before), count),
                       perSecond(static_cast<double>(count.bytes) / 1e6, count));
}

std::string progressLine(const ProgressCount& count) {
    std::string line = fmt::format("{}% {}/{} frames", count.total > 0 ? 100 * count.done / count.total : 100,
                                   count.done, count.total);
    if (count.failed > 0)
        line += fmt::format(", {} failed", count.failed);
    line += ", " + rates(count);
    if (const std::size_t tried = count.done - count.before + count.failed; tried > 0) {
        const auto remaining = static_cast<double>(count.total - count.done - count.failed);
        line += fmt::format(", {} left", timeText(count.seconds * remaining / static_cast<double>(tried)));
    }
    return line;
}

std::string progressBar(const ProgressCount& count, std::size_t columns) {
    constexpr std::size_t widest = 30, narrowest = 5, frame = 3; // brackets and a blank
    const std::string line = progressLine(count);
    if (columns < line.size() + frame + narrowest)
        return line.substr(0, columns);
    const std::size_t width = std::min(widest, columns - line.size() - frame);
    const std::size_t filled = count.total > 0 ? width * count.done / count.total : width;
    return fmt::format("[{:-<{}}] {}", std::string(filled, '#'), width, line);
}

Progress::Style Progress::styleForOutput(bool quiet) {
    return quiet ? Style::Silent : ::isatty(STDOUT_FILENO) ? Style::Bar : Style::Lines;
}

Progress::Progress(Style howToShow, std::ostream& out, std::ostream& err, std::size_t totalFrames,
                   std::size_t doneBefore)
    : style(howToShow), output(out), errors(err) {
    count.total = totalFrames;
    count.done = count.before = doneBefore;
}

void Progress::written(std::uint64_t bytes) {
    const std::lock_guard lock(mutex);
    ++count.done;
    count.bytes += bytes;
    step();
}

void Progress::failed(const std::string& message) {
    const std::lock_guard lock(mutex);
    clear();
    errors << message << std::endl;
    ++count.failed;
    step();
}

ProgressCount Progress::finish() {
    const std::lock_guard lock(mutex);
    clear();
    if (style == Style::Lines)
        show(); // the last word to whoever reads along
    return count;
}

void Progress::step() {
    const auto now = Clock::now();
    count.seconds = std::chrono::duration<double>(now - start).count();
    if (style == Style::Silent || now - shown < (style == Style::Bar ? barInterval : lineInterval))
        return;
    shown = now;
    show();
}

void Progress::show() {
    if (style == Style::Bar)
        output << '\r' << progressBar(count, terminalColumns() - 1) << "\x1b[K" << std::flush;
    else
        output << progressLine(count) << std::endl;
}

void Progress::clear() {
    if (style == Style::Bar)
        output << "\r\x1b[K" << std::flush;
}

} // namespace ZetTool
