#include "plugin/output/RTL.h"

#include <limits>

#include "PrinterDriver/Common/Xsrc/JobFault.h"
#include "description/DriverOptions.h"
#include "host/QLCopyFile.h"
#include "host/Text.h"
#include "platform/afx.h"
#include "plugin/output/DiskSpace.h"
#include "plugin/output/HeaderFile.h"
#include "plugin/output/JobTicket.h"
#include "plugin/output/LineSize.h"
#include "plugin/output/OutputNames.h"
#include "ui/messages/ShowMessage.h"
#include "ui/messages/StringTable.h"

namespace {

constexpr int32_t kDriverId = 246;
/// The host's port kind for output into files.
constexpr int32_t kFilePort = 256;
constexpr int32_t kPageStatus = 1;
/// Internal name of the colour whose channel the white file is.
constexpr const char* kWhite = "White";
/// Room for a name that the description answers.
constexpr std::size_t kNameBytes = 256;
constexpr int32_t kReadOptions = 1;

/// Identifier of a capability item; an absent one matches nothing.
int32_t ItemId(const CapabilityItem* item) {
    return item == nullptr ? -1 : item->ID;
}

}  // namespace

RTL::RTL() = default;

RTL::~RTL() = default;

int32_t RTL::GetDeviceResolution(int32_t* x, int32_t* y) {
    *x = 1;
    *y = 1;
    return 1;
}

int32_t RTL::GetDriverId() {
    return kDriverId;
}

int32_t RTL::IsColorModeAllowed(int32_t position, int32_t* allowed, char* name,
                                PrintSettings* settings) {
    return description_.IsColorModeAllowed(position, allowed, name, settings);
}

int32_t RTL::GetColorantList(int32_t position, ColorantInfoList* list) {
    return description_.GetColorantList(position, list);
}

int32_t RTL::FindColorModeID(const char* name) {
    return description_.FindColorModeID(name);
}

int32_t RTL::GetDefaultColorMode(char* name, PrintSettings* settings) {
    return description_.GetDefaultColorMode(name, settings);
}

int32_t RTL::GetMediaList(PrintSettings* settings, CapabilityList* list, int32_t* defaultMedia) {
    const AFX_MAINTAIN_STATE2 moduleState(AfxGetStaticModuleState());
    if (settings == nullptr || description_.LoadDescription(settings->ModelName) == 0) return 0;
    return description_.GetMediaList(settings->ModelName, list, defaultMedia);
}

int32_t RTL::GetPrintModeList(PrintSettings* settings, CapabilityItem* media, CapabilityList* list,
                              int32_t* defaultPosition) {
    const AFX_MAINTAIN_STATE2 moduleState(AfxGetStaticModuleState());
    if (settings == nullptr || description_.LoadDescription(settings->ModelName) == 0) return 0;
    const int32_t mediaId = ItemId(media);
    return description_.GetPrintModeList(settings->ModelName, &mediaId, list, defaultPosition);
}

int32_t RTL::GetResolutionList(PrintSettings* settings, CapabilityItem* media,
                               CapabilityItem* printMode, ResolutionList* list,
                               HostArgument /*further*/) {
    const AFX_MAINTAIN_STATE2 moduleState(AfxGetStaticModuleState());
    if (settings == nullptr || description_.LoadDescription(settings->ModelName) == 0) return 0;
    const int32_t mediaId = ItemId(media);
    const int32_t printModeId = ItemId(printMode);
    return description_.GetResolutionList(settings->ModelName, &mediaId, &printModeId, list);
}

int32_t RTL::ReservedQuery5() {
    return 1;
}

int32_t RTL::AreOptionsDifferent(DriverOptionBlock* a, DriverOptionBlock* b) {
    return a != nullptr && b != nullptr && a->Kind != b->Kind ? 1 : 0;
}

int32_t RTL::EnsureDriverOptions(DriverOptionBlock* options) {
    if (options == nullptr) return 0;
    ::EnsureDriverOptions(*options, id_);
    return 1;
}

