#include "host/AFile.h"

#include "platform/win32.h"

int AFile::DeleteFileA(const AFilePath& path, int /*flag*/) {
    return path.isValid() && ::DeleteFileA(path.fullPath().c_str()) != FALSE ? 1 : 0;
}
