#include "driverhost/PageSeparator.h"

#include <fmt/format.h>

#include <algorithm>
#include <system_error>

#include "driverhost/HostError.h"
#include "driverhost/InkRows.h"
#include "platform/Program.h"

namespace fs = std::filesystem;

namespace {

/// Rows that a band is rasterised beyond its own, above and below: the rasteriser places a letter
/// that its picture cuts up to a pixel away from where it places a whole one.
constexpr int64_t kMarginRows = 512;

}  // namespace

PageSeparator::PageSeparator(Rasterizer& rasterizer, ContainerWriter& container,
                             const fs::path& workFolder, const ChosenPrint& chosen,
                             const InkScreens& screens, int64_t bandPixels, std::size_t jobPages)
    : rasterizer_(rasterizer),
      container_(container),
      workFolder_(workFolder),
      chosen_(chosen),
      screens_(screens),
      bandPixels_(bandPixels),
      jobPages_(jobPages) {}

std::vector<std::string> PageSeparator::WritePage(const DocumentPage& page, const InkPlan& plan) {
    std::vector<std::string> complaints = MakeBands(page, plan);
    for (const PageArea& tile : page.Tiles)
        WriteTile(page, tile, plan);
    RemoveBands();
    return complaints;
}

void PageSeparator::WriteTile(const DocumentPage& page, const PageArea& tile, const InkPlan& plan) {
    SeparationHeader header;
    header.WidthPixels = tile.Width;
    header.Rows = tile.Rows;
    header.XResolution = chosen_.Resolution.XResolution;
    header.YResolution = chosen_.Resolution.YResolution;
    header.Page = static_cast<int32_t>(jobPage_++);
    header.PageCount = static_cast<int32_t>(jobPages_);
    for (std::size_t i = 0; i < chosen_.Mode.Colorants.size(); ++i) {
        const ColorantInfo& colorant = chosen_.Mode.Colorants[i];
        header.Bits = static_cast<int32_t>(colorant.ColorDepth);
        header.InternalName = colorant.InternalName;
        header.DisplayName = colorant.DisplayName;
        try {
            WriteSeparation(header, page, tile, plan.Sources[i], *screens_[i]);
        } catch (const HostError& error) {
            throw HostError(error.Status(),
                            fmt::format("page {}: {}", page.Index + 1, error.what()));
        }
    }
}

std::vector<std::string> PageSeparator::MakeBands(const DocumentPage& page, const InkPlan& plan) {
    const PageSize& size = page.Size;
    bands_.clear();
    if (!plan.NeedsSeparations && !plan.NeedsGray) return {};
    constexpr int64_t kLeastRows = 64;  // lower bands would only start the rasteriser more often
    const int64_t mostRows = bandPixels_ / size.Width;
    const int64_t margin = std::min(kMarginRows, mostRows / 4);
    const int64_t bandRows =
        mostRows >= size.Rows ? size.Rows : std::max(mostRows - 2 * margin, kLeastRows);
    std::vector<std::string> complaints;
    BandRequest request;
    request.PageNumber = static_cast<int32_t>(page.Index) + 1;
    request.XResolution = chosen_.Resolution.XResolution;
    request.YResolution = chosen_.Resolution.YResolution;
    request.WidthPixels = size.Width;
    request.PageRows = size.Rows;
    for (int64_t row = 0; row < size.Rows; row += bandRows) {
        const int64_t end = std::min(row + bandRows, size.Rows);
        request.FirstRow = std::max(row - margin, int64_t{0});
        request.RowCount = std::min(end + margin, size.Rows) - request.FirstRow;
        bands_.push_back({workFolder_ / fmt::format("band{}", bands_.size()), request.RowCount,
                          row - request.FirstRow, end - request.FirstRow});
        std::error_code error;
        fs::create_directory(bands_.back().Folder, error);
        if (error)
            throw HostError(kFailed, fmt::format("cannot write to {}: {}", workFolder_.string(),
                                                 error.message()));
        const std::vector<std::string> more =
            rasterizer_.MakePlates(request, plan, bands_.back().Folder);
        complaints.insert(complaints.end(), more.begin(), more.end());
    }
    return complaints;
}

void PageSeparator::RemoveBands() {
    std::error_code ignored;  // the work folder goes at the end in any case
    for (const PlateBand& band : bands_)
        fs::remove_all(band.Folder, ignored);
}

void PageSeparator::WriteSeparation(const SeparationHeader& header, const DocumentPage& page,
                                    const PageArea& tile, const InkSource& source,
                                    const InkScreen& screen) {
    const std::vector<PlateBand> bands = BandsOfRows(bands_, tile.FirstRow, tile.Rows);
    InkRows rows(bands, source, page.Size.Width);
    // Every tile is cut from the page's whole rows.
    std::vector<uint8_t> amounts(static_cast<std::size_t>(page.Size.Width));
    const std::span<const uint8_t> tileAmounts = std::span(amounts).subspan(
        static_cast<std::size_t>(tile.FirstColumn), static_cast<std::size_t>(tile.Width));
    std::vector<uint8_t> packed(
        static_cast<std::size_t>(PackedRowBytes(header.WidthPixels, header.Bits)));
    container_.BeginSeparation(header);
    for (int64_t row = 0; row < tile.Rows; ++row) {
        if (InterruptNoted()) throw HostError(kAborted, "interrupted");
        rows.ReadRow(amounts);
        screen.ScreenRow(tileAmounts, {tile.FirstColumn, tile.FirstRow + row}, packed);
        container_.WriteRow(packed);
    }
    container_.EndSeparation();
}
