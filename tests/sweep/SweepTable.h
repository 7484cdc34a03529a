#pragma once

#include <array>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "sweep/Outcome.h"

struct PlannedRun {
    const Scenario* Job = nullptr;
    bool IsStrict = false;
    Fault What;
};

/// A run and how it ended. Plain data: it lies where the run's process and the sweep both see it,
/// and a process that is killed leaves it as a crash.
struct Run : PlannedRun {
    Outcome End = Outcome::kCrash;
    Injection Met;
};

/// "plane order, strict, write 3 and on".
std::string Describe(const PlannedRun& run);

/// Counts of runs, and where those happened that say something.
class SweepTable {
  public:
    /// Runs whose call did not come again are not counted.
    void Add(const Run& run);
    int32_t RunCount() const { return runCount_; }
    int32_t BrokenCount() const { return brokenCount_; }

    /// Calls × outcomes of a mode, in Markdown; columns without a run are left out.
    std::string Markdown(bool isStrict) const;
    /// The runs in which the driver did not keep its word, and the crashes of libraries, by call
    /// and place, the most frequent first.
    std::string Places() const;

  private:
    using Row = std::pair<Call, std::string>;  // what failed, and for a library's allocation whose
    using Counts = std::array<int32_t, kOutcomeCount>;

    std::array<std::map<Row, Counts>, 2> counts_;  // by default, strict
    std::vector<Run> noted_;
    int32_t runCount_ = 0;
    int32_t brokenCount_ = 0;
};
