#include "driverhost/RunCommand.h"

#include <fmt/format.h>

#include <map>
#include <memory>
#include <system_error>

#include "driverhost/CommandTree.h"
#include "driverhost/DriverLibrary.h"
#include "driverhost/HostError.h"
#include "driverhost/JobFile.h"
#include "driverhost/JobReport.h"
#include "driverhost/JobRun.h"
#include "driverhost/ModelList.h"
#include "driverhost/RunFolders.h"
#include "driverhost/RunJob.h"
#include "driverhost/Speech.h"
#include "platform/Program.h"

namespace fs = std::filesystem;

namespace {

/// The driver takes a name's drive and extension away, and its own folders stay inside the output
/// folder; a name that asks for either is a mistake to be told.
std::string SourceNameOf(const RunOptions& options, const JobSettings& job) {
    if (options.Name.empty()) return job.SourceName;
    if (options.Name.find_first_of("/\\:") != std::string::npos)
        throw HostError(kUsage, fmt::format("a job's name holds no path: {}", options.Name));
    return options.Name + ".job";
}

std::string DotsText(double x, double y) {
    return fmt::format("{}x{}", x, y);
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
    if (choice.Resolution.empty()) {
        // Nobody says; where the model has the job's own resolution, that is the one.
        ChoiceOptions own = choice;
        own.Resolution = DotsText(job.XResolution, job.YResolution);
        try {
            return Choose(capabilities, own);
        } catch (const HostError&) {
            return Choose(capabilities, choice);
        }
    }
    ChosenPrint chosen = Choose(capabilities, choice);
    const double x = chosen.Resolution.XResolution;
    const double y = chosen.Resolution.YResolution;
    const bool isJobs = static_cast<float>(x) == static_cast<float>(job.XResolution) &&
                        static_cast<float>(y) == static_cast<float>(job.YResolution);
    if (!options.Choice.Resolution.empty() && !isJobs)
        throw HostError(kUsage, fmt::format("the job has {} dpi and is not printed at {}: make it "
                                            "anew with `driverhost make-job --resolution {}`",
                                            DotsText(job.XResolution, job.YResolution),
                                            DotsText(x, y), DotsText(x, y)));
    return chosen;
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

ReadyJob Prepare(const std::string& job, const RunOptions& options, Drivers& drivers) {
    const fs::path path = fs::absolute(job).lexically_normal();
    if (path.string().size() >= sizeof JobStatusRecord::JobFilePath)
        throw HostError(kUsage, fmt::format("a job's path has at most {} bytes",
                                            sizeof JobStatusRecord::JobFilePath - 1));
    const JobSettings settings = ReadJob(path);
    if (options.OneFolder && !settings.Tiles.IsWhole())
        throw HostError(kUsage, "a job in tiles needs a folder for each of them");
    const std::vector<ContainerPage> pages = ReadJobPages(path);
    const std::string sourceName = SourceNameOf(options, settings);
    RequireModel(settings.Model);
    DriverInterface& driver = drivers.For(settings.Model);
    const Capabilities capabilities(driver, settings.Model);
    return {.Path = path,
            .Header = ReadJobHeader(path),
            .Settings = settings,
            .Pages = pages,
            .SourceName = sourceName,
            .Driver = driver,
            .Chosen = ChooseFor(capabilities, options, settings),
            .Copies = options.Copies,
            .Thumbnail = ThumbnailOf(options),
            .OneFolder = options.OneFolder,
            .MayReplace = {.Complete = options.Replace, .Unknown = options.Force},
            .IsQuiet = options.Json};
}

JobReport TryJob(const std::string& name, const RunOptions& options, Drivers& drivers,
                 const fs::path& folder) {
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
        RunJob(job, folder, *options.Words, report);
    } catch (const HostError& error) {
        report.Fail(error.Status(), error.what());
        report.Words = options.Words->Take();
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
            Complain("{}: {}", earlier.Job, earlier.Message);
            break;
        }
    }
}

}  // namespace

int RunJobs(const RunOptions& options) {
    if (options.Jobs.size() > 1 && !options.Name.empty())
        throw HostError(kUsage, "--name is for one job, not for several");
    const OutputFolder folder(options.OutputFolder);
    const OwnFolders own(folder.Path());
    Drivers drivers;
    std::vector<JobReport> reports;
    const bool several = options.Jobs.size() > 1;
    for (const std::string& job : options.Jobs) {
        if (several && !options.Json) Say("{}\n", job);
        reports.push_back(TryJob(job, options, drivers, folder.Path()));
        if (!options.Json) PrintReport(reports.back(), folder.Path(), several);
        NoteReplacedFiles(reports);
    }
    int status = kSuccess;
    for (const JobReport& report : reports)
        if (status == kSuccess) status = report.Status;
    if (options.Json) PrintReportsAsJson(reports, folder.Path(), status);
    return status;
}

void AddRunCommand(CommandTree& tree, DriverWords& words) {
    auto [command, options] =
        tree.Add("run", "Run jobs through the driver, which writes their channel files", RunJobs);
    options.Words = &words;
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
    command.add_flag("--replace", options.Replace,
                     "Replace complete jobs of which a file stands where the job writes one: all "
                     "their files are removed first");
    command.add_flag("--force", options.Force,
                     "Replace files that are no job's, as far as its record says");
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
        "3 when it left folders that are incomplete, 1 or 2 when it left nothing.\n"
        "Where a model has no folder for each job, the files of an earlier job that did not come\n"
        "to its end are replaced, those of a complete one only with --replace.",
        {"driverhost run poster.job --out printed",
         "driverhost run glass.job --out printed --name window7 --copies 2 --thumbnail glass.bmp",
         "driverhost run poster.job glass.job --out printed --json",
         "driverhost run glass.job --out printed --replace"});
}
