#include "driverhost/ShellCompletion.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <vector>

#include "driverhost/CommandTree.h"

namespace {

/// The parts of the script that do not depend on the commands. A word after an option that takes
/// a value is that value; the name and value of "--name=value" come in three words.
constexpr std::string_view kComplete = R"bash(
_driverhost() {
    local word=${COMP_WORDS[COMP_CWORD]} command=driverhost kind='' place=0 i
    for ((i = 1; i < COMP_CWORD; i++)); do
        case ${COMP_WORDS[i]} in
            =) ;;
            -*) kind=$(_driverhost_value "$command" "${COMP_WORDS[i]}") ;;
            *)
                if [[ -n $kind ]]; then
                    kind=
                elif _driverhost_commands "$command" | grep -qxFe "${COMP_WORDS[i]}"; then
                    command="$command ${COMP_WORDS[i]}"
                else
                    place=$((place + 1))
                fi
                ;;
        esac
    done
    COMPREPLY=()
    if [[ $word == = ]]; then word=; fi
    if [[ -z $kind && $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(_driverhost_options "$command")" -- "$word")
        return
    fi
    if [[ -z $kind ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(_driverhost_commands "$command")" -- "$word")
        kind=$(_driverhost_argument "$command" "$place")
    fi
    case $kind in
        FILE* | PATH*) compopt -o default ;;
        FOLDER*) compopt -o dirnames ;;
        MODEL*) _driverhost_models "$word" ;;
        *\{*\})
            kind=${kind#*\{}
            mapfile -t COMPREPLY < <(IFS=,; compgen -W "${kind%\}}" -- "$word")
            ;;
    esac
}

_driverhost_models() {
    local name open=${1#[\"\']}
    while IFS= read -r name; do
        if [[ $open == "$1" ]]; then printf -v name %q "$name"; fi
        if [[ $name == "$open"* ]]; then COMPREPLY+=("$name"); fi
    done < <("${COMP_WORDS[0]/#\~/$HOME}" models --names 2>/dev/null)
}

complete -F _driverhost driverhost
)bash";

/// Between single quotes, where a shell takes everything as it stands.
std::string Quoted(const std::string& text) {
    std::string quoted = "'";
    for (const char character : text) {
        if (character == '\'')
            quoted += "'\\''";
        else
            quoted += character;
    }
    return quoted + '\'';
}

std::vector<std::string> NamesOf(const CLI::Option& option) {
    std::vector<std::string> names;
    for (const std::string& name : option.get_snames())
        names.push_back('-' + name);
    for (const std::string& name : option.get_lnames())
        names.push_back("--" + name);
    return names;
}

/// The cases of the script's functions, one for each command, option or argument.
struct Cases {
    std::string Commands;
    std::string Options;
    std::string Values;
    std::string Arguments;
};

std::string Case(const std::string& pattern, const std::string& text) {
    return fmt::format("        {}) echo {} ;;\n", Quoted(pattern), Quoted(text));
}

void AddOptions(const std::vector<const CLI::Option*>& options, const std::string& path,
                Cases& cases) {
    std::string all;
    for (const CLI::Option* const option : options) {
        for (const std::string& name : NamesOf(*option)) {
            all += name + '\n';
            if (option->get_items_expected_max() > 0)
                cases.Values += Case(fmt::format("{} {}", path, name), option->get_type_name());
        }
    }
    cases.Options += Case(path, all);
}

void AddArguments(const CLI::App& command, const std::string& path, Cases& cases) {
    int place = 0;
    for (const CLI::Option* const option : command.get_options()) {
        if (!option->get_positional()) continue;
        const bool many = option->get_items_expected_max() > 1;
        // One that takes many is this one and all after it.
        const std::string pattern = many ? fmt::format("{}*", Quoted(path + ' '))
                                         : Quoted(fmt::format("{} {}", path, place++));
        cases.Arguments +=
            fmt::format("        {}) echo {} ;;\n", pattern, Quoted(option->get_type_name()));
    }
}

/// `options` are those that the commands above hand down.
void AddCommand(const CLI::App& command, const std::string& path,
                std::vector<const CLI::Option*> options, Cases& cases) {
    for (const CLI::Option* const option : command.get_options())
        if (!option->get_group().empty() && !option->get_positional()) options.push_back(option);
    AddOptions(options, path, cases);
    AddArguments(command, path, cases);
    std::erase(options, command.get_help_ptr());  // every command has its own
    std::string commands;
    for (const CLI::App* const below : command.get_subcommands(nullptr)) {
        commands += below->get_name() + '\n';
        AddCommand(*below, path + ' ' + below->get_name(), options, cases);
    }
    if (!commands.empty()) cases.Commands += Case(path, commands);
}

std::string Function(std::string_view name, std::string_view words, const std::string& cases) {
    return fmt::format("\n_driverhost_{}() {{\n    case \"{}\" in\n{}    esac\n}}\n", name, words,
                       cases);
}

}  // namespace

std::string BashCompletion(const CLI::App& program) {
    Cases cases;
    AddCommand(program, program.get_name(), {}, cases);
    return "# Completes the command line of driverhost; made by `driverhost completion "
           "bash`.\n" +
           Function("commands", "$1", cases.Commands) + Function("options", "$1", cases.Options) +
           Function("value", "$1 $2", cases.Values) +
           Function("argument", "$1 $2", cases.Arguments) + std::string(kComplete);
}
