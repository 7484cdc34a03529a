#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/DialogTemplate.h"
#include "platform/win32.h"

/// A dialog as a window shows it. The dialog keeps its controls' state; a window draws that state,
/// reports what the user does, and draws again. None of these throws.
class DialogSurface {
  public:
    virtual ~DialogSurface() = default;
    virtual const DialogTemplate& Template() const = 0;
    virtual bool IsVisible(int id) = 0;
    /// Texts of the drop-down list, in the code page.
    virtual std::vector<std::string> Items() = 0;
    /// Position in the drop-down list; -1 for none.
    virtual int Selection() = 0;
    virtual void Select(int position) = 0;
    /// The user pressed a button.
    virtual void Press(int id) = 0;
    /// Whether a button has ended the dialog.
    virtual bool HasEnded() = 0;
};

/// A page of a sheet of pages, one of which is active at a time.
class SheetPage : public DialogSurface {
  public:
    virtual std::string Title() = 0;
    /// The page comes to the front; false keeps it from there.
    virtual bool Activate() = 0;
    /// The page leaves the front; false keeps it there.
    virtual bool Deactivate() = 0;
    /// The sheet ends with OK.
    virtual void Accept() = 0;
};

/// Whatever can put a modal dialog before somebody who answers it.
class DialogRunner {
  public:
    virtual ~DialogRunner() = default;
    /// Returns when the dialog has ended. `owner` may be null.
    virtual void RunDialog(DialogSurface& dialog, HWND owner) = 0;
};

/// Real windows. A window belongs to the window that this system shows at the time, if any, and
/// comes to the front; the handle of a host's own window cannot be told to the toolkit.
class WindowSystem : public DialogRunner {
  public:
    /// A modal message in front of its owner; answers the button.
    virtual int ShowMessage(HWND owner, const char* text, const char* caption, UINT type) = 0;
    /// A modal sheet of pages with OK and Cancel; the first page is active when it opens. Answers
    /// IDOK after every page was accepted, else IDCANCEL.
    virtual int RunSheet(const char* title, const std::vector<SheetPage*>& pages) = 0;
};

/// The window system of this machine, loaded from the module's own folder when it is first asked
/// for; null without a display or without the window module. Lives as long as the process.
WindowSystem* OpenWindowSystem();

/// The window module's only export, by this name; null when no window can be opened.
inline constexpr char kWindowModuleEntry[] = "OpenWindows";
using WindowModuleEntry = WindowSystem* (*)();
