#include "driverhost/InkPlan.h"

#include <algorithm>
#include <array>
#include <cmath>
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

bool IsMapped(const ProcessColorants& colorants) {
    return colorants.Dark >= 0 || colorants.Light >= 0;
}

bool IsGrayMode(const ProcessMap& map) {
    return IsMapped(map[kBlack]) && !IsMapped(map[0]) && !IsMapped(map[1]) && !IsMapped(map[2]);
}

bool IsProcessName(std::string_view name) {
    return std::any_of(kProcessInks.begin(), kProcessInks.end(),
                       [name](std::string_view ink) { return SameIgnoringCase(ink, name); });
}

/// A plate's amounts, each this often.
AmountTable Weighted(double weight) {
    AmountTable table;
    for (int amount = 0; amount <= 255; ++amount)
        table.push_back(static_cast<uint16_t>(std::lround(amount * weight * kAmountUnit)));
    return table;
}

/// Makes the plan of one page.
class Planner {
  public:
    Planner(const std::vector<ColorantInfo>& colorants, const SpotInks& spotInks)
        : colorants_(colorants), spotInks_(spotInks), map_(MapProcessInks(colorants)) {
        plan_.Sources.resize(colorants.size());
    }

    InkPlan Plan(const std::vector<std::string>& pageSpots) {
        for (const std::string& spot : pageSpots)
            PlanSpot(spot);
        plan_.NeedsGray = IsGrayMode(map_) && plan_.PlateSpots.empty();
        if (plan_.NeedsGray)
            AddPlate(map_[kBlack], kGrayPlate, {});
        else if (IsGrayMode(map_))
            PlanGraySum();
        else
            PlanProcessInks();
        return std::move(plan_);
    }

  private:
    void PlanSpot(const std::string& spot) {
        // Of a single page of a document Ghostscript 10.0 separates 31 spot inks and crashes at 32.
        constexpr std::size_t kMostSpots = 30;
        bool kept = false;
        for (std::size_t i = 0; i < colorants_.size() && !IsProcessName(spot); ++i) {
            // An ink of the grey that the page is printed in is a tone of that.
            if (!SameIgnoringCase(colorants_[i].InternalName, spot) ||
                (IsGrayMode(map_) && IsBlack(i)))
                continue;
            plan_.Sources[i].push_back({spot, Tone::kWhole});
            kept = true;
        }
        (kept ? plan_.KeptSpots : plan_.MixedSpots).push_back(spot);
        const bool isAdded = !IsProcessName(spot) && spotInks_.contains(spot) &&
                             plan_.PlateSpots.size() < kMostSpots;
        if (kept || isAdded) plan_.PlateSpots.push_back(spot);
        if (!kept && isAdded) added_.push_back(spot);
    }

    bool IsBlack(std::size_t colorant) const {
        const int index = static_cast<int>(colorant);
        return map_[kBlack].Dark == index || map_[kBlack].Light == index;
    }

    /// Adds a plate to the channels of a process ink, split when it has two of them.
    void AddPlate(const ProcessColorants& inks, std::string_view plate, const AmountTable& table) {
        const bool split = inks.Dark >= 0 && inks.Light >= 0;
        const auto add = [&](int colorant, Tone part) {
            if (colorant < 0) return;
            plan_.Sources[static_cast<std::size_t>(colorant)].push_back(
                {std::string(plate), split ? part : Tone::kWhole, table});
        };
        add(inks.Dark, Tone::kDark);
        add(inks.Light, Tone::kLight);
    }

    void PlanProcessInks() {
        const bool allColors = IsMapped(map_[0]) && IsMapped(map_[1]) && IsMapped(map_[2]);
        const bool anyColor = IsMapped(map_[0]) || IsMapped(map_[1]) || IsMapped(map_[2]);
        // Three inks print black as equal amounts of each.
        const bool mixesBlack = allColors && !IsMapped(map_[kBlack]);
        plan_.NeedsSeparations = anyColor || !plan_.PlateSpots.empty();
        for (std::size_t ink = 0; ink < kProcessInks.size(); ++ink) {
            AddPlate(map_[ink], kProcessInks[ink], {});
            if (!IsMapped(map_[ink]) && !(ink == kBlack && mixesBlack))
                plan_.LostInks.emplace_back(kProcessInks[ink]);
        }
        for (std::size_t color = 0; color < kBlack && mixesBlack; ++color)
            AddPlate(map_[color], kProcessInks[kBlack], {});
        for (const std::string& spot : added_) {
            const ProcessAmounts& amounts = spotInks_.at(spot);
            for (std::size_t ink = 0; ink < kProcessInks.size(); ++ink)
                AddSpot(map_[ink], spot, [&](std::size_t tint) {
                    return amounts[ink][tint] + (mixesBlack ? amounts[kBlack][tint] : 0);
                });
        }
    }

    /// The page's brightness, summed up from its separations as the rasteriser does for a grey
    /// picture without colour profiles.
    void PlanGraySum() {
        constexpr std::array<double, 4> kWeights = {0.3, 0.59, 0.11, 1};
        plan_.NeedsSeparations = true;
        plan_.UsesFastColor = true;
        for (std::size_t ink = 0; ink < kProcessInks.size(); ++ink)
            AddPlate(map_[kBlack], kProcessInks[ink], Weighted(kWeights[ink]));
        for (const std::string& spot : added_) {
            const ProcessAmounts& amounts = spotInks_.at(spot);
            AddSpot(map_[kBlack], spot, [&](std::size_t tint) {
                double sum = 0;
                for (std::size_t ink = 0; ink < kProcessInks.size(); ++ink)
                    sum += kWeights[ink] * amounts[ink][tint];
                return sum;
            });
        }
    }

    /// Adds what each tint of a spot ink prints with a process ink, when it prints anything.
    template <class AmountOfTint>
    void AddSpot(const ProcessColorants& inks, const std::string& spot, AmountOfTint amountOf) {
        AmountTable table;
        for (std::size_t tint = 0; tint <= kFull; ++tint)
            table.push_back(static_cast<uint16_t>(
                std::lround(std::min<double>(amountOf(tint), kFull) * kAmountUnit)));
        if (std::any_of(table.begin(), table.end(), [](uint16_t amount) { return amount > 0; }))
            AddPlate(inks, spot, table);
    }

    static constexpr std::size_t kFull = 255;

    const std::vector<ColorantInfo>& colorants_;
    const SpotInks& spotInks_;
    ProcessMap map_;
    InkPlan plan_;
    std::vector<std::string> added_;  ///< spot inks that are added to process inks
};

}  // namespace

bool IsGrayMode(const std::vector<ColorantInfo>& colorants) {
    return IsGrayMode(MapProcessInks(colorants));
}

InkPlan PlanInks(const std::vector<ColorantInfo>& colorants,
                 const std::vector<std::string>& pageSpots, const SpotInks& spotInks) {
    return Planner(colorants, spotInks).Plan(pageSpots);
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
