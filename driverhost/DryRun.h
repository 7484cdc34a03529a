#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "driverhost/Artwork.h"
#include "driverhost/ChoiceOptions.h"
#include "driverhost/JobScreens.h"
#include "driverhost/JobSpace.h"
#include "driverhost/PageLayout.h"
#include "driverhost/Warnings.h"

/// What make-job would make, without making it.
struct DryRun {
    Rasterizer& Gs;
    const Artwork& Source;
    const SpotInks& Spots;
    const ChosenPrint& Chosen;
    const JobScreens& Screens;
    const std::vector<DocumentPage>& Pages;
    std::filesystem::path WorkFolder;
    std::filesystem::path JobFolder;  ///< where the job would go; empty: not said
    const JobSpace& Space;
};

/// Prints the pages' sizes, their inks and the disk space that the job needs at most; warns of what
/// the drawing of a page shows to be wrong.
void ReportDryRun(const DryRun& run, Warnings& warnings);
