#include "SheetWindow.h"

#include <wx/panel.h>
#include <wx/sizer.h>

#include "platform/CodePage.h"

namespace {

constexpr int kBorder = 8;  // pixels around the sheet's parts

}  // namespace

SheetWindow::SheetWindow(wxWindow* owner, const wxString& title,
                         const std::vector<SheetPage*>& pages)
    : window_(owner, wxID_ANY, title), book_(new wxNotebook(&window_, wxID_ANY)), pages_(pages) {
    for (SheetPage* const page : pages_)
        AddPage(*page);
    auto* const sizer = new wxBoxSizer(wxVERTICAL);
    sizer->Add(book_, 1, wxEXPAND | wxALL, kBorder);
    sizer->Add(window_.CreateButtonSizer(wxOK | wxCANCEL), 0, wxEXPAND | wxALL, kBorder);
    window_.SetSizerAndFit(sizer);
    book_->Bind(wxEVT_NOTEBOOK_PAGE_CHANGING, &SheetWindow::LeavePage, this);
    book_->Bind(wxEVT_NOTEBOOK_PAGE_CHANGED,
                [this](wxBookCtrlEvent& event) { EnterPage(event.GetSelection()); });
    window_.Bind(
        wxEVT_BUTTON,
        [this](wxCommandEvent&) {
            if (Accept()) window_.EndModal(wxID_OK);
        },
        wxID_OK);
    if (!pages_.empty()) EnterPage(0);
}

void SheetWindow::AddPage(SheetPage& page) {
    auto* const panel = new wxPanel(book_);  // the book owns it
    panels_.push_back(std::make_unique<DialogPanel>(*panel, page));
    panel->SetMinSize(panels_.back()->Size());
    book_->AddPage(panel, wxString::FromUTF8(AnsiToUtf8(page.Title())));
}

void SheetWindow::LeavePage(wxBookCtrlEvent& event) {
    if (active_ < 0) return;
    if (pages_[static_cast<std::size_t>(active_)]->Deactivate()) {
        active_ = -1;
    } else {
        event.Veto();
    }
}

void SheetWindow::EnterPage(int index) {
    if (index < 0 || index == active_) return;
    if (pages_[static_cast<std::size_t>(index)]->Activate()) active_ = index;
    panels_[static_cast<std::size_t>(index)]->Update();
}

/// The active page leaves the front first, which stores what it shows.
bool SheetWindow::Accept() {
    if (active_ >= 0 && !pages_[static_cast<std::size_t>(active_)]->Deactivate()) return false;
    active_ = -1;
    for (SheetPage* const page : pages_)
        page->Accept();
    return true;
}

int SheetWindow::Run() {
    window_.Raise();
    book_->SetFocus();
    return window_.ShowModal() == wxID_OK ? IDOK : IDCANCEL;
}
