#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "driverhost/InkPlan.h"

/// One band of a page on disk: the rasteriser's plates and the rows they hold.
struct PlateBand {
    std::filesystem::path Folder;
    int64_t PlateRows = 0;  ///< rows of its plates
    int64_t FirstRow = 0;   ///< the first of them that counts
    int64_t EndRow = 0;     ///< one past the last that counts
};

/// The bands that hold so many rows of a page from `firstRow` on.
std::vector<PlateBand> BandsOfRows(const std::vector<PlateBand>& bands, int64_t firstRow,
                                   int64_t rows);

/// Reads the rows of one ink of a page from top to bottom, band after band, as ink amounts: 0
/// none, 255 full. Holds one strip of one plate in memory.
class PlateReader {
  public:
    /// `plate` is the ink's name as the document spells it.
    PlateReader(std::vector<PlateBand> bands, std::string plate, int64_t widthPixels);
    ~PlateReader();
    PlateReader(const PlateReader&) = delete;
    PlateReader& operator=(const PlateReader&) = delete;

    /// Throws HostError, naming the ink, for a plate that is missing, of another size or kind, or
    /// whose rows end early.
    void ReadRow(std::span<uint8_t> amounts);

  private:
    struct File;
    void OpenBand();
    void ReadPlateRow(std::span<uint8_t> amounts);

    std::vector<PlateBand> bands_;
    std::string plate_;
    int64_t widthPixels_;
    std::vector<uint8_t> skipped_;  ///< one row
    std::size_t band_ = 0;
    int64_t row_ = 0;  ///< within the plate
    std::unique_ptr<File> file_;
};

/// The plate file of an ink in a folder; empty when there is none. File names hold '/' and other
/// letters encoded as %XX.
std::filesystem::path FindPlate(const std::filesystem::path& folder, const std::string& ink);
