#include "PrinterDriver/Common/Xsrc/ABaseRTL.h"

#include <fmt/format.h>

#include <algorithm>
#include <new>

#include "PrinterDriver/Common/Xsrc/JobFault.h"
#include "PrinterDriver/Common/Xsrc/RepackBits.h"
#include "description/DriverOptions.h"
#include "halftone/ReadDitherParams.h"
#include "halftone/ReadScreeningParams.h"
#include "host/ALocaleSwitcher.h"
#include "host/QL_LOG.h"
#include "host/Text.h"
#include "platform/afx.h"
#include "ui/messages/ShowMessage.h"

namespace {

constexpr int32_t kStreamBufferBytes = 1048576;
/// The host's writers leave this much of the buffer unused.
constexpr int32_t kStreamBufferLimit = kStreamBufferBytes - 32;

constexpr int32_t kPercentStatus = 3;

void LogStreamFault(int line, const char* message) {
    QL_LOG("PrinterDriver\\Common\\Xsrc\\ABaseRTL", line, 'E', message);
}

int32_t StoreValue(int32_t value, int32_t* out) {
    if (out != nullptr) *out = value;
    return 1;
}

void ShowFault(const HalftoneReading& reading) {
    if (reading.Message != nullptr) ShowMessage(reading.Message);
}

}  // namespace

ABaseRTL::ABaseRTL() = default;

ABaseRTL::~ABaseRTL() = default;

void ABaseRTL::RepackBits(int32_t bits, int64_t bitCount, const uint8_t* source, int32_t repeat,
                          int64_t* bitPosition, uint8_t* destination) {
    const auto sourceBytes = static_cast<std::size_t>((bitCount + 7) / 8);
    const int64_t outputBits = *bitPosition + static_cast<int64_t>(sourceBytes) * 8 * repeat;
    RepackRow(bits, bitCount, {source, sourceBytes}, repeat, *bitPosition,
              {destination, static_cast<std::size_t>((outputBits + 7) / 8)});
}

void ABaseRTL::ReportProgress(int32_t percent) {
    SetStatusText(kPercentStatus, fmt::format("{:3d}%", std::clamp(percent, 0, 100)).c_str());
}

void ABaseRTL::SetStatusText(int32_t kind, const char* text) {
    if (job_ == nullptr) return;
    CopyText(job_->Status->StatusText, sizeof job_->Status->StatusText, text);
    job_->Status->StatusKind = kind;
}

int32_t ABaseRTL::WriteNdata(const void* data, int32_t count, int32_t flush) {
    constexpr const char* kMessage = "ABaseRTL::WriteNdata";
    if (streamBuffer_ == nullptr && flush == 0) {
        streamBuffer_.reset(new (std::nothrow) uint8_t[kStreamBufferBytes]);
        streamBytes_ = 0;
        if (streamBuffer_ == nullptr) {
            LogStreamFault(68, kMessage);
            Raise(kOutputFailed);
        }
    }
    if (flush != 0) {
        FlushStreamBuffer(85);
        if (count < 1) return count;
        WriteToHost(data, count, 99, fmt::format("{} num={}", kMessage, count).c_str());
        return count;
    }
    if (count < 1) return count;
    if (int64_t{streamBytes_} + count > kStreamBufferLimit) FlushStreamBuffer(114);
    if (count <= kStreamBufferLimit) {
        std::memcpy(streamBuffer_.get() + streamBytes_, data, static_cast<std::size_t>(count));
        streamBytes_ += count;
    } else {
        WriteToHost(data, count, 126, kMessage);
    }
    return count;
}

void ABaseRTL::FlushStreamBuffer(int line) {
    if (streamBytes_ > 0) {
        WriteToHost(streamBuffer_.get(), streamBytes_, line, "ABaseRTL::WriteNdata");
    }
    streamBytes_ = 0;
}

void ABaseRTL::WriteToHost(const void* data, int32_t count, int line, const char* message) {
    const bool taken = output_ != nullptr && job_ != nullptr &&
                       output_->Write(data, count, job_->Status->OutputValue) == count;
    if (taken) return;
    LogStreamFault(line, message);
    Raise(kOutputFailed);
}

int32_t ABaseRTL::DecodeDriverOptionsDefault(const char* /*text*/, DriverOptionBlock* /*options*/,
                                             PrintSettings* /*settings*/) {
    return 1;
}

int32_t ABaseRTL::DecodeDriverOptions(const char* text, DriverOptionBlock* options,
                                      PrintSettings* settings) {
    const AFX_MAINTAIN_STATE2 moduleState(AfxGetStaticModuleState());
    if (text == nullptr || options == nullptr) return 0;
    if (DecodeDriverOptionsText(text, *options)) return 1;
    DecodeDriverOptionsDefault(text, options, settings);
    return 1;
}

int32_t ABaseRTL::GetScreeningParams(ScreeningParams* parameters, PrintSettings* settings) {
    if (parameters == nullptr) return 0;
    SetDefaultScreeningParams(*parameters);
    if (settings == nullptr) return 1;
    const std::string_view model = FieldText(settings->ModelName, sizeof settings->ModelName);
    const std::string_view manufacturer =
        FieldText(settings->ManufacturerName, sizeof settings->ManufacturerName);
    if (model.empty() || manufacturer.empty()) return 1;
    ShowFault(ReadScreeningParams(model, manufacturer, *settings, *parameters));
    return 1;
}

