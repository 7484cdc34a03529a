#include "platform/NewFile.h"

#include <fcntl.h>

#include <cerrno>
#include <cstdio>

#include "platform/posix/Descriptor.h"

int WriteNewFile(const char* path, std::string_view bytes) noexcept {
    ScopedDescriptor file(open(path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (file.Get() < 0) return errno;
    // A full disk often shows first at the close.
    if (WriteAll(file.Get(), bytes) && file.Close()) return 0;
    const int error = errno;
    unlink(path);
    return error;
}

int RenameOver(const char* from, const char* to) noexcept {
    return std::rename(from, to) == 0 ? 0 : errno;
}
