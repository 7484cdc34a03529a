#pragma once

#include <cstdint>
#include <memory>

#include "host/Records.h"
#include "platform/afx.h"
#include "plugin/output/RTL.h"

/// The options page: how white ink is treated, chosen from what the model offers. The choice lives
/// in the file that the host's block names; the page reads it when it comes to the front and writes
/// it when it leaves.
class CDriverOptionDialog : public CPropertyPage {
  public:
    /// Borrows both; `settings` may be null, which offers nothing to choose from. A block that
    /// names no options file gets one.
    CDriverOptionDialog(HWND parent, DriverOptionBlock* block, PrintSettings* settings);
    ~CDriverOptionDialog() override;

    BOOL OnInitDialog() override;
    BOOL OnSetActive() override;
    BOOL OnKillActive() override;
    void OnOK() override;
    BOOL OnCommand(WPARAM wParam, LPARAM lParam) override;

  protected:
    void DoDataExchange(CDataExchange* exchange) override;
    void ShowStoredChoice();
    void StoreChoice();
    /// Gives the block a new options file in place of the one that it names.
    virtual void GiveNewFile();
    WriterId Writer() const { return writer_->Id(); }

  private:
    /// The choice goes back to the model's default.
    void OnRestoreDefaults();

    int whiteChoice_ = -1;  ///< position in the list; -1 for none
    CComboBox whiteList_;
    DriverOptionBlock* block_;
    PrintSettings* settings_;
    std::unique_ptr<RTL> writer_;  ///< reads the model's offer, reads and writes the choice
};
