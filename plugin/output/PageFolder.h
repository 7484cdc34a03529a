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

    /// Enters the folder of the page's tile, which is not made yet, when the host's record asks for
    /// tiles.
    void EnterTile(const JobStatusRecord& status, int32_t pageIndex, const AString& jobName);
    /// Makes the tile's folder, if one was entered. False when it cannot be made, which includes
    /// that it exists.
    bool MakeTile() const;
    /// Back to the folder as it was before the page.
    void LeaveTile();

    const AFilePath& Path() const { return path_; }
    /// The folder of the job, whichever tile has been entered.
    const AFilePath& JobPath() const { return inTile_ ? pathBeforeTile_ : path_; }
    AFilePath File(const AString& name) const { return AFilePath(path_).Append(name); }

  private:
    AFilePath path_;
    AFilePath pathBeforeTile_;
    bool inTile_ = false;
};
