#pragma once

#include <string>
#include <vector>

#include "boundary/BaseFolder.h"
#include "boundary/BoundaryHost.h"
#include "sweep/Scenarios.h"

inline constexpr const char* kJobName = "Proof";
/// How the names of options files begin; among a run's outputs the choice that is stored.
inline constexpr const char* kOptionsFile = "QL_DROP_";

/// How the calls of the options ended, as a host sees it.
enum class OptionsEnd {
    kAsOrdered,
    kRefused,    ///< a call answered 0, or the dialog did not offer the choice
    kOtherwise,  ///< the calls answered 1, and the stored choice is not the one ordered
    kLost,       ///< a cancelled dialog did not leave the options as they were
};

/// What a host sees of a run.
struct RunFacts {
    OptionsEnd Options = OptionsEnd::kAsOrdered;  ///< the job follows only then
    bool HasFailed = false;                       ///< a call of the job answered 0 or ended it
    Files Outputs;
    std::vector<std::string> Log;
    std::vector<std::string> Left;  ///< temporary files, and options files that no block names
    std::vector<std::string> LeakedDescriptors;
};

/// The files below the output folder but for those with a temporary name.
Files OutputFiles(const BaseFolder& folder);

/// Prints the scenario's job on the driver, armed while the driver works; the folders are emptied
/// before. After a failed call a host gives the job up by `AbortJob` or calls nothing more.
RunFacts Print(const Scenario& scenario, BaseFolder& folder, const Driver& driver, bool aborts);
