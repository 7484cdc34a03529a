#include "driverhost/HelpCommands.h"

#include <fmt/format.h>

#include "driverhost/CommandTree.h"
#include "driverhost/ManualPage.h"
#include "driverhost/ShellCompletion.h"

namespace {

struct CompletionOptions {
    const CLI::App* Program = nullptr;
    std::string Shell = "bash";
};

struct ManualOptions {
    const CLI::App* Program = nullptr;
};

void PrintCompletion(const CompletionOptions& options) {
    fmt::print("{}", BashCompletion(*options.Program));
}

void PrintManual(const ManualOptions& options) {
    fmt::print("{}", ManualPage(*options.Program));
}

}  // namespace

void AddHelpCommands(CommandTree& tree) {
    {
        auto [command, options] = tree.Add(
            "completion", "Print what makes a shell complete command lines", PrintCompletion);
        options.Program = &tree.Program();
        command.add_option("SHELL", options.Shell, "The shell")
            ->check(CLI::IsMember({"bash"}))
            ->capture_default_str();
        AddHelp(command,
                "Source the file from ~/.bashrc, or name it driverhost and put it into\n"
                "~/.local/share/bash-completion/completions.",
                {"driverhost completion bash > driverhost.bash"});
    }
    auto [command, options] = tree.Add("man", "Print the manual page", PrintManual);
    options.Program = &tree.Program();
    AddHelp(command, "Read it with man -l.", {"driverhost man > driverhost.1"});
}
