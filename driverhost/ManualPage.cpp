#include "driverhost/ManualPage.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <sstream>

#include "driverhost/CommandTree.h"

namespace {

/// A text that the formatter takes as it stands: no character of it is a request, and a hyphen
/// stays one when it is copied from the page.
std::string Escaped(const std::string& text) {
    std::string escaped;
    bool lineStart = true;
    for (const char character : text) {
        if (lineStart && (character == '.' || character == '\'')) escaped += "\\&";
        if (character == '\\')
            escaped += "\\e";
        else if (character == '-')
            escaped += "\\-";
        else
            escaped += character;
        lineStart = character == '\n';
    }
    return escaped;
}

/// Notes and examples: indented lines keep their line breaks, all others are filled.
std::string Body(const std::string& text) {
    std::string body;
    std::istringstream lines(text);
    bool kept = false;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(' ') != kept) {
            kept = !kept;
            body += kept ? ".PP\n.nf\n" : ".fi\n.PP\n";
        }
        if (line.empty())
            body += kept ? "" : ".PP\n";
        else
            body += Escaped(line) + '\n';
    }
    return kept ? body + ".fi\n" : body;
}

std::string OptionsOf(const CLI::App& command) {
    std::string text;
    for (const bool positional : {true, false}) {
        for (const CLI::Option* const option : command.get_options()) {
            if (option->get_group().empty() || option->get_positional() != positional) continue;
            text +=
                fmt::format(".TP\n\\fB{}\\fR", Escaped(option->get_name(positional, !positional)));
            if (!positional && option->get_items_expected_max() > 0)
                text += fmt::format(" \\fI{}\\fR", Escaped(option->get_type_name()));
            if (option->get_required()) text += " (required)";
            text += fmt::format("\n{}.\n", Escaped(option->get_description()));
            if (!option->get_default_str().empty())
                text += fmt::format("Default: {}.\n", Escaped(option->get_default_str()));
        }
    }
    return text;
}

std::string Synopsis(const CLI::App& command, const std::string& path) {
    std::string text = fmt::format("\\fB{}\\fR [\\fIOPTIONS\\fR]", Escaped(path));
    for (const CLI::Option* const option : command.get_options()) {
        if (!option->get_positional()) continue;
        const char* const more = option->get_items_expected_max() > 1 ? "..." : "";
        text += fmt::format(" \\fI{}\\fR{}", Escaped(option->get_name(true, false)), more);
    }
    if (!command.get_subcommands(nullptr).empty()) text += " \\fICOMMAND\\fR";
    return text + '\n';
}

void AddCommands(const CLI::App& from, const std::string& path, std::string& page) {
    for (const CLI::App* const command : from.get_subcommands(nullptr)) {
        const std::string name = path + ' ' + command->get_name();
        page += fmt::format(".SS \"{}\"\n{}.PP\n{}.\n{}", Escaped(name), Synopsis(*command, name),
                            Escaped(command->get_description()), OptionsOf(*command));
        page += ".PP\n" + Body(command->get_footer());
        AddCommands(*command, name, page);
    }
}

}  // namespace

std::string ManualPage(const CLI::App& program) {
    const std::string& name = program.get_name();
    std::string title = name;
    std::transform(title.begin(), title.end(), title.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
    std::string page = fmt::format(".TH {} 1 \"\" \"\" \"User Commands\"\n", title);
    page += fmt::format(".SH NAME\n{} \\- {}\n", Escaped(name), Escaped(program.get_description()));
    page += ".SH SYNOPSIS\n" + Synopsis(program, name);
    page += ".SH OPTIONS\n" + OptionsOf(program);
    page += ".SH COMMANDS\n";
    AddCommands(program, name, page);
    return page + ".SH \"EXIT STATUS\"\n" + Body(program.get_footer());
}
