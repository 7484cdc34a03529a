#include "driverhost/Capabilities.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "driverhost/HostError.h"

namespace {

/// Room that every name answered at the boundary has.
constexpr std::size_t kNameBytes = 256;
using NameBuffer = std::array<char, kNameBytes>;

CapabilityItem ItemOf(int32_t id) {
    CapabilityItem item = {};
    item.ID = id;
    return item;
}

}  // namespace

Capabilities::Capabilities(DriverInterface& driver, const std::string& model)
    : driver_(driver), model_(model) {
    if (model.empty() || model.size() >= sizeof PrintSettings::ModelName)
        throw HostError(kUsage, fmt::format("a model's name has 1 to {} bytes",
                                            sizeof PrintSettings::ModelName - 1));
    PrintSettings settings = SettingsOf({});
    if (driver_.GetMediaList(&settings, &media_, &defaultMedia_) == 0 || media_.empty())
        throw HostError(kFailed, fmt::format("the driver offers no model \"{}\"", model));
    ReadColorModes();
    NameColorModes();
}

PrintSettings Capabilities::SettingsOf(const PrintChoice& choice) const {
    PrintSettings settings;
    std::memcpy(settings.ModelName, model_.data(), model_.size());
    settings.ColorModeIndex = choice.ColorMode;
    settings.MediaIndex = choice.Media;
    settings.PrintModeIndex = choice.PrintMode;
    settings.ResolutionIndex = choice.Resolution;
    return settings;
}

void Capabilities::ReadColorModes() {
    std::vector<ColorantInfo> items(kColorantCapacity);
    // The job file holds a colour mode's position in 16 bits.
    for (int32_t position = 0; position <= INT16_MAX; ++position) {
        ColorantInfoList list = {};
        list.Items = items.data();
        list.Capacity = kColorantCapacity;
        if (driver_.GetColorantList(position, &list) == 0) break;
        const int32_t count = std::clamp(list.Count, 0, kColorantCapacity);
        colorModes_.push_back({position, {}, {items.begin(), items.begin() + count}});
    }
    if (colorModes_.empty())
        throw HostError(kFailed, fmt::format("{} offers no colour mode", model_));
}

void Capabilities::NameColorModes() {
    // A name comes only with a question about a combination, allowed or not.
    for (const CapabilityItem& media : media_) {
        for (const CapabilityItem& printMode : PrintModesOf(media.ID).Items) {
            for (const ResolutionItem& resolution : ResolutionsOf(media.ID, printMode.ID)) {
                PrintSettings settings = SettingsOf({media.ID, printMode.ID, resolution.ID, 0});
                for (ColorMode& mode : colorModes_) {
                    int32_t allowed = 0;
                    NameBuffer name = {};
                    if (driver_.IsColorModeAllowed(mode.Position, &allowed, name.data(),
                                                   &settings) == 0)
                        break;
                    mode.Name = name.data();
                }
                if (!colorModes_.back().Name.empty()) return;
            }
        }
    }
}

PrintModes Capabilities::PrintModesOf(int32_t media) const {
    PrintModes modes;
    PrintSettings settings = SettingsOf({media, 0, 0, 0});
    CapabilityItem item = ItemOf(media);
    // A medium that the model's combinations do not mention has no print mode.
    if (driver_.GetPrintModeList(&settings, &item, &modes.Items, &modes.DefaultPosition) == 0)
        modes.Items.clear();
    return modes;
}

ResolutionList Capabilities::ResolutionsOf(int32_t media, int32_t printMode) const {
    ResolutionList list;
    PrintSettings settings = SettingsOf({media, printMode, 0, 0});
    CapabilityItem mediaItem = ItemOf(media);
    CapabilityItem printModeItem = ItemOf(printMode);
    if (driver_.GetResolutionList(&settings, &mediaItem, &printModeItem, &list, nullptr) == 0)
        list.clear();
    return list;
}

AllowedModes Capabilities::ColorModesOf(const PrintChoice& choice) const {
    AllowedModes modes;
    PrintSettings settings = SettingsOf(choice);
    NameBuffer name = {};
    for (const ColorMode& mode : colorModes_) {
        int32_t allowed = 0;
        if (driver_.IsColorModeAllowed(mode.Position, &allowed, name.data(), &settings) == 1 &&
            allowed == 1)
            modes.Positions.push_back(mode.Position);
    }
    if (modes.Positions.empty()) return modes;
    modes.Default = driver_.GetDefaultColorMode(name.data(), &settings);
    if (std::find(modes.Positions.begin(), modes.Positions.end(), modes.Default) ==
        modes.Positions.end())
        modes.Default = modes.Positions.front();
    return modes;
}
