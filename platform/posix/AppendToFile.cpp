#include "platform/AppendToFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace {

bool WriteAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

}  // namespace

bool AppendToFile(const char* path, std::string_view bytes) noexcept {
    const int descriptor = open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NONBLOCK, 0666);
    if (descriptor < 0) return false;
    const bool written = WriteAll(descriptor, bytes);
    return close(descriptor) == 0 && written;
}

void WriteToStandardError(std::string_view bytes) noexcept {
    WriteAll(STDERR_FILENO, bytes);
}
