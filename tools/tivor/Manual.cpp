#include "Manual.h"

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace Qor::Tivor::Tool {

namespace {

/// Text of a manual page: nothing in it is an instruction to the formatter.
std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        const bool beginsLine = escaped.empty() || escaped.back() == '\n';
        if (beginsLine && (c == '.' || c == '\''))
            escaped += "\\&";
        escaped += c == '\\' ? "\\e" : c == '-' ? "\\-" : std::string(1, c);
    }
    return escaped;
}

/// "--to TYPE", or "FILE" of one that has no dashes.
std::string NameOf(const CLI::Option& option) {
    if (option.get_positional())
        return option.get_name(true);
    const std::string type = option.get_type_size() == 0 ? "" : option.get_type_name();
    return option.get_name(false, true) + (type.empty() ? "" : ' ' + type);
}

std::vector<const CLI::Option*> ListOptions(const CLI::App& command) {
    const CLI::Option* const help = command.get_help_ptr();
    return command.get_options(
        [help](const CLI::Option* option) { return !option->get_positional() && option != help; });
}

std::vector<const CLI::Option*> ListWords(const CLI::App& command) {
    return command.get_options([](const CLI::Option* option) { return option->get_positional(); });
}

/// As "ls FILE [KEY]..."
std::string SynopsisOf(const CLI::App& command) {
    std::string synopsis = command.get_name();
    for (const CLI::Option* const word : ListWords(command)) {
        const std::string name = word->get_name(true);
        const std::string repeated = word->get_items_expected_max() > 1 ? "..." : "";
        synopsis += word->get_required() ? ' ' + name : " [" + name + ']' + repeated;
    }
    return synopsis;
}

void WriteOptions(const std::vector<const CLI::Option*>& options, std::ostream& out) {
    for (const CLI::Option* const option : options)
        out << ".TP\n.B " << Escaped(NameOf(*option)) << '\n' << Escaped(option->get_description()) << '\n';
}

void WriteAsItIs(const std::string& text, std::ostream& out) { out << ".PP\n.nf\n" << Escaped(text) << "\n.fi\n"; }

std::string OptionNames(const CLI::App& command) {
    std::string names;
    for (const CLI::Option* const option : ListOptions(command))
        for (const std::string& name : option->get_lnames())
            names += (names.empty() ? "--" : " --") + name;
    return names;
}

} // namespace

void WriteManualPage(const CLI::App& program, std::ostream& out) {
    std::string title = program.get_name();
    for (char& c : title)
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c;
    out << ".TH " << title << " 1\n.SH NAME\n"
        << program.get_name() << " \\- " << Escaped(program.get_description()) << "\n.SH SYNOPSIS\n.B "
        << program.get_name() << "\nCOMMAND [OPTION]... [WORD]...\n.SH COMMANDS\n";
    for (const CLI::App* const command : program.get_subcommands({})) {
        out << ".SS " << Escaped(SynopsisOf(*command)) << '\n' << Escaped(command->get_description()) << ".\n";
        WriteOptions(ListWords(*command), out);
        WriteOptions(ListOptions(*command), out);
        if (const std::string footer = command->get_footer(); !footer.empty() && footer != program.get_footer())
            WriteAsItIs(footer, out);
    }
    out << ".SH NOTES\n";
    WriteAsItIs(program.get_footer(), out);
}

void WriteCompletion(const CLI::App& program, std::ostream& out) {
    const std::string name = program.get_name();
    std::string commands;
    for (const CLI::App* const command : program.get_subcommands({}))
        commands += (commands.empty() ? "" : " ") + command->get_name();
    out << "# Completion of " << name << " in bash: source it, or put it where bash-completion looks.\n_" << name
        << "() {\n    local word=${COMP_WORDS[COMP_CWORD]} options=\n"
        << "    if [[ $COMP_CWORD -eq 1 ]]; then\n        mapfile -t COMPREPLY < <(compgen -W '" << commands
        << "' -- \"$word\")\n        return\n    fi\n    case ${COMP_WORDS[1]} in\n";
    for (const CLI::App* const command : program.get_subcommands({}))
        out << "    " << command->get_name() << ") options='" << OptionNames(*command) << "' ;;\n";
    out << "    esac\n    if [[ $word == -* ]]; then\n"
        << "        mapfile -t COMPREPLY < <(compgen -W \"$options\" -- \"$word\")\n    else\n"
        << "        mapfile -t COMPREPLY < <(compgen -f -- \"$word\")\n    fi\n}\ncomplete -o filenames -F _" << name
        << ' ' << name << '\n';
}

} // namespace Qor::Tivor::Tool
