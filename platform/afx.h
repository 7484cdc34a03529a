#pragma once

// The application framework as the plug-in uses it: the module object, the module state that gives
// the library its own resources, and dialogs. On Windows the framework's own headers stand behind
// these names; elsewhere the folder of that system implements them.

#include <cstddef>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "platform/DialogTemplate.h"
#include "platform/WindowSystem.h"
#include "platform/win32.h"

#ifdef _WIN32

#include <afxdlgs.h>
#include <afxwin.h>

#else

class CWinApp;

/// What belongs to one module (a program or a library): its instance, where its resources are
/// looked up, and its module object.
struct AFX_MODULE_STATE {
    HINSTANCE m_hCurrentInstanceHandle = nullptr;
    HINSTANCE m_hCurrentResourceHandle = nullptr;
    CWinApp* m_pCurrentWinApp = nullptr;
    const DialogTemplate* m_pDialog = nullptr;
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

/// A control of a dialog. The dialog owns it.
class CWnd {
  public:
    BOOL ShowWindow(int command);
    BOOL IsWindowVisible() const { return isVisible_ ? TRUE : FALSE; }

  private:
    friend class CComboBox;
    friend class CDialog;

    int id_ = 0;
    bool isVisible_ = true;
    std::vector<std::string> items_;
    int selection_ = -1;
};

/// A drop-down list, once data exchange has bound it to a control; until then it is empty.
class CComboBox {
  public:
    /// Appends an entry; answers its position, -1 when not bound.
    int AddString(const char* text);
    void ResetContent();
    int GetCount() const;
    /// The selected position; -1 for none.
    int GetCurSel() const;
    /// A position that the list does not have leaves nothing selected and answers -1.
    int SetCurSel(int position);
    /// An entry's text; empty without such an entry.
    std::string GetText(int position) const;

  private:
    friend class CDialog;
    friend void DDX_Control(class CDataExchange* exchange, int id, CComboBox& control);

    CWnd* control_ = nullptr;
};

class CDialog;

/// One transfer between a dialog's controls and its members.
class CDataExchange {
  public:
    CDataExchange(CDialog* dialog, BOOL save) : m_pDlgWnd(dialog), m_bSaveAndValidate(save) {}

    CDialog* m_pDlgWnd;
    BOOL m_bSaveAndValidate;  ///< TRUE: controls to members
};

void DDX_Control(CDataExchange* exchange, int id, CComboBox& control);
/// Position of the drop-down list's selection; -1 for none.
void DDX_CBIndex(CDataExchange* exchange, int id, int& index);

/// A dialog made from a template of the current module state. It keeps its controls' state itself;
/// a window shows it while it runs modally.
class CDialog {
  public:
    explicit CDialog(UINT templateId, HWND parent = nullptr);
    virtual ~CDialog();
    CDialog(const CDialog&) = delete;
    CDialog& operator=(const CDialog&) = delete;

    /// Runs before the dialog is shown.
    virtual BOOL OnInitDialog();
    virtual void OnOK();
    virtual void OnCancel();
    /// `wParam` is the number of a button. OK and Cancel have their handlers.
    virtual BOOL OnCommand(WPARAM wParam, LPARAM lParam);

    /// Null for a number that the template does not have.
    CWnd* GetDlgItem(int id);
    /// The template's drop-down list; not bound when it has none.
    CComboBox DropDownList();
    /// Transfers between controls and members, see DoDataExchange.
    BOOL UpdateData(BOOL save = TRUE);
    /// Shows the dialog until it ends; IDCANCEL at once where no window can be opened.
    int DoModal();
    /// The same before whoever `runner` puts it before.
    int RunModal(DialogRunner& runner);
    void EndDialog(int result);

  protected:
    virtual void DoDataExchange(CDataExchange* exchange);

  private:
    class Surface;

    const DialogTemplate* template_;
    HWND parent_;
    std::vector<std::unique_ptr<CWnd> > controls_;
    bool hasEnded_ = false;
    int result_ = IDCANCEL;
    std::exception_ptr failure_;  ///< of a handler, which no window system must meet
};

/// A dialog that stands in a sheet of several.
class CPropertyPage : public CDialog {
  public:
    explicit CPropertyPage(UINT templateId, HWND parent = nullptr);
    ~CPropertyPage() override;

    virtual BOOL OnSetActive();
    virtual BOOL OnKillActive();
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

/// Makes `dialog` (not owned, lives as long as the module) the dialog template of this module. On
/// Windows it is linked into the module as a resource and this does nothing.
void AfxSetModuleDialog(const DialogTemplate& dialog);

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
