#pragma once

#include <filesystem>
#include <vector>

#include "driverhost/HalftoneAnswers.h"

/// One ink of a plot and the rows of the picture that show it.
struct PlotStrip {
    std::size_t Ink = 0;  ///< position in the colour mode
    int64_t FirstRow = 0;
    int64_t EndRow = 0;
};

/// Draws the screens of a mode's inks as PNG: a strip an ink, one below the other, from no ink at
/// the left to full ink at the right, in the ink's colour. A picture's pixel is square and as
/// small as the finer side of a printed one, so that angles are true. Throws HostError.
std::vector<PlotStrip> PlotScreens(const std::vector<ColorantInfo>& inks,
                                   const ResolutionItem& resolution,
                                   const ScreeningParams& screening,
                                   const std::filesystem::path& path);
