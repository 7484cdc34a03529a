#pragma once

// Ours first: the toolkit makes macros of names that the platform layer declares.
// clang-format off
#include "platform/WindowSystem.h"
// clang-format on

#include <wx/dialog.h>
#include <wx/notebook.h>

#include <memory>
#include <vector>

#include "DialogPanel.h"

/// A sheet of pages with OK and Cancel.
class SheetWindow {
  public:
    /// Borrows the pages. The first is active when this returns.
    SheetWindow(wxWindow* owner, const wxString& title, const std::vector<SheetPage*>& pages);

    /// IDOK after every page was accepted, else IDCANCEL.
    int Run();

  private:
    void AddPage(SheetPage& page);
    void LeavePage(wxBookCtrlEvent& event);
    void EnterPage(int index);
    bool Accept();

    wxDialog window_;
    wxNotebook* book_;
    std::vector<SheetPage*> pages_;
    std::vector<std::unique_ptr<DialogPanel>> panels_;
    int active_ = -1;
};
