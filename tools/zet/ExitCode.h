// What the tool's exit status says.
#pragma once

namespace ZetTool {

enum class ExitCode {
    Done = 0,
    FramesFailed = 1,  ///< the work was done as far as it could be; some frames failed
    CouldNotStart = 2, ///< the command line or the surroundings are wrong; or nothing can be printed
    Interrupted = 130  ///< as shells report a program that Ctrl-C ended
};

} // namespace ZetTool
