#pragma once

#include "platform/win32.h"

/// Shows a modal message box, brought to the foreground; answers the button. `type` is the
/// platform's (0: an OK button). With a message file that takes it, the message goes there and IDOK
/// is answered at once.
int ShowMessage(const char* text, UINT type = MB_OK, HWND owner = nullptr,
                const char* caption = nullptr);

/// Shows a string resource of this module the same way; a missing one shows an empty message.
int ShowResMessage(UINT id, UINT type, HWND owner, const char* caption);
