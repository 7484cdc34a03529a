#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Pixels of a page.
struct PageSize {
    int64_t Width = 0;
    int64_t Rows = 0;
};

/// A part of a page, in pixels from its upper left corner.
struct PageArea {
    int64_t FirstColumn = 0;
    int64_t FirstRow = 0;
    int64_t Width = 0;
    int64_t Rows = 0;
};

/// How every page of a document is cut for a printer that takes it in tiles: row after row from
/// the top, in each row from the left. Each tile is a page of the job.
struct TileGrid {
    int32_t Columns = 1;
    int32_t Rows = 1;

    /// Tiles of one page.
    int64_t Count() const { return int64_t{Columns} * Rows; }
    bool IsWhole() const { return Count() == 1; }
};

/// Reads "COLUMNSxROWS", each 1 to 65535; empty is a page in one piece. Throws HostError (kUsage)
/// for another text.
TileGrid ParseTileGrid(const std::string& text);

/// The tiles of a page in the order of the job. They are of one size but for those of the last
/// column and row, which take what is left. Throws HostError when nothing is left for one.
std::vector<PageArea> TilesOf(const PageSize& page, const TileGrid& grid);
