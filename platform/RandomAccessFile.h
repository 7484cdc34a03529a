#pragma once

#include <cstddef>
#include <cstdint>

/// A regular file that is read at any offset, without a file position: several readers may share
/// one. Pipes, folders and devices are refused.
class RandomAccessFile {
  public:
    RandomAccessFile() = default;
    ~RandomAccessFile() { Close(); }
    RandomAccessFile(const RandomAccessFile&) = delete;
    RandomAccessFile& operator=(const RandomAccessFile&) = delete;

    /// False when the file cannot be opened for reading, which LastSystemError then tells, or is no
    /// regular file, where that is 0.
    [[nodiscard]] bool Open(const char* path);
    /// Closes the file, if it is open.
    void Close() noexcept;
    /// Bytes that the file held when it was opened; 0 before.
    std::uint64_t Size() const { return size_; }
    /// Reads up to `count` bytes at `offset`; answers the bytes read, fewer only at the file's end
    /// or on a failure. `systemError`, where given, receives the failure's number, 0 for none.
    std::size_t ReadAt(std::uint64_t offset, void* buffer, std::size_t count,
                       int* systemError = nullptr) const;

  private:
    std::intptr_t handle_ = -1;
    std::uint64_t size_ = 0;
};
