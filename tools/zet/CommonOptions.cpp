#include "CommonOptions.h"

#include <fmt/format.h>

#include <algorithm>
#include <thread>

namespace ZetTool {

void addFrames(CLI::App& command, std::optional<std::string>& ranges, const std::string& text) {
    command.add_option("--frames", ranges, text)->type_name("RANGES");
}

void addTransfer(CLI::App& command, std::string& choice, const std::string& text) {
    command.add_option("--transfer", choice, text)->type_name("auto|none|srgb|rec709")->capture_default_str();
}

void addJobs(CLI::App& command, unsigned& jobs, const std::string& text) {
    jobs = std::max(1u, std::thread::hardware_concurrency());
    command.add_option("-j,--jobs", jobs, text)
        ->type_name("N")
        ->check(CLI::Range(1, 256).description(""))
        ->capture_default_str();
}

void addQuiet(CLI::App& command, bool& quiet, const std::string& text) {
    command.add_flag("-q,--quiet", quiet, text);
}

std::string oneSequenceOrList(const std::string& extension) {
    return fmt::format(
        "One sequence (shot.%04d{0}, shot.####{0}, shot.@@@@{0}) or a list of files. The frames of a list "
        "are numbered by the digits at the end of their names if all have different ones, else from 1",
        extension);
}

const char mediaFilesOrSequences[] =
    "Media files, or sequences (shot.%04d.zet, shot.####.zet, shot.@@@@.zet)";

const char temporaryNames[] =
    "Files appear under their names when they are whole; until then they are called\n"
    ".zet-HOST-MACHINE-PROCESS-RANDOM.part in the same folder. Those that a killed process left there\n"
    "are removed by the next run on the same machine. Where a name is a symbolic link, the file takes\n"
    "the link's place, and what it leads to stays as it is.";

} // namespace ZetTool
