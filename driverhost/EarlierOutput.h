#pragma once

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "driverhost/PrintPlan.h"

/// What an operator lets a job take the place of.
struct Replacing {
    bool Complete = false;  ///< the files of complete jobs
    bool Unknown = false;   ///< files that no record lists
};

/// What lies where a job without a folder of its own is to write: the files of earlier jobs, and
/// others. A job that did not come to its end gives way; a complete one only when it is ordered,
/// and then as a whole, so that nothing of it stays beside the new files; what nobody knows stays.
class EarlierOutput {
  public:
    /// `kept` are files that nothing may replace: the job's own. Throws HostError when something
    /// in `folder` does not give way. Changes nothing.
    EarlierOutput(const std::filesystem::path& folder, const PrintPlan& plan,
                  const Replacing& replacing, const std::vector<std::filesystem::path>& kept);

    /// What removing it gives back.
    std::uintmax_t Bytes() const;
    /// Removes what gives way, and says whose it was. Throws HostError.
    void Remove() const;

  private:
    /// An earlier job that gives way.
    struct Job {
        std::filesystem::path Record;
        bool IsComplete = false;
        std::set<std::string> Files;  ///< that its record lists
    };

    void FindJobs(const std::vector<std::string>& taken, const Replacing& replacing);
    void TakeTileFolders(const std::vector<std::string>& folders, const Replacing& replacing);
    bool IsCleared(const std::string& tileFolder, const Replacing& replacing) const;
    bool IsOfJob(const std::string& file) const;
    void RemoveEmptyFolders(const Job& job) const;

    std::filesystem::path folder_;
    std::vector<Job> jobs_;
    std::set<std::string> unknown_;         ///< files that no record lists
    std::vector<std::string> tileFolders_;  ///< empty then; the driver makes them anew
};
