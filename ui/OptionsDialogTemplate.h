#pragma once

#include "platform/DialogTemplate.h"

/// Numbers of the options dialog and its controls, which hosts know.
enum OptionsDialogId : int {
    kOptionsOk = 1,
    kOptionsCancel = 2,
    kOptionsDialog = 101,
    kRestoreDefaults = 1003,
    kWhiteList = 1016,
    kWhiteLabel = 1043,
};

/// The options dialog and page, from which every window system builds its window. The
/// module object makes it the module's dialog resource.
const DialogTemplate& OptionsDialogTemplate();
