#include "platform/afx.h"

BOOL CWnd::ShowWindow(int command) {
    const BOOL wasVisible = IsWindowVisible();
    isVisible_ = command != SW_HIDE;
    return wasVisible;
}

int CComboBox::AddString(const char* text) {
    if (control_ == nullptr) return -1;
    control_->items_.emplace_back(text);
    return GetCount() - 1;
}

void CComboBox::ResetContent() {
    if (control_ == nullptr) return;
    control_->items_.clear();
    control_->selection_ = -1;
}

int CComboBox::GetCount() const {
    return control_ == nullptr ? 0 : static_cast<int>(control_->items_.size());
}

int CComboBox::GetCurSel() const {
    return control_ == nullptr ? -1 : control_->selection_;
}

int CComboBox::SetCurSel(int position) {
    if (control_ == nullptr) return -1;
    control_->selection_ = position >= 0 && position < GetCount() ? position : -1;
    return control_->selection_;
}

std::string CComboBox::GetText(int position) const {
    const bool exists = position >= 0 && position < GetCount();
    return exists ? control_->items_[static_cast<std::size_t>(position)] : std::string();
}

void DDX_Control(CDataExchange* exchange, int id, CComboBox& control) {
    control.control_ = exchange->m_pDlgWnd->GetDlgItem(id);
}

void DDX_CBIndex(CDataExchange* exchange, int id, int& index) {
    CComboBox control;
    DDX_Control(exchange, id, control);
    if (exchange->m_bSaveAndValidate != FALSE)
        index = control.GetCurSel();
    else
        control.SetCurSel(index);
}

/// The dialog as a window sees it. What a handler throws waits in the dialog until the window is
/// gone: no exception passes a toolkit's frames.
class CDialog::Surface final : public DialogSurface {
  public:
    explicit Surface(CDialog& dialog) : dialog_(dialog), list_(dialog.DropDownList()) {}

    const DialogTemplate& Template() const override { return *dialog_.template_; }
    bool IsVisible(int id) override {
        const CWnd* const control = dialog_.GetDlgItem(id);
        return control != nullptr && control->IsWindowVisible() != FALSE;
    }
    std::vector<std::string> Items() override {
        try {
            return list_.control_ == nullptr ? std::vector<std::string>() : list_.control_->items_;
        } catch (...) {
            return {};  // a window without its list is better than no host
        }
    }
    int Selection() override { return list_.GetCurSel(); }
    void Select(int position) override { list_.SetCurSel(position); }
    void Press(int id) override {
        try {
            if (IsVisible(id)) dialog_.OnCommand(static_cast<WPARAM>(id), 0);
        } catch (...) {
            dialog_.failure_ = std::current_exception();
            dialog_.EndDialog(IDCANCEL);
        }
    }
    bool HasEnded() override { return dialog_.hasEnded_; }

  private:
    CDialog& dialog_;
    CComboBox list_;
};

CDialog::CDialog(UINT templateId, HWND parent) : parent_(parent) {
    static constexpr DialogTemplate kNoTemplate = {};
    const DialogTemplate* const found = AfxGetModuleState()->m_pDialog;
    template_ = found != nullptr && found->Id == templateId ? found : &kNoTemplate;
    for (std::size_t i = 0; i < template_->ControlCount; ++i) {
        controls_.push_back(std::make_unique<CWnd>());
        controls_.back()->id_ = template_->Controls[i].Id;
    }
}

CDialog::~CDialog() = default;

BOOL CDialog::OnInitDialog() {
    UpdateData(FALSE);
    return TRUE;
}

void CDialog::OnOK() {
    EndDialog(IDOK);
}

void CDialog::OnCancel() {
    EndDialog(IDCANCEL);
}

BOOL CDialog::OnCommand(WPARAM wParam, LPARAM /*lParam*/) {
    if (wParam == IDOK) OnOK();
    if (wParam == IDCANCEL) OnCancel();
    return wParam == IDOK || wParam == IDCANCEL ? TRUE : FALSE;
}

void CDialog::DoDataExchange(CDataExchange* /*exchange*/) {}

CWnd* CDialog::GetDlgItem(int id) {
    for (const std::unique_ptr<CWnd>& control : controls_)
        if (control->id_ == id) return control.get();
    return nullptr;
}

CComboBox CDialog::DropDownList() {
    CComboBox list;
    for (std::size_t i = 0; i < template_->ControlCount; ++i)
        if (template_->Controls[i].Kind == ControlKind::kDropDownList)
            list.control_ = controls_[i].get();
    return list;
}

BOOL CDialog::UpdateData(BOOL save) {
    CDataExchange exchange(this, save);
    DoDataExchange(&exchange);
    return TRUE;
}

int CDialog::DoModal() {
    WindowSystem* const windows = OpenWindowSystem();
    return windows == nullptr ? IDCANCEL : RunModal(*windows);
}

int CDialog::RunModal(DialogRunner& runner) {
    hasEnded_ = false;
    result_ = IDCANCEL;
    failure_ = nullptr;
    OnInitDialog();
    Surface surface(*this);
    if (!hasEnded_) runner.RunDialog(surface, parent_);
    if (failure_ != nullptr) std::rethrow_exception(failure_);
    return result_;
}

void CDialog::EndDialog(int result) {
    hasEnded_ = true;
    result_ = result;
}

CPropertyPage::CPropertyPage(UINT templateId, HWND parent) : CDialog(templateId, parent) {}

CPropertyPage::~CPropertyPage() = default;

BOOL CPropertyPage::OnSetActive() {
    return TRUE;
}

BOOL CPropertyPage::OnKillActive() {
    return UpdateData(TRUE);
}
