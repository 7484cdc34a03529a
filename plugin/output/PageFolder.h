#pragma once

#include "host/AFilePath.h"
#include "host/Records.h"

/// The folder that a page's files go into.
class PageFolder {
  public:
    /// Takes the host's folder (empty: "temp" in the base folder) and, with `createFolder`, makes
    /// a new folder in it that is named after the job; an existing one gets the first free
    /// suffix of _001 to _1000, the last of which is used when all are taken. False when the
    /// folder cannot be made.
    bool SetUp(const AString& folderText, const AString& jobName, bool createFolder);

    /// Makes and enters the folder of the page's tile, when the host's record asks for tiles.
    /// False when it cannot be made, which includes that it exists.
    bool EnterTile(const JobStatusRecord& status, int32_t pageIndex, const AString& jobName);
    /// Back to the folder as it was before the page.
    void LeaveTile();

    const AFilePath& Path() const { return path_; }
    AFilePath File(const AString& name) const { return AFilePath(path_).Append(name); }

  private:
    AFilePath path_;
    AFilePath pathBeforeTile_;
    bool inTile_ = false;
};
