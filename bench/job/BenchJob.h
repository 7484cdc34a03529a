#pragma once

#include <filesystem>
#include <string>

#include "BenchContainer.h"

/// How the model of the job has its channels written.
struct BenchModel {
    bool isRaw = false;          ///< raw channel files, else TIFF
    bool isInterleaved = false;  ///< line by line, else channel by channel
    bool isReversed = false;     ///< bottom line first
    int whiteType = 0;           ///< white treatment; 0 for none
    std::string preview;         ///< "BMP" or "PNG"; empty for none
};

/// A job in a folder of its own: base folder with the model, job file and container.
class BenchJob {
  public:
    /// Writes everything and sets the base folder of the programs started from here on. Throws
    /// std::runtime_error when a write fails.
    BenchJob(const std::filesystem::path& folder, const BenchPage& page, const BenchModel& model);

    std::filesystem::path JobFile() const { return folder_ / "job"; }
    std::filesystem::path Container() const { return folder_ / "job.pages.tif"; }
    std::filesystem::path OutputFolder() const { return folder_ / "out"; }
    std::filesystem::path Copy() const { return folder_ / "copy.tif"; }

    /// Throws std::runtime_error when the output folder does not hold the page's channels.
    void CheckOutput() const;
    /// Removes what the last round wrote, has the system write everything down, and makes an empty
    /// output folder.
    void PrepareRound() const;

  private:
    std::filesystem::path folder_;
    BenchPage page_;
    BenchModel model_;
};
