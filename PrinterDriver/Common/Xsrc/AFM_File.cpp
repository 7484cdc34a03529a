#include "PrinterDriver/Common/Xsrc/AFM_File.h"

#include <string_view>

#include "host/Text.h"

namespace {

constexpr std::size_t kPathBytes = 512;
constexpr std::size_t kFileNameBytes = 256;

DWORD AccessRights(int32_t mode) {
    switch (mode) {
        case 0:
            return GENERIC_READ;
        case 1:
            return GENERIC_WRITE;
        case 2:
            return GENERIC_READ | GENERIC_WRITE;
        default:
            return 0;
    }
}

}  // namespace

AFM_File::~AFM_File() {
    if (!IsClosed()) CloseHandle(handle_);
}

int32_t AFM_File::Open(const char* path, int32_t mode) {
    Close();
    if (path == nullptr) return 0;
    const std::string_view text = path;
    if (text.size() >= sizeof path_) return 0;
    handle_ = CreateFileA(path, AccessRights(mode), FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                          OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    CopyText(path_, sizeof path_, text);
    return IsClosed() ? 0 : 1;
}

int32_t AFM_File::GetPath(char* out) {
    if (IsClosed()) return 0;
    CopyText(out, kPathBytes, path_);
    return 1;
}

int32_t AFM_File::GetDirectory(char* out) {
    if (IsClosed()) return 0;
    const std::string_view path = path_;
    const std::size_t last = FindLastCharacter(path, '\\');
    CopyText(out, kPathBytes, last == std::string_view::npos ? "" : path.substr(0, last));
    return 1;
}

HANDLE AFM_File::GetHandle() {
    return handle_;
}

int32_t AFM_File::GetFileName(char* out) {
    if (IsClosed()) return 0;
    const std::string_view path = path_;
    const std::size_t last = FindLastCharacter(path, '\\');
    CopyText(out, kFileNameBytes, path.substr(last + 1));  // npos + 1 is the start
    return 1;
}

int32_t AFM_File::Seek(int64_t offset, int32_t origin) {
    if (IsClosed() || origin < 0 || origin > 2) return 0;
    auto high = static_cast<LONG>(offset >> 32);
    SetLastError(ERROR_SUCCESS);
    const DWORD low =
        SetFilePointer(handle_, static_cast<LONG>(offset), &high, static_cast<DWORD>(origin));
    return low == INVALID_SET_FILE_POINTER && GetLastError() != ERROR_SUCCESS ? 0 : 1;
}

int64_t AFM_File::Tell() {
    if (IsClosed()) return -1;
    LONG high = 0;
    SetLastError(ERROR_SUCCESS);
    const DWORD low = SetFilePointer(handle_, 0, &high, FILE_CURRENT);
    if (low == INVALID_SET_FILE_POINTER && GetLastError() != ERROR_SUCCESS) return -1;
    return static_cast<int64_t>(high) << 32 | low;
}

int32_t AFM_File::Read(void* buffer, int32_t count, int64_t offset, int32_t origin) {
    if (IsClosed() || count < 0 || !SeekUnlessHere(offset, origin)) return 0;
    DWORD done = 0;
    ReadFile(handle_, buffer, static_cast<DWORD>(count), &done, nullptr);
    return static_cast<int32_t>(done);
}

int32_t AFM_File::Write(const void* data, int32_t count, int64_t offset, int32_t origin) {
    if (IsClosed() || count < 0 || !SeekUnlessHere(offset, origin)) return 0;
    DWORD done = 0;
    WriteFile(handle_, data, static_cast<DWORD>(count), &done, nullptr);
    return static_cast<int32_t>(done);
}

int32_t AFM_File::Close() {
    if (IsClosed()) return 0;
    const BOOL closed = CloseHandle(handle_);
    handle_ = INVALID_HANDLE_VALUE;
    return closed;
}

int32_t AFM_File::Delete() {
    if (IsClosed()) return 0;
    Close();
    return DeleteFileA(path_);
}

int32_t AFM_File::SetEnd() {
    return IsClosed() ? 0 : SetEndOfFile(handle_);
}

bool AFM_File::SeekUnlessHere(int64_t offset, int32_t origin) {
    return (offset == 0 && origin == 1) || Seek(offset, origin) != 0;
}
