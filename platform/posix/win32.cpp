#include "platform/win32.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include "platform/afx.h"
#include "platform/posix/Descriptor.h"

static_assert(ERROR_FILE_NOT_FOUND == ENOENT && ERROR_PATH_NOT_FOUND == ENOTDIR);

namespace {

thread_local DWORD lastError = ERROR_SUCCESS;

BOOL Fail() {
    lastError = static_cast<DWORD>(errno);
    return FALSE;
}

std::string NativePath(const char* path) {
    std::string native = path == nullptr ? "" : path;
    std::replace(native.begin(), native.end(), '\\', '/');
    return native;
}

int Descriptor(HANDLE file) {
    return static_cast<int>(reinterpret_cast<std::intptr_t>(file));
}

bool IsFolder(int descriptor) {
    struct stat status = {};
    return fstat(descriptor, &status) != 0 || S_ISDIR(status.st_mode);
}

bool CopyBytes(int from, int to) {
    std::vector<char> buffer(std::size_t{256} * 1024);
    for (;;) {
        const ssize_t count = read(from, buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return count == 0;
        if (!WriteAll(to, {buffer.data(), static_cast<std::size_t>(count)})) return false;
    }
}

}  // namespace

DWORD GetLastError() {
    return lastError;
}

void SetLastError(DWORD error) {
    lastError = error;
}

HANDLE CreateFileA(const char* path, DWORD access, DWORD /*share*/, void* /*security*/,
                   DWORD /*disposition*/, DWORD /*flags*/, HANDLE /*templateFile*/) {
    const std::string native = NativePath(path);
    const bool reads = (access & GENERIC_READ) != 0;
    const bool writes = (access & GENERIC_WRITE) != 0;
    const int rights = writes ? (reads ? O_RDWR : O_WRONLY) : O_RDONLY;
    // O_NONBLOCK: opening a pipe that nobody writes to must not hang the host.
    int descriptor = open(native.c_str(), rights | O_CREAT | O_CLOEXEC | O_NONBLOCK, 0666);
    if (descriptor >= 0 && IsFolder(descriptor)) {
        close(descriptor);
        descriptor = -1;
        errno = EISDIR;
    }
    if (descriptor >= 0 && !reads && !writes) {
        // No access rights: the file exists now, and only its name is held.
        close(descriptor);
        descriptor = open(native.c_str(), O_PATH | O_CLOEXEC);
    }
    if (descriptor < 0) {
        Fail();
        return INVALID_HANDLE_VALUE;
    }
    return reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(descriptor));
}

BOOL ReadFile(HANDLE file, void* buffer, DWORD count, DWORD* done, void* /*overlapped*/) {
    *done = 0;
    while (*done < count) {
        const ssize_t got =
            read(Descriptor(file), static_cast<char*>(buffer) + *done, count - *done);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return Fail();
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
        if (written < 0) return Fail();
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
    if (position < 0) {
        Fail();
        return INVALID_SET_FILE_POINTER;
    }
    lastError = ERROR_SUCCESS;
    if (high != nullptr) *high = static_cast<LONG>(position >> 32);
    return static_cast<DWORD>(position);
}

BOOL SetEndOfFile(HANDLE file) {
    const off_t position = lseek(Descriptor(file), 0, SEEK_CUR);
    if (position < 0 || ftruncate(Descriptor(file), position) != 0) return Fail();
    return TRUE;
}

BOOL CloseHandle(HANDLE file) {
    return close(Descriptor(file)) == 0 ? TRUE : Fail();
}

BOOL DeleteFileA(const char* path) {
    return unlink(NativePath(path).c_str()) == 0 ? TRUE : Fail();
}

BOOL CreateDirectoryA(const char* path, void* /*security*/) {
    return mkdir(NativePath(path).c_str(), 0777) == 0 ? TRUE : Fail();
}

DWORD GetFileAttributesA(const char* path) {
    struct stat status = {};
    if (stat(NativePath(path).c_str(), &status) != 0) {
        Fail();
        return INVALID_FILE_ATTRIBUTES;
    }
    return S_ISDIR(status.st_mode) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_NORMAL;
}

BOOL GetDiskFreeSpaceExA(const char* path, ULARGE_INTEGER* freeToCaller, ULARGE_INTEGER* total,
                         ULARGE_INTEGER* free) {
    struct statvfs volume = {};
    if (statvfs(NativePath(path).c_str(), &volume) != 0) return Fail();
    const auto unit = static_cast<std::uint64_t>(volume.f_frsize);
    if (freeToCaller != nullptr) freeToCaller->QuadPart = volume.f_bavail * unit;
    if (total != nullptr) total->QuadPart = volume.f_blocks * unit;
    if (free != nullptr) free->QuadPart = volume.f_bfree * unit;
    return TRUE;
}

BOOL CopyFileA(const char* from, const char* to, BOOL failIfExists) {
    const ScopedDescriptor source(
        open(NativePath(from).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat sourceStatus = {};
    if (source.Get() < 0 || fstat(source.Get(), &sourceStatus) != 0) return Fail();
    if (!S_ISREG(sourceStatus.st_mode)) {
        errno = EINVAL;
        return Fail();
    }
    const std::string target = NativePath(to);
    struct stat targetStatus = {};
    if (stat(target.c_str(), &targetStatus) == 0 && targetStatus.st_dev == sourceStatus.st_dev &&
        targetStatus.st_ino == sourceStatus.st_ino) {
        errno = EBUSY;
        return Fail();
    }
    const int creation = failIfExists != FALSE ? O_EXCL : O_TRUNC;
    ScopedDescriptor copy(
        open(target.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK | creation, 0666));
    if (copy.Get() < 0 || !CopyBytes(source.Get(), copy.Get())) return Fail();
    return copy.Close() ? TRUE : Fail();
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
    return dlopen(NativePath(path).c_str(), RTLD_NOW | RTLD_LOCAL);
}

FARPROC GetProcAddress(HMODULE library, const char* name) {
    return reinterpret_cast<FARPROC>(dlsym(library, name));
}

BOOL FreeLibrary(HMODULE library) {
    return dlclose(library) == 0 ? TRUE : FALSE;
}
