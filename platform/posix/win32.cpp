#include "platform/win32.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string_view>
#include <vector>

#include "platform/CodePage.h"
#include "platform/afx.h"
#include "platform/posix/Descriptor.h"

static_assert(ERROR_FILE_NOT_FOUND == ENOENT && ERROR_PATH_NOT_FOUND == ENOTDIR);

namespace {

BOOL Fail(int error) {
    errno = error;
    return FALSE;
}

/// A path as the system takes it, put together without an allocation: files are removed where
/// memory is gone, too.
class NativePath {
  public:
    explicit NativePath(const char* path) {
        std::string_view rest = path == nullptr ? "" : path;
        fits_ = rest.size() < sizeof text_;
        std::size_t at = 0;
        while (fits_ && !rest.empty()) {
            const std::size_t bytes = CharacterBytes(rest);
            std::memcpy(text_ + at, rest.data(), bytes);
            if (text_[at] == '\\') text_[at] = '/';
            at += bytes;
            rest.remove_prefix(bytes);
        }
        text_[at] = '\0';
    }
    /// Null, with the system's error set, when it is longer than the system takes.
    const char* Get() const {
        if (fits_) return text_;
        errno = ENAMETOOLONG;
        return nullptr;
    }

  private:
    char text_[PATH_MAX];
    bool fits_;
};

int Descriptor(HANDLE file) {
    return static_cast<int>(reinterpret_cast<std::intptr_t>(file));
}

/// Whether it is open on anything but a folder; why not is in errno.
bool IsNoFolder(int descriptor) {
    struct stat status = {};
    if (fstat(descriptor, &status) != 0) return false;
    if (S_ISDIR(status.st_mode)) errno = EISDIR;
    return !S_ISDIR(status.st_mode);
}

bool CopyBytes(int from, int to, std::vector<char>& buffer) {
    for (;;) {
        const ssize_t count = read(from, buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return count == 0;
        if (!WriteAll(to, {buffer.data(), static_cast<std::size_t>(count)})) return false;
    }
}

}  // namespace

// The C library keeps a number for each thread already. One of our own would need memory when a
// thread first touches it, and end the process where there is none.

DWORD GetLastError() {
    return static_cast<DWORD>(errno);
}

void SetLastError(DWORD error) {
    errno = static_cast<int>(error);
}

HANDLE CreateFileA(const char* path, DWORD access, DWORD /*share*/, void* /*security*/,
                   DWORD /*disposition*/, DWORD /*flags*/, HANDLE /*templateFile*/) {
    const NativePath native(path);
    if (native.Get() == nullptr) return INVALID_HANDLE_VALUE;
    const bool reads = (access & GENERIC_READ) != 0;
    const bool writes = (access & GENERIC_WRITE) != 0;
    const int rights = writes ? (reads ? O_RDWR : O_WRONLY) : O_RDONLY;
    // O_NONBLOCK: opening a pipe that nobody writes to must not hang the host.
    int descriptor = open(native.Get(), rights | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0666);
    if (descriptor >= 0 && !IsNoFolder(descriptor)) {
        const int reason = errno;
        close(descriptor);
        descriptor = -1;
        errno = reason;
    }
    if (descriptor >= 0 && !reads && !writes) {
        // No access rights: the file exists now, and only its name is held.
        close(descriptor);
        descriptor = open(native.Get(), O_PATH | O_CLOEXEC);
    }
    if (descriptor < 0) return INVALID_HANDLE_VALUE;
    return reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(descriptor));
}

BOOL ReadFile(HANDLE file, void* buffer, DWORD count, DWORD* done, void* /*overlapped*/) {
    *done = 0;
    while (*done < count) {
        const ssize_t got =
            read(Descriptor(file), static_cast<char*>(buffer) + *done, count - *done);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return FALSE;
        if (got == 0) break;
        *done += static_cast<DWORD>(got);
    }
    return TRUE;
}

BOOL WriteFile(HANDLE file, const void* data, DWORD count, DWORD* done, void* /*overlapped*/) {
    *done = 0;
    while (*done < count) {
        const ssize_t written =
            write(Descriptor(file), static_cast<const char*>(data) + *done, count - *done);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return FALSE;
        *done += static_cast<DWORD>(written);
    }
    return TRUE;
}

DWORD SetFilePointer(HANDLE file, LONG low, LONG* high, DWORD origin) {
    std::int64_t distance = low;
    if (high != nullptr) {
        distance = static_cast<std::int64_t>((static_cast<std::uint64_t>(*high) << 32) |
                                             static_cast<std::uint32_t>(low));
    }
    const int whence = origin == FILE_BEGIN     ? SEEK_SET
                       : origin == FILE_CURRENT ? SEEK_CUR
                                                : SEEK_END;
    const off_t position = lseek(Descriptor(file), distance, whence);
    if (position < 0) return INVALID_SET_FILE_POINTER;
    errno = 0;
    if (high != nullptr) *high = static_cast<LONG>(position >> 32);
    return static_cast<DWORD>(position);
}

