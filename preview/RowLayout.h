#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "preview/PreviewGeometry.h"

/// How the pixels of a packed row fall into a preview's columns. Pixels count from the least
/// significant bit of each byte, and the first one is the page's last column. A byte that lies
/// across the border of two columns is cut: what stands before the border is a lane of its own,
/// behind the row's bytes, so that lanes can be summed up without regard to borders.
class RowLayout {
  public:
    RowLayout(const PreviewGeometry& geometry, int32_t bits);

    /// Pixels that fall into one column, in row order. A column of more than kMostCellBytes is
    /// several cells.
    struct Cell {
        int32_t column;       ///< in the preview
        double rest;          ///< of the first pixel's position, behind its column
        int64_t distance;     ///< from the first pixel to that of `byte`: 0 or less
        int64_t endDistance;  ///< to that of `endByte`
        std::size_t byte;     ///< that holds the first pixel
        std::size_t endByte;  ///< that holds the pixel behind the last
        std::size_t cut;      ///< lane of the part of `byte` before the cell
        std::size_t endCut;   ///< lane of the part of `endByte` in the cell
    };
    /// The sums of so many bytes, of 32 bits each, fit into 64 bits with the pixels' distances.
    static constexpr int64_t kMostCellBytes = int64_t{1} << 12;

    int32_t Bits() const { return bits_; }
    int32_t PixelsPerByte() const { return 8 / bits_; }
    /// A multiple of kByteSumsPadding.
    std::size_t LaneCount() const { return laneCount_; }
    const std::vector<Cell>& Cells() const { return cells_; }
    /// Writes a row's lanes, LaneCount() of them. Bytes that the row lacks are without ink.
    void FillLanes(std::span<const uint8_t> row, uint8_t* lanes) const;

  private:
    std::size_t CutLane(int64_t pixel);

    int32_t bits_;
    std::size_t rowBytes_;  ///< that hold pixels of the page
    std::size_t laneCount_ = 0;
    /// Of the lanes behind the row's bytes: the byte that is cut, and the pixels before the border.
    std::vector<uint32_t> cutBytes_;
    std::vector<uint8_t> cutMasks_;
    std::vector<Cell> cells_;
};
