#include "host/QLCopyFile.h"

#include <filesystem>
#include <system_error>

#include "platform/win32.h"

int QLCopyFile(const AFilePath& from, const AFilePath& to) {
    if (!from.isValid() || !to.isValid()) return 0;
    return CopyFileA(from.fullPath().c_str(), to.fullPath().c_str(), FALSE) != FALSE ? 1 : 0;
}

bool NameOneFile(const AFilePath& left, const AFilePath& right) {
    std::error_code error;
    return left.isValid() && right.isValid() &&
           std::filesystem::equivalent(left.fullPath(), right.fullPath(), error);
}
