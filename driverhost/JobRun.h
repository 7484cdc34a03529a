#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "driverhost/Capabilities.h"
#include "driverhost/Container.h"
#include "driverhost/OutputFiles.h"
#include "driverhost/Progress.h"
#include "driverhost/TileGrid.h"

/// One job on its way through the driver, and what its pages left on disk.
class JobRun {
  public:
    enum class Ending { kDone, kFailed, kInterrupted };

    /// Borrows everything. `before` is the output folder as it was.
    JobRun(DriverInterface& driver, const std::vector<ContainerPage>& pages, int32_t channelCount,
           const std::filesystem::path& folder, const Listing& before);

    /// Whether each page of several gets a folder of its own. File names carry no page number, so
    /// in one folder each page replaces the files of the one before.
    void UseFolders(bool perPage);

    void SetCopies(int32_t copies) { status_.Copies = copies; }
    /// A picture of the job, which the driver copies beside its files; a path of at most
    /// kMostThumbnailBytes. Empty: none.
    void SetThumbnail(const std::string& path);
    static constexpr std::size_t kMostThumbnailBytes = sizeof JobStatusRecord::ThumbnailPath - 1;
    /// Shows no progress.
    void BeQuiet() { quiet_ = true; }

    /// Takes the job's pages as the tiles of a document's pages, each in a folder of its own: the
    /// status record names each tile's page, column and row, from 1. Throws HostError when the
    /// pages are no whole number of grids.
    void UseTiles(const TileGrid& grid);

    /// Opens the job and its port. Throws HostError when the driver refuses either.
    void Open(const std::filesystem::path& job, const PrintChoice& choice,
              const std::string& sourceName);
    /// Runs step after step. An interrupt aborts the job.
    Ending ToEnd();

    /// Why the job failed.
    const std::string& Failure() const { return failure_; }
    /// One entry per page that was begun.
    const std::vector<PageFaults>& Faults() const { return faults_; }
    /// The files of each page that was begun.
    const std::vector<std::vector<std::string>>& PageFiles() const { return pageFiles_; }

  private:
    /// What the next step does, as the driver's steps follow each other.
    enum class Phase { kPageStart, kBands, kPageEnd };

    void PointToTiles();
    void NoteStep(Progress& progress, double seconds);
    void CheckPageFiles();
    std::string FailureText() const;

    DriverInterface& driver_;
    const std::vector<ContainerPage>& pages_;
    int32_t channelCount_;
    const std::filesystem::path& folder_;
    const Listing& before_;
    JobStatusRecord status_ = {};
    std::vector<int32_t> tilePages_;
    std::vector<int32_t> tileColumns_;  ///< zeros: a page of its own stands in no grid
    std::vector<int32_t> tileRows_;
    Phase phase_ = Phase::kPageStart;
    int32_t page_ = 0;
    bool quiet_ = false;
    std::string failure_;
    std::vector<PageFaults> faults_;
    std::vector<std::vector<std::string>> pageFiles_;
};