int32_t RTL::ReadOutputSettings(const PrintSettings& settings) {
    return ReadModelOutputSettings(description_, settings, model_);
}

int32_t RTL::LoadDriverOptions(DriverOptionBlock* block, int32_t load) {
    if (block == nullptr) return 0;
    if (load == kReadOptions) return ReadDriverOptions(*block, model_.SupportWhiteType, id_);
    WriteDriverOptions(*block, model_.SupportWhiteType, id_);
    return 0;
}

int32_t RTL::GetColorModeChannelInfo(int16_t colorMode, uint16_t* channelCount,
                                     uint16_t* bitDepth) {
    if (job_ == nullptr || description_.LoadDescription(job_->PrinterName) == 0) return 0;
    ColorantQuery query;
    GetColorantList(colorMode, &query.list);
    *channelCount = static_cast<uint16_t>(query.list.Count);
    *bitDepth = static_cast<uint16_t>(query.items[0].ColorDepth);
    return 1;
}

int32_t RTL::ReservedPageQuery2() {
    return 1;
}
int32_t RTL::ReservedPageQuery3() {
    return 1;
}
int32_t RTL::ReservedPageQuery4() {
    return 1;
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
    if (ReadModelOutputSettings(description_, JobSettings(), model_) == 0) return 0;
    APageBaseRTL::OpenJob(job, reserved, output, options);
    channelCount_ = track_->ColorantCount;
    return 1;
}

int32_t RTL::AbortJob() {
    channels_.Abandon();
    white_.Discard();
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
    if (pageInfo_ == nullptr || folder == nullptr || sourceName == nullptr) return 0;
    portIsOpen_ = false;
    APageBaseRTL::OpenPort(folder, sourceName);
    if (pageInfo_->PortKind != kFilePort) {
        ShowResMessage(kUnsupportedPortMessage, MB_OK, nullptr, nullptr);
        return 0;
    }
    jobName_ = MakeJobName(sourceName);
    if (!folder_.SetUp(folder, jobName_, model_.CreateFolder != 0)) return 0;
    CopyThumbnail();
    portIsOpen_ = true;
    return 1;
}

/// The host's picture of the job, where it gives one; the first page's preview takes its place.
void RTL::CopyThumbnail() const {
    if (pageInfo_->ThumbnailPath[0] == '\0') return;
    const AFilePath thumbnail(pageInfo_->ThumbnailPath);
    if (thumbnail.exists()) QLCopyFile(thumbnail, folder_.File(PreviewFileName(model_, jobName_)));
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
                        .planes = PreviewPlanes(separations)},
                       folder_.File(PreviewFileName(model_, jobName_)).fullPath());
}

void RTL::InitBandOrder() {
    APageBaseRTL::InitBandOrder();
    if (model_.LineByLine == 0) return;
    track_->Order = kLineInterleaved;
    track_->FirstOutputRow = -1;  // no row begins or ends a channel
    track_->LastOutputRow = -1;
}

int32_t RTL::StartPage() {
    if (!portIsOpen_) Raise(kOutputFailed);
    if (ReadModelOutputSettings(description_, JobSettings(), model_) == 0) return 0;
    LoadDriverOptions(options_, kReadOptions);
    if (!folder_.EnterTile(*job_->Status, track_->PageIndex, jobName_)) Raise(kOutputFailed);

    const int64_t lineBytes = LineSizeBytes(track_->OutputWidth, track_->MaximumBits);
    if (lineBytes > std::numeric_limits<int32_t>::max()) Raise(kOutputFailed);
    lineBytes_ = static_cast<int32_t>(lineBytes);
    bandBytes_ = lineBytes_;
    if (model_.HasJobTicket != 0) WriteJobTicket();  // the page goes on without
    if (model_.HeaderAtEndRip == 0) WriteHeader();
    StartPreview();
    CheckDiskSpace();
    channels_.StartPage({.lineBytes = lineBytes_,
                         .heightLines = track_->OutputRows,
                         .bits = track_->MaximumBits,
                         .xResolution = pageInfo_->XResolution,
                         .yResolution = pageInfo_->YResolution,
                         .bottomLineFirst = model_.PrinterDirection != 0,
                         .lineInterleaved = track_->Order == kLineInterleaved},
                        folder_, PageNaming(), channelCount_);
    white_.StartPage(model_.EffectiveWhiteType(), lineBytes_, track_->OutputRows);
    return 1;
}

