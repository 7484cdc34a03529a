#pragma once

#include <string>
#include <vector>

#include "driverhost/SpotInks.h"
#include "host/Records.h"

/// Which part of an ink's amount a channel prints when its colour mode splits the ink into a dark
/// and a light form.
enum class Tone { kWhole, kDark, kLight };

/// What each amount of a plate (0 to 255) adds to an ink's amount, in units so fine that the sum
/// of several is rounded once.
using AmountTable = std::vector<uint16_t>;
inline constexpr int kAmountUnit = 256;  ///< units of an amount of 1

/// One plate and the part of its ink's amount that a channel prints.
struct PlatePart {
    std::string Plate;
    Tone Part = Tone::kWhole;
    AmountTable Table = {};  ///< empty: the plate's amounts themselves
};

/// Where the rows of one colorant come from: these parts, added up. A dark or light tone is that
/// of the sum, and all parts but whole ones have the same. None: blank.
using InkSource = std::vector<PlatePart>;

/// How one page becomes the channels of a colour mode.
struct InkPlan {
    std::vector<InkSource> Sources;       ///< one per colorant, in the mode's order
    std::vector<std::string> KeptSpots;   ///< spot inks of the page that have a channel
    std::vector<std::string> MixedSpots;  ///< spot inks without one, printed with process inks
    std::vector<std::string> PlateSpots;  ///< spot inks that need a plate of their own
    std::vector<std::string> LostInks;    ///< process inks that the mode has no channel for
    bool NeedsSeparations = false;        ///< plates of process and spot inks
    bool NeedsGray = false;               ///< one plate of the page's brightness
    bool UsesFastColor = false;           ///< separations without colour profiles
};

/// The plate of a page's brightness, in a mode that prints shades of one ink.
inline constexpr char kGrayPlate[] = "Gray";

/// Whether a mode prints a page in shades of one ink: it has black or grey, and neither cyan,
/// magenta nor yellow.
bool IsGrayMode(const std::vector<ColorantInfo>& colorants);

/// Spot inks go to the colorant of the same name in any letter case. One that has none gets a
/// plate all the same when `spotInks` has it, and is added to the process inks from there: so it
/// knocks out what the artwork says, and no more. The rasteriser mixes the others on its way.
InkPlan PlanInks(const std::vector<ColorantInfo>& colorants,
                 const std::vector<std::string>& pageSpots, const SpotInks& spotInks);

/// The part of an ink's amount (0 to 255) that goes to a dark or a light channel. The light ink
/// alone prints the amounts up to 127, at twice the amount; from there on it fades out while the
/// dark ink takes over.
uint8_t AmountOf(Tone tone, uint8_t amount);
