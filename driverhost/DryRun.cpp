#include "driverhost/DryRun.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <system_error>

#include "driverhost/InkUse.h"
#include "driverhost/Warnings.h"
#include "driverhost/WorkFolder.h"
#include "plugin/output/LineSize.h"

namespace fs = std::filesystem;

namespace {

constexpr double kMillimetresPerInch = 25.4;

/// What packing adds at most: one byte to 128 (TIFF 6, PackBits).
int64_t Packed(int64_t bytes) {
    return bytes + bytes / 128;
}

/// The plates of a page, one byte a pixel and ink, and the rasteriser's composite picture of one
/// band, four bytes a pixel.
int64_t PlateBytes(const DocumentPage& page, const InkPlan& plan, int64_t bandPixels) {
    const int64_t pixels = page.Size.Width * page.Size.Rows;
    int64_t bytes = 0;
    if (plan.NeedsSeparations)
        bytes += pixels * (4 + static_cast<int64_t>(plan.PlateSpots.size())) +
                 4 * std::min(pixels, bandPixels);
    if (plan.NeedsGray) bytes += pixels;
    return Packed(bytes);
}

int64_t ChannelBytes(const DocumentPage& page, const ColorMode& mode) {
    int64_t bits = 1;
    for (const ColorantInfo& colorant : mode.Colorants)
        bits = std::max<int64_t>(bits, colorant.ColorDepth);
    int64_t channelBytes = 0;
    for (const PageArea& tile : page.Tiles)
        channelBytes += LineSizeBytes(tile.Width, bits) * tile.Rows;
    return channelBytes * static_cast<int64_t>(mode.Colorants.size());
}

std::string SizeText(int64_t bytes) {
    constexpr int64_t kKilobyte = 1000;
    constexpr int64_t kMegabyte = 1'000'000;
    const bool isSmall = bytes < kMegabyte;
    return fmt::format(
        "{:.1f} {}",
        static_cast<double>(bytes) / static_cast<double>(isSmall ? kKilobyte : kMegabyte),
        isSmall ? "kB" : "MB");
}

std::string InkText(const InkUse& use, const ColorMode& mode) {
    std::string text;
    for (std::size_t i = 0; i < use.Shares.size(); ++i) {
        if (use.Shares[i] <= 0) continue;
        text += fmt::format("{}{} {:.2f} %", text.empty() ? "" : ", ",
                            mode.Colorants[i].InternalName, use.Shares[i] * 100);
    }
    return text.empty() ? "none" : text;
}

std::string TileText(const DocumentPage& page) {
    if (page.Tiles.size() < 2) return "";
    const PageArea& first = page.Tiles.front();
    return fmt::format(", {} tiles of {} x {} pixels at most", page.Tiles.size(), first.Width,
                       first.Rows);
}

void PrintPage(const DocumentPage& page, const DryRun& run, const InkUse& use) {
    const ResolutionItem& resolution = run.Chosen.Resolution;
    fmt::print(
        "page {} of {}: {} x {} pixels, {:.1f} x {:.1f} mm{}\n", page.Index + 1, run.Pages.size(),
        page.Size.Width, page.Size.Rows,
        static_cast<double>(page.Size.Width) * kMillimetresPerInch / double{resolution.XResolution},
        static_cast<double>(page.Size.Rows) * kMillimetresPerInch / double{resolution.YResolution},
        TileText(page));
    fmt::print("    inks, drawn at {:.0f} dpi: {}\n", use.DotsPerInch,
               InkText(use, run.Chosen.Mode));
    std::fflush(stdout);
}

}  // namespace

void ReportDryRun(const DryRun& run) {
    const ColorMode& mode = run.Chosen.Mode;
    Warnings warnings;
    int64_t plates = 0;
    int64_t channels = 0;
    for (const std::string& fault : run.Screens.Faults)
        warnings.Add(fault);
    for (const DocumentPage& page : run.Pages) {
        const InkPlan plan =
            PlanInks(mode.Colorants, run.Source.Pages()[page.Index].Spots, run.Spots);
        warnings.AddPlan(plan, mode.Name);
        PrintPage(page, run, MeasureInkUse(run.Gs, run.WorkFolder, page, plan, run.Chosen));
        plates = std::max(plates, PlateBytes(page, plan, run.BandPixels));
        channels += ChannelBytes(page, mode);
    }
    PrintScreens(run.Screens);
    const int64_t job = Packed(ContainerBytes(run.Pages, mode));
    // A document that had to be converted lies in the work folder too.
    const auto document = static_cast<int64_t>(FolderBytes(run.WorkFolder));
    fmt::print(
        "disk space: at most {} for the job, {} while it is made; {} for its channel files\n",
        SizeText(job), SizeText(job + plates + document), SizeText(channels));
    std::error_code error;
    const fs::space_info space = fs::space(run.JobFolder, error);
    if (!run.JobFolder.empty() && !error)
        fmt::print("free in {}: {}\n", run.JobFolder.string(),
                   SizeText(static_cast<int64_t>(space.available)));
}
