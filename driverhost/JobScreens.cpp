#include "driverhost/JobScreens.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "driverhost/HalftoneAnswers.h"
#include "driverhost/HostError.h"
#include "driverhost/ParameterFiles.h"
#include "driverhost/TextCompare.h"
#include "halftone/HalftoneFiles.h"

namespace {

constexpr int32_t kContinuousBits = 8;

class ScreenMaker {
  public:
    ScreenMaker(DriverInterface& driver, const PrintSettings& settings, const ChosenPrint& chosen,
                OneBitScreens kind)
        : driver_(driver), settings_(settings), chosen_(chosen), kind_(kind) {}

    JobScreens MakeAll() {
        for (std::size_t ink = 0; ink < chosen_.Mode.Colorants.size(); ++ink)
            MakeOne(ink);
        return std::move(made_);
    }

  private:
    void MakeOne(std::size_t ink) {
        const ColorantInfo& colorant = chosen_.Mode.Colorants[ink];
        const auto bits = static_cast<int32_t>(colorant.ColorDepth);
        if (bits == kContinuousBits) {
            made_.Screens.push_back(MakeContinuousScreen());
        } else if (bits > 1 || kind_ == OneBitScreens::kDispersed) {
            AddDispersed(ink, bits);
        } else {
            AddClustered(ink);
        }
    }

    void ExpectReadable(const char* listFile) const {
        ExpectReadableParameters(listFile, settings_.ModelName, settings_.ManufacturerName);
    }

    void Add(const ColorantInfo& colorant, std::unique_ptr<InkScreen> screen,
             const std::string& description) {
        made_.Screens.push_back(std::move(screen));
        made_.Descriptions.push_back(fmt::format("{}: {}", colorant.DisplayName, description));
    }

    void AddClustered(std::size_t ink) {
        const ColorantInfo& colorant = chosen_.Mode.Colorants[ink];
        if (!screening_) {
            ExpectReadable(kScreeningListFile);
            screening_ = AskScreening(driver_, settings_);
        }
        const ScreenEntry& entry = ScreenOfInk(*screening_, colorant, ink);
        try {
            DotScreen screen = MakeScreen(entry, colorant, chosen_.Resolution);
            std::string text = fmt::format("{:g} lpi at {:g}°, {}", double{entry.Frequency},
                                           double{entry.Angle}, DrawnShape(entry));
            if (DrawnShape(entry) != entry.ShapeName)
                text += fmt::format(" for \"{}\"", entry.ShapeName);
            if (!SameIgnoringCase(entry.ColorName, colorant.InternalName) &&
                !SameIgnoringCase(entry.ColorName, colorant.DisplayName))
                text += fmt::format(", the screen of {}", entry.ColorName);
            Add(colorant, MakeClusteredScreen(std::move(screen)), text);
        } catch (const HostError& error) {
            if (kind_ == OneBitScreens::kClustered) throw;
            made_.Faults.push_back(fmt::format("{}; it gets dispersed dots", error.what()));
            AddDispersed(ink, 1);
        }
    }

    void AddDispersed(std::size_t ink, int32_t bits) {
        const ColorantInfo& colorant = chosen_.Mode.Colorants[ink];
        const std::vector<float> amounts = AmountsOf(ink, bits);
        if (!amounts.empty()) {
            try {
                const InkLevels levels{std::span<const float>(amounts)};
                Add(colorant, MakeDispersedScreen(ink, bits, levels, dither_->NoiseLevel),
                    fmt::format("dispersed dots, levels of {:g} ink, noise {:g}",
                                fmt::join(amounts, ", "), double{dither_->NoiseLevel}));
                return;
            } catch (const HostError& error) {
                made_.Faults.push_back(fmt::format("{}: {}; they are taken as evenly spaced",
                                                   colorant.DisplayName, error.what()));
            }
        }
        Add(colorant, MakeDispersedScreen(ink, bits, InkLevels(bits), 0),
            fmt::format("dispersed dots, {} even levels", 1 << bits));
    }

    /// The ink amounts of the levels above the empty one, by a parameter file; none when no file
    /// has them for so many levels, or for this ink.
    std::vector<float> AmountsOf(std::size_t ink, int32_t bits) {
        if (!dither_) {
            ExpectReadable(kDitherListFile);
            dither_ = DitherParams{};
            ditherIsFromFile_ = AskDither(driver_, settings_, *dither_);
        }
        const std::size_t levels = std::size_t{1} << bits;
        if (!ditherIsFromFile_ || dither_->LevelCount != static_cast<int32_t>(levels) ||
            static_cast<int64_t>(ink) >= dither_->InkCount || ink >= DitherParams::kMostInks)
            return {};
        std::vector<float> amounts;  // by value: the record is packed, its numbers not aligned
        for (std::size_t position = 0; position + 1 < levels; ++position)
            amounts.push_back(float{dither_->Values[ink][position]});
        return amounts;
    }

    DriverInterface& driver_;
    const PrintSettings& settings_;
    const ChosenPrint& chosen_;
    OneBitScreens kind_;
    std::optional<ScreeningParams> screening_;  ///< asked for when an ink needs it
    std::optional<DitherParams> dither_;
    bool ditherIsFromFile_ = false;
    JobScreens made_;
};

}  // namespace

JobScreens MakeJobScreens(DriverInterface& driver, const PrintSettings& settings,
                          const ChosenPrint& chosen, OneBitScreens kind) {
    return ScreenMaker(driver, settings, chosen, kind).MakeAll();
}

void PrintScreens(const JobScreens& screens) {
    for (const std::string& description : screens.Descriptions)
        fmt::print("    {}\n", description);
}
