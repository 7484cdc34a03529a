#pragma once

#include <cstddef>
#include <string>

#include "driverhost/Capabilities.h"
#include "driverhost/DotScreen.h"

/// What the driver answers about dithering and screening one combination.
struct HalftoneAnswers {
    bool DitherIsFromFile = false;  ///< else evenly spaced levels, or what a faulty file held
    DitherParams Dither = {};
    ScreeningParams Screening = {};  ///< never empty
};

/// The settings of a combination, as the driver's operations take them. Throws HostError when the
/// manufacturer's name is too long for them.
PrintSettings HalftoneSettings(const std::string& model, const std::string& manufacturer,
                               const PrintChoice& choice);

/// Ask a driver that has answered a capability: it knows a mode's colorants only then. Faults of
/// the files are shown by the driver, which then answers what it has. AskDither answers whether a
/// file supplied the levels; AskScreening never answers none.
bool AskDither(DriverInterface& driver, PrintSettings settings, DitherParams& dither);
ScreeningParams AskScreening(DriverInterface& driver, PrintSettings settings);
HalftoneAnswers AskHalftone(DriverInterface& driver, const PrintSettings& settings);

/// The screen of one ink: that of its internal or else its display name, in any letter case, else
/// the one at its position in the mode, else the last.
const ScreenEntry& ScreenOfInk(const ScreeningParams& screening, const ColorantInfo& ink,
                               std::size_t position);

/// The name of the shape that is drawn for an entry: its own when it is in the shape table, else
/// that of the driver's built-in screens.
std::string DrawnShape(const ScreenEntry& entry);

/// The entry's screen for an ink at a resolution. Throws HostError naming the ink when it cannot
/// be made.
DotScreen MakeScreen(const ScreenEntry& entry, const ColorantInfo& ink,
                     const ResolutionItem& resolution);
