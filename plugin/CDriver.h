#pragma once

#include "PrinterDriver/Common/Xsrc/ABasePrinterDriverImp.h"

/// The driver object that the host gets: always has exactly one writer.
class CDriver : public ABasePrinterDriverImp {
  public:
    CDriver();
    ~CDriver() override;

    /// Gives the block an options file where it needs one and lets the user edit it. `mode`: 1 a
    /// new file, then the dialog; 2 a new file only; 3 the dialog; anything else answers 0. A
    /// dialog that does not end with OK leaves the block as it was.
    int32_t ShowDriverOptions(DriverOptionBlock* options, int32_t mode, PrintSettings* settings,
                              HWND parent) override;
    float GetDriverValue() override;

  private:
    int32_t EditOptions(DriverOptionBlock& options, int32_t mode, PrintSettings& settings,
                        HWND parent);
};
