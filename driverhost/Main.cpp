#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "driverhost/CapabilitiesCommand.h"
#include "driverhost/CommandTree.h"
#include "driverhost/DiffCommand.h"
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
#include "driverhost/TicketCommand.h"
#include "driverhost/check/CheckCommand.h"
#include "platform/Program.h"

namespace fs = std::filesystem;

namespace {

constexpr char kStatusText[] =
    "Exit status: 0 success, 1 failed, 2 wrong or refused options, 3 what a job wrote is\n"
    "incomplete: channels are missing or short, or it failed on its way; 130 interrupted. diff\n"
    "answers 1 for a difference and 2 for trouble.";

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

/// Everything that ends the program goes through here as one line and a status.
int Report(int status, const char* message) {
    std::fflush(stdout);
    fmt::print(stderr, "driverhost: {}\n", message);
    return status;
}

int Run(int argc, char** argv) {
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
    app.parse_complete_callback([&base] { SetBaseFolder(base); });
    AddModelsCommand(tree);
    AddCapabilitiesCommand(tree);
    AddHalftoneCommand(tree);
    AddMakeJobCommand(tree);
    AddRunCommand(tree);
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
        return Report(kUsage, fmt::format("{}; see driverhost --help", error.what()).c_str());
    }
    if (std::fflush(stdout) != 0) throw HostError(kFailed, "cannot write the output");
    return tree.Status();
}

}  // namespace

int main(int argc, char** argv) {
    NoteInterrupts();
    try {
        return Run(argc, argv);
    } catch (const HostError& error) {
        return Report(error.Status(), error.what());
    } catch (const std::bad_alloc&) {
        return Report(kFailed, "out of memory");
    } catch (const std::exception& error) {
        return Report(kFailed, error.what());
    }
}
