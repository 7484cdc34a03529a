#include "PrinterDriver/Common/Xsrc/APageBaseRTL.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>

#include "PrinterDriver/Common/Xsrc/JobFault.h"
#include "host/AXMLTree.h"
#include "host/LogText.h"
#include "host/Text.h"
#include "platform/win32.h"

namespace {

constexpr DWORD kTimeSliceMs = 200;
constexpr int32_t kPageStatus = 1;
constexpr int64_t kRowBufferSlackBytes = 2048;
constexpr const char* kSource = "PrinterDriver\\Common\\Xsrc\\APageBaseRTL";

/// Rounds half up; what is no resolution (not a number, below 0, beyond 32 bits) ends at the
/// nearest number that fits, 0 for none.
int32_t RoundedResolution(double resolution) {
    if (!(resolution > 0)) return 0;
    return static_cast<int32_t>(
        std::min(std::floor(resolution + 0.5), double{std::numeric_limits<int32_t>::max()}));
}

/// One axis of a page against the resolution that the device asks for at least.
void ApplyTarget(double jobResolution, int32_t target, int32_t& repeat, int32_t& targetResolution,
                 double& effectiveResolution) {
    const int32_t rounded = RoundedResolution(jobResolution);
    if (rounded <= 0 || rounded >= target) return;
    repeat = target / rounded;
    targetResolution = target;
    effectiveResolution = repeat * jobResolution;
}

}  // namespace

APageBaseRTL::APageBaseRTL() = default;

APageBaseRTL::~APageBaseRTL() = default;

int32_t APageBaseRTL::OpenJob(JobContext* job, int32_t /*reserved*/, HostOutput* output,
                              DriverOptionBlock* /*options*/) {
    job_ = job;
    output_ = output;
    OpenContainer();
    job_->PageCount = container_->PageCount;
    job_->Reserved = 0;
    FillPageInfo();
    StartTracking();
    return 1;
}

void APageBaseRTL::OpenContainer() {
    const AFilePath jobPath(FieldText(job_->Status->JobFilePath, sizeof job_->Status->JobFilePath));
    AFilePath path = ZEJob::GetFileName(kPreferredContainer, jobPath);
    int reason = 0;
    Existence existence = path.LookFor(&reason);
    if (existence == Existence::kMissing) {
        path = ZEJob::GetFileName(kFallbackContainer, jobPath);
        existence = path.LookFor(&reason);
    }
    if (existence != Existence::kExists) {
        report_.Fail({kSource, __LINE__}, "there is no job container", path.shownName(), reason);
        Raise(kNoContainer);
    }
    pageImage_ = nullptr;
    containerPath_ = path.fullPath();
    container_ = std::make_unique<ZEJob>(0);
    container_->Load(path);  // a container that is none shows with its first page
    container_->OpenData(1);
}

int32_t APageBaseRTL::PageSize(int64_t value) {
    if (value >= 0 && value <= std::numeric_limits<int32_t>::max())
        return static_cast<int32_t>(value);
    report_.Fail({kSource, __LINE__}, "a page is too large for its buffers", containerPath_);
    Raise(kOutputFailed);
}

void APageBaseRTL::FillPageInfo() {
    pageInfo_ = std::make_unique<PageInfo>();
    pageInfo_->ColorModeIndex = job_->ColorModeIndex;
    pageInfo_->XResolution = job_->XResolution;
    pageInfo_->YResolution = job_->YResolution;
    pageInfo_->PortKind = job_->Status->JobState;
    CopyText(pageInfo_->PrinterDisplayName, sizeof pageInfo_->PrinterDisplayName,
             job_->PrinterName);
    CopyText(pageInfo_->OriginalFileName, sizeof pageInfo_->OriginalFileName,
             job_->OriginalFileName);
    CopyText(pageInfo_->ThumbnailPath, sizeof pageInfo_->ThumbnailPath,
             FieldText(job_->Status->ThumbnailPath, sizeof job_->Status->ThumbnailPath));
}

void APageBaseRTL::StartTracking() {
    track_ = std::make_unique<JobTrackRecord>();
    track_->PageCount = job_->PageCount;
    track_->TargetXResolution = RoundedResolution(job_->XResolution);
    track_->TargetYResolution = RoundedResolution(job_->YResolution);
    track_->EffectiveXResolution = job_->XResolution;
    track_->EffectiveYResolution = job_->YResolution;

    ColorantQuery query;
    GetColorantList(job_->ColorModeIndex, &query.list);
    track_->ColorantCount = query.list.Count;
    InitChannelOrder();
    for (const uint32_t colorant : track_->ChannelOrder) {
        const ColorantInfo& info = query.items[colorant];
        track_->Colorants.push_back(std::make_unique<AColorant>(
            info.DisplayName, info.InternalName, static_cast<uint8_t>(info.ColorDepth)));
    }
}