BOOL SetEndOfFile(HANDLE file) {
    const off_t position = lseek(Descriptor(file), 0, SEEK_CUR);
    if (position < 0 || ftruncate(Descriptor(file), position) != 0) return FALSE;
    return TRUE;
}

BOOL CloseHandle(HANDLE file) {
    return close(Descriptor(file)) == 0 ? TRUE : FALSE;
}

BOOL DeleteFileA(const char* path) {
    const NativePath native(path);
    return native.Get() != nullptr && unlink(native.Get()) == 0 ? TRUE : FALSE;
}

BOOL CreateDirectoryA(const char* path, void* /*security*/) {
    const NativePath native(path);
    return native.Get() != nullptr && mkdir(native.Get(), 0777) == 0 ? TRUE : FALSE;
}

DWORD GetFileAttributesA(const char* path) {
    const NativePath native(path);
    struct stat status = {};
    if (native.Get() == nullptr || stat(native.Get(), &status) != 0) return INVALID_FILE_ATTRIBUTES;
    return S_ISDIR(status.st_mode) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_NORMAL;
}

BOOL GetDiskFreeSpaceExA(const char* path, ULARGE_INTEGER* freeToCaller, ULARGE_INTEGER* total,
                         ULARGE_INTEGER* free) {
    const NativePath native(path);
    struct statvfs volume = {};
    if (native.Get() == nullptr || statvfs(native.Get(), &volume) != 0) return FALSE;
    const auto unit = static_cast<std::uint64_t>(volume.f_frsize);
    if (freeToCaller != nullptr) freeToCaller->QuadPart = volume.f_bavail * unit;
    if (total != nullptr) total->QuadPart = volume.f_blocks * unit;
    if (free != nullptr) free->QuadPart = volume.f_bfree * unit;
    return TRUE;
}

BOOL CopyFileA(const char* from, const char* to, BOOL failIfExists) {
    const NativePath origin(from);
    const NativePath target(to);
    if (origin.Get() == nullptr || target.Get() == nullptr) return FALSE;
    const ScopedDescriptor source(open(origin.Get(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat sourceStatus = {};
    if (source.Get() < 0 || fstat(source.Get(), &sourceStatus) != 0) return FALSE;
    if (!S_ISREG(sourceStatus.st_mode)) return Fail(EINVAL);
    struct stat targetStatus = {};
    if (stat(target.Get(), &targetStatus) == 0 && targetStatus.st_dev == sourceStatus.st_dev &&
        targetStatus.st_ino == sourceStatus.st_ino)
        return Fail(EBUSY);
    std::vector<char> buffer(std::size_t{256} * 1024);
    const int creation = failIfExists != FALSE ? O_EXCL : O_TRUNC;
    ScopedDescriptor copy(
        open(target.Get(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK | creation, 0666));
    if (copy.Get() < 0) return FALSE;
    const bool isFile = fstat(copy.Get(), &targetStatus) == 0 && S_ISREG(targetStatus.st_mode);
    if (CopyBytes(source.Get(), copy.Get(), buffer) && copy.Close()) return TRUE;
    const int error = errno;
    if (isFile) unlink(target.Get());
    return Fail(error);
}

DWORD GetTickCount() {
    timespec now = {};
#ifdef CLOCK_MONOTONIC_COARSE
    // A page reads it with every row, and callers count in hundreds of milliseconds: the clock that
    // ticks some hundred times a second is the cheaper one by far.
    clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
#else
    clock_gettime(CLOCK_MONOTONIC, &now);
#endif
    const std::int64_t milliseconds = std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1000000;
    return static_cast<DWORD>(milliseconds);
}

int MessageBoxA(HWND owner, const char* text, const char* caption, UINT type) {
    if (WindowSystem* const windows = OpenWindowSystem())
        return windows->ShowMessage(owner, text, caption, type);
    if (caption != nullptr && *caption != '\0') {
        std::fprintf(stderr, "%s: %s\n", caption, text);
    } else {
        std::fprintf(stderr, "%s\n", text);
    }
    return IDOK;
}

int LoadStringA(HINSTANCE module, UINT id, char* buffer, int size) {
    if (module == nullptr || buffer == nullptr || size < 1) return 0;
    const auto* table = static_cast<const AfxStringTable*>(module);
    for (std::size_t i = 0; i < table->count; ++i) {
        if (table->entries[i].id != id) continue;
        const char* text = table->entries[i].text;
        const std::size_t count = std::min(std::strlen(text), static_cast<std::size_t>(size - 1));
        std::memcpy(buffer, text, count);
        buffer[count] = '\0';
        return static_cast<int>(count);
    }
    return 0;
}

HMODULE LoadLibraryA(const char* path) {
    const NativePath native(path);
    return native.Get() == nullptr ? nullptr : dlopen(native.Get(), RTLD_NOW | RTLD_LOCAL);
}

FARPROC GetProcAddress(HMODULE library, const char* name) {
    return reinterpret_cast<FARPROC>(dlsym(library, name));
}

BOOL FreeLibrary(HMODULE library) {
    return dlclose(library) == 0 ? TRUE : FALSE;
}
