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

#include <stdexcept>
#include <string>
#include <vector>

namespace ZetTool {
namespace {

std::string commandMissing(const CLI::App& program) {
    std::vector<std::string> names;
    for (const CLI::App* command : program.get_subcommands({}))
        names.push_back(command->get_name());
    const auto given = program.remaining();
    if (!given.empty() && given.front().front() == '-')
        return fmt::format("{} stands before the command; options belong behind it", given.front());
    return fmt::format("{}; expected one of {}, or --help",
                       given.empty() ? "no command" : "unknown command \"" + given.front() + "\"",
                       fmt::join(names, ", "));
}

} // namespace

std::unique_ptr<CLI::App> makeProgram(const std::string& commandLine, ExitCode& exitCode) {
    auto program =
        std::make_unique<CLI::App>("Media files for the playback server: one file for each frame.", "zet");
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
    program->footer("Examples:\n"
                    "  zet write 'in.%04d.exr' -o 'out.%04d.zet' -f 422-10 --frames 1-100\n"
                    "  zet write 'in.%04d.exr' -o 'out.%04d.zet' --resume --manifest m.txt\n"
                    "  zet check 'out.%04d.zet' --frames 1-100 --manifest m.txt\n"
                    "  zet read 'out.%04d.zet' -o 'back.%04d.png'\n"
                    "  zet sheet 'out.%04d.zet' --against 'in.%04d.exr' -o sheet.png\n"
                    "  zet formats --size 3840x2160 --rate 50");
    program->require_subcommand(0, 1); // it is the callback that tells, before any command runs
    program->allow_extras();
    program->failure_message([](const CLI::App* app, const CLI::Error& error) {
        return "zet: " + CLI::FailureMessage::simple(app, error);
    });
    program->parse_complete_callback([&app = *program] {
        if (app.get_subcommands().empty() || !app.remaining().empty())
            throw std::runtime_error(commandMissing(app));
    });
    return program;
}

} // namespace ZetTool