void APageBaseRTL::InitChannelOrder() {
    track_->ChannelOrder.clear();
    for (int32_t i = 0; i < track_->ColorantCount; ++i) {
        track_->ChannelOrder.push_back(static_cast<uint32_t>(i));
    }
}

int32_t APageBaseRTL::AbortJob() {
    ReleaseImages();
    pageInfo_.reset();
    track_.reset();
    output_ = nullptr;
    job_ = nullptr;
    return 1;
}

/// Closes the container, which a host may move or delete from here on, and frees the row buffers.
void APageBaseRTL::ReleaseImages() {
    pageImage_ = nullptr;
    container_.reset();
    rowBuffer_.reset();
    repeatedRowBuffer_.reset();
}

int32_t APageBaseRTL::ReservedQuery5() {
    return 0;
}

int32_t APageBaseRTL::OpenPort(const char* folder, const char* /*sourceName*/) {
    if (pageInfo_ != nullptr && folder != nullptr) pageInfo_->OutputFolderText = folder;
    return 1;
}

int32_t APageBaseRTL::ProcessJobStep() {
    if (track_ == nullptr) return 0;
    if (track_->PageFinished == 1) return StartNextPage();
    if (track_->PageOpen == 0) return ProcessBandStep();
    EndPage();
    pageImage_ = nullptr;
    container_->Flush();
    track_->PageFinished = 1;
    track_->PageOpen = 0;
    rowBuffer_.reset();
    return 1;
}

int32_t APageBaseRTL::StartNextPage() {
    const int32_t page = NextPage(track_->PageIndex);
    if (page == -1) {
        EndJob();
        return 1;
    }
    track_->PageIndex = page;
    if (SetUpColorMode() == 0 || StartPage() == 0) return 0;
    track_->PageFinished = 0;
    track_->PageOpen = 0;
    track_->SourceRow = -1;
    track_->Separation = -1;
    return 1;
}

int32_t APageBaseRTL::StartPage() {
    return 1;
}

int32_t APageBaseRTL::EndPage() {
    return 1;
}

int32_t APageBaseRTL::EndJob() {
    ReleaseImages();
    job_->Status->JobState = JobStatusRecord::kJobEnded;
    return 1;
}

int32_t APageBaseRTL::NextPage(int32_t current) {
    // The first page is always asked for, so that a job without pages fails instead of ending
    // as if it had been printed.
    if (current < 0) return 0;
    return current + 1 < track_->PageCount ? current + 1 : -1;
}

int32_t APageBaseRTL::SetUpColorMode() {
    pageImage_ = container_->GetImage(static_cast<uint32_t>(track_->PageIndex));
    if (pageImage_ == nullptr) {
        LogText what;
        what << "page " << track_->PageIndex + 1 << " has no image";
        FailRead(what, container_->Failure());
        return 0;
    }
    track_->Separations.clear();
    pageImage_->GetSeparations(track_->Separations);
    track_->SeparationCount = PageSize(static_cast<int64_t>(track_->Separations.size()));
    track_->SourceWidth = pageImage_->Width();
    track_->SourceRows = pageImage_->Rows();
    MapSeparations();

    track_->BytesPerSourceRow =
        PageSize((int64_t{track_->MaximumBits} * track_->SourceWidth + 7) / 8);
    ApplyDeviceResolution();
    track_->OutputWidth = PageSize(int64_t{track_->XRepeat} * track_->SourceWidth);
    track_->OutputRows = PageSize(int64_t{track_->YRepeat} * track_->SourceRows);
    track_->BytesPerOutputRow =
        PageSize((int64_t{track_->MaximumBits} * track_->OutputWidth + 7) / 8);
    AllocateRowBuffers();
    InitBandOrder();
    return 1;
}

