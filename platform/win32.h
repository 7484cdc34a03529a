#pragma once

// The few calls of the operating system that the plug-in makes, under the names that they carry
// on Windows. There the platform's own header declares them; elsewhere the folder of that system
// (posix/) implements the declarations below. Paths are in the code page and take '\' as '/' on
// POSIX; one that is longer than the system's is refused. What closes or removes a file, or looks
// at one, allocates nothing.

#ifdef _WIN32

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#else

#include <cstdint>

using BOOL = int;
using DWORD = std::uint32_t;
using LONG = std::int32_t;
using UINT = std::uint32_t;
using HANDLE = void*;
using HWND = void*;
using HINSTANCE = void*;
using HMODULE = HINSTANCE;
using FARPROC = void (*)();
using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;

union ULARGE_INTEGER {
    std::uint64_t QuadPart;
};

inline constexpr BOOL TRUE = 1;
inline constexpr BOOL FALSE = 0;

// Values as winnt.h, fileapi.h and winuser.h give them.
inline constexpr DWORD GENERIC_READ = 0x80000000;
inline constexpr DWORD GENERIC_WRITE = 0x40000000;
inline constexpr DWORD FILE_SHARE_READ = 1;
inline constexpr DWORD FILE_SHARE_WRITE = 2;
inline constexpr DWORD OPEN_ALWAYS = 4;
inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
inline constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;
inline constexpr DWORD INVALID_SET_FILE_POINTER = 0xFFFFFFFF;
inline constexpr DWORD FILE_BEGIN = 0;
inline constexpr DWORD FILE_CURRENT = 1;
inline constexpr DWORD FILE_END = 2;
inline constexpr DWORD ERROR_SUCCESS = 0;
inline constexpr DWORD ERROR_FILE_NOT_FOUND = 2;   // ENOENT: no such name
inline constexpr DWORD ERROR_PATH_NOT_FOUND = 20;  // ENOTDIR: something above it is no folder
inline constexpr UINT MB_OK = 0;
inline constexpr UINT MB_SETFOREGROUND = 0x00010000;
inline constexpr int IDOK = 1;
inline constexpr int IDCANCEL = 2;
inline constexpr int SW_HIDE = 0;
inline constexpr int SW_SHOW = 5;

/// All bits set: a closed or refused file handle.
#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(-1)))

/// The calling thread's last error: errno on POSIX, so the next call of any kind may change it.
DWORD GetLastError();
void SetLastError(DWORD error);

/// Opens `path`, which is created empty when absent (`disposition` is always OPEN_ALWAYS).
/// Never blocks on a pipe; a folder is refused. INVALID_HANDLE_VALUE on failure.
HANDLE CreateFileA(const char* path, DWORD access, DWORD share, void* security, DWORD disposition,
                   DWORD flags, HANDLE templateFile);
/// One read or write at the file position; `*done` receives the bytes moved (0 on failure).
BOOL ReadFile(HANDLE file, void* buffer, DWORD count, DWORD* done, void* overlapped);
BOOL WriteFile(HANDLE file, const void* data, DWORD count, DWORD* done, void* overlapped);
/// Moves the file position; the high half of the distance goes in and out through `high`.
/// INVALID_SET_FILE_POINTER together with a nonzero GetLastError() is a failure.
DWORD SetFilePointer(HANDLE file, LONG low, LONG* high, DWORD origin);
BOOL SetEndOfFile(HANDLE file);
BOOL CloseHandle(HANDLE file);

BOOL DeleteFileA(const char* path);
/// Creates one folder level; fails when it exists.
BOOL CreateDirectoryA(const char* path, void* security);
/// FILE_ATTRIBUTE_DIRECTORY or FILE_ATTRIBUTE_NORMAL; INVALID_FILE_ATTRIBUTES on failure.
DWORD GetFileAttributesA(const char* path);
/// Bytes that the caller may still write on the volume of the folder `path`.
BOOL GetDiskFreeSpaceExA(const char* path, ULARGE_INTEGER* freeToCaller, ULARGE_INTEGER* total,
                         ULARGE_INTEGER* free);
/// Copies a file's bytes, replacing `to` unless `failIfExists`. A file is not copied onto itself:
/// that fails and leaves it as it is. A copy that is not whole is removed.
BOOL CopyFileA(const char* from, const char* to, BOOL failIfExists);

/// Milliseconds since the system started, in steps of up to 20; wraps after 49.7 days.
DWORD GetTickCount();

/// Shows a modal message in a window where windows can be opened, else on standard error, where
/// IDOK is answered at once.
int MessageBoxA(HWND owner, const char* text, const char* caption, UINT type);

/// Copies string resource `id` of `module` (at most `size` - 1 characters, terminated); answers
/// the characters copied, 0 when the module has no such resource.
int LoadStringA(HINSTANCE module, UINT id, char* buffer, int size);

HMODULE LoadLibraryA(const char* path);
FARPROC GetProcAddress(HMODULE library, const char* name);
BOOL FreeLibrary(HMODULE library);

#endif
