#pragma once

// Ours first: the toolkit makes macros of names that the platform layer declares.
// clang-format off
#include "platform/WindowSystem.h"
// clang-format on

#include <wx/choice.h>
#include <wx/window.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

/// The controls of a dialog in a window: built from the dialog's template, drawn from its state,
/// and telling it what the user does.
class DialogPanel {
  public:
    /// Builds the controls in `parent`, whose font the template decides. Borrows both.
    DialogPanel(wxWindow& parent, DialogSurface& dialog);

    /// Size of the template in pixels.
    wxSize Size() const;
    /// Draws the dialog's state.
    void Update();
    /// Gives the keyboard to the first control that is shown, in tab order.
    void FocusFirst();
    /// Null for a number that the template does not have.
    wxWindow* Control(int id) const;

    /// What happens after the user pressed a button, beside Update.
    std::function<void()> OnChange;

  private:
    void AddControl(const ControlTemplate& control);
    void UpdateList();
    void OnKey(wxKeyEvent& event);
    void Press(int id);

    wxWindow& parent_;
    DialogSurface& dialog_;
    std::map<int, wxWindow*> controls_;
    wxChoice* list_ = nullptr;
    std::vector<std::string> items_;  ///< that the list shows
};
