#include "ui/CDriverOptionDialog.h"

#include <algorithm>

#include "description/DriverOptions.h"
#include "ui/OptionsDialogTemplate.h"

namespace {

constexpr int32_t kRead = 1;
constexpr int32_t kWrite = 0;

/// Position of a type among the codes that the model offers; -1 for none, which is also no type.
int PositionOf(int32_t whiteType, const std::vector<int32_t>& codes) {
    const auto found = std::find(codes.begin(), codes.end(), whiteType);
    return whiteType == -1 || found == codes.end() ? -1 : static_cast<int>(found - codes.begin());
}

}  // namespace

CDriverOptionDialog::CDriverOptionDialog(HWND parent, DriverOptionBlock* block,
                                         PrintSettings* settings)
    : CPropertyPage(kOptionsDialog, parent),
      block_(block),
      settings_(settings),
      writer_(std::make_unique<RTL>()) {
    if (settings_ != nullptr) writer_->ReadOutputSettings(*settings_);
    EnsureDriverOptions(*block_, Writer());
}

CDriverOptionDialog::~CDriverOptionDialog() = default;

void CDriverOptionDialog::DoDataExchange(CDataExchange* exchange) {
    DDX_Control(exchange, kWhiteList, whiteList_);
    DDX_CBIndex(exchange, kWhiteList, whiteChoice_);
}

BOOL CDriverOptionDialog::OnInitDialog() {
    const AFX_MAINTAIN_STATE2 moduleState(AfxGetStaticModuleState());
    CPropertyPage::OnInitDialog();
    const AStringArray& names = writer_->OutputSettings().WhiteTypeNames;
    if (names.empty()) {
        GetDlgItem(kWhiteLabel)->ShowWindow(SW_HIDE);
        GetDlgItem(kWhiteList)->ShowWindow(SW_HIDE);
    }
    whiteList_.ResetContent();
    for (const AString& name : names)
        whiteList_.AddString(name.c_str());
    // The host's sheet has buttons of its own.
    GetDlgItem(kOptionsOk)->ShowWindow(SW_HIDE);
    GetDlgItem(kOptionsCancel)->ShowWindow(SW_HIDE);
    UpdateData(FALSE);
    return TRUE;
}

void CDriverOptionDialog::ShowStoredChoice() {
    writer_->LoadDriverOptions(block_, kRead);
    const ModelOutputSettings& model = writer_->OutputSettings();
    const int position = PositionOf(model.EffectiveWhiteType(), model.WhiteTypeCodes);
    if (position >= 0) whiteChoice_ = position;
    UpdateData(FALSE);
}

void CDriverOptionDialog::StoreChoice() {
    UpdateData(TRUE);
    const std::vector<int32_t>& codes = writer_->OutputSettings().WhiteTypeCodes;
    if (whiteChoice_ >= 0 && whiteChoice_ < static_cast<int>(codes.size()))
        writer_->SetSupportWhiteType(codes[static_cast<std::size_t>(whiteChoice_)]);
    writer_->LoadDriverOptions(block_, kWrite);
}

BOOL CDriverOptionDialog::OnSetActive() {
    const AFX_MAINTAIN_STATE2 moduleState(AfxGetStaticModuleState());
    if (CPropertyPage::OnSetActive() == FALSE) return FALSE;
    ShowStoredChoice();
    return TRUE;
}

BOOL CDriverOptionDialog::OnKillActive() {
    const AFX_MAINTAIN_STATE2 moduleState(AfxGetStaticModuleState());
    StoreChoice();
    return CPropertyPage::OnKillActive();
}

void CDriverOptionDialog::OnOK() {
    const AFX_MAINTAIN_STATE2 moduleState(AfxGetStaticModuleState());
    CPropertyPage::OnOK();
    UpdateData(TRUE);
}

BOOL CDriverOptionDialog::OnCommand(WPARAM wParam, LPARAM lParam) {
    const AFX_MAINTAIN_STATE2 moduleState(AfxGetStaticModuleState());
    if (wParam != kRestoreDefaults) return CPropertyPage::OnCommand(wParam, lParam);
    OnRestoreDefaults();
    return TRUE;
}

void CDriverOptionDialog::GiveNewFile() {
    CreateDriverOptionsFile(*block_, Writer());
}

void CDriverOptionDialog::OnRestoreDefaults() {
    GiveNewFile();
    writer_->SetSupportWhiteType(-1);
    const ModelOutputSettings& model = writer_->OutputSettings();
    whiteChoice_ = PositionOf(model.DefaultWhiteType, model.WhiteTypeCodes);
    UpdateData(FALSE);
}
