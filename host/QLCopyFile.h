#pragma once

#include "host/AFilePath.h"

/// Copies a file, replacing `to`. 1 when the copy is complete; a file is not copied onto itself
/// (0, nothing changes).
int QLCopyFile(const AFilePath& from, const AFilePath& to);

/// Whether both paths lead to one existing file.
bool NameOneFile(const AFilePath& left, const AFilePath& right);
