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

/// Counts of runs, and where those happened that say something.
class SweepTable {
  public:
    /// Runs whose call did not come again are not counted.
    void Add(const RunResult& result);
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
    std::vector<RunResult> noted_;
    int32_t runCount_ = 0;
    int32_t brokenCount_ = 0;
};
