#include "plugin/output/RTL.h"

#include <limits>

#include "PrinterDriver/Common/Xsrc/JobFault.h"
#include "description/DriverOptions.h"
#include "host/LogText.h"
#include "host/QLCopyFile.h"
#include "host/Text.h"
#include "platform/SystemError.h"
#include "platform/afx.h"
#include "plugin/output/DiskSpace.h"
#include "plugin/output/HeaderFile.h"
#include "plugin/output/JobTicket.h"
#include "plugin/output/LineSize.h"
#include "plugin/output/OutputNames.h"
#include "plugin/output/PageDoubts.h"
#include "ui/messages/ShowMessage.h"
#include "ui/messages/StringTable.h"

namespace {

/// The host's port kind for output into files.
constexpr int32_t kFilePort = 256;
constexpr int32_t kPageStatus = 1;
constexpr const char* kSource = "plugin\\output\\RTL";
/// Room for a name that the description answers.
constexpr std::size_t kNameBytes = 256;
constexpr int32_t kReadOptions = 1;

}  // namespace

RTL::RTL() = default;

RTL::~RTL() = default;

int32_t RTL::LoadDriverOptions(DriverOptionBlock* block, int32_t load) {
    if (block == nullptr) return 0;
    if (load == kReadOptions) return ReadDriverOptions(*block, model_.SupportWhiteType, id_);
    WriteDriverOptions(*block, model_.SupportWhiteType, id_);
    return 0;
}

/// The job's model and choices as print settings.
PrintSettings RTL::JobSettings() const {
    PrintSettings settings;
    CopyText(settings.ModelName, sizeof settings.ModelName, job_->PrinterName);
    settings.ColorModeIndex = job_->ColorModeIndex;
    settings.MediaIndex = job_->Status->MediaIndex;
    settings.PrintModeIndex = job_->Status->PrintModeIndex;
    settings.ResolutionIndex = job_->Status->ResolutionIndex;
    return settings;
}

int32_t RTL::OpenJob(JobContext* job, int32_t reserved, HostOutput* output,
                     DriverOptionBlock* options) {
    const AFX_MAINTAIN_STATE2 moduleState(AfxGetStaticModuleState());
    AbortJob();
    job_ = job;
    options_ = options;
    model_.SupportWhiteType = -1;  // a choice never carries over from an earlier job
    pageFolders_.clear();
    endHeaders_.clear();
    if (ReadModelOutputSettings(description_, JobSettings(), model_) == 0) {
        FailDescription();
        return 0;
    }
    NoteJobDoubts(report_, description_, model_, *job);
    APageBaseRTL::OpenJob(job, reserved, output, options);
    channelCount_ = track_->ColorantCount;
    return 1;
}

/// A message box has said what is wrong with the description, if it could be read at all; this says
/// where to look.
void RTL::FailDescription() {
    LogText what;
    what << "the description of \"" << std::string_view(job_->PrinterName) << "\" cannot be read";
    report_.Fail({kSource, __LINE__}, what.View(), description_.FailedFile().shownName(),
                 description_.FailedReason());
}

int32_t RTL::AbortJob() {
    white_.Discard();  // the temporary files first, whatever becomes of the rest
    channels_.Abandon();
    preview_.Discard();
    portIsOpen_ = false;
    options_ = nullptr;
    return APageBaseRTL::AbortJob();
}

int32_t RTL::EndJob() {
    APageBaseRTL::EndJob();
    channels_.Close();
    return 1;
}

int32_t RTL::OpenPort(const char* folder, const char* sourceName) {
    portIsOpen_ = false;
    if (pageInfo_ == nullptr || folder == nullptr || sourceName == nullptr) {
        report_.Fail({kSource, __LINE__}, "OpenPort lacks its folder or its source name");
        return 0;
    }
    APageBaseRTL::OpenPort(folder, sourceName);
    if (pageInfo_->PortKind != kFilePort) {
        ShowResMessage(kUnsupportedPortMessage, MB_OK, nullptr, nullptr);
        LogText what;
        what << "the host's port is of kind " << pageInfo_->PortKind << ", not a file port";
        report_.Fail({kSource, __LINE__}, what.View(), folder);
        return 0;
    }
    jobName_ = MakeJobName(sourceName);
    report_.NameJob(jobName_);
    ForgetSystemError();
    if (!folder_.SetUp(folder, jobName_, model_.CreateFolder != 0)) {
        const int reason = folder_.Path().isValid() ? LastSystemError() : 0;
        report_.Fail({kSource, __LINE__}, "the job's folder cannot be made",
                     folder_.Path().shownName(), reason);
        return 0;
    }
    CopyThumbnail();
    portIsOpen_ = true;
    // What a page under way opens from here on has the new name.
    if (track_->PageFinished == 0) channels_.UseNaming(Naming());
    return 1;
}

