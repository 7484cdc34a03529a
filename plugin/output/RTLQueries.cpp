// What the writer answers without a job: the model's offer, the options' names, constants.

#include "description/DriverOptions.h"
#include "host/Text.h"
#include "platform/afx.h"
#include "plugin/output/RTL.h"

namespace {

constexpr int32_t kDriverId = 246;

/// Identifier of a capability item; an absent one matches nothing.
int32_t ItemId(const CapabilityItem* item) {
    return item == nullptr ? -1 : item->ID;
}

}  // namespace

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

/// Loads the description of the settings' model; false without settings, too.
bool RTL::LoadDescription(const PrintSettings* settings) {
    if (settings == nullptr) return false;
    // A name that fills its field has no NUL.
    const AString model(FieldText(settings->ModelName, sizeof settings->ModelName));
    return description_.LoadDescription(model.c_str()) != 0;
}

int32_t RTL::GetMediaList(PrintSettings* settings, CapabilityList* list, int32_t* defaultMedia) {
    const AFX_MAINTAIN_STATE2 moduleState(AfxGetStaticModuleState());
    if (!LoadDescription(settings)) return 0;
    return description_.GetMediaList(description_.LoadedModelName().c_str(), list, defaultMedia);
}

int32_t RTL::GetPrintModeList(PrintSettings* settings, CapabilityItem* media, CapabilityList* list,
                              int32_t* defaultPosition) {
    const AFX_MAINTAIN_STATE2 moduleState(AfxGetStaticModuleState());
    if (!LoadDescription(settings)) return 0;
    const int32_t mediaId = ItemId(media);
    return description_.GetPrintModeList(description_.LoadedModelName().c_str(), &mediaId, list,
                                         defaultPosition);
}

int32_t RTL::GetResolutionList(PrintSettings* settings, CapabilityItem* media,
                               CapabilityItem* printMode, ResolutionList* list,
                               HostArgument /*further*/) {
    const AFX_MAINTAIN_STATE2 moduleState(AfxGetStaticModuleState());
    if (!LoadDescription(settings)) return 0;
    const int32_t mediaId = ItemId(media);
    const int32_t printModeId = ItemId(printMode);
    return description_.GetResolutionList(description_.LoadedModelName().c_str(), &mediaId,
                                          &printModeId, list);
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
