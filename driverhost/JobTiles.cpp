#include "driverhost/JobTiles.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>

#include "driverhost/HostError.h"

JobTiles JobTiles::OfPages(std::size_t pageCount) {
    JobTiles tiles;
    if (pageCount < 2) return tiles;
    // Pages of a job go through the same door as the tiles of a large picture.
    tiles.pages_.resize(pageCount);
    std::iota(tiles.pages_.begin(), tiles.pages_.end(), 1);
    tiles.columns_.assign(pageCount, 0);
    tiles.rows_.assign(pageCount, 0);
    return tiles;
}

JobTiles JobTiles::OfGrid(std::size_t pageCount, const TileGrid& grid) {
    const int64_t count = grid.Columns < 1 || grid.Rows < 1 ? 0 : grid.Count();
    const auto pages = static_cast<int64_t>(pageCount);
    if (count == 0 || pages % count != 0)
        throw HostError(kFailed, fmt::format("the job's {} pages are no whole number of {} x {} "
                                             "tiles",
                                             pages, grid.Columns, grid.Rows));
    JobTiles tiles;
    for (int64_t i = 0; i < pages; ++i) {
        tiles.pages_.push_back(static_cast<int32_t>(i / count) + 1);
        tiles.rows_.push_back(static_cast<int32_t>(i % count / grid.Columns) + 1);
        tiles.columns_.push_back(static_cast<int32_t>(i % grid.Columns) + 1);
    }
    return tiles;
}

void JobTiles::PointTo(JobStatusRecord& status) const {
    status.RecordVersion = JobStatusRecord::kTileRecordVersion;
    status.TileCount = std::max(static_cast<int32_t>(pages_.size()), 1);
    status.TilePageNumbers = pages_.data();
    status.TileColumnNumbers = columns_.data();
    status.TileRowNumbers = rows_.data();
}
