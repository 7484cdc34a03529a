#include "plugin/CDriver.h"

#include "description/DriverOptions.h"
#include "host/Text.h"
#include "platform/afx.h"
#include "plugin/output/RTL.h"
#include "ui/CDriverOptionDialogFS.h"

namespace {

constexpr int32_t kNewFileAndDialog = 1;
constexpr int32_t kNewFileOnly = 2;
constexpr int32_t kDialogOnly = 3;

}  // namespace

CDriver::CDriver() {
    writer_ = std::make_unique<RTL>();
}

CDriver::~CDriver() = default;

float CDriver::GetDriverValue() {
    return 8.0F;
}

int32_t CDriver::ShowDriverOptions(DriverOptionBlock* options, int32_t mode,
                                   PrintSettings* settings, HWND parent) {
    const AFX_MAINTAIN_STATE2 moduleState(AfxGetStaticModuleState());
    if (options == nullptr || settings == nullptr) return 0;
    try {
        return EditOptions(*options, mode, *settings, parent);
    } catch (...) {  // nothing may leave the library
        return 0;
    }
}

int32_t CDriver::EditOptions(DriverOptionBlock& options, int32_t mode, PrintSettings& settings,
                             HWND parent) {
    int32_t mediaIndex = settings.MediaIndex;
    ResolveMediaIndex(&settings, mediaIndex, &mediaIndex);
    settings.MediaIndex = mediaIndex;
    // An empty manufacturer is filled from what was stored before this call's own settings are.
    const PrintSettings earlier = writer_->StoredSettings();
    writer_->SetPrintSettings(&settings);
    if (mode != kNewFileAndDialog && mode != kNewFileOnly && mode != kDialogOnly) return 0;
    if (mode != kDialogOnly)
        CreateDriverOptionsFile(options, static_cast<const RTL&>(*writer_).Id());
    if (mode == kNewFileOnly) return 1;
    if (settings.ManufacturerName[0] == '\0' && earlier.ManufacturerName[0] != '\0') {
        CopyText(settings.ManufacturerName, sizeof settings.ManufacturerName,
                 FieldText(earlier.ManufacturerName, sizeof earlier.ManufacturerName));
    }
    EnsureDriverOptions(&options);
    EditDriverOptions(parent, options, settings);
    return 1;
}
