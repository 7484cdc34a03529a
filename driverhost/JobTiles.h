#pragma once

#include <cstdint>
#include <vector>

#include "driverhost/TileGrid.h"
#include "host/Records.h"

/// How a job's pages stand among each other, as the status record tells the driver: the tiles of a
/// document's pages, or pages that get a folder each, for file names carry no page number.
class JobTiles {
  public:
    /// Pages that share one folder, where each replaces the files of the one before.
    JobTiles() = default;
    /// Pages of their own, each in a folder of its own; a single page needs none.
    static JobTiles OfPages(std::size_t pageCount);
    /// The tiles of a document's pages. Throws HostError when the pages are no whole number of
    /// grids.
    static JobTiles OfGrid(std::size_t pageCount, const TileGrid& grid);

    /// Whether each page gets a folder.
    bool Any() const { return pages_.size() > 1; }
    /// Makes a status record name them; borrows this object.
    void PointTo(JobStatusRecord& status) const;

  private:
    std::vector<int32_t> pages_;    ///< from 1, as columns and rows
    std::vector<int32_t> columns_;  ///< zeros: a page of its own stands in no grid
    std::vector<int32_t> rows_;
};
