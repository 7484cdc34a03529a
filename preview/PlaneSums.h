#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "preview/ByteSums.h"
#include "preview/PreviewGeometry.h"
#include "preview/RowLayout.h"

/// One plane of a preview: for every cell the intensities of the page's pixels near it, each
/// spread over the four nearest cells. Rows that fall into the same row of cells are first summed
/// up in whole numbers, byte by byte; that gives what spreading each pixel by itself would.
class PlaneSums {
  public:
    /// `geometry` and `layout` are borrowed for the object's life.
    PlaneSums(const PreviewGeometry& geometry, const RowLayout& layout);

    /// Adds the page's row `row`, 0 to sourceHeight - 1; row 0 is the page's last. Rows in
    /// ascending order are the fast way.
    void AddRow(int32_t row, std::span<const uint8_t> data);
    /// Brings every row that was added into the cells.
    void Flush();
    /// For rows of another depth from here on.
    void ChangeLayout(const RowLayout& layout);

    /// A cell's sum, after Flush().
    double At(int32_t column, int32_t row) const { return cells_[CellIndex(column, row)]; }

  private:
    struct CellSums;
    struct RowPlace;

    std::size_t CellIndex(int32_t column, int32_t row) const;
    void AddGroup();
    void CarryOver();
    CellSums SumsOf(const RowLayout::Cell& cell) const;
    void Spread(const RowLayout::Cell& cell, const CellSums& sums, const RowPlace& place);

    const PreviewGeometry& geometry_;
    const RowLayout* layout_;
    /// A spare column and row take what the last cells spread beyond the preview.
    std::vector<double> cells_;

    int32_t firstRow_ = 0;  ///< of the rows not yet in the cells
    int32_t cellRow_ = 0;   ///< that they fall into
    int32_t rowCount_ = 0;
    int32_t carriedRows_ = 0;     ///< of these, not in the short sums any more
    bool hasInk_ = false;         ///< in those rows
    std::vector<uint8_t> lanes_;  ///< of the rows of a group
    std::vector<uint8_t> blankLanes_;
    std::array<const uint8_t*, kGroupRows> group_;
    std::vector<uint16_t> shortSums_;  ///< of as many rows as they can hold
    ByteSums shortParts_;
    std::vector<uint32_t> sums_;  ///< four a lane, in the order of ByteSums
};
