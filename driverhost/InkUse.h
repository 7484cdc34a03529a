#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "driverhost/ChoiceOptions.h"
#include "driverhost/InkPlan.h"
#include "driverhost/PageLayout.h"
#include "driverhost/Rasterizer.h"

/// How much of its page each colorant of a mode covers, as a small drawing of the page shows it.
struct InkUse {
    double DotsPerInch = 0;               ///< of the drawing, along its rows
    std::vector<double> Shares;           ///< 0 to 1, in the mode's order; 0: no ink at all
    std::vector<std::string> Complaints;  ///< of the rasteriser about the page
};

/// Rasterises a page with a few million pixels in `workFolder`, separated as it would be for the
/// job. Throws HostError as the rasteriser and its plates do.
InkUse MeasureInkUse(Rasterizer& rasterizer, const std::filesystem::path& workFolder,
                     const DocumentPage& page, const InkPlan& plan, const ChosenPrint& chosen);
