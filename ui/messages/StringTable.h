#pragma once

#include "platform/win32.h"

/// Numbers of the module's string resources.
enum StringResource : UINT {
    kWhiteTypeNames = 6,
    kColorNames = 8001,
    kColorModeNames = 8002,
    kUnsupportedPortMessage = 9002,
    kDiskSpaceMessage = 9003,
};

/// Loads a string resource of this module (not of the caller's) into `buffer`: at most `size` - 1
/// characters, terminated. Nonzero when the resource exists; else the buffer stays as it was.
int LoadResString(UINT id, char* buffer, int size);
