#pragma once

#include "platform/afx.h"

/// The module object: one for as long as the library is loaded.
class CDriverDLL : public CWinApp {
  public:
    CDriverDLL();
    ~CDriverDLL() override;

    BOOL InitInstance() override;
    int ExitInstance() override;

  private:
    HINSTANCE resourceLibrary_ = nullptr;  ///< none: the resources are in this module
};
