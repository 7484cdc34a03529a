#include "DialogPanel.h"

#include <wx/button.h>
#include <wx/font.h>
#include <wx/stattext.h>

#include "platform/CodePage.h"

namespace {

wxString Text(const std::string& text) {
    return wxString::FromUTF8(AnsiToUtf8(text));
}

}  // namespace

DialogPanel::DialogPanel(wxWindow& parent, DialogSurface& dialog)
    : parent_(parent), dialog_(dialog) {
    const DialogTemplate& shape = dialog.Template();
    parent.SetFont(wxFont(wxFontInfo(shape.FontPoints).FaceName(shape.FontName)));
    for (std::size_t i = 0; i < shape.ControlCount; ++i)
        AddControl(shape.Controls[i]);
    if (list_ != nullptr) list_->Bind(wxEVT_CHAR_HOOK, &DialogPanel::OnKey, this);
    Update();
}

/// A drop-down list changes with the arrow keys while it is closed; Enter or the space bar opens
/// it.
void DialogPanel::OnKey(wxKeyEvent& event) {
    const int key = event.GetKeyCode();
    const bool isArrow = key == WXK_UP || key == WXK_DOWN;
    // The list's own parts have the focus, so that only the event tells.
    if (list_ == nullptr || event.GetEventObject() != list_ || !isArrow) return event.Skip();
    const int position = dialog_.Selection() + (key == WXK_UP ? -1 : 1);
    if (position >= 0 && position < static_cast<int>(items_.size())) dialog_.Select(position);
    Update();
}

void DialogPanel::Press(int id) {
    dialog_.Press(id);
    Update();
    if (OnChange) OnChange();
}

wxSize DialogPanel::Size() const {
    const DialogTemplate& shape = dialog_.Template();
    return parent_.ConvertDialogToPixels(wxSize(shape.Width, shape.Height));
}

/// Controls are made in the template's order, which is the tab order.
void DialogPanel::AddControl(const ControlTemplate& control) {
    const wxPoint place = parent_.ConvertDialogToPixels(wxPoint(control.X, control.Y));
    const wxSize size = parent_.ConvertDialogToPixels(wxSize(control.Width, control.Height));
    const wxString text = Text(control.Text);
    wxWindow* window = nullptr;
    switch (control.Kind) {
        case ControlKind::kLabel:
            window = new wxStaticText(&parent_, wxID_ANY, text, place);
            break;
        case ControlKind::kDropDownList:
            // The template's height is that of the opened list.
            list_ = new wxChoice(&parent_, wxID_ANY, place, wxSize(size.x, -1));
            list_->Bind(wxEVT_CHOICE,
                        [this](wxCommandEvent& event) { dialog_.Select(event.GetSelection()); });
            window = list_;
            break;
        case ControlKind::kDefaultButton:
        case ControlKind::kPushButton: {
            auto* const button = new wxButton(&parent_, wxID_ANY, text, place, size);
            if (control.Kind == ControlKind::kDefaultButton) button->SetDefault();
            button->Bind(wxEVT_BUTTON, [this, id = control.Id](wxCommandEvent&) { Press(id); });
            window = button;
            break;
        }
    }
    controls_[control.Id] = window;  // its parent window owns it
}

void DialogPanel::Update() {
    UpdateList();
    for (const auto& [id, window] : controls_)
        window->Show(dialog_.IsVisible(id));
}

void DialogPanel::UpdateList() {
    if (list_ == nullptr) return;
    const std::vector<std::string> items = dialog_.Items();
    if (items != items_) {
        items_ = items;
        list_->Clear();
        for (const std::string& item : items)
            list_->Append(Text(item));
    }
    list_->SetSelection(dialog_.Selection());
}

void DialogPanel::FocusFirst() {
    const DialogTemplate& shape = dialog_.Template();
    for (std::size_t i = 0; i < shape.ControlCount; ++i)
        if (dialog_.IsVisible(shape.Controls[i].Id))
            return Control(shape.Controls[i].Id)->SetFocus();
}

wxWindow* DialogPanel::Control(int id) const {
    const auto control = controls_.find(id);
    return control == controls_.end() ? nullptr : control->second;
}
