// An operation of the host's graph, and what it can tell the user.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace DD::Image {

class Op {
public:
    enum StatusFlags { StatusNone, StatusModal, StatusUseCallback };

    struct Progress {
        double fraction;
        StatusFlags flags;
    };

    /// What an operation has told the user, each list in the order of the calls.
    struct Reports {
        std::vector<std::string> errors; ///< critical ones too
        std::vector<std::string> warnings;
        std::vector<Progress> progress;
    };

    virtual ~Op();

    /// The operation connected to input `n`; null when there is none.
    virtual Op* input(int n) const = 0;

    /// Messages take a format and arguments as printf does.
    [[gnu::format(printf, 2, 3)]] void critical(const char* format, ...);
    [[gnu::format(printf, 2, 3)]] void error(const char* format, ...);
    [[gnu::format(printf, 2, 3)]] void warning(const char* format, ...);

    /// Moves the progress bar to `fraction`, 0 to 1. There is no panel that the flags could act on.
    void progressFraction(double fraction, StatusFlags flags = StatusNone) {
        reports.progress.push_back({fraction, flags});
    }

    /// Hands out what was reported and starts afresh.
    Reports takeReports() { return std::exchange(reports, {}); }

private:
    Reports reports;
};

} // namespace DD::Image
