#include "driverhost/RunJob.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <set>
#include <system_error>

#include "driverhost/HostError.h"
#include "driverhost/JobOptions.h"
#include "driverhost/JobRun.h"
#include "driverhost/PrintRecord.h"
#include "driverhost/RunNeeds.h"

namespace fs = std::filesystem;

namespace {

JobTiles TilesOf(const ReadyJob& job) {
    if (!job.Settings.Tiles.IsWhole())
        return JobTiles::OfGrid(job.Pages.size(), job.Settings.Tiles);
    return job.OneFolder ? JobTiles() : JobTiles::OfPages(job.Pages.size());
}

/// The name of the folder that the driver made for the job; "" for a model without.
std::string JobFolderOf(const PrintPlan& plan, const std::set<std::string>& before,
                        const std::set<std::string>& after) {
    if (!plan.MakesFolder) return "";
    for (const std::string& folder : after)
        if (!before.contains(folder)) return folder;
    throw HostError(kFailed, fmt::format("the driver made no folder for the job {}", plan.JobName));
}

std::string Below(const std::string& folder, const std::string& file) {
    return (fs::path(folder) / file).string();
}

/// What later commands know of the job, from before its first page to its end.
class Recorder {
  public:
    Recorder(const ReadyJob& job, const PrintPlan& plan, const fs::path& folder,
             std::string jobFolder)
        : plan_(plan), folder_(folder), jobFolder_(std::move(jobFolder)) {
        record_.SourceName = job.SourceName;
        record_.Model = job.Settings.Model;
        record_.Choice = job.Chosen.Choice;
        record_.WhiteType = plan.WhiteType;
        record_.XResolution = job.Settings.XResolution;
        record_.YResolution = job.Settings.YResolution;
        const fs::path name = jobFolder_.empty() ? plan.JobName : jobFolder_;
        path_ = NewPrintRecordPath(folder, name.filename().string());
    }

    /// Before the first page: everything that is to come.
    void Begin() {
        for (const PlannedPage& page : plan_.Pages)
            record_.Pages.push_back(PageOf(page, plan_.PathsOf(page)));
        record_.Files = InJobFolder(plan_.OwnPaths());
        WritePrintRecord(path_, record_);
    }

    /// What the job left.
    void End(const Listing& files, std::size_t pagesBegun, bool isComplete) {
        record_.Complete = isComplete;
        record_.Pages.clear();
        record_.Files.clear();
        std::set<std::string> ofPages;
        for (std::size_t i = 0; i < std::min(pagesBegun, plan_.Pages.size()); ++i) {
            const PlannedPage& page = plan_.Pages[i];
            const std::string prefix = page.Folder.empty() ? "" : Below(jobFolder_, page.Folder);
            PrintRecord::Page printed = PageOf(page, {});
            for (const auto& [file, state] : files)
                if (prefix.empty() || file.starts_with(prefix + '/')) printed.Files.push_back(file);
            ofPages.insert(printed.Files.begin(), printed.Files.end());
            record_.Pages.push_back(std::move(printed));
        }
        for (const auto& [file, state] : files)
            if (!ofPages.contains(file)) record_.Files.push_back(file);
        if (!files.empty()) return WritePrintRecord(path_, record_);
        std::error_code error;  // it left nothing to say anything of
        fs::remove(path_, error);
    }

    /// Its own name in a listing of the output folder.
    std::string Name() const { return path_.filename().string(); }
    const std::vector<PrintRecord::Page>& Pages() const { return record_.Pages; }

  private:
    std::vector<std::string> InJobFolder(std::vector<std::string> paths) const {
        for (std::string& path : paths)
            path = Below(jobFolder_, path);
        return paths;
    }
    PrintRecord::Page PageOf(const PlannedPage& page, std::vector<std::string> paths) const {
        return {page.Shape.WidthPixels, page.Shape.Rows, page.Shape.Bits,
                InJobFolder(std::move(paths))};
    }

    const PrintPlan& plan_;
    const fs::path& folder_;
    std::string jobFolder_;
    fs::path path_;
    PrintRecord record_;
};

/// Files that a job is printed from.
std::vector<fs::path> SourcesOf(const ReadyJob& job) {
    fs::path olderContainer = job.Path;
    olderContainer += ".tif";
    std::vector<fs::path> sources = {job.Path, ContainerOf(job.Path), SettingsOf(job.Path),
                                     olderContainer};
    if (!job.Thumbnail.empty()) sources.emplace_back(job.Thumbnail);
    return sources;
}

/// What the driver said of a failure: its status text in full, or the last of its errors. The
/// report says it once, as the reason.
std::string TakeReason(const std::string& told, std::vector<DriverWord>& words) {
    const auto isReason = [&](const DriverWord& word) {
        return !word.IsWarning && (told.empty() || word.Text.starts_with(told));
    };
    const auto found = std::find_if(words.rbegin(), words.rend(), isReason);
    if (found == words.rend()) return told;
    std::string reason = found->Text;
    words.erase(std::next(found).base());
    return reason;
}

/// One job between its first step and its last word.
class Running {
  public:
    Running(const ReadyJob& job, const PrintPlan& plan, const JobTiles& tiles,
            const fs::path& folder, DriverWords& words)
        : job_(job),
          plan_(plan),
          folder_(folder),
          words_(words),
          before_(ListFiles(folder)),
          foldersBefore_(ListFolders(folder)),
          run_(job.Driver, plan, tiles, folder) {
        run_.SetCopies(job.Copies);
        run_.SetThumbnail(job.Thumbnail);
        if (job.IsQuiet) run_.BeQuiet();
    }

