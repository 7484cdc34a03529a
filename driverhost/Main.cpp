#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "driverhost/CapabilitiesCommand.h"
#include "driverhost/CommandTree.h"
#include "driverhost/DiffCommand.h"
#include "driverhost/DriverWords.h"
#include "driverhost/HalftoneCommand.h"
#include "driverhost/HeaderCommand.h"
#include "driverhost/HelpCommands.h"
#include "driverhost/HostError.h"
#include "driverhost/InspectCommand.h"
#include "driverhost/MakeJobCommand.h"
#include "driverhost/ModelsCommand.h"
#include "driverhost/OptionsCommand.h"
#include "driverhost/ProofCommand.h"
#include "driverhost/RunCommand.h"
#include "driverhost/Speech.h"
#include "driverhost/TicketCommand.h"
#include "driverhost/check/CheckCommand.h"
#include "driverhost/check/Findings.h"
#include "platform/CodePage.h"
#include "platform/Program.h"

namespace fs = std::filesystem;

namespace {

constexpr char kStatusText[] =
    "Exit status: 0 success, 1 failed, 2 wrong or refused options, 3 what a job wrote is\n"
    "incomplete: channels or side files are missing or not whole, or it failed on its way; 130\n"
    "interrupted. diff answers 1 for a difference and 2 for trouble. Output that cannot be "
    "written\n"
    "is a failure everywhere.";

/// Fixes the base folder for the driver, which looks the variable up at each use.
void SetBaseFolder(const std::string& option) {
    constexpr char kVariable[] = "QL_BASE_FOLDER";
    std::string folder = option;
    if (folder.empty()) {
        const char* const inherited = std::getenv(kVariable);
        if (inherited != nullptr && *inherited != '\0') return;
        folder = ProgramFolder() + "/models";
    }
    std::error_code error;
    if (!fs::is_directory(folder, error))
        throw HostError(kUsage, fmt::format("there is no base folder {}", folder));
    SetEnvironment(kVariable, fs::absolute(folder).string().c_str());
}

/// A host without a word about it is strict: what the driver would rather say than refuse is
/// refused.
void SetStrictMode() {
    constexpr char kVariable[] = "QL_STRICT";
    if (std::getenv(kVariable) == nullptr) SetEnvironment(kVariable, "1");
}

void CheckCodePage() {
    if (!IsCodePageKnown())
        Complain(
            "warning: QL_CODE_PAGE names {}, which this system does not know; texts count as "
            "UTF-8",
            std::getenv("QL_CODE_PAGE"));
}

/// A wrong command line as one line, which leads to the help of the command that it names.
std::string WrongLine(const CLI::App& app, const CLI::ParseError& error) {
    const std::vector<CLI::App*> named = app.get_subcommands();
    if (!named.empty())
        return fmt::format("{}; see driverhost {} --help", error.what(), named.front()->get_name());
    std::vector<std::string> names;
    for (const CLI::App* const command : app.get_subcommands(nullptr))
        names.push_back(command->get_name());
    const std::vector<std::string> rest = app.remaining();
    if (rest.empty() || rest.front().starts_with('-'))
        return fmt::format("{}; see driverhost --help", error.what());
    return fmt::format("no command {}{}; see driverhost --help", Quoted(rest.front()),
                       DidYouMean(rest.front(), {names.begin(), names.end()}));
}

int Run(int argc, char** argv, DriverWords& words) {
    CLI::App app("Makes print jobs from PDFs and runs them through the output driver.",
                 "driverhost");
    app.require_subcommand(1);
    app.fallthrough();
    app.footer(kStatusText);
    std::string base;
    app.add_option("--base", base,
                   "The base folder with the models (default: QL_BASE_FOLDER, else the folder "
                   "models beside the program)")
        ->type_name(kFolderArgument);
    CommandTree tree(app);
    app.parse_complete_callback([&] {
        SetBaseFolder(base);
        SetStrictMode();
        CheckCodePage();
        // Whoever works at a window sees messages there.
        words.Listen(!app.got_subcommand("options"));
    });
    AddModelsCommand(tree);
    AddCapabilitiesCommand(tree);
    AddHalftoneCommand(tree);
    AddMakeJobCommand(tree);
    AddRunCommand(tree, words);
    AddInspectCommand(tree);
    AddDiffCommand(tree);
    AddProofCommand(tree);
    AddCheckCommand(tree);
    AddHeaderCommand(tree);
    AddTicketCommand(tree);
    AddOptionsCommand(tree);
    AddHelpCommands(tree);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) return app.exit(error);
        throw HostError(kUsage, WrongLine(app, error));
    }
    return tree.Status();
}

/// Everything that ends the program goes through here as one line and a status.
int RunToStatus(int argc, char** argv) {
    DriverWords words;
    const auto report = [&words](int status, const char* message) {
        words.SayAll();
        Complain("{}", message);
        return status;
    };
    try {
        const int status = Run(argc, argv, words);
        words.SayAll();
        return status;
    } catch (const HostError& error) {
        return report(error.Status(), error.what());
    } catch (const std::bad_alloc&) {
        return report(kFailed, "out of memory");
    } catch (const std::exception& error) {
        if (std::ferror(stdout) != 0) return kFailed;  // said below
        return report(kFailed, error.what());
    }
}

}  // namespace

int main(int argc, char** argv) {
    HoldStandardStreams();
    NoteInterrupts();
    const int status = RunToStatus(argc, argv);
    // An answer that nobody can read is none.
    const bool isWritten = std::fflush(stdout) == 0;
    if (isWritten && std::ferror(stdout) == 0) return status;
    Complain("cannot write to standard output");
    return kFailed;
}
