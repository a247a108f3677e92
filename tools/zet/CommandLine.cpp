#include "CommandLine.h"

#include "CheckCommand.h"
#include "FormatsCommand.h"
#include "InfoCommand.h"
#include "ReadCommand.h"
#include "SheetCommand.h"
#include "WriteCommand.h"

#include <MediaConversion/Version.h>
#include <MediaConversion/converters/InstructionSet.h>

#include <fmt/format.h>

namespace ZetTool {

std::unique_ptr<CLI::App> makeProgram(const std::string& commandLine, ExitCode& exitCode) {
    auto program =
        std::make_unique<CLI::App>("Media files for the playback server: one file for each frame.", "zet");
    program->require_subcommand(1);
    program->set_version_flag("--version", [] {
        // The plug-in has its own copy of the library, which chooses by the processor alone as this one does.
        return fmt::format("zet {}, MediaConversion library {}, {} instructions", ZET_VERSION,
                           MediaConversion::Version::fullVersion(),
                           toString(MediaConversion::instructionSet()));
    });
    addWriteCommand(*program, commandLine, exitCode);
    addInfoCommand(*program, exitCode);
    addCheckCommand(*program, exitCode);
    addReadCommand(*program, exitCode);
    addSheetCommand(*program, exitCode);
    addFormatsCommand(*program, exitCode);
    return program;
}

} // namespace ZetTool
