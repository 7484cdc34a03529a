#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "driverhost/ChoiceOptions.h"
#include "driverhost/Container.h"
#include "driverhost/Halftone.h"
#include "driverhost/Plates.h"
#include "driverhost/Rasterizer.h"

/// Pixels of a page.
struct PageSize {
    int64_t Width = 0;
    int64_t Rows = 0;
};

/// Longest side of a page: 88 m at 1440 dpi. A band of one screen's height with its margins still
/// stays below the rasteriser's limit.
inline constexpr int64_t kMostPageSide = 5'000'000;

/// Makes the separations of one page after the other: has the plates rasterised band by band,
/// then reads, splits and halftones them row by row into the container.
class PageSeparator {
  public:
    PageSeparator(Rasterizer& rasterizer, ContainerWriter& container,
                  const std::filesystem::path& workFolder, const ChosenPrint& chosen,
                  int64_t bandPixels);

    /// Writes all colorants of the colour mode, blank ones included. `page` counts from 0.
    /// Answers the rasteriser's complaints.
    std::vector<std::string> WritePage(std::size_t page, std::size_t pageCount,
                                       const PageSize& size, const InkPlan& plan);

  private:
    std::vector<std::string> MakeBands(std::size_t page, const PageSize& size, const InkPlan& plan);
    void RemoveBands();
    void WriteSeparation(const SeparationHeader& header, const InkSource& source,
                         const ThresholdMatrix& matrix);

    Rasterizer& rasterizer_;
    ContainerWriter& container_;
    std::filesystem::path workFolder_;
    const ChosenPrint& chosen_;
    int64_t bandPixels_;
    std::vector<PlateBand> bands_;
    std::vector<ThresholdMatrix> matrices_;  ///< one per colorant
};