/// The host's picture of the job, where it gives one; the first page's preview takes its place.
void RTL::CopyThumbnail() {
    if (pageInfo_->ThumbnailPath[0] == '\0') return;
    const AFilePath thumbnail(pageInfo_->ThumbnailPath);
    const AFilePath copy = folder_.File(PreviewFileName(model_, jobName_));
    int reason = 0;
    const Existence existence = thumbnail.LookFor(&reason);
    if (existence == Existence::kMissing) return;
    if (existence == Existence::kExists) {
        if (NameOneFile(thumbnail, copy) || QLCopyFile(thumbnail, copy) != 0) return;
        reason = static_cast<int>(GetLastError());
    }
    report_.Warn({kSource, __LINE__}, "the thumbnail cannot be copied", copy.shownName(), reason);
}

void RTL::StartPreview() {
    std::vector<AString> separations;
    for (const AColorant* separation : track_->Separations)
        separations.push_back(separation->InternalName);
    preview_.StartPage(model_,
                       {.sourceWidth = track_->SourceWidth,
                        .sourceRows = track_->SourceRows,
                        .xResolution = track_->TargetXResolution,
                        .yResolution = track_->TargetYResolution,
                        .lineBytes = lineBytes_,
                        .bits = track_->MaximumBits,
                        .planes = PreviewPlanes(separations, track_->PageChannelOrder)},
                       folder_.File(PreviewFileName(model_, jobName_)).fullPath());
}

void RTL::InitBandOrder() {
    APageBaseRTL::InitBandOrder();
    if (model_.LineByLine == 0) return;
    track_->Order = kLineInterleaved;
    track_->FirstOutputRow = -1;  // no row begins or ends a channel
    track_->LastOutputRow = -1;
}

/// The bytes of one line of one channel of the page.
void RTL::SizeLines() {
    const int64_t lineBytes = LineSizeBytes(track_->OutputWidth, track_->MaximumBits);
    if (lineBytes > std::numeric_limits<int32_t>::max()) {
        report_.Fail({kSource, __LINE__}, "the page's lines are too long");
        Raise(kOutputFailed);
    }
    lineBytes_ = static_cast<int32_t>(lineBytes);
    bandBytes_ = lineBytes_;
}

int32_t RTL::StartPage() {
    report_.StartPage();
    if (!portIsOpen_) {
        report_.Fail({kSource, __LINE__}, "no port is open");
        Raise(kOutputFailed);
    }
    if (ReadModelOutputSettings(description_, JobSettings(), model_) == 0) {
        report_.Fail({kSource, __LINE__}, "the model's output rules cannot be read",
                     job_->PrinterName);
        return 0;
    }
    folder_.EnterTile(*job_->Status, track_->PageIndex, jobName_);
    SizeLines();
    StartPreview();
    ReadWhiteChoice();
    // From here on files are made.
    ForgetSystemError();
    if (!folder_.MakeTile()) {
        const int reason = folder_.Path().isValid() ? LastSystemError() : 0;
        report_.Fail({kSource, __LINE__}, "the tile's folder cannot be made",
                     folder_.Path().shownName(), reason);
        Raise(kOutputFailed);
    }
    WarnOfEarlierPage();
    if (model_.HasJobTicket != 0) WriteJobTicket();  // the page goes on without
    if (model_.HeaderAtEndRip == 0) WriteHeader();
    CheckDiskSpace();
    channels_.StartPage(report_,
                        {.lineBytes = lineBytes_,
                         .heightLines = track_->OutputRows,
                         .bits = track_->MaximumBits,
                         .xResolution = pageInfo_->XResolution,
                         .yResolution = pageInfo_->YResolution,
                         .bottomLineFirst = model_.PrinterDirection != 0,
                         .lineInterleaved = track_->Order == kLineInterleaved},
                        folder_, Naming(), channelCount_);
    white_.StartPage(report_, model_.EffectiveWhiteType(), lineBytes_, track_->OutputRows);
    return 1;
}

