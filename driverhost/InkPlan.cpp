#include "driverhost/InkPlan.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "driverhost/TextCompare.h"

namespace {

constexpr std::array<std::string_view, 4> kProcessInks = {"Cyan", "Magenta", "Yellow", "Black"};
constexpr std::size_t kBlack = 3;

bool IsGray(std::string_view name) {
    return SameIgnoringCase(name, "Gray") || SameIgnoringCase(name, "Grey");
}

/// "Light Cyan", "LightCyan", "light-cyan"
bool IsLightFormOf(std::string_view ink, std::string_view name) {
    constexpr std::string_view kLight = "Light";
    if (name.size() <= kLight.size() || !SameIgnoringCase(name.substr(0, kLight.size()), kLight))
        return false;
    name.remove_prefix(kLight.size());
    if (name.front() == ' ' || name.front() == '-' || name.front() == '_') name.remove_prefix(1);
    return SameIgnoringCase(name, ink) || (ink == kProcessInks[kBlack] && IsGray(name));
}

/// Which colorants of a mode print a process ink.
struct ProcessColorants {
    int Dark = -1;
    int Light = -1;
};

using ProcessMap = std::array<ProcessColorants, kProcessInks.size()>;

ProcessMap MapProcessInks(const std::vector<ColorantInfo>& colorants) {
    ProcessMap map;
    for (std::size_t i = 0; i < colorants.size(); ++i) {
        const std::string_view name = colorants[i].InternalName;
        for (std::size_t ink = 0; ink < kProcessInks.size(); ++ink) {
            if (SameIgnoringCase(name, kProcessInks[ink]) && map[ink].Dark < 0)
                map[ink].Dark = static_cast<int>(i);
            else if (IsLightFormOf(kProcessInks[ink], name) && map[ink].Light < 0)
                map[ink].Light = static_cast<int>(i);
        }
    }
    // A grey ink is the only black there is, or a light form beside it.
    for (std::size_t i = 0; i < colorants.size(); ++i) {
        if (!IsGray(colorants[i].InternalName)) continue;
        int& place = map[kBlack].Dark < 0 ? map[kBlack].Dark : map[kBlack].Light;
        if (place < 0) place = static_cast<int>(i);
    }
    return map;
}

/// Adds a plate to the channels of a process ink, split when it has two of them.
void AddProcessPlate(InkPlan& plan, const ProcessColorants& colorants, std::string_view plate) {
    const bool split = colorants.Dark >= 0 && colorants.Light >= 0;
    const auto add = [&](int colorant, Tone part) {
        if (colorant < 0) return;
        plan.Sources[static_cast<std::size_t>(colorant)].push_back(
            {std::string(plate), split ? part : Tone::kWhole});
    };
    add(colorants.Dark, Tone::kDark);
    add(colorants.Light, Tone::kLight);
}

bool IsMapped(const ProcessColorants& colorants) {
    return colorants.Dark >= 0 || colorants.Light >= 0;
}

void PlanProcessInks(InkPlan& plan, const ProcessMap& map) {
    const bool anyColor = IsMapped(map[0]) || IsMapped(map[1]) || IsMapped(map[2]);
    if (!anyColor && IsMapped(map[kBlack])) {
        plan.NeedsGray = true;
        AddProcessPlate(plan, map[kBlack], kGrayPlate);
        return;
    }
    const bool allColors = IsMapped(map[0]) && IsMapped(map[1]) && IsMapped(map[2]);
    plan.NeedsSeparations = anyColor;
    for (std::size_t ink = 0; ink < kProcessInks.size(); ++ink) {
        AddProcessPlate(plan, map[ink], kProcessInks[ink]);
        if (IsMapped(map[ink])) continue;
        if (ink != kBlack || !allColors) {
            plan.LostInks.emplace_back(kProcessInks[ink]);
            continue;
        }
        // Three inks print black as equal amounts of each.
        for (std::size_t color = 0; color < kBlack; ++color)
            AddProcessPlate(plan, map[color], kProcessInks[kBlack]);
    }
}

bool IsProcessName(std::string_view name) {
    return std::any_of(kProcessInks.begin(), kProcessInks.end(),
                       [name](std::string_view ink) { return SameIgnoringCase(ink, name); });
}

}  // namespace

InkPlan PlanInks(const std::vector<ColorantInfo>& colorants,
                 const std::vector<std::string>& pageSpots) {
    InkPlan plan;
    plan.Sources.resize(colorants.size());
    PlanProcessInks(plan, MapProcessInks(colorants));
    for (const std::string& spot : pageSpots) {
        bool kept = false;
        for (std::size_t i = 0; i < colorants.size() && !IsProcessName(spot); ++i) {
            // The grey picture of the page shows its spot inks already.
            if (!SameIgnoringCase(colorants[i].InternalName, spot) ||
                (plan.NeedsGray && !plan.Sources[i].empty()))
                continue;
            plan.Sources[i].push_back({spot, Tone::kWhole});
            kept = true;
        }
        (kept ? plan.KeptSpots : plan.MixedSpots).push_back(spot);
    }
    plan.NeedsSeparations = plan.NeedsSeparations || !plan.KeptSpots.empty();
    return plan;
}

uint8_t AmountOf(Tone tone, uint8_t amount) {
    constexpr int kTurn = 128;  // the first amount that the dark ink prints
    constexpr int kFull = 255;
    const int whole = amount;
    switch (tone) {
        case Tone::kWhole:
            return amount;
        case Tone::kLight:
            return static_cast<uint8_t>(whole < kTurn ? 2 * whole : 2 * (kFull - whole));
        case Tone::kDark:
            break;
    }
    if (whole < kTurn) return 0;
    return static_cast<uint8_t>(((whole - kTurn + 1) * kFull) / (kFull - kTurn + 1));
}
