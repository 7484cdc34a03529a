#include "driverhost/TileGrid.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

#include "driverhost/HostError.h"

namespace {

/// The whole of a text as a side of a grid; 0: it is none.
int32_t SideOf(const char* begin, const char* end) {
    int32_t value = 0;
    const auto result = std::from_chars(begin, end, value);
    return result.ec == std::errc() && result.ptr == end && value <= UINT16_MAX ? value : 0;
}

struct Piece {
    int64_t First = 0;
    int64_t Length = 0;
};

std::vector<Piece> Cut(int64_t length, int32_t count) {
    const int64_t step = (length + count - 1) / count;
    std::vector<Piece> pieces;
    for (int64_t i = 0; i < count; ++i)
        pieces.push_back({i * step, std::min(step, length - i * step)});
    if (pieces.back().Length < 1)
        throw HostError(kFailed, fmt::format("{} pixels cannot be cut into {} tiles of {}", length,
                                             count, step));
    return pieces;
}

}  // namespace

TileGrid ParseTileGrid(const std::string& text) {
    if (text.empty()) return {};
    const std::size_t cross = std::min(text.find('x'), text.size());
    const char* const end = text.data() + text.size();
    const char* const second = cross == text.size() ? end : text.data() + cross + 1;
    const TileGrid grid = {SideOf(text.data(), text.data() + cross), SideOf(second, end)};
    if (grid.Columns < 1 || grid.Rows < 1)
        throw HostError(kUsage, fmt::format("\"{}\" is no grid of tiles; it looks like 3x2, for 3 "
                                            "columns and 2 rows",
                                            text));
    return grid;
}

std::vector<PageArea> TilesOf(const PageSize& page, const TileGrid& grid) {
    const std::vector<Piece> columns = Cut(page.Width, grid.Columns);
    const std::vector<Piece> rows = Cut(page.Rows, grid.Rows);
    std::vector<PageArea> tiles;
    for (const Piece& row : rows)
        for (const Piece& column : columns)
            tiles.push_back({column.First, row.First, column.Length, row.Length});
    return tiles;
}
