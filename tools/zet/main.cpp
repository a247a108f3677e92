// The command-line tool of the project; each sub-command has a file of its own.
#include "CommandLine.h"
#include "FrameRange.h"

#include <fmt/format.h>

#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

/// The argument as a shell would have to read it.
std::string quoted(const std::string& argument) {
    constexpr std::string_view plain =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789%@+=:,./_-";
    if (!argument.empty() && argument.find_first_not_of(plain) == argument.npos)
        return argument;
    std::string text = "'";
    for (const char character : argument)
        text += character == '\'' ? "'\\''" : std::string(1, character);
    return text + "'";
}

std::string commandLineOf(int count, char** arguments) {
    std::string line;
    for (int i = 0; i < count; ++i)
        line += (i > 0 ? " " : "") + quoted(arguments[i]);
    return line;
}

bool isFrameRange(const char* text) {
    try {
        ZetTool::parseFrameRange(text);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

/// A dash that was forgotten would make a picture's name of the last frame.
void refuseTwoFrames(int count, char** arguments) {
    for (int i = 1; i + 2 < count; ++i)
        if (arguments[i] == std::string_view("--frames") && isFrameRange(arguments[i + 1]) &&
            isFrameRange(arguments[i + 2]))
            throw std::runtime_error(fmt::format(
                "--frames takes one argument: write {0}-{1} for all from {0} to {1}, {0},{1} for these two",
                arguments[i + 1], arguments[i + 2]));
}

} // namespace

int main(int argc, char** argv) {
    using ZetTool::ExitCode;
    ExitCode exitCode = ExitCode::Done;
    const std::string commandLine = commandLineOf(argc, argv);
    const auto program = ZetTool::makeProgram(commandLine, exitCode);
    try {
        refuseTwoFrames(argc, argv);
        program->parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        const bool asked = program->exit(error) == 0; // --help and --version come this way too
        exitCode = asked ? ExitCode::Done : ExitCode::CouldNotStart;
    } catch (const std::exception& error) {
        std::cerr << "zet: " << error.what() << '\n';
        exitCode = ExitCode::CouldNotStart;
    }
    if (!std::cout.flush() && exitCode != ExitCode::Interrupted) { // whoever read along may be gone by then
        std::cerr << "zet: standard output cannot be written\n";
        exitCode = ExitCode::CouldNotStart;
    }
    return static_cast<int>(exitCode);
}
