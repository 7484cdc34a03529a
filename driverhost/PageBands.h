#pragma once

#include <cstdint>
#include <vector>

#include "driverhost/TileGrid.h"

/// The part of a page that one run of the rasteriser draws: the rows that count, and beside them
/// rows that it draws to draw those right.
struct PageBand {
    int64_t FirstRow = 0;     ///< of the picture, counted from the page's top
    int64_t RowCount = 0;     ///< of the picture
    int64_t FirstOwnRow = 0;  ///< within the picture: the first row that counts
    int64_t EndOwnRow = 0;    ///< one past the last that counts
};

/// Cuts a page into bands of at most so many pixels, but for bands that would be too low. The rows
/// that count are together the page's, in order.
std::vector<PageBand> BandsOf(const PageSize& page, int64_t mostPixels);
