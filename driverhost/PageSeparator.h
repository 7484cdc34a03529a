#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "driverhost/ChoiceOptions.h"
#include "driverhost/Container.h"
#include "driverhost/InkScreen.h"
#include "driverhost/PageLayout.h"
#include "driverhost/Plates.h"
#include "driverhost/Rasterizer.h"

/// Makes the separations of one page after the other: has the plates rasterised band by band,
/// then reads, splits and screens them row by row into the container.
class PageSeparator {
  public:
    /// Borrows everything. `jobPages` counts the pages of the job: all tiles of all pages.
    PageSeparator(Rasterizer& rasterizer, ContainerWriter& container,
                  const std::filesystem::path& workFolder, const ChosenPrint& chosen,
                  const InkScreens& screens, int64_t bandPixels, std::size_t jobPages);

    /// Writes all colorants of the colour mode, blank ones included, tile after tile. Answers the
    /// rasteriser's complaints.
    std::vector<std::string> WritePage(const DocumentPage& page, const InkPlan& plan);

  private:
    std::vector<std::string> MakeBands(const DocumentPage& page, const InkPlan& plan);
    void RemoveBands();
    void WriteTile(const DocumentPage& page, const PageArea& tile, const InkPlan& plan);
    void WriteSeparation(const SeparationHeader& header, const DocumentPage& page,
                         const PageArea& tile, const InkSource& source, const InkScreen& screen);

    Rasterizer& rasterizer_;
    ContainerWriter& container_;
    std::filesystem::path workFolder_;
    const ChosenPrint& chosen_;
    const InkScreens& screens_;
    int64_t bandPixels_;
    std::size_t jobPages_;
    std::size_t jobPage_ = 0;  ///< the next one of the job
    std::vector<PlateBand> bands_;
};
