#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "driverhost/CapabilitiesCommand.h"
#include "driverhost/HostError.h"
#include "driverhost/MakeJobCommand.h"
#include "driverhost/ProofCommand.h"
#include "driverhost/RunCommand.h"
#include "platform/Program.h"

namespace fs = std::filesystem;

namespace {

constexpr char kStatusText[] =
    "Exit status: 0 success, 1 failed, 2 wrong or refused options, 3 the job ran and channels are\n"
    "missing or short, 130 interrupted.";

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

CLI::App* AddCapabilities(CLI::App& app, CapabilitiesOptions& options) {
    CLI::App* const command =
        app.add_subcommand("capabilities",
                           "Show what a model offers and which combinations it "
                           "allows");
    command->add_option("MODEL", options.Model, "The model's name")->required();
    command->add_flag("--json", options.Json, "Print JSON");
    command->footer(
        "Examples:\n"
        "  driverhost capabilities \"Fenland R4\"\n"
        "  driverhost capabilities \"Fenland F8\" --json");
    return command;
}

CLI::App* AddMakeJob(CLI::App& app, MakeJobOptions& options) {
    CLI::App* const command =
        app.add_subcommand("make-job", "Rasterise and separate a PDF with Ghostscript into a job");
    command->add_option("INPUT.pdf", options.Input, "The document")->required();
    command->add_option("--model", options.Model, "The model's name")->required();
    AddChoiceOptions(*command, options.Choice);
    command->add_option("--color-mode", options.Choice.ColorMode,
                        "Colour mode, by name or position");
    command
        ->add_option("-o,--output", options.Job,
                     "The job file; JOB.pages.tif and JOB.settings.json appear beside it")
        ->required();
    command
        ->add_option("--timeout", options.TimeoutSeconds,
                     "Seconds that Ghostscript may go on without writing anything")
        ->check(CLI::Range(int64_t{1}, int64_t{1'000'000}))
        ->capture_default_str();
    command
        ->add_option("--band-pixels", options.BandPixels,
                     "Pixels of a page that are rasterised at once")
        ->check(CLI::Range(int64_t{1}, MakeJobOptions().BandPixels))
        ->capture_default_str();
    command->footer(
        "What is not given is the driver's default; the resolution is then the first that allows\n"
        "the colour mode. Light inks print the highlights of their ink: amounts up to a half, at\n"
        "twice the amount, fading out above. A mode of one black or grey ink prints shades of "
        "grey.\n"
        "A spot ink goes to the channel of its name; without one it is printed with process "
        "inks.\n\n"
        "Examples:\n"
        "  driverhost make-job poster.pdf --model \"Fenland R4\" -o poster.job\n"
        "  driverhost make-job poster.pdf --model \"Fenland F8\" --media Glass --print-mode Fine "
        "\\\n"
        "      --resolution 1200x600 --color-mode \"CMYK, White, Varnish, contone\" -o glass.job");
    return command;
}

CLI::App* AddRun(CLI::App& app, RunOptions& options) {
    CLI::App* const command =
        app.add_subcommand("run", "Run a job through the driver, which writes its channel files");
    command->add_option("JOB", options.Job, "The job file that make-job wrote")->required();
    command->add_option("--out", options.OutputFolder, "Folder for the files; made when missing")
        ->required();
    command->add_option("--name", options.Name, "The job's name (default: the document's)");
    AddChoiceOptions(*command, options.Choice);
    command->add_flag("--one-folder", options.OneFolder,
                      "Write all pages into the same folder, where each replaces the one before");
    command->footer(
        "Each page of a job of several gets a folder of its own, NAME-tile1, NAME-tile2 and so "
        "on,\n"
        "for the names of channel files carry no page number.\n\n"
        "Examples:\n"
        "  driverhost run poster.job --out printed\n"
        "  driverhost run glass.job --out printed --name window7");
    return command;
}

CLI::App* AddProof(CLI::App& app, ProofOptions& options) {
    CLI::App* const command = app.add_subcommand(
        "proof", "Draw a printed page as a picture, from the channel files themselves");
    command->add_option("OUTDIR", options.Folder, "The folder that run wrote to")->required();
    command->add_option("-o,--output", options.Output, "The PNG file to write")->required();
    command->add_option("--page", options.Page, "Page of the job, from 1")->capture_default_str();
    command->add_option("--job", options.Job, "Name of the job, where the folder holds several");
    command
        ->add_option("--scale", options.Scale,
                     "Picture rows for each printed line, for example 0.1 (default: as --long-side "
                     "says)")
        ->check(CLI::PositiveNumber);
    command->add_option("--long-side", options.LongSide, "Pixels of the picture's longer side")
        ->check(CLI::Range(int64_t{1}, int64_t{1'000'000}))
        ->capture_default_str();
    command->add_option("--paper", options.Paper,
                        "Colour of the paper, RRGGBB (default: white; grey under white ink)");
    command->footer(
        "Each ink shows in its display colour; where inks meet, their colours multiply.\n\n"
        "Examples:\n"
        "  driverhost proof printed -o proof.png\n"
        "  driverhost proof printed -o detail.png --scale 1");
    return command;
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
                   "models beside the program)");
    CapabilitiesOptions capabilities;
    MakeJobOptions makeJob;
    RunOptions run;
    ProofOptions proof;
    const CLI::App* const capabilitiesCommand = AddCapabilities(app, capabilities);
    const CLI::App* const makeJobCommand = AddMakeJob(app, makeJob);
    const CLI::App* const runCommand = AddRun(app, run);
    const CLI::App* const proofCommand = AddProof(app, proof);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) return app.exit(error);
        return Report(kUsage, fmt::format("{}; see driverhost --help", error.what()).c_str());
    }
    SetBaseFolder(base);
    if (capabilitiesCommand->parsed()) ShowCapabilities(capabilities);
    if (makeJobCommand->parsed()) MakeJob(makeJob);
    if (runCommand->parsed()) RunJob(run);
    if (proofCommand->parsed()) MakeProof(proof);
    if (std::fflush(stdout) != 0) throw HostError(kFailed, "cannot write the output");
    return kSuccess;
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
