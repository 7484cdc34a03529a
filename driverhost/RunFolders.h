#pragma once

#include <filesystem>
#include <list>
#include <string>
#include <vector>

#include "platform/FolderLock.h"

/// The output folder, made when it is missing; what was made and stays empty goes with this object.
class OutputFolder {
  public:
    /// Throws HostError when it cannot be made.
    explicit OutputFolder(const std::string& folder);
    ~OutputFolder();
    OutputFolder(const OutputFolder&) = delete;
    OutputFolder& operator=(const OutputFolder&) = delete;

    const std::filesystem::path& Path() const { return path_; }

  private:
    std::filesystem::path path_;
    std::vector<std::filesystem::path> made_;  ///< the innermost first
};

/// The folders that a run has to itself: the base folder, below which the driver gathers pages and
/// where white may stand ready for one job, and the output folder, in which a run looks around
/// before it writes.
class OwnFolders {
  public:
    /// Waits until no other run has either; where the file system knows no locks, nobody waits.
    /// Throws HostError on an interrupt.
    explicit OwnFolders(const std::filesystem::path& output);

  private:
    std::list<FolderLock> locks_;
};