/// Reads the job's white choice, and says what is doubtful of the page. A page that is refused for
/// a doubt has made no options file, so where the block's file is missing, it is made anew before
/// the doubts are said only if they refuse nothing.
void RTL::ReadWhiteChoice() {
    int32_t chosen = -1;
    OptionsPlace place;
    const OptionsState state = PeekDriverOptions(*options_, chosen, &place);
    const bool isRead = state == OptionsState::kRead;
    if (isRead) model_.SupportWhiteType = chosen;
    if (!isRead && !report_.IsStrict()) LoadDriverOptions(options_, kReadOptions);
    if (!isRead && state != OptionsState::kNone && model_.OffersWhite)
        report_.Note(Doubt::kOptions, {kSource, __LINE__},
                     state == OptionsState::kMissing
                         ? "the white choice is missing, the model's default serves"
                         : "the white choice cannot be read, the model's default serves",
                     place.Path.shownName(), place.SystemError);
    NotePageDoubts();
    if (!isRead && report_.IsStrict()) LoadDriverOptions(options_, kReadOptions);
}

void RTL::NotePageDoubts() {
    NoteSeparationDoubts(report_, *track_);
    NoteWhiteDoubts(report_, *track_, model_);
    NotePathDoubts(report_, PageFiles());
}

ChannelNaming RTL::Naming() {
    return PageNaming(description_, job_->PrinterName, model_, channelCount_, jobName_);
}

/// Every file that the page is going to write.
std::vector<AFilePath> RTL::PageFiles() {
    const ChannelNaming naming = Naming();
    std::vector<AFilePath> files;
    for (int32_t channel = 0; channel < channelCount_; ++channel) {
        const bool hasData =
            track_->ColorantToSeparation[static_cast<std::size_t>(channel)] != kUnmatched;
        // The only channel of a colour mode is named after the job.
        files.push_back(
            folder_.File(naming.FileName(hasData && channelCount_ == 1 ? -1 : channel)));
    }
    if (naming.HasWhite()) files.push_back(folder_.File(naming.WhiteFileName()));
    if (model_.HasJobTicket != 0) files.push_back(folder_.File(model_.JobTicketName));
    if (!model_.HeaderTemplateName.empty() && !model_.HeaderOutputName.empty() &&
        GivesHeader(HeaderTemplatePath(model_), PageHeaderKeywords()))
        files.push_back(HeaderPath());
    if (preview_.IsWanted()) files.push_back(folder_.File(PreviewFileName(model_, jobName_)));
    return files;
}

void RTL::WarnOfEarlierPage() {
    const AString& path = folder_.Path().fullPath();
    if (!pageFolders_.insert(path).second)
        report_.Warn({kSource, __LINE__}, "an earlier page of the job is in the page's folder",
                     path);
}

int32_t RTL::WriteJobTicket() {
    TicketFacts facts;
    facts.copies = job_->Status->Copies;
    facts.originalFileName = pageInfo_->OriginalFileName;
    facts.paddedWidthPixels = static_cast<int32_t>(int64_t{lineBytes_} * 8 / track_->MaximumBits);
    facts.heightLines = track_->OutputRows;
    facts.xResolution = pageInfo_->XResolution;
    facts.yResolution = pageInfo_->YResolution;
    facts.printerName = pageInfo_->PrinterDisplayName;
    char colorMode[kNameBytes] = {};
    facts.hasColorModeName =
        description_.GetColorModeName(pageInfo_->ColorModeIndex, colorMode) != 0;
    facts.colorModeName = colorMode;
    facts.tiles = TileBlock(*job_->Status, track_->PageIndex);
    return WriteTicketFile(report_, writer_,
                           AFilePath()
                               .Append("OutputDrivers")
                               .Append("JobTicketTemplates")
                               .Append(model_.JobTicketName),
                           folder_.File(model_.JobTicketName), facts);
}

std::vector<HeaderKeyword> RTL::PageHeaderKeywords() const {
    const HeaderFacts facts = {.widthPixels = track_->OutputWidth,
                               .heightLines = track_->OutputRows,
                               .channelCount = channelCount_,
                               .xResolution = job_->XResolutionWhole,
                               .yResolution = job_->YResolutionWhole,
                               .bits = track_->MaximumBits};
    return HeaderKeywords(facts, model_);
}

/// A header that is written at the page's end stands in the job's folder, beside the tiles'.
AFilePath RTL::HeaderPath() const {
    const AFilePath& folder = model_.HeaderAtEndRip != 0 ? folder_.JobPath() : folder_.Path();
    return AFilePath(folder).Append(SubstituteJobName(model_.HeaderOutputName, jobName_));
}

