#include "driverhost/PageSeparator.h"

#include <fmt/format.h>

#include <system_error>

#include "driverhost/HostError.h"
#include "driverhost/InkRows.h"
#include "driverhost/PageBands.h"
#include "platform/Program.h"

namespace fs = std::filesystem;

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
    bands_.clear();
    if (!plan.NeedsSeparations && !plan.NeedsGray) return {};
    std::vector<std::string> complaints;
    BandRequest request;
    request.PageNumber = static_cast<int32_t>(page.Index) + 1;
    request.XResolution = chosen_.Resolution.XResolution;
    request.YResolution = chosen_.Resolution.YResolution;
    request.WidthPixels = page.Size.Width;
    request.PageRows = page.Size.Rows;
    for (const PageBand& band : BandsOf(page.Size, bandPixels_)) {
        request.FirstRow = band.FirstRow;
        request.RowCount = band.RowCount;
        bands_.push_back({workFolder_ / fmt::format("band{}", bands_.size()), band.RowCount,
                          band.FirstOwnRow, band.EndOwnRow});
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
