#pragma once

#include <cstdint>

#include "host/AFilePath.h"
#include "host/AString.h"
#include "host/Records.h"
#include "host/WriterId.h"

/// The white choice that a driver's option block refers to, in a small file of its own. What cannot
/// be made or stored leaves everything as it was, and an entry of level E in the log; callers go
/// on. `writer` is the driver object or options page that writes.

/// Gives the block a new options file that holds "none chosen", deleting the one that it named in
/// the folder where new files are made.
void CreateDriverOptionsFile(DriverOptionBlock& block, WriterId writer = {});

/// Gives a block that names no options file a new one.
void EnsureDriverOptions(DriverOptionBlock& block, WriterId writer = {});

/// Whether the block names an options file that stands in one of the folders.
bool HasDriverOptions(const DriverOptionBlock& block);

/// Reads the white choice (-1: none) from the block's options file. A missing file is made anew,
/// and the block then names that; one that cannot be read, or of which nobody can say whether it
/// is there, stays. 1 when `whiteType` was read, else 0 and it stays as it was.
int32_t ReadDriverOptions(DriverOptionBlock& block, int32_t& whiteType, WriterId writer = {});

/// Writes the white choice into the block's options file; a file that cannot be read stays as
/// it is.
void WriteDriverOptions(DriverOptionBlock& block, int32_t whiteType, WriterId writer = {});

/// What a look at a block's options file finds.
enum class OptionsState {
    kNone,        ///< the block names no file
    kMissing,     ///< it names one that stands in none of the folders
    kUnreadable,  ///< there is one, or nobody can say, and it gives no choice
    kRead,
};

/// Where a look ended, for whoever speaks of it.
struct OptionsPlace {
    AFilePath Path;       ///< of a missing file: where it would be made; of none: not used
    int SystemError = 0;  ///< why the system cannot read it; 0 where it gave no reason
};

/// Reads the white choice as ReadDriverOptions does, and makes and changes nothing. `whiteType`
/// stays as it was but for kRead.
OptionsState PeekDriverOptions(const DriverOptionBlock& block, int32_t& whiteType,
                               OptionsPlace* place = nullptr);

/// A block while a dialog edits it. Its options file stands as it was until the dialog has ended,
/// so that neither a full disk nor a crash keeps a cancelled dialog from leaving everything as it
/// found it.
class DriverOptionsEdit {
  public:
    /// Borrows the block.
    DriverOptionsEdit(DriverOptionBlock& block, WriterId writer);
    /// Unless it was kept, the block's bytes are put back, and a file that it has come to name
    /// since is removed.
    ~DriverOptionsEdit();
    DriverOptionsEdit(const DriverOptionsEdit&) = delete;
    DriverOptionsEdit& operator=(const DriverOptionsEdit&) = delete;

    /// Gives the block a new options file that holds "none chosen", beside the one from before.
    void StartOver();
    /// The dialog has ended with OK: a file that the block named before and names no more is
    /// deleted.
    void Keep();

  private:
    bool NamesAnother() const;

    DriverOptionBlock& block_;
    const DriverOptionBlock before_;
    WriterId writer_;
    bool isKept_ = false;
    AString newFile_;  ///< the folder of new files, with room for a name behind
};

/// Restores the first 200 bytes of a block from the host's text form. False, with the block
/// unchanged, when the text holds no option block.
bool DecodeDriverOptionsText(const char* text, DriverOptionBlock& block);
