// Writes the man page and the completions for bash from the options of the command line itself.
//
//   zet_reference MAN-PAGE COMPLETION
#include "CommandLine.h"

#include <fmt/format.h>
#include <plugin/OutputFormats.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
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
    for (const char character : text)
        escaped += character == '\\' ? "\\e" : character == '-' ? "\\-" : std::string(1, character);
    return escaped;
}

/// Lines that are kept, or words that are filled into lines of 80 columns at most.
std::string paragraph(const std::string& text, bool kept) {
    constexpr std::size_t columns = 80;
    std::istringstream words(roff(text));
    std::string lines, line;
    for (std::string word; kept ? bool(std::getline(words, word)) : bool(words >> word);) {
        if (!line.empty() && (kept || line.size() + 1 + word.size() > columns))
            lines += std::exchange(line, "") + '\n';
        if (line.empty() && (word[0] == '.' || word[0] == '\'')) // would be a command
            line = "\\&";
        line += (line.empty() || line == "\\&" ? "" : " ") + word;
    }
    lines += line + '\n';
    return kept ? ".nf\n" + lines + ".fi\n" : lines;
}

/// The paragraphs of a help text.
std::vector<std::string> paragraphsOf(const std::string& help) {
    std::vector<std::string> all;
    for (std::size_t begin = 0; begin < help.size();) {
        const std::size_t end = std::min(help.find("\n\n", begin), help.size());
        all.push_back(help.substr(begin, end - begin));
        begin = end + 2;
    }
    return all;
}

constexpr std::string_view statusMark = "Exit status: ";

/// Tables have lines that begin with blanks.
std::string helpText(const std::string& help) {
    std::string text;
    for (const std::string& one : paragraphsOf(help))
        if (one.rfind(statusMark, 0) != 0)
            text += ".PP\n" + paragraph(one, one.find("\n  ") != one.npos);
    return text;
}

std::string optionEntry(const CLI::Option& option) {
    std::string term = roff(fmt::format("{}", fmt::join(namesOf(option), ", ")));
    if (!option.nonpositional())
        term = roff(option.get_name(true));
    else if (!isFlag(option))
        term += " \\fI" + roff(option.get_type_name()) + "\\fP";
    std::string text = option.get_description() + ".";
    if (option.get_required() && option.nonpositional())
        text += " Required.";
    // The default number of jobs is that of the processors of whichever machine builds this.
    if (!option.get_default_str().empty() && !option.check_lname("jobs"))
        text += fmt::format(" Default: {}.", option.get_default_str());
    return fmt::format(".TP\n\\fB{}\\fP\n{}", term, paragraph(text, false));
}

std::string synopsis(const CLI::App& command) {
    std::string line = "\\fBzet " + command.get_name() + "\\fP [\\fIOPTIONS\\fP]";
    for (const CLI::Option* option : command.get_options())
        if (!option->nonpositional())
            line += " \\fI" + roff(option->get_name(true)) + "\\fP" +
                    (option->get_items_expected_max() > 1 ? "..." : "");
    return line + '\n';
}

std::string commandSection(const CLI::App& command) {
    std::string positionals, options;
    for (const CLI::Option* option : command.get_options())
        if (option != command.get_help_ptr())
            (option->nonpositional() ? options : positionals) += optionEntry(*option);
    return fmt::format(".SH zet {}\n{}{}{}{}", command.get_name(),
                       paragraph(command.get_description() + ".", false), positionals, options,
                       helpText(command.get_footer()));
}

std::string manPage(const CLI::App& program) {
    std::string synopses, sections, statuses, options;
    for (const CLI::App* command : program.get_subcommands({})) {
        synopses += synopsis(*command);
        sections += commandSection(*command);
        for (const std::string& text : paragraphsOf(command->get_footer()))
            if (text.rfind(statusMark, 0) == 0)
                statuses += fmt::format(".TP\n\\fBzet {}\\fP\n{}", command->get_name(),
                                        paragraph(text.substr(statusMark.size()), false));
    }
    for (const CLI::Option* option : program.get_options())
        options += optionEntry(*option);
    return fmt::format(
        ".TH ZET 1 \"\" \"zet {}\"\n.SH NAME\nzet \\- media files for a playback server, one for "
        "each frame\n.SH SYNOPSIS\n.nf\n{}\\fBzet\\fP [\\fIOPTIONS\\fP]\n.fi\n"
        ".SH OPTIONS\n{}{}.SH EXIT STATUS\n{}.SH EXAMPLES\n{}",
        ZET_VERSION, synopses, options, sections, statuses, helpText(program.get_footer()));
}

// ---- Completion ----

/// What can follow an option, as the assignments of a shell.
std::string valuesOf(const CLI::Option& option) {
    std::string type = option.get_type_name();
    if (type == "FILE" || type == "SOURCE")
        return "words=";
    if (type == "FORMAT") {
        std::string names;
        for (const OutputFormat& format : outputFormats)
            names += fmt::format("{} ", format.shortName);
        return fmt::format("words=\"{}\" files=", names);
    }
    if (type.find('|') == type.npos)
        return "files=";
    std::replace(type.begin(), type.end(), '|', ' ');
    return fmt::format("words=\"{}\" files=", type);
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
                afterOption += fmt::format("    {}) {} ;;\n", fmt::join(here, " | "), valuesOf(*option));
        }
        ofCommand += fmt::format("    \"{} -\"*) words=\"{}\" ;;\n", name, words);
    }
    return fmt::format(R"(# What bash completes after "zet". File names where no word fits.
_zet() {{
    local word=$2 previous=$3 command=${{COMP_WORDS[1]}} words= files=yes
    # "--option=value" comes as three words.
    [[ $word != = ]] || word=
    [[ $previous != = ]] || previous=${{COMP_WORDS[COMP_CWORD - 2]}}
    case "$command $previous" in
{}    *)
        case "$command $word" in
{}        esac ;;
    esac
    [[ $COMP_CWORD -gt 1 ]] || words="{}"
    [[ $files ]] || compopt +o default
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
