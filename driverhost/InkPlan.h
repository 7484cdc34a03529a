#pragma once

#include <string>
#include <vector>

#include "host/Records.h"

/// Which part of an ink's amount a channel prints when its colour mode splits the ink into a dark
/// and a light form.
enum class Tone { kWhole, kDark, kLight };

/// One plate and the part of its amount that a channel prints.
struct PlatePart {
    std::string Plate;
    Tone Part = Tone::kWhole;
};

/// Where the rows of one colorant come from: these parts, added up. None: blank.
using InkSource = std::vector<PlatePart>;

/// How one page becomes the channels of a colour mode.
struct InkPlan {
    std::vector<InkSource> Sources;       ///< one per colorant, in the mode's order
    std::vector<std::string> KeptSpots;   ///< spot inks of the page that have a channel
    std::vector<std::string> MixedSpots;  ///< spot inks without one, printed with process inks
    std::vector<std::string> LostInks;    ///< process inks that the mode has no channel for
    bool NeedsSeparations = false;        ///< plates of process and spot inks
    bool NeedsGray = false;               ///< one plate of the page's brightness
};

/// The plate of a page's brightness, in a mode that prints shades of one ink.
inline constexpr char kGrayPlate[] = "Gray";

/// Spot inks go to the colorant of the same name in any letter case. A mode without cyan, magenta
/// and yellow that has black or grey prints the page in shades of that ink.
InkPlan PlanInks(const std::vector<ColorantInfo>& colorants,
                 const std::vector<std::string>& pageSpots);

/// The part of an ink's amount (0 to 255) that goes to a dark or a light channel. The light ink
/// alone prints the amounts up to 127, at twice the amount; from there on it fades out while the
/// dark ink takes over.
uint8_t AmountOf(Tone tone, uint8_t amount);
