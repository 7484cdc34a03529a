#include "driverhost/PageBands.h"

#include <algorithm>

namespace {

/// Rows that a band is rasterised beyond its own, above and below: the rasteriser places a letter
/// that its picture cuts up to a pixel away from where it places a whole one.
constexpr int64_t kMarginRows = 512;

/// Lower bands would only start the rasteriser more often.
constexpr int64_t kLeastRows = 64;

}  // namespace

std::vector<PageBand> BandsOf(const PageSize& page, int64_t mostPixels) {
    const int64_t mostRows = mostPixels / page.Width;
    const int64_t margin = std::min(kMarginRows, mostRows / 4);
    const int64_t ownRows =
        mostRows >= page.Rows ? page.Rows : std::max(mostRows - 2 * margin, kLeastRows);
    std::vector<PageBand> bands;
    for (int64_t row = 0; row < page.Rows; row += ownRows) {
        const int64_t end = std::min(row + ownRows, page.Rows);
        const int64_t first = std::max(row - margin, int64_t{0});
        const int64_t count = std::min(end + margin, page.Rows) - first;
        bands.push_back({first, count, row - first, end - first});
    }
    return bands;
}
