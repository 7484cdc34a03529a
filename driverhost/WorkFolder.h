#pragma once

#include <cstdint>
#include <filesystem>

/// A private folder beside the file that a command makes, for everything that exists only while
/// it is made. Goes with all that it holds, whichever way the command ends.
class WorkFolder {
  public:
    /// Throws HostError when it cannot be created.
    explicit WorkFolder(const std::filesystem::path& target);
    ~WorkFolder();
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    const std::filesystem::path& Path() const { return path_; }

  private:
    std::filesystem::path path_;
};

/// Bytes of all files below a folder that another program may be writing to; links count nothing.
std::uintmax_t FolderBytes(const std::filesystem::path& folder);
