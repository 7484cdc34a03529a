#pragma once

#include "host/AFilePath.h"

/// The host's file helpers.
class AFile {
  public:
    /// Deletes a file; 1 when it is gone. `flag` is always 1.
    static int DeleteFileA(const AFilePath& path, int flag);
};
