#include "host/QLCopyFile.h"

#include "platform/win32.h"

int QLCopyFile(const AFilePath& from, const AFilePath& to) {
    if (!from.isValid() || !to.isValid()) return 0;
    return CopyFileA(from.fullPath().c_str(), to.fullPath().c_str(), FALSE) != FALSE ? 1 : 0;
}
