// What ends a run over many frames.
#pragma once

#include <stdexcept>

namespace ZetTool {

/// Fails a frame, and would fail all that come after it: a full disk, a manifest that is lost.
struct EndOfRun : std::runtime_error {
    using runtime_error::runtime_error;
};

} // namespace ZetTool
