#include "driverhost/RunCommand.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <system_error>
#include <thread>

#include "driverhost/CommandTree.h"
#include "driverhost/DriverLibrary.h"
#include "driverhost/HostError.h"
#include "driverhost/JobFile.h"
#include "driverhost/JobReport.h"
#include "driverhost/JobRun.h"
#include "driverhost/PrintRecord.h"
#include "platform/FolderLock.h"
#include "platform/Program.h"

namespace fs = std::filesystem;

namespace {

/// The driver's temporary files have one name each below the base folder, so that two jobs at a
/// time would mix their data: a run waits until no other has the folder. Where the file system
/// knows no locks, nobody waits.
void AwaitBaseFolder(FolderLock& lock) {
    const char* const base = std::getenv("QL_BASE_FOLDER");
    if (base == nullptr) return;
    bool said = false;
    while (lock.TryLock(base) == FolderLock::Answer::kHeldByAnother) {
        if (InterruptNoted()) throw HostError(kAborted, "interrupted before the first job");
        if (!said)
            fmt::print(stderr, "driverhost: another run uses {}: waiting for its end\n", base);
        said = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

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

/// The drivers of this program: one for each model, since a driver keeps the first that it meets.
class Drivers {
  public:
    DriverInterface& For(const std::string& model) {
        std::unique_ptr<DriverInterface>& driver = drivers_[model];
        if (driver == nullptr) driver = library_.CreateDriver();
        return *driver;
    }

  private:
    DriverLibrary library_;
    std::map<std::string, std::unique_ptr<DriverInterface>> drivers_;  // gone before the library
};

/// A job that can be run.
struct ReadyJob {
    fs::path Path;
    JobSettings Settings;
    std::vector<ContainerPage> Pages;
    std::string SourceName;
    DriverInterface& Driver;
    ChosenPrint Chosen;
};

ReadyJob Prepare(const std::string& job, const RunOptions& options, Drivers& drivers) {
    const fs::path path = fs::absolute(job).lexically_normal();
    if (path.string().size() >= sizeof JobStatusRecord::JobFilePath)
        throw HostError(kUsage, fmt::format("a job's path has at most {} bytes",
                                            sizeof JobStatusRecord::JobFilePath - 1));
    const JobSettings settings = ReadJob(path);
    const std::vector<ContainerPage> pages = ReadJobPages(path);
    const std::string sourceName = SourceNameOf(options, settings);
    DriverInterface& driver = drivers.For(settings.Model);
    const Capabilities capabilities(driver, settings.Model);
    return {path, settings, pages, sourceName, driver, ChooseFor(capabilities, options, settings)};
}

/// An absolute path that the driver can take.
std::string ThumbnailOf(const RunOptions& options) {
    if (options.Thumbnail.empty()) return {};
    std::string path = fs::absolute(options.Thumbnail).lexically_normal().string();
    std::error_code error;
    if (!fs::is_regular_file(path, error))
        throw HostError(kUsage, fmt::format("there is no thumbnail {}", options.Thumbnail));
    if (path.size() > JobRun::kMostThumbnailBytes)
        throw HostError(kUsage, fmt::format("a thumbnail's path has at most {} bytes",
                                            JobRun::kMostThumbnailBytes));
    return path;
}

bool AnyFault(const JobReport& report) {
    return std::any_of(report.Faults.begin(), report.Faults.end(),
                       [](const PageFaults& faults) { return faults.Any(); });
}

void KeepRecord(const fs::path& folder, const ReadyJob& job, JobReport& report) {
    PrintRecord record;
    record.SourceName = job.SourceName;
    record.Model = job.Settings.Model;
    record.Choice = job.Chosen.Choice;
    record.XResolution = job.Chosen.Resolution.XResolution;
    record.YResolution = job.Chosen.Resolution.YResolution;
    record.Complete = report.State == JobState::kComplete;
    record.Pages = report.Pages;
    try {
        WritePrintRecord(PrintRecordPath(folder, record), record);
    } catch (const HostError& error) {
        if (report.State == JobState::kComplete) report.Fail(error.Status(), error.what());
    }
}

/// Why a job did not come to its end; throws it as the fault that it is.
void RunToEnd(JobRun& run, const ReadyJob& job) {
    run.Open(job.Path, job.Chosen.Choice, job.SourceName);
    switch (run.ToEnd()) {
        case JobRun::Ending::kDone:
            return;
        case JobRun::Ending::kInterrupted:
            throw HostError(kAborted, "interrupted; the job is aborted");
        case JobRun::Ending::kFailed:
            throw HostError(kFailed, run.Failure());
    }
}

void Run(const ReadyJob& job, const RunOptions& options, JobReport& report) {
    if (options.OneFolder && !job.Settings.Tiles.IsWhole())
        throw HostError(kUsage, "a job in tiles needs a folder for each of them");
    const fs::path folder = PrepareFolder(options.OutputFolder);
    const std::string thumbnail = ThumbnailOf(options);
    const Listing before = ListFiles(folder);
    const std::set<std::string> foldersBefore = ListFolders(folder);
    JobRun run(job.Driver, job.Pages, static_cast<int32_t>(job.Chosen.Mode.Colorants.size()),
               folder, before);
    if (job.Settings.Tiles.IsWhole())
        run.UseFolders(!options.OneFolder);
    else
        run.UseTiles(job.Settings.Tiles);
    run.SetCopies(options.Copies);
    run.SetThumbnail(thumbnail);
    if (options.Json) run.BeQuiet();

    std::optional<HostError> fault;
    const auto start = std::chrono::steady_clock::now();
    try {
        RunToEnd(run, job);
    } catch (const HostError& error) {
        fault = error;
    }
    report.Seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

    report.Files = ChangedFiles(before, ListFiles(folder));
    report.Folders = FoldersOfJob(foldersBefore, ListFolders(folder), report.Files);
    report.Faults = run.Faults();
    for (std::size_t i = 0; i < run.PageFiles().size(); ++i)
        report.Pages.push_back(
            {job.Pages[i].WidthPixels, job.Pages[i].Rows, job.Pages[i].Bits, run.PageFiles()[i]});
    if (!fault && AnyFault(report)) fault = HostError(kIncomplete, "the job is incomplete");
    report.Status = kSuccess;
    report.State = JobState::kComplete;
    if (fault) report.Fail(fault->Status(), fault->what());
    if (!report.Folders.empty()) KeepRecord(folder, job, report);
}

JobReport RunJob(const std::string& name, const RunOptions& options, Drivers& drivers) {
    JobReport report;
    report.Job = name;
    if (InterruptNoted()) {
        report.Message = "interrupted before this job";
        return report;
    }
    try {
        const ReadyJob job = Prepare(name, options, drivers);
        report.Model = job.Settings.Model;
        report.SourceName = job.SourceName;
        Run(job, options, report);
    } catch (const HostError& error) {
        report.Fail(error.Status(), error.what());
    }
    return report;
}

/// Names carry no job number either: a job without a folder of its own takes the place of an
/// earlier one of its name.
void NoteReplacedFiles(std::vector<JobReport>& reports) {
    const JobReport& last = reports.back();
    for (JobReport& earlier : reports) {
        if (&earlier == &last || earlier.State != JobState::kComplete) continue;
        for (const auto& [file, state] : last.Files) {
            if (!earlier.Files.contains(file)) continue;
            earlier.Fail(kIncomplete, fmt::format("{} and other files are replaced by those of {}",
                                                  file, last.Job));
            fmt::print(stderr, "driverhost: {}: {}\n", earlier.Job, earlier.Message);
            break;
        }
    }
}

}  // namespace

int RunJobs(const RunOptions& options) {
    if (options.Jobs.size() > 1 && !options.Name.empty())
        throw HostError(kUsage, "--name is for one job, not for several");
    FolderLock baseFolder;
    AwaitBaseFolder(baseFolder);
    Drivers drivers;
    std::vector<JobReport> reports;
    const fs::path folder = fs::absolute(options.OutputFolder).lexically_normal();
    const bool several = options.Jobs.size() > 1;
    for (const std::string& job : options.Jobs) {
        if (several && !options.Json) fmt::print("{}\n", job);
        reports.push_back(RunJob(job, options, drivers));
        if (!options.Json) PrintReport(reports.back(), folder, several);
        NoteReplacedFiles(reports);
    }
    int status = kSuccess;
    for (const JobReport& report : reports)
        if (status == kSuccess) status = report.Status;
    if (options.Json) PrintReportsAsJson(reports, folder, status);
    return status;
}

void AddRunCommand(CommandTree& tree) {
    auto [command, options] =
        tree.Add("run", "Run jobs through the driver, which writes their channel files", RunJobs);
    command.add_option("JOB", options.Jobs, "Job files that make-job wrote")
        ->required()
        ->type_name(kFileArgument);
    command.add_option("--out", options.OutputFolder, "Folder for the files; made when missing")
        ->required()
        ->type_name(kFolderArgument);
    command.add_option("--name", options.Name, "The job's name (default: the document's)");
    AddChoiceOptions(command, options.Choice);
    command.add_option("--copies", options.Copies, "Copies that the job ticket asks for")
        ->check(CLI::Range(1, INT32_MAX))
        ->capture_default_str();
    command
        .add_option("--thumbnail", options.Thumbnail,
                    "A picture of the job, which the driver copies beside its files")
        ->type_name(kFileArgument);
    command.add_flag("--one-folder", options.OneFolder,
                     "Write all pages into the same folder, where each replaces the one before");
    command.add_flag(
        "--json", options.Json,
        "Print a report in JSON instead: files, sizes, SHA-256, seconds, what is wrong");
    AddHelp(
        command,
        "Each page of a job of several gets a folder of its own, NAME-tile1, NAME-tile2 and so "
        "on,\n"
        "for the names of channel files carry no page number. Jobs run one after the other, each\n"
        "whatever became of the others; the exit status is that of the first that is not "
        "complete:\n"
        "3 when it left folders that are incomplete, 1 or 2 when it left nothing.",
        {"driverhost run poster.job --out printed",
         "driverhost run glass.job --out printed --name window7 --copies 2 --thumbnail glass.bmp",
         "driverhost run poster.job glass.job --out printed --json"});
}
