// Ctrl-C and its kin as a wish to end soon.
#pragma once

#include <atomic>
#include <csignal>

namespace ZetTool {

/// While it lives, the first SIGINT and the first SIGTERM only set a flag, which whichever comes first says
/// on standard error. A second one of its kind ends the process, should it hang. Neither a closed pipe nor a
/// limit on file sizes ends the process: writing then fails like any other. One at a time.
class Interruption {
public:
    Interruption();
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    /// Set once the process was asked to end.
    static const std::atomic<bool>& requested();

private:
    struct Handled {
        int signal;
        void (*handler)(int);
        struct sigaction before;
    };
    Handled handled[4];
};

} // namespace ZetTool
