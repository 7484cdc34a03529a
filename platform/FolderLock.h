#pragma once

#include <cstdint>
#include <string>

/// An advisory lock on a folder, which leaves no file there: of all programs that ask for it, one
/// at a time has it. It ends with the object, or with the program however that ends.
class FolderLock {
  public:
    FolderLock() = default;
    ~FolderLock();
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

    enum class Answer { kLocked, kHeldByAnother, kCannotLock };
    /// Does not wait. kCannotLock: there is no such folder, or its file system knows no locks.
    [[nodiscard]] Answer TryLock(const std::string& folder);

  private:
    std::intptr_t handle_ = -1;
};
