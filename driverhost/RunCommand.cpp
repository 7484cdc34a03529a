#include "driverhost/RunCommand.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <system_error>

#include "driverhost/CommandTree.h"
#include "driverhost/DriverLibrary.h"
#include "driverhost/HostError.h"
#include "driverhost/JobFile.h"
#include "driverhost/JobRun.h"
#include "driverhost/PrintRecord.h"

namespace fs = std::filesystem;

namespace {

fs::path PrepareFolder(const std::string& folder) {
    fs::path path = fs::absolute(folder).lexically_normal();
    std::error_code error;
    if (!fs::is_directory(path, error)) {
        if (fs::exists(path, error))
            throw HostError(kFailed, fmt::format("{} is no folder", folder));
        fs::create_directories(path, error);
        if (error)
            throw HostError(
                kFailed, fmt::format("cannot create the folder {}: {}", folder, error.message()));
    }
    return path;
}

/// The driver takes a name's drive and extension away, and its own folders stay inside the output
/// folder; a name that asks for either is a mistake to be told.
std::string SourceNameOf(const RunOptions& options, const JobSettings& job) {
    if (options.Name.empty()) return job.SourceName;
    if (options.Name.find_first_of("/\\:") != std::string::npos)
        throw HostError(kUsage, fmt::format("a job's name holds no path: {}", options.Name));
    return options.Name + ".job";
}

/// What the job was made for, where the command line does not say otherwise.
ChosenPrint ChooseFor(const Capabilities& capabilities, const RunOptions& options,
                      const JobSettings& job) {
    ChoiceOptions choice = options.Choice;
    if (job.HasChoice) {
        if (choice.Media.empty()) choice.Media = std::to_string(job.Choice.Media);
        if (choice.PrintMode.empty()) choice.PrintMode = std::to_string(job.Choice.PrintMode);
        if (choice.Resolution.empty()) choice.Resolution = std::to_string(job.Choice.Resolution);
    }
    choice.ColorMode = std::to_string(job.Choice.ColorMode);
    return Choose(capabilities, choice);
}

std::vector<ContainerPage> PagesOf(const fs::path& job) {
    std::error_code error;
    fs::path container = ContainerOf(job);
    if (!fs::exists(container, error)) {
        container = job;
        container += ".tif";
    }
    if (!fs::exists(container, error))
        throw HostError(kFailed,
                        fmt::format("the job's pages, {}, are missing", ContainerOf(job).string()));
    return ReadContainerPages(container);
}

void PrintFiles(const Listing& files, double seconds) {
    std::uintmax_t bytes = 0;
    for (const auto& [path, state] : files) {
        fmt::print("{:>15} bytes  {}\n", state.Bytes, path);
        bytes += state.Bytes;
    }
    constexpr double kMegabyte = 1e6;
    const double megabytes = static_cast<double>(bytes) / kMegabyte;
    fmt::print("{} files, {:.1f} MB in {:.2f} s, {:.1f} MB/s\n", files.size(), megabytes, seconds,
               seconds > 0 ? megabytes / seconds : 0.0);
    std::fflush(stdout);
}

bool AnyFault(const JobRun& run) {
    return std::any_of(run.Faults().begin(), run.Faults().end(),
                       [](const PageFaults& faults) { return faults.Any(); });
}

void KeepRecord(const fs::path& folder, const JobRun& run, const std::string& sourceName,
                const std::string& model, const ChosenPrint& chosen,
                const std::vector<ContainerPage>& pages, bool complete) {
    PrintRecord record;
    record.SourceName = sourceName;
    record.Model = model;
    record.Choice = chosen.Choice;
    record.XResolution = chosen.Resolution.XResolution;
    record.YResolution = chosen.Resolution.YResolution;
    record.Complete = complete;
    for (std::size_t page = 0; page < run.PageFiles().size(); ++page)
        record.Pages.push_back(
            {pages[page].WidthPixels, pages[page].Rows, pages[page].Bits, run.PageFiles()[page]});
    WritePrintRecord(PrintRecordPath(folder, record), record);
}

void PrintFaults(const std::vector<PageFaults>& faults) {
    for (std::size_t page = 0; page < faults.size(); ++page) {
        for (const std::string& file : faults[page].ShortFiles)
            fmt::print(stderr, "driverhost: page {}: {} is incomplete\n", page + 1, file);
        if (faults[page].MissingChannels > 0)
            fmt::print(stderr, "driverhost: page {}: {} channels are not written\n", page + 1,
                       faults[page].MissingChannels);
    }
}

}  // namespace

void RunJob(const RunOptions& options) {
    const fs::path jobPath = fs::absolute(options.Job).lexically_normal();
    if (jobPath.string().size() >= sizeof JobStatusRecord::JobFilePath)
        throw HostError(kUsage, fmt::format("a job's path has at most {} bytes",
                                            sizeof JobStatusRecord::JobFilePath - 1));
    const JobSettings job = ReadJob(jobPath);
    const std::vector<ContainerPage> pages = PagesOf(jobPath);
    const std::string sourceName = SourceNameOf(options, job);

    const DriverLibrary library;
    const std::unique_ptr<DriverInterface> driver = library.CreateDriver();
    const ChosenPrint chosen = ChooseFor(Capabilities(*driver, job.Model), options, job);
    const fs::path folder = PrepareFolder(options.OutputFolder);

    const Listing before = ListFiles(folder);
    const auto start = std::chrono::steady_clock::now();
    JobRun run(*driver, pages, static_cast<int32_t>(chosen.Mode.Colorants.size()), folder, before);
    run.UseFolders(!options.OneFolder);
    run.Open(jobPath, chosen.Choice, sourceName);
    const JobRun::Ending ending = run.ToEnd();
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;

    PrintFiles(ChangedFiles(before, ListFiles(folder)), elapsed.count());
    PrintFaults(run.Faults());
    const bool complete = ending == JobRun::Ending::kDone && !AnyFault(run);
    KeepRecord(folder, run, sourceName, job.Model, chosen, pages, complete);
    if (ending == JobRun::Ending::kInterrupted)
        throw HostError(kAborted, "interrupted; the job is aborted");
    if (ending == JobRun::Ending::kFailed) throw HostError(kFailed, run.Failure());
    if (!complete) throw HostError(kIncomplete, "the job is incomplete");
}

void AddRunCommand(CommandTree& tree) {
    auto [command, options] =
        tree.Add("run", "Run a job through the driver, which writes its channel files", RunJob);
    command.add_option("JOB", options.Job, "The job file that make-job wrote")
        ->required()
        ->type_name(kFileArgument);
    command.add_option("--out", options.OutputFolder, "Folder for the files; made when missing")
        ->required()
        ->type_name(kFolderArgument);
    command.add_option("--name", options.Name, "The job's name (default: the document's)");
    AddChoiceOptions(command, options.Choice);
    command.add_flag("--one-folder", options.OneFolder,
                     "Write all pages into the same folder, where each replaces the one before");
    AddHelp(command,
            "Each page of a job of several gets a folder of its own, NAME-tile1, NAME-tile2 and so "
            "on,\n"
            "for the names of channel files carry no page number.",
            {"driverhost run poster.job --out printed",
             "driverhost run glass.job --out printed --name window7"});
}
