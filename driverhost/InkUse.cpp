#include "driverhost/InkUse.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <system_error>

#include "driverhost/HostError.h"
#include "driverhost/InkRows.h"
#include "driverhost/Interrupt.h"

namespace fs = std::filesystem;

namespace {

/// An A4 page has these at 177 dpi: small type still shows, and drawing takes about a second.
constexpr double kDrawingPixels = 3'000'000;

/// The lowest resolution that the rasteriser is asked for.
constexpr double kLeastDpi = 0.1;

BandRequest DrawingOf(const DocumentPage& page, const ResolutionItem& resolution) {
    const double pixels =
        static_cast<double>(page.Size.Width) * static_cast<double>(page.Size.Rows);
    const double scale = std::min(1.0, std::sqrt(kDrawingPixels / pixels));
    BandRequest drawing;
    drawing.PageNumber = static_cast<int32_t>(page.Index) + 1;
    drawing.XResolution = std::max(double{resolution.XResolution} * scale, kLeastDpi);
    drawing.YResolution = std::max(double{resolution.YResolution} * scale, kLeastDpi);
    drawing.WidthPixels =
        std::max<int64_t>(1, std::llround(static_cast<double>(page.Size.Width) * scale));
    drawing.PageRows =
        std::max<int64_t>(1, std::llround(static_cast<double>(page.Size.Rows) * scale));
    drawing.RowCount = drawing.PageRows;
    return drawing;
}

double ShareOf(InkRows rows, const BandRequest& drawing) {
    constexpr double kFull = 255;
    std::vector<uint8_t> amounts(static_cast<std::size_t>(drawing.WidthPixels));
    uint64_t sum = 0;
    for (int64_t row = 0; row < drawing.PageRows; ++row) {
        StopWhenInterrupted();
        rows.ReadRow(amounts);
        sum = std::accumulate(amounts.begin(), amounts.end(), sum);
    }
    return static_cast<double>(sum) / kFull / static_cast<double>(drawing.WidthPixels) /
           static_cast<double>(drawing.PageRows);
}

}  // namespace

InkUse MeasureInkUse(Rasterizer& rasterizer, const fs::path& workFolder, const DocumentPage& page,
                     const InkPlan& plan, const ChosenPrint& chosen) {
    const BandRequest drawing = DrawingOf(page, chosen.Resolution);
    const PlateBand band = {workFolder / "drawing", drawing.PageRows, 0, drawing.PageRows};
    std::error_code error;
    fs::create_directory(band.Folder, error);
    if (error)
        throw HostError(
            kFailed, fmt::format("cannot write to {}: {}", workFolder.string(), error.message()));
    InkUse use;
    if (plan.NeedsSeparations || plan.NeedsGray)
        use.Complaints = rasterizer.MakePlates(drawing, plan, band.Folder);
    use.DotsPerInch = drawing.XResolution;
    for (const InkSource& source : plan.Sources)
        use.Shares.push_back(ShareOf(InkRows({band}, source, drawing.WidthPixels), drawing));
    fs::remove_all(band.Folder, error);
    return use;
}
