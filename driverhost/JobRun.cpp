#include "driverhost/JobRun.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <numeric>

#include "driverhost/HostError.h"
#include "platform/Program.h"

namespace {

/// The port kind that takes files.
constexpr int32_t kFilePort = 256;

/// This host takes files only: the driver has nothing to stream here.
class NoStream final : public HostOutput {
  public:
    virtual ~NoStream() = default;  // stands behind the two operations in the table
    int32_t Reserved() override { return 0; }
    int32_t Write(const void*, int32_t, int64_t) override { return 0; }
};

NoStream noStream;

}  // namespace

JobRun::JobRun(DriverInterface& driver, const std::vector<ContainerPage>& pages,
               int32_t channelCount, const std::filesystem::path& folder, const Listing& before)
    : driver_(driver),
      pages_(pages),
      channelCount_(channelCount),
      folder_(folder),
      before_(before) {
    status_.JobState = kFilePort;
    status_.Copies = 1;
    status_.RecordVersion = JobStatusRecord::kTileRecordVersion;
    status_.TileCount = 1;
}

void JobRun::UseFolders(bool perPage) {
    if (!perPage || pages_.size() < 2) return;
    // Pages of a job go through the same door as the tiles of a large picture.
    tilePages_.resize(pages_.size());
    std::iota(tilePages_.begin(), tilePages_.end(), 1);
    tileColumns_.assign(pages_.size(), 0);
    tileRows_.assign(pages_.size(), 0);
    PointToTiles();
}

void JobRun::UseTiles(const TileGrid& grid) {
    const int64_t count = grid.Columns < 1 || grid.Rows < 1 ? 0 : grid.Count();
    if (count == 0 || static_cast<int64_t>(pages_.size()) % count != 0)
        throw HostError(kFailed, fmt::format("the job's {} pages are no whole number of {} x {} "
                                             "tiles",
                                             pages_.size(), grid.Columns, grid.Rows));
    tilePages_.clear();
    tileColumns_.clear();
    tileRows_.clear();
    for (int64_t i = 0; i < static_cast<int64_t>(pages_.size()); ++i) {
        tilePages_.push_back(static_cast<int32_t>(i / count) + 1);
        tileRows_.push_back(static_cast<int32_t>(i % count / grid.Columns) + 1);
        tileColumns_.push_back(static_cast<int32_t>(i % grid.Columns) + 1);
    }
    PointToTiles();
}

void JobRun::PointToTiles() {
    status_.TileCount = static_cast<int32_t>(pages_.size());
    status_.TilePageNumbers = tilePages_.data();
    status_.TileColumnNumbers = tileColumns_.data();
    status_.TileRowNumbers = tileRows_.data();
}

void JobRun::SetThumbnail(const std::string& path) {
    std::memcpy(status_.ThumbnailPath, path.data(), std::min(path.size(), kMostThumbnailBytes));
}

void JobRun::Open(const std::filesystem::path& job, const PrintChoice& choice,
                  const std::string& sourceName) {
    const std::string path = job.string();
    std::memcpy(status_.JobFilePath, path.data(), path.size());
    status_.MediaIndex = choice.Media;
    status_.PrintModeIndex = choice.PrintMode;
    status_.ResolutionIndex = choice.Resolution;
    if (driver_.OpenJob(&status_, &noStream) == 0)
        throw HostError(kFailed, fmt::format("the driver cannot open the job {}", path));
    if (driver_.OpenPort(folder_.string().c_str(), sourceName.c_str()) == 0 ||
        status_.JobState == JobStatusRecord::kJobEnded)
        throw HostError(kFailed, fmt::format("the driver cannot write to {}", folder_.string()));
}

JobRun::Ending JobRun::ToEnd() {
    Progress progress(static_cast<int32_t>(pages_.size()), quiet_);
    auto pageStart = std::chrono::steady_clock::now();
    while (status_.JobState != JobStatusRecord::kJobEnded) {
        if (InterruptNoted()) {
            driver_.AbortJob();
            if (phase_ != Phase::kPageStart) CheckPageFiles();
            return Ending::kInterrupted;
        }
        if (phase_ == Phase::kPageStart) pageStart = std::chrono::steady_clock::now();
        status_.StatusKind = 0;
        status_.StatusText[0] = '\0';
        if (driver_.ProcessJobStep() == 0) {
            failure_ = FailureText();
            driver_.AbortJob();
            if (phase_ != Phase::kPageStart) CheckPageFiles();
            return Ending::kFailed;
        }
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - pageStart;
        if (status_.JobState != JobStatusRecord::kJobEnded) NoteStep(progress, elapsed.count());
    }
    return Ending::kDone;
}

void JobRun::NoteStep(Progress& progress, double seconds) {
    switch (phase_) {
        case Phase::kPageStart:
            phase_ = Phase::kBands;
            break;
        case Phase::kBands:
            // A slice that ends before the page does reports its progress; the last one does not.
            if (status_.StatusKind == 0)
                phase_ = Phase::kPageEnd;
            else
                progress.Show(page_, status_.StatusKind, status_.StatusText);
            break;
        case Phase::kPageEnd:
            CheckPageFiles();
            progress.PageDone(page_, seconds);
            ++page_;
            phase_ = Phase::kPageStart;
            break;
    }
}

void JobRun::CheckPageFiles() {
    Listing files = ChangedFiles(before_, ListFiles(folder_));
    if (status_.TileCount > 1) files = FilesOfTile(files, page_ + 1);
    const auto page = static_cast<std::size_t>(page_);
    if (page >= pages_.size()) return;
    faults_.resize(page + 1);
    faults_[page] =
        CheckPage(folder_, files,
                  {pages_[page].WidthPixels, pages_[page].Rows, pages_[page].Bits, channelCount_});
    pageFiles_.resize(page + 1);
    for (const auto& [file, state] : files)
        pageFiles_[page].push_back(file);
}

std::string JobRun::FailureText() const {
    const std::string text(status_.StatusText, strnlen(status_.StatusText, 256));
    const int32_t page = page_ + 1;
    if (status_.StatusKind != 0 && text.find('%') == std::string::npos && !text.empty())
        return fmt::format("page {}: {}", page, text);
    if (phase_ == Phase::kPageStart)
        return fmt::format(
            "the driver cannot begin page {}: its data is missing or damaged, or "
            "its folder cannot be made or is there already",
            page);
    return fmt::format("the driver cannot write page {}: its data is damaged, or the disk is full",
                       page);
}