void APageBaseRTL::MapSeparations() {
    JobTrackRecord& track = *track_;
    track.SeparationToColorant.assign(track.Separations.size(), kUnmatched);
    track.ColorantToSeparation.assign(track.Colorants.size(), kUnmatched);
    track.SeparationBits.clear();
    track.MaximumBits = 0;
    track.CustomColorModeDamaged = 0;
    const bool custom = HasCustomColorMode();
    for (uint32_t i = 0; i < track.Separations.size(); ++i) {
        const AColorant& separation = *track.Separations[i];
        track.SeparationBits.push_back(separation.Depth);
        track.MaximumBits = std::max<int32_t>(track.MaximumBits, separation.Depth);
        std::size_t colorant = i;
        if (!custom) {
            const auto match = std::find_if(
                track.Colorants.begin(), track.Colorants.end(), [&](const auto& candidate) {
                    return EqualsIgnoringCase(candidate->InternalName, separation.InternalName);
                });
            colorant = static_cast<std::size_t>(match - track.Colorants.begin());
        }
        if (colorant >= track.Colorants.size()) continue;  // it has no place on the page
        track.SeparationToColorant[i] = static_cast<uint32_t>(colorant);
        track.ColorantToSeparation[colorant] = i;
    }
    track.PageChannelOrder.clear();
    for (const uint32_t separation : track.ColorantToSeparation) {
        if (separation != kUnmatched) track.PageChannelOrder.push_back(separation);
    }
}

/// Whether the host sends a colour mode of its own with the job: separation i is colorant i.
bool APageBaseRTL::HasCustomColorMode() {
    const char* text = job_->Status->CustomColorModeXml;
    if (text == nullptr) return false;
    const std::string_view xml = text;
    if (xml.substr(0, 4) != "<?xm") return false;
    AXMLTree tree("RootElement");
    AXMLTreeNode root;
    AXMLTreeNode mode;
    if (tree.loadXML(xml, 1) == 0 || tree.getRootNode(root) == 0) {
        track_->CustomColorModeDamaged = 1;
        return false;
    }
    return tree.getChild("CustomColorMode", root, mode) != 0;
}

void APageBaseRTL::ApplyDeviceResolution() {
    int32_t targetX = 0;
    int32_t targetY = 0;
    GetDeviceResolution(&targetX, &targetY);
    ApplyTarget(job_->XResolution, targetX, track_->XRepeat, track_->TargetXResolution,
                track_->EffectiveXResolution);
    ApplyTarget(job_->YResolution, targetY, track_->YRepeat, track_->TargetYResolution,
                track_->EffectiveYResolution);
}

void APageBaseRTL::AllocateRowBuffers() {
    rowBufferBytes_ = PageSize(2 * int64_t{track_->BytesPerOutputRow} + kRowBufferSlackBytes);
    rowBuffer_.reset();
    repeatedRowBuffer_.reset();
    rowBuffer_ = std::make_unique<uint8_t[]>(static_cast<std::size_t>(rowBufferBytes_));
    if (track_->XRepeat != 1) {
        repeatedRowBuffer_ = std::make_unique<uint8_t[]>(static_cast<std::size_t>(rowBufferBytes_));
    }
}

void APageBaseRTL::InitBandOrder() {
    track_->FirstOutputRow = 0;
    track_->LastOutputRow = track_->OutputRows - 1;
    track_->Order = kPlaneOrder;
}

int32_t APageBaseRTL::SkipChannel(uint32_t /*colorant*/) {
    return 0;
}

/// Passes over the channels that are to be left out.
void APageBaseRTL::SkipToNextChannel() {
    const ADWordArray& order = track_->PageChannelOrder;
    auto position = static_cast<std::size_t>(track_->ChannelPosition);
    while (position < order.size() &&
           SkipChannel(track_->SeparationToColorant[order[position]]) != 0) {
        ++position;
    }
    track_->ChannelPosition = static_cast<int32_t>(position);
}

int32_t APageBaseRTL::NextBand(int32_t* separation, int32_t* row) {
    JobTrackRecord& track = *track_;
    const auto channelCount = static_cast<int32_t>(track.PageChannelOrder.size());
    if (track.Separation == -1) {
        track.ChannelPosition = 0;
        track.OutputRow = 0;
        SkipToNextChannel();
    } else if (track.Order == kPlaneOrder) {
        ++track.OutputRow;
        if (track.OutputRow >= track.OutputRows) {
            track.OutputRow = 0;
            ++track.ChannelPosition;
            SkipToNextChannel();
        }
    } else {
        ++track.ChannelPosition;
        SkipToNextChannel();
        if (track.ChannelPosition >= channelCount) {
            track.ChannelPosition = 0;
            SkipToNextChannel();
            ++track.OutputRow;
        }
    }
    const bool finished =
        track.ChannelPosition >= channelCount || track.OutputRow >= track.OutputRows;
    track.Separation =
        finished ? -1
                 : static_cast<int32_t>(
                       track.PageChannelOrder[static_cast<std::size_t>(track.ChannelPosition)]);
    *separation = track.Separation;
    *row = track.OutputRow;
    return 1;
}

