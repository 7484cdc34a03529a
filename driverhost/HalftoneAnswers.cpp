#include "driverhost/HalftoneAnswers.h"

#include <fmt/format.h>

#include <algorithm>

#include "driverhost/HostError.h"
#include "driverhost/TextCompare.h"
#include "host/Text.h"

namespace {

constexpr char kBuiltInShape[] = "Diamond";

}  // namespace

PrintSettings HalftoneSettings(const std::string& model, const std::string& manufacturer,
                               const PrintChoice& choice) {
    PrintSettings settings;
    if (manufacturer.size() >= sizeof settings.ManufacturerName)
        throw HostError(kUsage, fmt::format("a manufacturer's name has at most {} bytes",
                                            sizeof settings.ManufacturerName - 1));
    CopyText(settings.ModelName, sizeof settings.ModelName, model);
    CopyText(settings.ManufacturerName, sizeof settings.ManufacturerName, manufacturer);
    settings.ColorModeIndex = choice.ColorMode;
    settings.MediaIndex = choice.Media;
    settings.PrintModeIndex = choice.PrintMode;
    settings.ResolutionIndex = choice.Resolution;
    return settings;
}

bool AskDither(DriverInterface& driver, PrintSettings settings, DitherParams& dither) {
    return driver.GetDitherParams(settings.ModelName, settings.ManufacturerName, &settings,
                                  &dither) == 1;
}

ScreeningParams AskScreening(DriverInterface& driver, PrintSettings settings) {
    ScreeningParams screening = {};
    if (driver.GetScreeningParams(&screening, &settings) != 1 || screening.Count < 1 ||
        screening.Count > ScreeningParams::kMostEntries)
        throw HostError(kFailed, "the driver answers no screens");
    return screening;
}

HalftoneAnswers AskHalftone(DriverInterface& driver, const PrintSettings& settings) {
    HalftoneAnswers answers;
    answers.DitherIsFromFile = AskDither(driver, settings, answers.Dither);
    answers.Screening = AskScreening(driver, settings);
    return answers;
}

const ScreenEntry& ScreenOfInk(const ScreeningParams& screening, const ColorantInfo& ink,
                               std::size_t position) {
    const auto count = static_cast<std::size_t>(screening.Count);
    for (const char* const name : {ink.InternalName, ink.DisplayName})
        for (std::size_t i = 0; i < count; ++i)
            if (SameIgnoringCase(screening.Entries[i].ColorName, name)) return screening.Entries[i];
    return screening.Entries[std::min(position, count - 1)];
}

std::string DrawnShape(const ScreenEntry& entry) {
    return FindDotShape(entry.ShapeName) == nullptr ? kBuiltInShape : entry.ShapeName;
}

DotScreen MakeScreen(const ScreenEntry& entry, const ColorantInfo& ink,
                     const ResolutionItem& resolution) {
    try {
        return DotScreen({double{resolution.XResolution}, double{resolution.YResolution},
                          double{entry.Frequency}, double{entry.Angle}},
                         FindDotShape(DrawnShape(entry)));
    } catch (const HostError& error) {
        throw HostError(error.Status(), fmt::format("{}: {}", ink.DisplayName, error.what()));
    }
}
