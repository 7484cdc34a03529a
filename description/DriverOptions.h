#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "host/AFilePath.h"
#include "host/Records.h"

/// Gives the block a new options file that holds "none chosen", deleting the one that it named in
/// the folder where new files are made.
void CreateDriverOptionsFile(DriverOptionBlock& block);

/// Gives a block that names no options file a new one.
void EnsureDriverOptions(DriverOptionBlock& block);

/// Whether the block names an options file that stands in one of the folders.
bool HasDriverOptions(const DriverOptionBlock& block);

/// Reads the white choice (-1: none) from the block's options file. A missing file is made anew,
/// and the block then names that. 1 when `whiteType` was read, else 0 and it stays as it was.
int32_t ReadDriverOptions(DriverOptionBlock& block, int32_t& whiteType);

/// Writes the white choice into the block's options file; a file that cannot be read stays as
/// it is.
void WriteDriverOptions(DriverOptionBlock& block, int32_t whiteType);

/// A block and its options file as they are, to come back to.
class DriverOptionsSnapshot {
  public:
    explicit DriverOptionsSnapshot(const DriverOptionBlock& block);
    /// Puts the block's bytes and its file's content back. A file that the block has come to name
    /// since is removed.
    void Restore(DriverOptionBlock& block) const;

  private:
    DriverOptionBlock block_;
    std::optional<AFilePath> path_;       ///< where new files are made; nothing without a name
    std::optional<std::string> content_;  ///< nothing when there was no such file
};

/// Restores the first 200 bytes of a block from the host's text form. False, with the block
/// unchanged, when the text holds no option block.
bool DecodeDriverOptionsText(const char* text, DriverOptionBlock& block);