/// Whether the page's white file takes its name from the map of channel names and one byte fills
/// it.
bool RTL::IsWhitePlain() const {
    const int32_t type = model_.EffectiveWhiteType();
    return type == kWhiteEverywhere || type == kWhiteNowhere;
}

ChannelNaming RTL::PageNaming() const {
    ChannelNaming naming(model_.ChannelNames, channelCount_, jobName_);
    const auto pattern = model_.ChannelNameMap.find(kWhite);
    const bool isNamed = pattern != model_.ChannelNameMap.end() && !pattern->second.empty() &&
                         (IsWhitePlain() || naming.HasPatterns());
    if (model_.EffectiveWhiteType() > 0 && !isNamed) naming.KeepJobNameForWhite();
    return naming;
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
    return WriteTicketFile(AFilePath()
                               .Append("OutputDrivers")
                               .Append("JobTicketTemplates")
                               .Append(model_.JobTicketName),
                           folder_.File(model_.JobTicketName), facts);
}

int32_t RTL::WriteHeader() {
    if (model_.HeaderTemplateName.empty() || model_.HeaderOutputName.empty()) return 1;
    const HeaderFacts facts = {.widthPixels = track_->OutputWidth,
                               .heightLines = track_->OutputRows,
                               .channelCount = channelCount_,
                               .xResolution = job_->XResolutionWhole,
                               .yResolution = job_->YResolutionWhole,
                               .bits = track_->MaximumBits};
    WriteHeaderFile(HeaderTemplatePath(model_),
                    folder_.File(SubstituteJobName(model_.HeaderOutputName, jobName_)),
                    HeaderKeywords(facts, model_));
    return 1;
}

void RTL::WriteWhiteChannel() {
    const int32_t type = model_.EffectiveWhiteType();
    if (type <= 0) return;
    const ChannelNaming naming = PageNaming();
    if (IsWhitePlain()) {
        const AString name = naming.WhiteFileName(model_.ChannelNameMap[kWhite]);
        if (!channels_.WritePlane(name, type == kWhiteEverywhere ? 0xFF : 0x00))
            RaiseWriteDataError();
        return;
    }
    const AString pattern = GetChannelName(description_, kWhite, job_->PrinterName);
    // Without any channel names the white file's counts for nothing, too.
    const AString name = naming.WhiteFileName(naming.HasPatterns() ? pattern : AString());
    const std::unique_ptr<ExportBitmap> file = channels_.OpenPlane(name);
    // A line that the file does not take is logged by the exporter; the short file tells.
    white_.TakeLines(model_.PrinterDirection != 0,
                     [&](const uint8_t* line) { file->WriteBand(1, lineBytes_, line); });
}

void RTL::CheckDiskSpace() {
    const uint64_t required = RequiredPageBytes(track_->OutputRows, channelCount_, lineBytes_);
    if (HasDiskSpace(folder_.Path(), required)) return;
    ShowResMessage(kDiskSpaceMessage, MB_OK, static_cast<HWND>(job_->Status->OwnerWindow), nullptr);
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

int32_t RTL::EndPage() {
    if (!channels_.FlushReversed()) RaiseWriteDataError();
    for (int32_t channel = 0; channel < channelCount_; ++channel) {
        if (channels_.IsWritten(channel)) continue;
        WriteBlankChannel(channel, {}, 0);
        channels_.MarkWritten(channel);
    }
    WriteWhiteChannel();
    folder_.LeaveTile();
    preview_.Save();
    channels_.Close();
    if (model_.HeaderAtEndRip != 0) WriteHeader();
    return 1;
}
