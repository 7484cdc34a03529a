#pragma once

#include <filesystem>
#include <vector>

#include "driverhost/ModelRules.h"
#include "host/Records.h"

/// The white choice of a job for the time of its run. Where the options file that the job's block
/// names is missing (another base folder, another machine) it is made again from what the job's
/// settings keep, and removed behind the run; where it is there, it alone counts.
class JobOptions {
  public:
    /// Gives `rules` the choice. Models that offer no white are not asked for one. Throws HostError
    /// when the choice is not known.
    JobOptions(const std::filesystem::path& job, const DriverOptionBlock& block, ModelRules& rules);
    ~JobOptions();
    JobOptions(const JobOptions&) = delete;
    JobOptions& operator=(const JobOptions&) = delete;

  private:
    void Make(const DriverOptionBlock& block, int32_t type);
    void RemoveMade();

    std::vector<std::filesystem::path> made_;  ///< folders, then the file
};
