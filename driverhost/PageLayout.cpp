#include "driverhost/PageLayout.h"

#include <fmt/format.h>

#include <algorithm>

#include "driverhost/Halftone.h"
#include "driverhost/HostError.h"
#include "driverhost/Rasterizer.h"

namespace {

PageSize SizeOf(const PdfPage& page, std::size_t index, const ResolutionItem& resolution) {
    const PageSize size = {PixelsOf(page.WidthPoints, resolution.XResolution),
                           PixelsOf(page.HeightPoints, resolution.YResolution)};
    if (size.Width < 1 || size.Rows < 1 || size.Width > kMostPageSide || size.Rows > kMostPageSide)
        throw HostError(kFailed,
                        fmt::format("page {} measures {} x {} points, {} x {} pixels; a page has "
                                    "1 to {} pixels a side",
                                    index + 1, page.WidthPoints, page.HeightPoints, size.Width,
                                    size.Rows, kMostPageSide));
    return size;
}

}  // namespace

std::vector<DocumentPage> LayOut(const std::vector<PdfPage>& pages,
                                 const ResolutionItem& resolution, const TileGrid& grid) {
    const int64_t jobPages = static_cast<int64_t>(pages.size()) * grid.Count();
    if (jobPages > static_cast<int64_t>(kMostDocumentPages))
        throw HostError(kFailed, fmt::format("{} pages and tiles; a job holds {}", jobPages,
                                             kMostDocumentPages));
    std::vector<DocumentPage> layout;
    for (std::size_t i = 0; i < pages.size(); ++i) {
        const PageSize size = SizeOf(pages[i], i, resolution);
        layout.push_back({i, size, TilesOf(size, grid)});
    }
    return layout;
}

int64_t ContainerBytes(const std::vector<DocumentPage>& pages, const ColorMode& mode) {
    int64_t bytes = 0;
    for (const DocumentPage& page : pages)
        for (const PageArea& tile : page.Tiles)
            for (const ColorantInfo& colorant : mode.Colorants)
                bytes = std::min(
                    bytes + tile.Rows * PackedRowBytes(tile.Width,
                                                       static_cast<int32_t>(colorant.ColorDepth)),
                    kBeyondAnyDisk);
    return bytes;
}
