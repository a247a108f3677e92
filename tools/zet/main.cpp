// The command-line tool of the project; each sub-command has a file of its own.
#include "CommandLine.h"

#include <exception>
#include <iostream>
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

} // namespace

int main(int argc, char** argv) {
    using ZetTool::ExitCode;
    ExitCode exitCode = ExitCode::Done;
    const std::string commandLine = commandLineOf(argc, argv);
    const auto program = ZetTool::makeProgram(commandLine, exitCode);
    try {
        program->parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        const bool asked = program->exit(error) == 0; // --help and --version come this way too
        exitCode = asked ? ExitCode::Done : ExitCode::CouldNotStart;
    } catch (const std::exception& error) {
        std::cerr << "zet: " << error.what() << '\n';
        exitCode = ExitCode::CouldNotStart;
    }
    return static_cast<int>(exitCode);
}
