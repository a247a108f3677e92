#include "Interruption.h"

#include <unistd.h>

#include <cerrno>
#include <string_view>

namespace ZetTool {
namespace {

// A signal handler can reach nothing but globals.
std::atomic<bool> flag{false};
static_assert(std::atomic<bool>::is_always_lock_free);

void request(int) {
    if (flag.exchange(true))
        return;
    constexpr std::string_view text = "\nzet: stopping after the frames in hand; once more stops at once\n";
    const int before = errno;
    [[maybe_unused]] const auto written = ::write(STDERR_FILENO, text.data(), text.size());
    errno = before;
}

} // namespace

Interruption::Interruption()
    : handled{{SIGINT, request, {}}, {SIGTERM, request, {}}, {SIGPIPE, SIG_IGN, {}}, {SIGXFSZ, SIG_IGN, {}}} {
    flag = false;
    for (Handled& one : handled) {
        struct sigaction action {};
        action.sa_handler = one.handler;
        action.sa_flags = SA_RESTART;
        if (one.handler == request) // the second one ends the process
            action.sa_flags |= static_cast<int>(SA_RESETHAND);
        ::sigaction(one.signal, &action, &one.before);
    }
}

Interruption::~Interruption() {
    for (const Handled& one : handled)
        ::sigaction(one.signal, &one.before, nullptr);
}

const std::atomic<bool>& Interruption::requested() { return flag; }

} // namespace ZetTool
