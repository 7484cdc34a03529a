#pragma once

#include <cstdint>
#include <filesystem>

#include "BenchContainer.h"
#include "BenchModel.h"
#include "ProcessCost.h"

/// A job of one page in a folder of its own, and what a round of it costs beside a plain copy of
/// its container. Every operation throws std::runtime_error when something fails.
class BenchJob {
  public:
    /// A page of noise, of which about 15 % are ink.
    static BenchJob OfNoise(const std::filesystem::path& folder, const BenchPage& page);
    /// The shipped poster, drawn over the whole page and made into a job by `driverhost make-job`;
    /// its container is uncompressed.
    static BenchJob OfArtwork(const std::filesystem::path& folder, const BenchPage& page);
    /// The same page, its container compressed by tiffcp.
    BenchJob Compressed(const std::filesystem::path& folder) const;

    const BenchPage& Page() const { return page_; }
    std::filesystem::path Container() const { return folder_ / "job.pages.tif"; }

    /// Runs `cp` on the container.
    ProcessCost Copy() const;
    /// Runs `tiffcp` on the container, which decodes it into another.
    ProcessCost Decode() const;
    /// Runs the job through the driver, and checks that it has written the page's files. `settle`
    /// has the system write down first what earlier rounds left.
    ProcessCost Print(const BenchModel& model, bool settle) const;
    void Remove() const;

  private:
    BenchJob(std::filesystem::path folder, const BenchPage& page)
        : folder_(std::move(folder)), page_(page) {}

    std::filesystem::path JobFile() const { return folder_ / "job"; }
    std::filesystem::path OutputFolder() const { return folder_ / "out"; }
    std::filesystem::path CopyFile() const { return folder_ / "copy.tif"; }
    std::filesystem::path BaseFolder() const { return folder_ / "base"; }
    void Recode(const char* compression, const std::filesystem::path& container) const;
    void RemoveOutput() const;
    void WarmUp() const;
    void CheckOutput(const BenchModel& model) const;

    std::filesystem::path folder_;
    BenchPage page_;
};
