#pragma once

#include <cstdint>

#include "platform/win32.h"

/// A binary file over the platform's file handles, unbuffered. Every operation on a closed file
/// answers 0 (-1 for Tell) and does nothing. Path queries look at '\' alone.
class AFM_File {
  public:
    AFM_File() = default;
    virtual ~AFM_File();
    AFM_File(const AFM_File&) = delete;
    AFM_File& operator=(const AFM_File&) = delete;

    /// Closes an open file, then opens `path`, which is created empty when absent. `mode`: 0 reads,
    /// 1 writes, 2 does both. A path that does not fit the stored one is refused. 1 when open.
    virtual int32_t Open(const char* path, int32_t mode);
    /// Copies the stored path; `out` has room for 512 bytes, here and in GetDirectory.
    virtual int32_t GetPath(char* out);
    /// Copies what stands before the last '\'; "" without one.
    virtual int32_t GetDirectory(char* out);
    virtual HANDLE GetHandle();
    /// Copies what stands behind the last '\', the whole path without one; `out` has room for 256
    /// bytes.
    virtual int32_t GetFileName(char* out);
    /// `origin`: 0 from the start, 1 from the position, 2 from the end.
    virtual int32_t Seek(int64_t offset, int32_t origin);
    virtual int64_t Tell();
    /// Seeks first, unless offset 0 and origin 1 ask for the current position. Answers the bytes
    /// read or written, 0 when the seek fails.
    virtual int32_t Read(void* buffer, int32_t count, int64_t offset, int32_t origin);
    virtual int32_t Write(const void* data, int32_t count, int64_t offset, int32_t origin);
    virtual int32_t Close();
    /// Closes the file and deletes it by its stored path.
    virtual int32_t Delete();
    /// Cuts the file at the current position.
    virtual int32_t SetEnd();

  private:
    bool IsClosed() const { return handle_ == INVALID_HANDLE_VALUE; }
    bool SeekUnlessHere(int64_t offset, int32_t origin);

    HANDLE handle_ = INVALID_HANDLE_VALUE;
    char path_[512] = {};
};
