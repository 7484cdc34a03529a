#include <memory>

#include "host/Records.h"
#include "platform/Export.h"
#include "platform/afx.h"
#include "plugin/CDriver.h"

extern "C" {

/// A new driver, which the host owns and deletes through its virtual destructor; null when it
/// cannot be made.
PLATFORM_EXPORT ABasePrinterDriver* createNewPrinterDriver() noexcept;

/// The options page for the host's settings sheet; null when there is none.
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

void* createDriverPage(DriverOptionBlock* /*options*/, PrintSettings* /*settings*/) noexcept {
    const AFX_MAINTAIN_STATE2 moduleState(AfxGetStaticModuleState());
    return nullptr;
}