    void Run(JobReport& report) {
        const auto start = std::chrono::steady_clock::now();
        std::optional<HostError> fault;
        try {
            ToEnd();
        } catch (const HostError& error) {
            fault = error;
        }
        report.Seconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        Look(report);
        if (fault)
            fault = HostError(fault->Status(), ReasonOf(*fault, report));
        else if (report.AnyFault())
            fault = HostError(kIncomplete, "the job is incomplete");
        report.Status = kSuccess;
        report.State = JobState::kComplete;
        if (fault) report.Fail(fault->Status(), fault->what());
        Record(report);
    }

  private:
    void ToEnd() {
        run_.Open(job_.Path, job_.Chosen.Choice, job_.SourceName);
        try {
            jobFolder_ = JobFolderOf(plan_, foldersBefore_, ListFolders(folder_));
            recorder_.emplace(job_, plan_, folder_, jobFolder_);
            recorder_->Begin();
        } catch (const HostError&) {
            run_.Abort();
            throw;
        }
        const JobRun::Ending ending = run_.ToEnd(jobFolder_);
        if (ending == JobRun::Ending::kInterrupted)
            throw HostError(kAborted, "interrupted; the job is aborted");
        isFailed_ = ending == JobRun::Ending::kFailed;
        if (isFailed_) throw HostError(kFailed, run_.LikelyReason());
    }

    void Look(JobReport& report) {
        report.Words = words_.Take();
        RemoveEmptyPageFolders();
        Listing after = ListFiles(folder_);
        if (recorder_) after.erase(recorder_->Name());
        report.Files = ChangedFiles(before_, after);
        report.Folders = FoldersOfJob(foldersBefore_, ListFolders(folder_), report.Files);
        report.Faults = run_.Faults();
        if (run_.Faults().size() < plan_.Pages.size()) return;
        for (const SideFile& side : plan_.Sides)
            if (std::string fault = FaultOf(folder_, jobFolder_, side); !fault.empty())
                report.SideFaults.push_back(std::move(fault));
    }

    /// A page that failed before its first file leaves a folder in which nothing lies, and which
    /// would stand in the way of the next run.
    void RemoveEmptyPageFolders() const {
        for (const PlannedPage& page : plan_.Pages) {
            const std::string place = Below(jobFolder_, page.Folder);
            std::error_code error;
            if (!page.Folder.empty() && !foldersBefore_.contains(place) &&
                fs::is_directory(folder_ / place, error))
                fs::remove(folder_ / place, error);
        }
    }

    std::string ReasonOf(const HostError& fault, JobReport& report) const {
        if (fault.Status() == kAborted) return fault.what();
        const std::string reason = TakeReason(run_.ToldReason(), report.Words);
        if (!isFailed_) return reason.empty() ? fault.what() : reason;
        return fmt::format("page {}: {}", run_.FailedPage(),
                           reason.empty() ? fault.what() : reason);
    }

    void Record(JobReport& report) {
        if (!recorder_) return;
        try {
            recorder_->End(report.Files, report.Faults.size(), report.State == JobState::kComplete);
        } catch (const HostError& error) {
            if (report.State == JobState::kComplete) report.Fail(error.Status(), error.what());
        }
        report.Pages = recorder_->Pages();
    }

    const ReadyJob& job_;
    const PrintPlan& plan_;
    const fs::path& folder_;
    DriverWords& words_;
    Listing before_;
    std::set<std::string> foldersBefore_;
    JobRun run_;
    std::string jobFolder_;
    std::optional<Recorder> recorder_;
    bool isFailed_ = false;
};

}  // namespace

void RunJob(const ReadyJob& job, const fs::path& folder, DriverWords& words, JobReport& report) {
    ModelRules rules(job.Settings.Model, job.Chosen.Choice);
    const JobOptions options(job.Path, job.Header.Options, rules);
    const JobTiles tiles = TilesOf(job);
    const PrintPlan plan = PlanPrint({.Header = job.Header,
                                      .Pages = job.Pages,
                                      .Colorants = job.Chosen.Mode.Colorants,
                                      .SourceName = job.SourceName,
                                      .Tiles = tiles,
                                      .Copies = job.Copies,
                                      .Thumbnail = job.Thumbnail},
                                     rules);
    RequireNames(folder, plan);
    RequireJobFolder(folder, plan);
    RequireTempFolder(plan);
    const EarlierOutput earlier(folder, plan, job.MayReplace, SourcesOf(job));
    RequireDiskSpace(folder, plan, earlier.Bytes());
    earlier.Remove();
    Running(job, plan, tiles, folder, words).Run(report);
}
