#pragma once

// The application framework as the plug-in uses it: the module object and the module state that
// gives the library its own resources. On Windows the framework's own headers stand behind these
// names; elsewhere the folder of that system implements them.

#include <cstddef>

#include "platform/win32.h"

#ifdef _WIN32

#include <afxwin.h>

#else

class CWinApp;

/// What belongs to one module (a program or a library): its instance, where its resources are
/// looked up, and its module object.
struct AFX_MODULE_STATE {
    HINSTANCE m_hCurrentInstanceHandle = nullptr;
    HINSTANCE m_hCurrentResourceHandle = nullptr;
    CWinApp* m_pCurrentWinApp = nullptr;
};

/// The calling thread's current state: what a guard has set, else the state of the program, which
/// has no resources.
AFX_MODULE_STATE* AfxGetModuleState();
/// Sets the calling thread's current state and answers the one before it.
AFX_MODULE_STATE* AfxSetModuleState(AFX_MODULE_STATE* state);
/// The state of the module that this code is linked into.
AFX_MODULE_STATE* AfxGetStaticModuleState();

/// Switches the calling thread to `state` for its own lifetime and restores the caller's state on
/// every path out.
class AFX_MAINTAIN_STATE2 {
  public:
    explicit AFX_MAINTAIN_STATE2(AFX_MODULE_STATE* state) : previous_(AfxSetModuleState(state)) {}
    ~AFX_MAINTAIN_STATE2() { AfxSetModuleState(previous_); }
    AFX_MAINTAIN_STATE2(const AFX_MAINTAIN_STATE2&) = delete;
    AFX_MAINTAIN_STATE2& operator=(const AFX_MAINTAIN_STATE2&) = delete;

  private:
    AFX_MODULE_STATE* previous_;
};

/// Where the current module state looks its resources up; null when it has none.
HINSTANCE AfxGetResourceHandle();
HINSTANCE AfxLoadLibrary(const char* path);
BOOL AfxFreeLibrary(HINSTANCE library);

/// The module object: one global instance per module.
class CWinApp {
  public:
    explicit CWinApp(const char* appName = nullptr);
    virtual ~CWinApp();
    CWinApp(const CWinApp&) = delete;
    CWinApp& operator=(const CWinApp&) = delete;

    /// Runs when the module has been loaded; false refuses the load.
    virtual BOOL InitInstance();
    /// Runs before the module is unloaded; its result is the module's exit code.
    virtual int ExitInstance();

    const char* m_pszAppName;
};

#endif

/// Text of one string resource, and a module's table of them.
struct AfxStringResource {
    UINT id;
    const char* text;
};
struct AfxStringTable {
    const AfxStringResource* entries;
    std::size_t count;
};

/// Makes `table` (not owned, lives as long as the module) the string resources of this module.
/// On Windows they are linked into the module as resources and this does nothing.
void AfxSetModuleStrings(const AfxStringTable& table);

/// Runs the module object's InitInstance when the module is loaded and its ExitInstance before it
/// is unloaded. Stands behind the global module object in the same source file. On Windows the
/// framework's own entry point does this, and nothing happens here.
class AfxModuleLife {
  public:
    explicit AfxModuleLife(CWinApp& app);
    ~AfxModuleLife();
    AfxModuleLife(const AfxModuleLife&) = delete;
    AfxModuleLife& operator=(const AfxModuleLife&) = delete;

  private:
    CWinApp& app_;
};