int32_t ABaseRTL::GetMediaList(PrintSettings* /*settings*/, CapabilityList* /*list*/,
                               int32_t* /*defaultMedia*/) {
    return 0;
}

int32_t ABaseRTL::GetPrintModeList(PrintSettings* /*settings*/, CapabilityItem* /*media*/,
                                   CapabilityList* /*list*/, int32_t* /*defaultPosition*/) {
    return 0;
}

int32_t ABaseRTL::GetResolutionList(PrintSettings* /*settings*/, CapabilityItem* /*media*/,
                                    CapabilityItem* /*printMode*/, ResolutionList* /*list*/,
                                    HostArgument /*further*/) {
    return 0;
}

void ABaseRTL::FillSizeRecord(ResolutionItem* record, double x, double y, int32_t identifier,
                              const char* name) {
    if (record == nullptr) return;
    record->XResolution = x;
    record->YResolution = y;
    record->ID = identifier;
    CopyText(record->DisplayName, sizeof record->DisplayName, name == nullptr ? "" : name);
}

int32_t ABaseRTL::ReservedMediaQuery1(PrintSettings* /*settings*/, CapabilityItem* /*media*/,
                                      HostArgument /*a*/, HostArgument /*b*/, HostArgument /*c*/,
                                      HostArgument /*d*/) {
    return 0;
}

int32_t ABaseRTL::ReservedMediaQuery2(PrintSettings* /*settings*/, CapabilityItem* /*media*/,
                                      HostArgument /*a*/, int32_t value, int32_t* out) {
    return StoreValue(value, out);
}

int32_t ABaseRTL::OpenPort(const char* /*folder*/, const char* /*sourceName*/) {
    return 1;
}

int32_t ABaseRTL::AreOptionsDifferent(DriverOptionBlock* /*a*/, DriverOptionBlock* /*b*/) {
    return 0;
}

int32_t ABaseRTL::EnsureDriverOptions(DriverOptionBlock* /*options*/) {
    return 1;
}

int32_t ABaseRTL::ReservedQuery18(HostArgument /*a*/, int32_t* /*b*/) {
    return 1;
}

int32_t ABaseRTL::ReservedQuery21(HostArgument /*a*/, int32_t value, int32_t* out) {
    return StoreValue(value, out);
}

int32_t ABaseRTL::GetDitherParams(const char* modelName, const char* manufacturerName,
                                  PrintSettings* settings, DitherParams* parameters) {
    const ALocaleSwitcher plainNumbers;
    if (modelName == nullptr || manufacturerName == nullptr) return 0;
    if (settings == nullptr || parameters == nullptr) return 0;
    ColorantQuery query;
    if (GetColorantList(settings->ColorModeIndex, &query.list) != 0 &&
        !SetDefaultDitherParams(query.list, *parameters)) {
        return 0;
    }
    const HalftoneReading reading =
        ReadDitherParams(modelName, manufacturerName, *settings, *parameters);
    ShowFault(reading);
    return reading.Answer;
}

int32_t ABaseRTL::ReservedMediaQuery3(PrintSettings* settings, CapabilityItem* media,
                                      HostArgument c, HostArgument d, HostArgument /*e*/,
                                      HostArgument f, HostArgument g) {
    return ReservedMediaQuery1(settings, media, c, d, f, g);
}

int32_t ABaseRTL::SetPrintSettings(PrintSettings* settings) {
    if (settings != nullptr) settings_ = *settings;
    return 1;
}

int32_t ABaseRTL::ReservedQuery3() {
    return 1;
}
int32_t ABaseRTL::ReservedQuery5() {
    return 1;
}
int32_t ABaseRTL::ReservedQuery6() {
    return 1;
}
int32_t ABaseRTL::ReservedQuery8() {
    return 0;
}
int32_t ABaseRTL::ReservedQuery9() {
    return 0;
}
int32_t ABaseRTL::ReservedQuery12() {
    return 0;
}
int32_t ABaseRTL::ReservedQuery13() {
    return 0;
}
int32_t ABaseRTL::ReservedQuery14() {
    return 0;
}
int32_t ABaseRTL::ReservedQuery15() {
    return 1;
}
int32_t ABaseRTL::ReservedQuery16() {
    return 0;
}
int32_t ABaseRTL::ReservedQuery17() {
    return 0;
}
int32_t ABaseRTL::ReservedQuery19() {
    return 1;
}
int32_t ABaseRTL::ReservedQuery20() {
    return 1;
}
int32_t ABaseRTL::ReservedQuery22() {
    return 0;
}
int32_t ABaseRTL::ReservedQuery23() {
    return 0;
}
int32_t ABaseRTL::ReservedQuery24() {
    return 0;
}
int32_t ABaseRTL::ReservedQuery26() {
    return 0;
}
int32_t ABaseRTL::ReservedQuery27() {
    return 0;
}
