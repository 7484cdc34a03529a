#include <memory>

#include "host/Records.h"
#include "platform/Export.h"
#include "platform/HostPage.h"
#include "platform/afx.h"
#include "plugin/CDriver.h"
#include "ui/CDriverOptionDialog.h"

extern "C" {

/// A new driver, which the host owns and deletes through its virtual destructor; null when it
/// cannot be made.
PLATFORM_EXPORT ABasePrinterDriver* createNewPrinterDriver() noexcept;

/// A new options page for the host's settings sheet, which the host owns; null when it cannot be
/// made. The page borrows both records.
PLATFORM_EXPORT void* createDriverPage(DriverOptionBlock* options,
                                       PrintSettings* settings) noexcept;
}

ABasePrinterDriver* createNewPrinterDriver() noexcept {
    const AFX_MAINTAIN_STATE2 moduleState(AfxGetStaticModuleState());
    try {
        return std::make_unique<CDriver>().release();  // the host owns it from here
    } catch (...) {
        return nullptr;
    }
}

void* createDriverPage(DriverOptionBlock* options, PrintSettings* settings) noexcept {
    const AFX_MAINTAIN_STATE2 moduleState(AfxGetStaticModuleState());
    if (options == nullptr) return nullptr;
    try {
        return AfxPageForHost(std::make_unique<CDriverOptionDialog>(nullptr, options, settings));
    } catch (...) {
        return nullptr;
    }
}
