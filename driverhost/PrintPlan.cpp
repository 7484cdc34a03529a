#include "driverhost/PrintPlan.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <system_error>

#include "driverhost/HostError.h"
#include "host/AFilePath.h"
#include "host/Text.h"
#include "plugin/output/HeaderFile.h"
#include "plugin/output/JobTicket.h"
#include "plugin/output/LineSize.h"
#include "plugin/output/OutputNames.h"
#include "plugin/output/PagePreview.h"
#include "plugin/output/WhiteInk.h"

namespace fs = std::filesystem;

namespace {

/// A name below a folder of the job, both relative to it; "" for one that leads out.
std::string PathBelow(const std::string& folder, const std::string& name) {
    constexpr std::string_view kJobFolder = "job";
    const AFilePath path = AFilePath(kJobFolder).Append(folder).Append(name);
    if (!path.isValid() || path.fullPath().size() <= kJobFolder.size()) return "";
    return path.fullPath().substr(kJobFolder.size() + 1);
}

/// The driver's whole dots per inch: half up, 0 for what is no resolution.
int32_t WholeDots(double resolution) {
    if (!(resolution > 0)) return 0;
    return static_cast<int32_t>(
        std::min(std::floor(resolution + 0.5), double{std::numeric_limits<int32_t>::max()}));
}

class Planner {
  public:
    Planner(const PrintOrder& order, ModelRules& rules)
        : order_(order),
          rules_(rules),
          model_(rules.Output),
          jobName_(MakeJobName(order.SourceName)),
          channelCount_(static_cast<int32_t>(order.Colorants.size())),
          naming_(PageNaming(rules.Description, rules.Description.LoadedModelName().c_str(), model_,
                             channelCount_, jobName_)) {
        order_.Tiles.PointTo(status_);
        status_.Copies = order.Copies;
    }

    PrintPlan Plan() {
        PrintPlan plan;
        plan.JobName = jobName_;
        plan.MakesFolder = model_.CreateFolder != 0;
        plan.BottomLineFirst = model_.PrinterDirection != 0;
        plan.LineInterleaved = model_.LineByLine != 0;
        plan.WhiteType = model_.EffectiveWhiteType();
        plan.GathersWhite = IsWhiteUnion(model_.EffectiveWhiteType());
        for (std::size_t page = 0; page < order_.Pages.size(); ++page)
            plan.Pages.push_back(PlanPage(page));
        PlanJobFiles(plan);
        return plan;
    }

  private:
    /// The only channel of a colour mode is named after the job where the page has data for it.
    bool IsNamedAfterJob(const ContainerPage& page) const {
        if (channelCount_ != 1) return false;
        const ColorantInfo& only = order_.Colorants.front();
        const auto name = FieldText(only.InternalName, sizeof only.InternalName);
        return std::any_of(page.Separations.begin(), page.Separations.end(),
                           [&](const auto& one) { return EqualsIgnoringCase(one, name); });
    }

    PlannedPage PlanPage(std::size_t index) const {
        PlannedPage page;
        page.Shape = order_.Pages[index];
        if (order_.Tiles.Any()) page.Folder = fmt::format("{}-tile{}", jobName_, index + 1);
        for (int32_t channel = 0; channel < channelCount_; ++channel)
            AddChannel(page, naming_.FileName(IsNamedAfterJob(page.Shape) ? -1 : channel));
        if (naming_.HasWhite()) AddChannel(page, naming_.WhiteFileName());
        const auto add = [&](std::optional<SideFile> file, const AString& name) {
            if (!file) return;
            file->Path = PathBelow(page.Folder, name);
            page.Sides.push_back(std::move(*file));
        };
        add(PromiseTicket(model_, FactsOf(page, index)), model_.JobTicketName);
        // At the page's end the driver has left the tile's folder.
        if (model_.HeaderAtEndRip == 0 || page.Folder.empty())
            add(PromiseHeader(model_, HeaderFactsOf(page)), HeaderName());
        add(PromisePreview(model_, page.Shape, WholeDots(double{order_.Header.XResolution}),
                           WholeDots(double{order_.Header.YResolution})),
            PreviewFileName(model_, jobName_));
        return page;
    }

    static void AddChannel(PlannedPage& page, const AString& name) {
        const std::string path = PathBelow(page.Folder, name);
        if (!path.empty()) page.Channels.push_back(path);
    }

