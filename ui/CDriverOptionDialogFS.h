#pragma once

#include "ui/CDriverOptionDialog.h"

/// The options page as a modal dialog with buttons of its own. It shows the stored choice when it
/// opens and stores the choice on OK.
class CDriverOptionDialogFS : public CDriverOptionDialog {
  public:
    using CDriverOptionDialog::CDriverOptionDialog;

    BOOL OnInitDialog() override;
    void OnOK() override;
    void OnCancel() override;
};

/// Has the options edited, by the script that QL_DIALOG_SCRIPT names or else in a window; without
/// either the dialog ends as cancelled. Answers IDOK or IDCANCEL. A dialog that is cancelled leaves
/// the block and its file as they were.
int EditDriverOptions(HWND parent, DriverOptionBlock& block, PrintSettings& settings);
