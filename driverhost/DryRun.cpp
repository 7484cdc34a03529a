#include "driverhost/DryRun.h"

#include <fmt/format.h>

#include <cstdio>
#include <optional>

#include "driverhost/FreeSpace.h"
#include "driverhost/InkUse.h"

namespace {

constexpr double kMillimetresPerInch = 25.4;

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
    fmt::print("    inks, drawn at {:.3g} dpi: {}\n", use.DotsPerInch,
               InkText(use, run.Chosen.Mode));
    std::fflush(stdout);
}

}  // namespace

void ReportDryRun(const DryRun& run, Warnings& warnings) {
    const ColorMode& mode = run.Chosen.Mode;
    for (const DocumentPage& page : run.Pages) {
        const PdfPage& source = run.Source.Pages()[page.Index];
        const InkPlan plan = PlanInks(mode.Colorants, source.Spots, run.Spots);
        const InkUse use = MeasureInkUse(run.Gs, run.WorkFolder, page, plan, run.Chosen);
        warnings.AddPage(page.Index, use.Complaints);
        PrintPage(page, run, use);
    }
    PrintScreens(run.Screens);
    fmt::print(
        "disk space: at most {} for the job, {} while it is made; {} for its channel files\n",
        SizeText(run.Space.Job), SizeText(run.Space.Making), SizeText(run.Space.Channels));
    const std::optional<int64_t> free = FreeBytes(run.JobFolder);
    if (!run.JobFolder.empty() && free)
        fmt::print("free in {}: {}\n", run.JobFolder.string(), SizeText(*free));
    std::fflush(stdout);
}
