#pragma once

#include "platform/afx.h"

/// Runs a dialog modally. Where QL_DIALOG_SCRIPT names a file, its lines answer the dialog and no
/// window is opened: "select N" chooses a position of the drop-down list, "press ID" a button, and
/// the file's end is Cancel. What the dialog shows goes to the message file, when it opens and
/// after each line. Without a script the dialog is shown in a window, and ends as cancelled where
/// no window can be opened.
int RunByScriptOrWindow(CDialog& dialog);
