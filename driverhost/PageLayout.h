#pragma once

#include <cstdint>
#include <vector>

#include "driverhost/Capabilities.h"
#include "driverhost/PdfPages.h"
#include "driverhost/TileGrid.h"

/// Longest side of a page: 88 m at 1440 dpi. A band of one screen's height with its margins still
/// stays below the rasteriser's limit.
inline constexpr int64_t kMostPageSide = 5'000'000;

/// One page of the document.
struct DocumentPage {
    std::size_t Index = 0;  ///< from 0
    PageSize Size;
    std::vector<PageArea> Tiles;  ///< each a page of the job; one of the whole size: not cut
};

/// The pages in pixels, each cut by the grid. Throws HostError, naming the page, for one without
/// a pixel or with too long a side, and for more pages and tiles than a job holds.
std::vector<DocumentPage> LayOut(const std::vector<PdfPage>& pages,
                                 const ResolutionItem& resolution, const TileGrid& grid);

/// More than any disk holds, and so little that a few of it can be added up.
inline constexpr int64_t kBeyondAnyDisk = int64_t{1} << 60;

/// Bytes of all rows of a job's container before they are compressed; at most kBeyondAnyDisk.
int64_t ContainerBytes(const std::vector<DocumentPage>& pages, const ColorMode& mode);
