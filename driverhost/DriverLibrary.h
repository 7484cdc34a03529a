#pragma once

#include <memory>

#include "driverhost/DriverInterface.h"
#include "platform/win32.h"

/// The plug-in, loaded from the program's own folder for as long as this object lives. Drivers go
/// before it.
class DriverLibrary {
  public:
    /// Throws HostError when the library or its entry point is missing.
    DriverLibrary();
    ~DriverLibrary();
    DriverLibrary(const DriverLibrary&) = delete;
    DriverLibrary& operator=(const DriverLibrary&) = delete;

    /// Throws HostError when the plug-in answers none.
    std::unique_ptr<DriverInterface> CreateDriver() const;
    /// The driver's options page, which borrows both records and belongs to the caller. Throws
    /// HostError when there is none.
    void* CreatePage(DriverOptionBlock& block, PrintSettings& settings) const;

  private:
    HMODULE library_ = nullptr;
    FARPROC createDriver_ = nullptr;
};
