#pragma once

#include "description/DriverOptions.h"
#include "ui/CDriverOptionDialog.h"

/// The options page as a modal dialog with buttons of its own. It shows the stored choice when it
/// opens and stores the choice on OK; otherwise the block and its file are as they were when the
/// dialog goes.
class CDriverOptionDialogFS : public CDriverOptionDialog {
  public:
    CDriverOptionDialogFS(HWND parent, DriverOptionBlock* block, PrintSettings* settings);

    BOOL OnInitDialog() override;
    void OnOK() override;
    void OnCancel() override;

  protected:
    void GiveNewFile() override;

  private:
    DriverOptionsEdit edit_;
};

/// Has the options edited, by the script that QL_DIALOG_SCRIPT names or else in a window; without
/// either the dialog ends as cancelled. Answers IDOK or IDCANCEL.
int EditDriverOptions(HWND parent, DriverOptionBlock& block, PrintSettings& settings);
