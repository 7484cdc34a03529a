#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <vector>

#include "driverhost/PrintRecord.h"

/// What the page of a channel file is, which a raw file does not say itself.
struct PrintedShape {
    int64_t WidthPixels = 0;  ///< of the page; a channel's lines end in whole 32-pixel words
    int32_t Bits = 1;
    double XResolution = 0;  ///< dots per inch; 0: not known
    double YResolution = 0;

    int64_t PaddedWidth() const { return (WidthPixels + 31) / 32 * 32; }
    /// A width that a page can have, and a depth that a channel can have.
    bool IsPossible() const;
};

/// Looks channel files up in the records that `run` leaves in its output folders. Keeps what it
/// has read, for many files of one folder.
class PrintedShapes {
  public:
    /// The shape of a channel file; nothing when no record in its folder or those above lists it,
    /// or when it is none of its page's channels. Damaged records count as none.
    std::optional<PrintedShape> Find(const std::filesystem::path& file);

  private:
    const std::vector<PrintRecord>& RecordsIn(const std::filesystem::path& folder);

    std::map<std::filesystem::path, std::vector<PrintRecord>> records_;
};
