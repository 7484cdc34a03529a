#pragma once

#include <array>
#include <string_view>

#include "halftone/HalftoneEntries.h"

/// The dot shapes that a screen can have.
inline constexpr std::array<std::string_view, 16> kShapeNames = {
    "CosineDot",         "Cross",   "Diamond",        "Double",
    "DoubleDot",         "Ellipse", "InvertedDouble", "InvertedDoubleDot",
    "InvertedSimpleDot", "Line",    "LineX",          "LineY",
    "Rhomboid",          "Round",   "SimpleDot",      "Square"};

/// Fills in the screens of eight inks that serve where no file says anything. Of each entry, only
/// its fields are written, and nothing of the others.
void SetDefaultScreeningParams(ScreeningParams& out);

/// Reads the screening parameters of a manufacturer's model over what stands in `out`. An item
/// without a readable angle or frequency keeps the one of its place. Numbers are read in the
/// locale in force; shape names are passed on as they stand.
HalftoneReading ReadScreeningParams(std::string_view modelName, std::string_view manufacturer,
                                    const PrintSettings& settings, ScreeningParams& out);
