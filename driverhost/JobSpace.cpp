#include "driverhost/JobSpace.h"

#include <fmt/format.h>

#include <algorithm>

#include "driverhost/FreeSpace.h"
#include "driverhost/HostError.h"
#include "driverhost/InkPlan.h"
#include "driverhost/PageBands.h"
#include "plugin/output/LineSize.h"

namespace {

/// What packing adds at most: one byte to 128 (TIFF 6, PackBits).
int64_t Packed(int64_t bytes) {
    return bytes + bytes / 128;
}

/// The plates of a page, one byte a pixel and ink; the rasteriser's composite picture of one band,
/// four bytes a pixel; and what it lays aside to draw the page.
int64_t PageBytes(const PdfPage& page, const PageSize& size, const ColorMode& mode,
                  int64_t bandPixels) {
    constexpr int64_t kProcessInks = 4;
    const InkPlan plan = PlanInks(mode.Colorants, page.Spots, {});
    int64_t drawnRows = 0;
    int64_t mostRows = 0;
    for (const PageBand& band : BandsOf(size, bandPixels)) {
        drawnRows += band.RowCount;
        mostRows = std::max(mostRows, band.RowCount);
    }
    int64_t bytes = 0;
    // A spot ink gets a plate where it has a channel, and to be mixed from it where it has none.
    const auto spots = static_cast<int64_t>(page.Spots.size());
    if (plan.NeedsSeparations || spots > 0)
        bytes += size.Width * (drawnRows * (kProcessInks + spots) + mostRows * kProcessInks);
    if (plan.NeedsGray) bytes += size.Width * drawnRows;
    return Packed(bytes) + page.SpoolBytes;
}

int64_t ChannelBytes(const DocumentPage& page, const ColorMode& mode) {
    int64_t bits = 1;
    for (const ColorantInfo& colorant : mode.Colorants)
        bits = std::max<int64_t>(bits, colorant.ColorDepth);
    int64_t lineBytes = 0;
    for (const PageArea& tile : page.Tiles)
        lineBytes += LineSizeBytes(tile.Width, bits) * tile.Rows;
    return lineBytes * static_cast<int64_t>(mode.Colorants.size());
}

}  // namespace

JobSpace SpaceOf(const Artwork& artwork, const std::vector<DocumentPage>& pages,
                 const ColorMode& mode, int64_t bandPixels) {
    JobSpace space;
    int64_t mostOfAPage = 0;
    for (const DocumentPage& page : pages) {
        mostOfAPage = std::max(mostOfAPage,
                               PageBytes(artwork.Pages()[page.Index], page.Size, mode, bandPixels));
        space.Channels = std::min(space.Channels + ChannelBytes(page, mode), kBeyondAnyDisk);
    }
    space.Job = Packed(ContainerBytes(pages, mode));
    space.Making = space.Job + mostOfAPage + artwork.MostDocumentBytes();
    return space;
}

void ExpectRoom(const std::filesystem::path& folder, int64_t bytes, const std::string& what) {
    constexpr int64_t kSpareBytes = 1 << 20;  // for directories, logs and the small files of a job
    const std::optional<int64_t> free = FreeBytes(folder);
    const int64_t needed = bytes + kSpareBytes;
    if (!free || *free >= needed) return;
    throw HostError(kFailed, fmt::format("{} takes up to {}, and {} has {} free; "
                                         "--no-space-check tries it all the same",
                                         what, SizeText(needed), folder.string(), SizeText(*free)));
}
