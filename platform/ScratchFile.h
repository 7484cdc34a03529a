#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// A file for data on its way, under a name that other programs use as well. It is always made
/// anew, whatever stands under the name, is read back through the handle that wrote it, and is
/// removed at the end unless its name has come to be another file's.
class ScratchFile {
  public:
    ScratchFile() = default;
    ~ScratchFile() { Discard(); }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    /// Removes what stands under `path` and creates the file, which only this user can open. False,
    /// with nothing left behind, when the removal or the creation fails.
    [[nodiscard]] bool Create(const std::string& path);
    bool IsOpen() const { return handle_ >= 0; }
    /// Has the system find room for so many bytes; where it cannot, nothing happens.
    void Reserve(std::int64_t bytes);
    /// Writes at `offset`; false when the system does not take every byte.
    [[nodiscard]] bool WriteAt(std::int64_t offset, const void* data, std::size_t count);
    /// Reads at `offset`; false when not every byte can be read.
    [[nodiscard]] bool ReadAt(std::int64_t offset, void* data, std::size_t count);
    /// Closes and removes the file. Allocates nothing.
    void Discard() noexcept;

    /// The system's number for why the last call failed; 0 when it gave none.
    int SystemError() const { return systemError_; }

  private:
    bool Fail();
    bool IsItsOwnName() const noexcept;

    std::intptr_t handle_ = -1;
    std::string path_;
    int systemError_ = 0;
};
