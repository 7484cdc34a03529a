// Stand-ins for the calls of the system that touch files. Each asks whether it is to fail and hands
// the call to the C library otherwise.

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <bitset>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "sweep/Faults.h"

#define VISIBLE __attribute__((visibility("default")))

namespace {

template <class Function>
Function* Next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

std::bitset<1024> hostsDescriptors;  // open on the host's own files

bool IsHosts(const char* path) {
    for (const char* variable : {"QL_LOG_FILE", "QL_MESSAGE_FILE", "QL_DIALOG_SCRIPT"}) {
        const char* const own = std::getenv(variable);
        if (own != nullptr && path != nullptr && std::strcmp(own, path) == 0) return true;
    }
    return false;
}
bool IsHosts(int descriptor) {
    const auto index = static_cast<std::size_t>(descriptor);
    return index < hostsDescriptors.size() && hostsDescriptors[index];
}
bool IsHosts(std::FILE* stream) {
    return stream == stderr || stream == stdout || IsHosts(fileno(stream));
}

template <class Subject>
bool Fails(Call call, Subject subject) {
    return !IsHosts(subject) && Strikes(call);
}
/// A stream that fails says so from then on, as after a failed call of its own.
bool FailsForGood(Call call, std::FILE* stream) {
    if (!Fails(call, stream)) return false;
    constexpr int kErrorSeen = 0x20;  // the bit that ferror looks at; nothing offers to set it
    stream->_flags |= kErrorSeen;
    return true;
}

/// Half of a transfer, and at least a byte of it.
std::size_t Taken(Call cut, int descriptor, std::size_t count) {
    return count > 1 && Fails(cut, descriptor) ? count / 2 : count;
}

}  // namespace

// `name` answers `failure` when a call on `subject` (a path, a descriptor or a stream) is to fail.
#define STAND_IN(result, name, parameters, arguments, call, subject, failure) \
    VISIBLE result name parameters {                                          \
        static auto* const next = Next<result parameters>(#name);             \
        return Fails(Call::call, subject) ? (failure) : next arguments;       \
    }

extern "C" {

VISIBLE int open(const char* path, int flags, ...) {
    static auto* const next = Next<int(const char*, int, ...)>("open");
    std::va_list more;
    va_start(more, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(more, mode_t) : 0;
    va_end(more);
    if (Fails(Call::kOpen, path)) return -1;
    const int descriptor = next(path, flags, mode);
    const auto index = static_cast<std::size_t>(descriptor);
    if (index < hostsDescriptors.size()) hostsDescriptors[index] = IsHosts(path);
    return descriptor;
}
STAND_IN(FILE*, fdopen, (int file, const char* mode) noexcept, (file, mode), kOpen, file, nullptr)

VISIBLE ssize_t read(int file, void* buffer, std::size_t count) {
    static auto* const next = Next<ssize_t(int, void*, std::size_t)>("read");
    if (Fails(Call::kRead, file)) return -1;
    return next(file, buffer, Taken(Call::kShortRead, file, count));
}
VISIBLE ssize_t pread(int file, void* buffer, std::size_t count, off_t offset) {
    static auto* const next = Next<ssize_t(int, void*, std::size_t, off_t)>("pread");
    if (Fails(Call::kRead, file)) return -1;
    return next(file, buffer, Taken(Call::kShortRead, file, count), offset);
}
VISIBLE std::size_t fread(void* buffer, std::size_t size, std::size_t count, std::FILE* stream) {
    static auto* const next = Next<std::size_t(void*, std::size_t, std::size_t, FILE*)>("fread");
    return FailsForGood(Call::kRead, stream) ? 0 : next(buffer, size, count, stream);
}

VISIBLE ssize_t write(int file, const void* data, std::size_t count) {
    static auto* const next = Next<ssize_t(int, const void*, std::size_t)>("write");
    if (Fails(Call::kWrite, file)) return -1;
    return next(file, data, Taken(Call::kShortWrite, file, count));
}
VISIBLE ssize_t pwrite(int file, const void* data, std::size_t count, off_t offset) {
    static auto* const next = Next<ssize_t(int, const void*, std::size_t, off_t)>("pwrite");
    if (Fails(Call::kWrite, file)) return -1;
    return next(file, data, Taken(Call::kShortWrite, file, count), offset);
}
// A stream takes half of what no longer fits.
VISIBLE std::size_t fwrite(const void* data, std::size_t size, std::size_t count,
                           std::FILE* stream) {
    static auto* const next =
        Next<std::size_t(const void*, std::size_t, std::size_t, FILE*)>("fwrite");
    if (!FailsForGood(Call::kWrite, stream)) return next(data, size, count, stream);
    const int error = errno;
    const std::size_t written = next(data, size, count / 2, stream);
    errno = error;
    return written;
}
STAND_IN(int, fflush, (std::FILE * stream), (stream), kWrite, stream, EOF)
STAND_IN(int, fsync, (int file), (file), kWrite, file, -1)

STAND_IN(off_t, lseek, (int file, off_t offset, int origin) noexcept, (file, offset, origin), kSeek,
         file, -1)
STAND_IN(int, fseeko, (std::FILE * stream, off_t offset, int origin), (stream, offset, origin),
         kSeek, stream, -1)
STAND_IN(off_t, ftello, (std::FILE * stream), (stream), kSeek, stream, -1)

// What fails to close is closed all the same.
VISIBLE int close(int file) {
    static auto* const next = Next<int(int)>("close");
    const bool fails = Fails(Call::kClose, file);
    const int error = errno;
    const int answer = next(file);
    if (fails) errno = error;
    return fails ? -1 : answer;
}
VISIBLE int fclose(std::FILE* stream) {
    static auto* const next = Next<int(FILE*)>("fclose");
    const bool fails = Fails(Call::kClose, stream);
    const int error = errno;
    const int answer = next(stream);
    if (fails) errno = error;
    return fails ? EOF : answer;
}

STAND_IN(int, stat, (const char* path, struct stat* status) noexcept, (path, status), kStat, path,
         -1)
STAND_IN(int, lstat, (const char* path, struct stat* status) noexcept, (path, status), kStat, path,
         -1)
STAND_IN(int, fstat, (int file, struct stat* status) noexcept, (file, status), kStat, file, -1)
STAND_IN(ssize_t, readlink, (const char* path, char* buffer, std::size_t size) noexcept,
         (path, buffer, size), kStat, path, -1)

STAND_IN(int, mkdir, (const char* path, mode_t mode) noexcept, (path, mode), kMakeFolder, path, -1)
STAND_IN(int, rename, (const char* from, const char* to) noexcept, (from, to), kRename, from, -1)
STAND_IN(int, unlink, (const char* path) noexcept, (path), kUnlink, path, -1)
STAND_IN(int, remove, (const char* path) noexcept, (path), kUnlink, path, -1)

STAND_IN(int, ftruncate, (int file, off_t size) noexcept, (file, size), kTruncate, file, -1)
STAND_IN(int, fallocate, (int file, int mode, off_t offset, off_t count),
         (file, mode, offset, count), kReserve, file, -1)
STAND_IN(int, statvfs, (const char* path, struct statvfs* space) noexcept, (path, space),
         kFreeSpace, path, -1)

}  // extern "C"
