#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "driverhost/Capabilities.h"
#include "driverhost/PageCheck.h"
#include "driverhost/PrintPlan.h"
#include "driverhost/Progress.h"

/// One job on its way through the driver, and what its pages left on disk.
class JobRun {
  public:
    enum class Ending { kDone, kFailed, kInterrupted };

    /// Borrows everything. `folder` is the output folder.
    JobRun(DriverInterface& driver, const PrintPlan& plan, const JobTiles& tiles,
           const std::filesystem::path& folder);

    void SetCopies(int32_t copies) { status_.Copies = copies; }
    /// A picture of the job, which the driver copies beside its files; a path of at most
    /// kMostThumbnailBytes. Empty: none.
    void SetThumbnail(const std::string& path);
    static constexpr std::size_t kMostThumbnailBytes = sizeof JobStatusRecord::ThumbnailPath - 1;
    /// Shows no progress.
    void BeQuiet() { quiet_ = true; }

    /// Opens the job and its port. Throws HostError when the driver refuses either.
    void Open(const std::filesystem::path& job, const PrintChoice& choice,
              const std::string& sourceName);
    /// Runs step after step. `jobFolder` is the one that the driver made, relative to the output
    /// folder. An interrupt aborts the job.
    Ending ToEnd(const std::string& jobFolder);
    void Abort() { driver_.AbortJob(); }

    /// The page that failed, from 1, and why as far as the driver told with its status text;
    /// empty when it told nothing.
    int32_t FailedPage() const { return page_ + 1; }
    const std::string& ToldReason() const { return toldReason_; }
    /// What is likely then.
    const char* LikelyReason() const;
    /// One entry per page that was begun.
    const std::vector<PageFaults>& Faults() const { return faults_; }

  private:
    /// What the next step does, as the driver's steps follow each other.
    enum class Phase { kPageStart, kBands, kPageEnd };

    void NoteStep(Progress& progress, double seconds);
    void CheckPageFiles();
    std::string StatusReason() const;

    DriverInterface& driver_;
    const PrintPlan& plan_;
    const std::filesystem::path& folder_;
    std::string jobFolder_;
    JobStatusRecord status_ = {};
    Phase phase_ = Phase::kPageStart;
    int32_t page_ = 0;
    bool quiet_ = false;
    std::string toldReason_;
    std::vector<PageFaults> faults_;
};
