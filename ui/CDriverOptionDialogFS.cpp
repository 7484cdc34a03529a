#include "ui/CDriverOptionDialogFS.h"

#include "description/DriverOptions.h"
#include "ui/DialogScript.h"
#include "ui/OptionsDialogTemplate.h"

BOOL CDriverOptionDialogFS::OnInitDialog() {
    const AFX_MAINTAIN_STATE2 moduleState(AfxGetStaticModuleState());
    CDriverOptionDialog::OnInitDialog();
    GetDlgItem(kOptionsOk)->ShowWindow(SW_SHOW);
    GetDlgItem(kOptionsCancel)->ShowWindow(SW_SHOW);
    // No sheet activates the page here.
    ShowStoredChoice();
    return TRUE;
}

void CDriverOptionDialogFS::OnOK() {
    const AFX_MAINTAIN_STATE2 moduleState(AfxGetStaticModuleState());
    CDriverOptionDialog::OnOK();
    StoreChoice();
    EndDialog(IDOK);
}

void CDriverOptionDialogFS::OnCancel() {
    const AFX_MAINTAIN_STATE2 moduleState(AfxGetStaticModuleState());
    CDriverOptionDialog::OnCancel();
    EndDialog(IDCANCEL);
}

int EditDriverOptions(HWND parent, DriverOptionBlock& block, PrintSettings& settings) {
    const DriverOptionsSnapshot before(block);
    CDriverOptionDialogFS dialog(parent, &block, &settings);
    int answer = IDCANCEL;
    try {
        answer = RunByScriptOrWindow(dialog);
    } catch (...) {
        before.Restore(block);
        throw;
    }
    if (answer != IDOK) before.Restore(block);
    return answer;
}
