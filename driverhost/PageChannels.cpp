#include "driverhost/PageChannels.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>

#include "description/CDynamic.h"
#include "description/ModelOutputSettings.h"
#include "driverhost/HostError.h"
#include "host/Text.h"
#include "plugin/output/OutputNames.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* kWhite = "White";
constexpr uint32_t kWhiteColor = 0xFFFFFF;

PrintSettings SettingsOf(const PrintRecord& record) {
    PrintSettings settings;
    CopyText(settings.ModelName, sizeof settings.ModelName, record.Model);
    settings.ColorModeIndex = record.Choice.ColorMode;
    settings.MediaIndex = record.Choice.Media;
    settings.PrintModeIndex = record.Choice.PrintMode;
    settings.ResolutionIndex = record.Choice.Resolution;
    return settings;
}

std::vector<ColorantInfo> ColorantsOf(CDynamic& description, const PrintRecord& record) {
    std::vector<ColorantInfo> items(kColorantCapacity);
    ColorantInfoList list = {};
    list.Items = items.data();
    list.Capacity = kColorantCapacity;
    if (description.GetColorantList(record.Choice.ColorMode, &list) == 0)
        throw HostError(kFailed, fmt::format("{} has no colour mode {}", record.Model,
                                             record.Choice.ColorMode));
    items.resize(static_cast<std::size_t>(std::clamp(list.Count, 0, kColorantCapacity)));
    return items;
}

/// The page's file of that name; empty when there is none.
fs::path FindFile(const PrintRecord::Page& page, const std::string& name) {
    for (const std::string& file : page.Files)
        if (fs::path(file).filename() == name) return file;
    return {};
}

std::unique_ptr<ChannelFile> OpenChannel(const fs::path& path, const PrintRecord::Page& page) {
    constexpr int64_t kWordPixels = 32;
    // What a page can have; a record that says more is no work of ours.
    constexpr int64_t kMostSide = INT32_MAX;
    if (page.WidthPixels > kMostSide || page.Lines > kMostSide)
        throw HostError(kFailed, "the job's record is damaged");
    const int64_t width = (page.WidthPixels + kWordPixels - 1) / kWordPixels * kWordPixels;
    std::unique_ptr<ChannelFile> file =
        IsTiffName(path) ? OpenTiffChannel(path) : OpenRawChannel(path, width, page.Bits);
    const ChannelShape& shape = file->Shape();
    if (shape.WidthPixels != width || shape.Bits != page.Bits || shape.Lines != page.Lines)
        throw HostError(
            kIncomplete,
            fmt::format("{} is incomplete: {} lines of {} pixels instead of {} of {}",
                        path.string(), shape.Lines, shape.WidthPixels, page.Lines, width));
    return file;
}

}  // namespace

PageChannels OpenPageChannels(const fs::path& folder, const PrintRecord& record, std::size_t page) {
    CDynamic description;
    ModelOutputSettings model;
    const PrintSettings settings = SettingsOf(record);
    if (description.LoadDescription(settings.ModelName) == 0 ||
        ReadModelOutputSettings(description, settings, model) == 0)
        throw HostError(kFailed, fmt::format("the model \"{}\" cannot be read", record.Model));
    const std::vector<ColorantInfo> colorants = ColorantsOf(description, record);
    const AString jobName = MakeJobName(record.SourceName);
    const auto count = static_cast<int32_t>(colorants.size());
    model.SupportWhiteType = record.WhiteType;
    const ChannelNaming naming = PageNaming(description, settings.ModelName, model, count, jobName);
    const PrintRecord::Page& printed = record.Pages.at(page);

    PageChannels channels;
    channels.BottomLineFirst = model.PrinterDirection != 0;
    for (int32_t channel = 0; channel < count; ++channel) {
        const ColorantInfo& colorant = colorants[static_cast<std::size_t>(channel)];
        fs::path file = FindFile(printed, naming.FileName(channel));
        // The only channel of a colour mode is named after the job when it received data.
        if (file.empty() && count == 1) file = FindFile(printed, naming.FileName(-1));
        if (file.empty())
            throw HostError(kIncomplete, fmt::format("page {} has no channel file {}", page + 1,
                                                     naming.FileName(channel)));
        channels.Channels.push_back(
            {colorant.InternalName, colorant.ColorValue, OpenChannel(folder / file, printed)});
    }
    channels.HasWhite =
        std::any_of(colorants.begin(), colorants.end(), [](const ColorantInfo& colorant) {
            return EqualsIgnoringCase(colorant.InternalName, kWhite);
        });
    if (!naming.HasWhite() || channels.HasWhite) return channels;
    const fs::path white = FindFile(printed, naming.WhiteFileName());
    if (white.empty() || fs::file_size(folder / white) == 0) return channels;
    channels.Channels.push_back({kWhite, kWhiteColor, OpenChannel(folder / white, printed)});
    channels.HasWhite = true;
    return channels;
}
