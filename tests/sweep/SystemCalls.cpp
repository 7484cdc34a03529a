// Stand-ins for the calls of the system that touch files. Each asks whether it is to fail and hands
// the call to the C library otherwise.

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <stdio_ext.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/uio.h>
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

bool IsHostsFile(const char* path) {
    for (const char* variable : {"QL_LOG_FILE", "QL_MESSAGE_FILE", "QL_DIALOG_SCRIPT"}) {
        const char* const own = std::getenv(variable);
        if (own != nullptr && path != nullptr && std::strcmp(own, path) == 0) return true;
    }
    return false;
}
bool IsHosts(int descriptor) {
    return descriptor >= 0 && static_cast<std::size_t>(descriptor) < hostsDescriptors.size() &&
           hostsDescriptors[static_cast<std::size_t>(descriptor)];
}
bool IsHosts(std::FILE* stream) {
    return stream == stderr || stream == stdout || IsHosts(fileno(stream));
}

bool Fails(Call call, const char* path) {
    return !IsHostsFile(path) && Strikes(call);
}
bool Fails(Call call, int descriptor) {
    return !IsHosts(descriptor) && Strikes(call);
}
/// A stream that fails says so from then on, as after a failed call of its own.
bool Fails(Call call, std::FILE* stream) {
    if (IsHosts(stream) || !Strikes(call)) return false;
    constexpr int kErrorSeen = 0x20;  // the bit that ferror looks at; nothing offers to set it
    stream->_flags |= kErrorSeen;
    return true;
}

int Remember(int descriptor, const char* path) {
    if (descriptor >= 0 && static_cast<std::size_t>(descriptor) < hostsDescriptors.size())
        hostsDescriptors[static_cast<std::size_t>(descriptor)] = IsHostsFile(path);
    return descriptor;
}

/// Half of a transfer, and at least a byte of it.
std::size_t Taken(Call cut, int descriptor, std::size_t count) {
    return count > 1 && Fails(cut, descriptor) ? count / 2 : count;
}

}  // namespace

