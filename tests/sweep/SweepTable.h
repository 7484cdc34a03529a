#pragma once

#include <array>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "sweep/Outcome.h"

/// One run and how it ended.
struct RunResult {
    std::string ScenarioName;
    bool IsStrict = false;
    Fault What;
    Outcome End = Outcome::kRight;
    Injection Met;
};

/// Counts of runs, and what to say of those in which the driver did not keep its word.
class SweepTable {
  public:
    /// Runs whose call did not come again are not counted.
    void Add(const RunResult& result);
    int32_t RunCount() const { return runCount_; }
    std::size_t BrokenCount() const { return broken_.size(); }

    /// Calls × outcomes of a mode, in Markdown; columns without a run are left out.
    std::string Markdown(bool isStrict) const;
    /// The broken runs by call and place, the most frequent first.
    std::string Broken(std::size_t mostLines) const;

  private:
    using Row = std::pair<Call, std::string>;  // what failed, and for a library's allocation whose
    using Counts = std::array<int32_t, kOutcomeCount>;

    std::array<std::map<Row, Counts>, 2> counts_;  // by default, strict
    std::vector<RunResult> broken_;
    int32_t runCount_ = 0;
};
