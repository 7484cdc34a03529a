#include "driverhost/JobRun.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstring>

#include "driverhost/HostError.h"
#include "host/Text.h"
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

JobRun::JobRun(DriverInterface& driver, const PrintPlan& plan, const JobTiles& tiles,
               const std::filesystem::path& folder)
    : driver_(driver), plan_(plan), folder_(folder) {
    status_.JobState = kFilePort;
    status_.Copies = 1;
    tiles.PointTo(status_);
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
    const auto refuse = [this](const std::string& what) {
        toldReason_ = StatusReason();
        throw HostError(kFailed, toldReason_.empty() ? what : toldReason_);
    };
    if (driver_.OpenJob(&status_, &noStream) == 0)
        refuse(fmt::format("the driver cannot open the job {}", path));
    if (driver_.OpenPort(folder_.string().c_str(), sourceName.c_str()) == 0 ||
        status_.JobState == JobStatusRecord::kJobEnded)
        refuse(fmt::format("the driver cannot write to {}", folder_.string()));
}

JobRun::Ending JobRun::ToEnd(const std::string& jobFolder) {
    jobFolder_ = jobFolder;
    Progress progress(static_cast<int32_t>(plan_.Pages.size()), quiet_);
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
            toldReason_ = StatusReason();
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
    const auto page = static_cast<std::size_t>(page_);
    if (page >= plan_.Pages.size()) return;
    faults_.resize(page + 1);
    faults_[page] = CheckPage(folder_, jobFolder_, plan_.Pages[page]);
}

/// A line of progress is no reason.
std::string JobRun::StatusReason() const {
    const std::string text(FieldText(status_.StatusText, sizeof status_.StatusText));
    return status_.StatusKind != 0 && !text.ends_with('%') ? text : "";
}

const char* JobRun::LikelyReason() const {
    return phase_ == Phase::kPageStart
               ? "it cannot be begun: its data is missing or damaged, or its folder cannot be made"
               : "it cannot be written: its data is damaged, or the disk is full";
}
