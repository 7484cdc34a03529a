#include "plugin/CDriverDLL.h"

#include "ui/OptionsDialogTemplate.h"

namespace {

CDriverDLL theDriverLibrary;
const AfxModuleLife theDriverLibraryLife(theDriverLibrary);

}  // namespace

CDriverDLL::CDriverDLL() = default;

CDriverDLL::~CDriverDLL() = default;

BOOL CDriverDLL::InitInstance() {
    CWinApp::InitInstance();
    resourceLibrary_ = nullptr;
    AfxSetModuleDialog(OptionsDialogTemplate());
    return TRUE;
}

int CDriverDLL::ExitInstance() {
    if (resourceLibrary_ != nullptr) AfxFreeLibrary(resourceLibrary_);
    return CWinApp::ExitInstance();
}