    void PlanJobFiles(PrintPlan& plan) const {
        const auto add = [&](std::optional<SideFile> file, const AString& name) {
            if (!file) return;
            file->Path = PathBelow("", name);
            plan.Sides.push_back(std::move(*file));
        };
        if (plan.Pages.empty()) return;
        if (model_.HeaderAtEndRip != 0 && order_.Tiles.Any())
            add(PromiseHeader(model_, HeaderFactsOf(plan.Pages.back())), HeaderName());
        if (order_.Thumbnail.empty()) return;
        // The preview of a page without a folder of its own takes the thumbnail's place.
        const bool hasPreview =
            std::any_of(plan.Pages.begin(), plan.Pages.end(), [](const PlannedPage& page) {
                return page.Folder.empty() &&
                       std::any_of(page.Sides.begin(), page.Sides.end(), [](const SideFile& side) {
                           return side.Kind == SideKind::kPreview;
                       });
            });
        if (hasPreview) return;
        std::error_code error;
        SideFile thumbnail(SideKind::kThumbnail);
        thumbnail.Bytes = fs::file_size(order_.Thumbnail, error);
        if (error)
            throw HostError(kUsage, fmt::format("there is no thumbnail {}", order_.Thumbnail));
        add(thumbnail, PreviewFileName(model_, jobName_));
    }

    AString HeaderName() const { return SubstituteJobName(model_.HeaderOutputName, jobName_); }

    HeaderFacts HeaderFactsOf(const PlannedPage& page) const {
        return {.widthPixels = static_cast<int32_t>(page.Shape.WidthPixels),
                .heightLines = static_cast<int32_t>(page.Shape.Rows),
                .channelCount = channelCount_,
                .xResolution = order_.Header.XResolutionWhole,
                .yResolution = order_.Header.YResolutionWhole,
                .bits = page.Shape.Bits};
    }

    TicketFacts FactsOf(const PlannedPage& page, std::size_t index) const {
        constexpr std::size_t kNameBytes = 256;
        const JobFileHeader& header = order_.Header;
        TicketFacts facts;
        facts.copies = order_.Copies;
        facts.originalFileName =
            FieldText(header.OriginalFileName, sizeof header.OriginalFileName - 1);
        if (page.Shape.Bits > 0)
            facts.paddedWidthPixels = static_cast<int32_t>(page.LineBytes() * 8 / page.Shape.Bits);
        facts.heightLines = static_cast<int32_t>(page.Shape.Rows);
        facts.xResolution = double{header.XResolution};
        facts.yResolution = double{header.YResolution};
        facts.printerName = FieldText(header.PrinterName, sizeof header.PrinterName - 1);
        char colorMode[kNameBytes] = {};
        facts.hasColorModeName =
            rules_.Description.GetColorModeName(header.ColorModeIndex, colorMode) != 0;
        facts.colorModeName = colorMode;
        facts.tiles = TileBlock(status_, static_cast<int32_t>(index));
        return facts;
    }

    const PrintOrder& order_;
    ModelRules& rules_;
    const ModelOutputSettings& model_;
    AString jobName_;
    int32_t channelCount_;
    ChannelNaming naming_;
    JobStatusRecord status_ = {};
};

void AddOnce(std::vector<std::string>& paths, std::set<std::string>& known,
             const std::string& path) {
    if (!path.empty() && known.insert(path).second) paths.push_back(path);
}

}  // namespace

int64_t PlannedPage::LineBytes() const {
    return LineSizeBytes(Shape.WidthPixels, Shape.Bits);
}

std::vector<std::string> PrintPlan::PathsOf(const PlannedPage& page) const {
    std::vector<std::string> paths;
    std::set<std::string> known;
    for (const std::string& channel : page.Channels)
        AddOnce(paths, known, channel);
    for (const SideFile& side : page.Sides)
        AddOnce(paths, known, side.Path);
    return paths;
}

std::vector<std::string> PrintPlan::OwnPaths() const {
    std::vector<std::string> paths;
    std::set<std::string> known;
    for (const SideFile& side : Sides)
        AddOnce(paths, known, side.Path);
    return paths;
}

std::vector<std::string> PrintPlan::AllPaths() const {
    std::vector<std::string> paths = OwnPaths();
    std::set<std::string> known(paths.begin(), paths.end());
    for (const PlannedPage& page : Pages)
        for (const std::string& path : PathsOf(page))
            AddOnce(paths, known, path);
    return paths;
}

PrintPlan PlanPrint(const PrintOrder& order, ModelRules& rules) {
    return Planner(order, rules).Plan();
}