int32_t APageBaseRTL::ProcessBandStep() {
    const DWORD start = GetTickCount();
    int32_t separation = -1;
    int32_t row = 0;
    for (NextBand(&separation, &row); separation != -1; NextBand(&separation, &row)) {
        const auto index = static_cast<uint32_t>(separation);
        if (row == track_->FirstOutputRow && BeginChannel(index, row) == 0) {
            Raise(kBeginChannelFailed);
        }
        if (OutputBand(index, row, ReadBand(index, row)) == 0) Raise(kOutputBandFailed);
        if (row == track_->LastOutputRow && EndChannel(index, row) == 0) {
            Raise(kEndChannelFailed);
        }
        if (GetTickCount() - start > kTimeSliceMs) {
            ReportProgress(static_cast<int32_t>(int64_t{row} * 100 / track_->OutputRows));
            return 1;
        }
    }
    track_->PageFinished = 0;
    track_->PageOpen = 1;
    return 1;
}

/// Reads the source row behind an output row and repeats its pixels where the page asks for it.
const uint8_t* APageBaseRTL::ReadBand(uint32_t separation, int32_t row) {
    track_->SourceRow = row / track_->YRepeat;
    const int32_t bits = track_->SeparationBits[separation];
    const int64_t rowBits = int64_t{track_->SourceWidth} * bits;
    const auto rowBytes = static_cast<int32_t>((rowBits + 7) / 8);
    if (track_->XRepeat == 1 && rowBytes == bandBytes_) {  // a copy would add nothing
        const uint8_t* const band = pageImage_->Row(separation, track_->SourceRow);
        if (band == nullptr) RaiseUnreadable(separation);
        return band;
    }
    if (pageImage_->ReadRow(separation, track_->SourceRow, 1, rowBuffer_.get(), 0) == 0)
        RaiseUnreadable(separation);
    // A deeper separation before this one may have left more bytes than this row fills.
    std::fill(rowBuffer_.get() + rowBytes, rowBuffer_.get() + track_->BytesPerSourceRow,
              uint8_t{0});
    if (track_->XRepeat == 1) return rowBuffer_.get();

    std::fill_n(repeatedRowBuffer_.get(), rowBufferBytes_, uint8_t{0});
    int64_t bitPosition = 0;
    RepackBits(bits, rowBits, rowBuffer_.get(), track_->XRepeat, &bitPosition,
               repeatedRowBuffer_.get());
    return repeatedRowBuffer_.get();
}

void APageBaseRTL::FailRead(LogText& what, const ContainerFailure& failure) {
    if (failure.text[0] != '\0') what << ", " << std::string_view(failure.text);
    report_.Fail({kSource, __LINE__}, what.View(), containerPath_, failure.systemError);
}

void APageBaseRTL::RaiseUnreadable(uint32_t separation) {
    LogText what;
    what << "row " << track_->SourceRow << " of separation "
         << track_->Separations[separation]->InternalName << " cannot be read";
    FailRead(what, pageImage_->Failure());
    Raise(kOutputFailed);
}

void APageBaseRTL::ReportProgress(int32_t percent) {
    if (track_ == nullptr || track_->Order != kPlaneOrder || track_->Separation < 0) {
        ABaseRTL::ReportProgress(percent);
        return;
    }
    const int32_t shown = std::clamp(percent, 0, 100);
    const int32_t overall =
        static_cast<int32_t>(int64_t{track_->ChannelPosition} * 100 / track_->SeparationCount +
                             shown / track_->SeparationCount);
    const AColorant& separation =
        *track_->Separations[static_cast<std::size_t>(track_->Separation)];
    SetStatusText(kPageStatus,
                  fmt::format("{}  {:3d}% {:3d}%", separation.DisplayName, shown, overall).c_str());
}

int32_t APageBaseRTL::OutputBand(uint32_t /*separation*/, int32_t /*row*/,
                                 const uint8_t* /*data*/) {
    return 1;
}

int32_t APageBaseRTL::BeginChannel(uint32_t /*separation*/, int32_t /*row*/) {
    return 1;
}

int32_t APageBaseRTL::EndChannel(uint32_t /*separation*/, int32_t /*row*/) {
    return 1;
}
