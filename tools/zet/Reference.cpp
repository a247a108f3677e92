// Writes the man page and the completions for bash from the options of the command line itself.
//
//   zet_reference MAN-PAGE COMPLETION
#include "CommandLine.h"

#include <fmt/format.h>
#include <plugin/OutputFormats.h>

#include <cstdio>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Options = std::vector<const CLI::Option*>;

bool isFlag(const CLI::Option& option) { return option.get_items_expected_max() == 0; }

std::vector<std::string> namesOf(const CLI::Option& option) {
    std::vector<std::string> names;
    for (const std::string& name : option.get_snames())
        names.push_back("-" + name);
    for (const std::string& name : option.get_lnames())
        names.push_back("--" + name);
    return names;
}

// ---- The man page ----

/// Text that means nothing to roff.
std::string roff(const std::string& text) {
    std::string escaped;
    for (const char character : text) {
        const bool atLineStart = escaped.empty() || escaped.back() == '\n';
        if (atLineStart && (character == '.' || character == '\''))
            escaped += "\\&";
        escaped += character == '\\' ? "\\e" : character == '-' ? "\\-" : std::string(1, character);
    }
    return escaped;
}

std::string optionEntry(const CLI::Option& option) {
    std::string term = roff(fmt::format("{}", fmt::join(namesOf(option), ", ")));
    if (!option.nonpositional())
        term = roff(option.get_name(true));
    else if (!isFlag(option))
        term += " \\fI" + roff(option.get_type_name()) + "\\fP";
    std::string text = roff(option.get_description()) + ".";
    if (option.get_required() && option.nonpositional())
        text += " Required.";
    // The default number of jobs is that of the processors of whichever machine builds this.
    if (!option.get_default_str().empty() && !option.check_lname("jobs"))
        text += roff(fmt::format(" Default: {}.", option.get_default_str()));
    return fmt::format(".TP\n\\fB{}\\fP\n{}\n", term, text);
}

std::string commandSection(const CLI::App& command) {
    std::string synopsis = "\\fBzet " + command.get_name() + "\\fP [\\fIOPTIONS\\fP]", positionals, options;
    for (const CLI::Option* option : command.get_options()) {
        (option->nonpositional() ? options : positionals) += optionEntry(*option);
        if (!option->nonpositional())
            synopsis += " \\fI" + roff(option->get_name(true)) + "\\fP" +
                        (option->get_items_expected_max() > 1 ? "..." : "");
    }
    return fmt::format(".SH zet {}\n{}\n.PP\n{}.\n{}{}.PP\n.nf\n{}\n.fi\n", command.get_name(), synopsis,
                       roff(command.get_description()), positionals, options, roff(command.get_footer()));
}

std::string manPage(const CLI::App& program) {
    std::string page = fmt::format(".TH ZET 1 \"\" \"zet {}\"\n.SH NAME\nzet \\- {}\n", ZET_VERSION,
                                   roff("media files for a playback server, one for each frame"));
    page += ".SH SYNOPSIS\n.nf\n";
    for (const CLI::App* command : program.get_subcommands({}))
        page += fmt::format("\\fBzet {:<7}\\fP  {}\n", command->get_name(), roff(command->get_description()));
    page += ".fi\n";
    for (const CLI::App* command : program.get_subcommands({}))
        page += commandSection(*command);
    return page;
}

// ---- Completion ----

/// The words that can follow an option; none where they are file names or free.
std::string valuesOf(const CLI::Option& option) {
    std::string values;
    if (option.get_type_name() == "FORMAT") {
        for (const OutputFormat& format : outputFormats)
            values += fmt::format("{} ", format.shortName);
        return values;
    }
    values = option.get_type_name();
    if (values.find('|') == values.npos)
        return {};
    for (char& character : values)
        if (character == '|')
            character = ' ';
    return values;
}

std::string completion(const CLI::App& program) {
    std::string commands, afterOption, ofCommand;
    for (const CLI::App* command : program.get_subcommands({})) {
        const std::string name = command->get_name();
        commands += name + " ";
        std::string words;
        for (const CLI::Option* option : command->get_options()) {
            std::vector<std::string> here;
            for (const std::string& spelling : namesOf(*option)) {
                words += spelling + " ";
                here.push_back(fmt::format("\"{} {}\"", name, spelling));
            }
            if (!here.empty() && !isFlag(*option))
                afterOption +=
                    fmt::format("    {}) words=\"{}\" ;;\n", fmt::join(here, " | "), valuesOf(*option));
        }
        ofCommand += fmt::format("    \"{} -\"*) words=\"{}\" ;;\n", name, words);
    }
    return fmt::format(R"(# What bash completes after "zet". File names where no word fits.
_zet() {{
    local word=$2 previous=$3 command=${{COMP_WORDS[1]}} words=
    case "$command $previous" in
{}    *)
        case "$command $word" in
{}        esac ;;
    esac
    [[ $COMP_CWORD -gt 1 ]] || words="{}"
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}}
complete -o default -F _zet zet
)",
                       afterOption, ofCommand, commands);
}

void writeFile(const char* path, const std::string& text) {
    std::ofstream stream(path, std::ios::binary);
    stream << text;
    stream.close();
    if (!stream)
        throw std::runtime_error(std::string("cannot write ") + path);
}

} // namespace

int main(int argc, char** argv) try {
    if (argc != 3)
        throw std::runtime_error("expected the names of a man page and a completion file");
    ZetTool::ExitCode exitCode{};
    const std::string commandLine;
    const auto program = ZetTool::makeProgram(commandLine, exitCode);
    writeFile(argv[1], manPage(*program));
    writeFile(argv[2], completion(*program));
} catch (const std::exception& error) {
    std::fprintf(stderr, "zet_reference: %s\n", error.what());
    return 1;
}
