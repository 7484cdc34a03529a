#include "ui/CDriverOptionDialogFS.h"

#include "ui/DialogScript.h"
#include "ui/OptionsDialogTemplate.h"

CDriverOptionDialogFS::CDriverOptionDialogFS(HWND parent, DriverOptionBlock* block,
                                             PrintSettings* settings)
    : CDriverOptionDialog(parent, block, settings), edit_(*block, Writer()) {}

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
    edit_.Keep();
    EndDialog(IDOK);
}

void CDriverOptionDialogFS::OnCancel() {
    const AFX_MAINTAIN_STATE2 moduleState(AfxGetStaticModuleState());
    CDriverOptionDialog::OnCancel();
    EndDialog(IDCANCEL);
}

void CDriverOptionDialogFS::GiveNewFile() {
    edit_.StartOver();
}

int EditDriverOptions(HWND parent, DriverOptionBlock& block, PrintSettings& settings) {
    CDriverOptionDialogFS dialog(parent, &block, &settings);
    return RunByScriptOrWindow(dialog);
}
