#include "platform/RandomAccessFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>

void RandomAccessFile::Close() noexcept {
    if (handle_ >= 0) close(static_cast<int>(handle_));
    handle_ = -1;
}

bool RandomAccessFile::Open(const char* path) {
    // O_NONBLOCK: opening a pipe that nobody writes to must not hang.
    const int descriptor = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) return false;
    struct stat status = {};
    const bool isKnown = fstat(descriptor, &status) == 0;
    if (!isKnown || !S_ISREG(status.st_mode)) {
        const int error = isKnown ? 0 : errno;
        close(descriptor);
        errno = error;
        return false;
    }
    if (handle_ >= 0) close(static_cast<int>(handle_));
    handle_ = descriptor;
    size_ = static_cast<std::uint64_t>(status.st_size);
    return true;
}

std::size_t RandomAccessFile::ReadAt(std::uint64_t offset, void* buffer, std::size_t count,
                                     int* systemError) const {
    if (systemError != nullptr) *systemError = 0;
    constexpr auto kLargestOffset = static_cast<std::uint64_t>(std::numeric_limits<off_t>::max());
    std::size_t done = 0;
    while (done < count && offset + done >= offset && offset + done <= kLargestOffset) {
        const ssize_t got = pread(static_cast<int>(handle_), static_cast<char*>(buffer) + done,
                                  count - done, static_cast<off_t>(offset + done));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0 && systemError != nullptr) *systemError = errno;
        if (got <= 0) break;
        done += static_cast<std::size_t>(got);
    }
    return done;
}
