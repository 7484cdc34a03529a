#include "platform/Stream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

namespace {

/// The flags of open() that an fopen mode stands for.
int OpenFlags(const char* mode) {
    const bool updates = std::strchr(mode, '+') != nullptr;
    switch (mode[0]) {
        case 'w':
            return (updates ? O_RDWR : O_WRONLY) | O_CREAT | O_TRUNC;
        case 'a':
            return (updates ? O_RDWR : O_WRONLY) | O_CREAT | O_APPEND;
        default:
            return updates ? O_RDWR : O_RDONLY;
    }
}

}  // namespace

Stream OpenStream(const char* path, const char* mode) {
    const int descriptor = open(path, OpenFlags(mode) | O_CLOEXEC | O_NONBLOCK, 0666);
    if (descriptor < 0) return nullptr;
    struct stat status = {};
    std::FILE* stream = nullptr;
    // A pipe that nobody writes to would read as an empty file.
    const bool reads = mode[0] == 'r';
    if (fstat(descriptor, &status) == 0 && !S_ISDIR(status.st_mode) &&
        !(reads && S_ISFIFO(status.st_mode))) {
        stream = fdopen(descriptor, mode);
    }
    if (stream == nullptr) close(descriptor);
    return Stream(stream);
}

bool SeekStream(std::FILE* stream, std::int64_t offset, int origin) {
    return fseeko(stream, offset, origin) == 0;
}

std::int64_t TellStream(std::FILE* stream) {
    return ftello(stream);
}

void ReserveSpace(std::FILE* stream, std::int64_t bytes) {
#ifdef FALLOC_FL_KEEP_SIZE
    // Not posix_fallocate, which writes zeros where the file system cannot reserve. A reservation
    // that runs out of room may keep what it got.
    if (bytes > 0 && fallocate(fileno(stream), FALLOC_FL_KEEP_SIZE, 0, bytes) != 0)
        ReleaseSpace(stream);
#endif
}

void ReleaseSpace(std::FILE* stream) {
    struct stat status = {};
    if (fstat(fileno(stream), &status) != 0) return;
    [[maybe_unused]] const int ignored = ftruncate(fileno(stream), status.st_size);
}
