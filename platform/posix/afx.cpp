#include "platform/afx.h"

namespace {

/// The program's own state as far as a library knows it: no resources, no module object.
AFX_MODULE_STATE programState;

/// In the memory that every thread has from its start. In a library that is loaded later, other
/// thread variables get theirs when a thread first touches them, which ends the process where there
/// is none; the few bytes of this one fit into what the loader keeps ready for such libraries.
[[gnu::tls_model("initial-exec")]] constinit thread_local AFX_MODULE_STATE* currentState = nullptr;

}  // namespace

AFX_MODULE_STATE* AfxGetModuleState() {
    return currentState != nullptr ? currentState : &programState;
}

AFX_MODULE_STATE* AfxSetModuleState(AFX_MODULE_STATE* state) {
    AFX_MODULE_STATE* previous = AfxGetModuleState();
    currentState = state;
    return previous;
}

AFX_MODULE_STATE* AfxGetStaticModuleState() {
    static AFX_MODULE_STATE moduleState;
    return &moduleState;
}

HINSTANCE AfxGetResourceHandle() {
    return AfxGetModuleState()->m_hCurrentResourceHandle;
}

HINSTANCE AfxLoadLibrary(const char* path) {
    return LoadLibraryA(path);
}

BOOL AfxFreeLibrary(HINSTANCE library) {
    return FreeLibrary(library);
}

CWinApp::CWinApp(const char* appName) : m_pszAppName(appName) {
    AfxGetStaticModuleState()->m_pCurrentWinApp = this;
}

CWinApp::~CWinApp() {
    AFX_MODULE_STATE* state = AfxGetStaticModuleState();
    if (state->m_pCurrentWinApp == this) state->m_pCurrentWinApp = nullptr;
}

BOOL CWinApp::InitInstance() {
    return TRUE;
}

int CWinApp::ExitInstance() {
    return 0;
}

void AfxSetModuleStrings(const AfxStringTable& table) {
    // A resource handle is never written through; the cast only fits the platform's type.
    AfxGetStaticModuleState()->m_hCurrentResourceHandle = const_cast<AfxStringTable*>(&table);
}

void AfxSetModuleDialog(const DialogTemplate& dialog) {
    AfxGetStaticModuleState()->m_pDialog = &dialog;
}

AfxModuleLife::AfxModuleLife(CWinApp& app) : app_(app) {
    app_.InitInstance();
}

AfxModuleLife::~AfxModuleLife() {
    app_.ExitInstance();
}