int32_t RTL::WriteHeader() {
    if (model_.HeaderTemplateName.empty() || model_.HeaderOutputName.empty()) return 1;
    const AFilePath path = HeaderPath();
    if (model_.HeaderAtEndRip != 0 && !endHeaders_.insert(path.fullPath()).second)
        report_.Warn({kSource, __LINE__}, "the header takes the place of an earlier page's",
                     path.shownName());
    WriteHeaderFile(report_, writer_, HeaderTemplatePath(model_), path, PageHeaderKeywords());
    return 1;
}

void RTL::WriteWhiteChannel() {
    const ChannelNaming naming = Naming();
    if (!naming.HasWhite()) return;
    const int32_t type = model_.EffectiveWhiteType();
    if (IsPlainWhite(type)) {
        if (!channels_.WritePlane(naming.WhiteFileName(), type == kWhiteEverywhere ? 0xFF : 0x00))
            RaiseWriteDataError();
        return;
    }
    channels_.OpenPlane(naming.WhiteFileName());
    white_.TakeLines(model_.PrinterDirection != 0,
                     [this](const uint8_t* line) { channels_.AddPlaneLine(line); });
    channels_.Close();
}

void RTL::CheckDiskSpace() {
    const uint64_t required = RequiredPageBytes(track_->OutputRows, channelCount_, lineBytes_);
    if (HasDiskSpace(folder_.Path(), required)) return;
    ShowResMessage(kDiskSpaceMessage, MB_OK, static_cast<HWND>(job_->Status->OwnerWindow), nullptr);
    LogText what;
    what << "the page needs " << static_cast<int64_t>(required) << " bytes, which are not free";
    report_.Fail({kSource, __LINE__}, what.View(), folder_.Path().shownName());
    Raise(kOutputFailed);
}

int32_t RTL::BeginChannel(uint32_t separation, int32_t /*row*/) {
    return MarkChannelUsed(separation);
}

int32_t RTL::EndChannel(uint32_t /*separation*/, int32_t /*row*/) {
    return ReservedPageQuery4();
}

int32_t RTL::MarkChannelUsed(uint32_t separation) {
    const auto channel = static_cast<int32_t>(track_->SeparationToColorant[separation]);
    channels_.MarkWritten(channel);
    // The only channel of a colour mode is named after the job.
    return OpenChannelFile(separation, track_->ColorantCount == 1 ? -1 : channel, {});
}

int32_t RTL::OpenChannelFile(uint32_t separation, int32_t channel, const AString& name) {
    if (!channels_.Open(separation, channel, name)) RaiseWriteDataError();
    return 1;
}

int32_t RTL::OutputBand(uint32_t separation, int32_t row, const uint8_t* data) {
    white_.AddLine(separation, row, data);
    preview_.AddLine(separation, row, data);
    // No row begins a channel when the channels come by turns, so the first line does.
    if (track_->Order == kLineInterleaved && row == 0) MarkChannelUsed(separation);
    const bool gathering = channels_.IsGathering();
    if (channels_.WriteLine(separation, data)) return 1;
    if (gathering) RaiseWriteDataError();
    return 0;
}

int32_t RTL::WriteBlankChannel(int32_t channel, const AString& name, int32_t fill) {
    const uint8_t fillByte = fill != 0 ? 0xFF : 0x00;
    if (!channels_.WriteBlank(channel, name, fillByte)) RaiseWriteDataError();
    return 1;
}

void RTL::RaiseWriteDataError() {
    SetStatusText(kPageStatus, "Write Data Error");
    Raise(kOutputFailed);
}

/// An optional output: the page goes on without it, and that is said.
void RTL::SavePreview() {
    preview_.Save();
    const PreviewFailure failure = preview_.Failure();
    if (failure.text == nullptr) return;
    if (failure.isWriteFailure)
        report_.Fail({kSource, __LINE__}, failure.text, failure.path, failure.systemError);
    else
        report_.Warn({kSource, __LINE__}, failure.text, failure.path, failure.systemError);
}

int32_t RTL::EndPage() {
    if (!channels_.FlushReversed()) RaiseWriteDataError();
    for (int32_t channel = 0; channel < channelCount_; ++channel) {
        if (channels_.IsWritten(channel)) continue;
        WriteBlankChannel(channel, {}, 0);
        channels_.MarkWritten(channel);
    }
    WriteWhiteChannel();
    folder_.LeaveTile();
    SavePreview();
    channels_.Close();
    if (model_.HeaderAtEndRip != 0) WriteHeader();
    return 1;
}