extern "C" {

VISIBLE int open(const char* path, int flags, ...) {
    static auto* const next = Next<decltype(open)>("open");
    mode_t mode = 0;
    if ((flags & (O_CREAT | O_TMPFILE)) != 0) {
        std::va_list more;
        va_start(more, flags);
        mode = va_arg(more, mode_t);
        va_end(more);
    }
    return Fails(Call::kOpen, path) ? -1 : Remember(next(path, flags, mode), path);
}
VISIBLE int openat(int folder, const char* path, int flags, ...) {
    static auto* const next = Next<decltype(openat)>("openat");
    mode_t mode = 0;
    if ((flags & (O_CREAT | O_TMPFILE)) != 0) {
        std::va_list more;
        va_start(more, flags);
        mode = va_arg(more, mode_t);
        va_end(more);
    }
    return Fails(Call::kOpen, path) ? -1 : Remember(next(folder, path, flags, mode), path);
}
VISIBLE std::FILE* fopen(const char* path, const char* mode) {
    static auto* const next = Next<decltype(fopen)>("fopen");
    if (Fails(Call::kOpen, path)) return nullptr;
    std::FILE* const stream = next(path, mode);
    if (stream != nullptr) Remember(fileno(stream), path);
    return stream;
}
VISIBLE std::FILE* fdopen(int descriptor, const char* mode) noexcept {
    static auto* const next = Next<decltype(fdopen)>("fdopen");
    return Fails(Call::kOpen, descriptor) ? nullptr : next(descriptor, mode);
}
VISIBLE DIR* opendir(const char* path) {
    static auto* const next = Next<decltype(opendir)>("opendir");
    return Fails(Call::kOpen, path) ? nullptr : next(path);
}

VISIBLE ssize_t read(int descriptor, void* buffer, std::size_t count) {
    static auto* const next = Next<decltype(read)>("read");
    if (Fails(Call::kRead, descriptor)) return -1;
    return next(descriptor, buffer, Taken(Call::kShortRead, descriptor, count));
}
VISIBLE ssize_t pread(int descriptor, void* buffer, std::size_t count, off_t offset) {
    static auto* const next = Next<decltype(pread)>("pread");
    if (Fails(Call::kRead, descriptor)) return -1;
    return next(descriptor, buffer, Taken(Call::kShortRead, descriptor, count), offset);
}
VISIBLE std::size_t fread(void* buffer, std::size_t size, std::size_t count, std::FILE* stream) {
    static auto* const next = Next<decltype(fread)>("fread");
    return Fails(Call::kRead, stream) ? 0 : next(buffer, size, count, stream);
}

VISIBLE ssize_t write(int descriptor, const void* data, std::size_t count) {
    static auto* const next = Next<decltype(write)>("write");
    if (Fails(Call::kWrite, descriptor)) return -1;
    return next(descriptor, data, Taken(Call::kShortWrite, descriptor, count));
}
VISIBLE ssize_t pwrite(int descriptor, const void* data, std::size_t count, off_t offset) {
    static auto* const next = Next<decltype(pwrite)>("pwrite");
    if (Fails(Call::kWrite, descriptor)) return -1;
    return next(descriptor, data, Taken(Call::kShortWrite, descriptor, count), offset);
}
VISIBLE ssize_t writev(int descriptor, const iovec* parts, int count) {
    static auto* const next = Next<decltype(writev)>("writev");
    return Fails(Call::kWrite, descriptor) ? -1 : next(descriptor, parts, count);
}
// A stream takes half of what no longer fits.
VISIBLE std::size_t fwrite(const void* data, std::size_t size, std::size_t count,
                           std::FILE* stream) {
    static auto* const next = Next<decltype(fwrite)>("fwrite");
    if (!Fails(Call::kWrite, stream)) return next(data, size, count, stream);
    const int error = errno;
    const std::size_t written = next(data, size, count / 2, stream);
    errno = error;
    return written;
}
VISIBLE int fflush(std::FILE* stream) {
    static auto* const next = Next<decltype(fflush)>("fflush");
    return stream != nullptr && Fails(Call::kWrite, stream) ? EOF : next(stream);
}
VISIBLE int fsync(int descriptor) {
    static auto* const next = Next<decltype(fsync)>("fsync");
    return Fails(Call::kWrite, descriptor) ? -1 : next(descriptor);
}

VISIBLE off_t lseek(int descriptor, off_t offset, int origin) noexcept {
    static auto* const next = Next<decltype(lseek)>("lseek");
    return Fails(Call::kSeek, descriptor) ? -1 : next(descriptor, offset, origin);
}
VISIBLE int fseeko(std::FILE* stream, off_t offset, int origin) {
    static auto* const next = Next<decltype(fseeko)>("fseeko");
    return !IsHosts(stream) && Strikes(Call::kSeek) ? -1 : next(stream, offset, origin);
}
VISIBLE off_t ftello(std::FILE* stream) {
    static auto* const next = Next<decltype(ftello)>("ftello");
    return !IsHosts(stream) && Strikes(Call::kSeek) ? -1 : next(stream);
}

// What fails to close is closed all the same.
VISIBLE int close(int descriptor) {
    static auto* const next = Next<decltype(close)>("close");
    const bool fails = Fails(Call::kClose, descriptor);
    const int error = errno;
    const int answer = next(Remember(descriptor, nullptr));
    if (fails) errno = error;
    return fails ? -1 : answer;
}
VISIBLE int fclose(std::FILE* stream) {
    static auto* const next = Next<decltype(fclose)>("fclose");
    const bool fails = !IsHosts(stream) && Strikes(Call::kClose);
    const int error = errno;
    Remember(fileno(stream), nullptr);
    const int answer = next(stream);
    if (fails) errno = error;
    return fails ? EOF : answer;
}

VISIBLE int stat(const char* path, struct stat* status) noexcept {
    static auto* const next = Next<int(const char*, struct stat*)>("stat");
    return Fails(Call::kStat, path) ? -1 : next(path, status);
}
VISIBLE int lstat(const char* path, struct stat* status) noexcept {
    static auto* const next = Next<int(const char*, struct stat*)>("lstat");
    return Fails(Call::kStat, path) ? -1 : next(path, status);
}
VISIBLE int fstat(int descriptor, struct stat* status) noexcept {
    static auto* const next = Next<int(int, struct stat*)>("fstat");
    return Fails(Call::kStat, descriptor) ? -1 : next(descriptor, status);
}
VISIBLE int access(const char* path, int mode) noexcept {
    static auto* const next = Next<decltype(access)>("access");
    return Fails(Call::kStat, path) ? -1 : next(path, mode);
}
VISIBLE ssize_t readlink(const char* path, char* buffer, std::size_t size) noexcept {
    static auto* const next = Next<decltype(readlink)>("readlink");
    return Fails(Call::kStat, path) ? -1 : next(path, buffer, size);
}

VISIBLE int mkdir(const char* path, mode_t mode) noexcept {
    static auto* const next = Next<decltype(mkdir)>("mkdir");
    return Fails(Call::kMakeFolder, path) ? -1 : next(path, mode);
}
VISIBLE int rename(const char* from, const char* to) noexcept {
    static auto* const next = Next<decltype(rename)>("rename");
    return Fails(Call::kRename, from) ? -1 : next(from, to);
}
VISIBLE int unlink(const char* path) noexcept {
    static auto* const next = Next<decltype(unlink)>("unlink");
    return Fails(Call::kUnlink, path) ? -1 : next(path);
}
VISIBLE int remove(const char* path) noexcept {
    static auto* const next = Next<decltype(remove)>("remove");
    return Fails(Call::kUnlink, path) ? -1 : next(path);
}

VISIBLE int ftruncate(int descriptor, off_t size) noexcept {
    static auto* const next = Next<decltype(ftruncate)>("ftruncate");
    return Fails(Call::kTruncate, descriptor) ? -1 : next(descriptor, size);
}
VISIBLE int fallocate(int descriptor, int mode, off_t offset, off_t count) {
    static auto* const next = Next<decltype(fallocate)>("fallocate");
    return Fails(Call::kReserve, descriptor) ? -1 : next(descriptor, mode, offset, count);
}
VISIBLE int statvfs(const char* path, struct statvfs* space) noexcept {
    static auto* const next = Next<int(const char*, struct statvfs*)>("statvfs");
    return Fails(Call::kFreeSpace, path) ? -1 : next(path, space);
}

}  // extern "C"
