// The window module: real windows through wxWidgets, for whoever loads it.

// Ours first: the toolkit makes macros of names that the platform layer declares.
// clang-format off
#include "platform/WindowSystem.h"
// clang-format on

#include <wx/app.h>
#include <wx/dialog.h>
#include <wx/init.h>
#include <wx/msgdlg.h>

#include "DialogPanel.h"
#include "SheetWindow.h"
#include "platform/CodePage.h"
#include "platform/Export.h"

namespace {

/// The window that the next one belongs to: the one that the module shows on top.
wxWindow* TopWindow() {
    wxWindow* top = nullptr;
    for (wxWindow* const window : wxTopLevelWindows)
        if (window->IsShown()) top = window;
    return top;
}

/// Runs one dialog.
class DialogWindow {
  public:
    DialogWindow(wxWindow* owner, DialogSurface& dialog)
        : window_(owner, wxID_ANY, wxString::FromUTF8(dialog.Template().Caption)),
          dialog_(dialog),
          panel_(window_, dialog) {
        window_.SetClientSize(panel_.Size());
        // Escape and the close button press Cancel, whose number the framework fixes.
        if (const wxWindow* const cancel = panel_.Control(IDCANCEL))
            window_.SetEscapeId(cancel->GetId());
        panel_.OnChange = [this] {
            if (dialog_.HasEnded()) window_.EndModal(wxID_OK);
        };
    }

    void Run() {
        window_.Raise();
        panel_.FocusFirst();
        window_.ShowModal();
        if (!dialog_.HasEnded()) dialog_.Press(IDCANCEL);  // the display went away
    }

  private:
    wxDialog window_;
    DialogSurface& dialog_;
    DialogPanel panel_;
};

class WxWindows final : public WindowSystem {
  public:
    void RunDialog(DialogSurface& dialog, HWND /*owner*/) override {
        DialogWindow(TopWindow(), dialog).Run();
    }

    int ShowMessage(HWND /*owner*/, const char* text, const char* caption, UINT /*type*/) override {
        const std::string title = caption == nullptr || *caption == '\0' ? "Error" : caption;
        wxMessageDialog message(TopWindow(), wxString::FromUTF8(AnsiToUtf8(text)),
                                wxString::FromUTF8(AnsiToUtf8(title)),
                                wxOK | wxCENTRE | wxSTAY_ON_TOP);
        message.ShowModal();
        return IDOK;
    }

    int RunSheet(const char* title, const std::vector<SheetPage*>& pages) override {
        return SheetWindow(TopWindow(), wxString::FromUTF8(AnsiToUtf8(title)), pages).Run();
    }
};

}  // namespace

extern "C" PLATFORM_EXPORT WindowSystem* OpenWindows() {
    static WxWindows windows;
    static const bool isOpen = [] {
        wxApp::SetInstance(new wxApp);  // the toolkit owns it
        int argumentCount = 0;
        char** noArguments = nullptr;
        return wxEntryStart(argumentCount, noArguments);
    }();
    return isOpen ? &windows : nullptr;
}
