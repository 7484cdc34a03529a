#include "platform/SystemError.h"

#include <cerrno>
#include <cstring>

int LastSystemError() {
    return errno;
}

void ForgetSystemError() {
    errno = 0;
}

std::string_view SystemErrorText(int error, char* buffer, std::size_t bufferBytes) {
    if (error == 0 || bufferBytes == 0) return {};
    // The GNU form, which answers a constant text for every number that it knows.
    return strerror_r(error, buffer, bufferBytes);
}
