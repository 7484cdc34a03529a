#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

#include "driverhost/TiffFile.h"

/// Where the rows of one directory of a TIFF stand.
struct TiffLayout {
    int64_t Width = 0;
    int64_t Rows = 0;
    int32_t Bits = 1;
    int32_t SampleCount = 1;
    bool IsApart = false;  ///< every sample in a plane of its own
    bool IsTiled = false;

    int32_t PlaneCount() const { return IsApart ? SampleCount : 1; }
    /// Bytes of one packed row of one plane.
    int64_t RowBytes() const {
        return (Width * Bits * (IsApart ? int64_t{1} : int64_t{SampleCount}) + 7) / 8;
    }
};

/// Reads packed rows from strips or tiles, from the top. Each plane has a reader of its own, which
/// never has to go back.
class TiffRows {
  public:
    /// Throws HostError for a row of tiles that takes too much memory.
    TiffRows(const std::filesystem::path& path, uint64_t directoryOffset, const TiffLayout& layout);

    /// `packed` has RowBytes bytes; rows are asked for in order, every plane of each. False: the
    /// row cannot be read.
    [[nodiscard]] bool Read(int32_t plane, int64_t row, std::span<uint8_t> packed);

  private:
    bool ReadTiles(std::size_t plane, int64_t row);

    TiffLayout layout_;
    std::vector<TiffFile> planes_;
    int64_t tileWidth_ = 0;
    int64_t tileRows_ = 0;
    std::vector<uint8_t> tile_;
    std::vector<std::vector<uint8_t>> tileRow_;  ///< of each plane, its rows one after another
};
