#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// What a program has cost the system.
struct ProcessCost {
    double cpuSeconds = 0;  ///< user and system time
    double wallSeconds = 0;
    int64_t peakBytes = 0;  ///< most memory resident at one time
};

/// Runs a program (looked up in PATH; its standard output is dropped) to its end. Throws
/// std::runtime_error when it cannot be started or fails.
ProcessCost MeasureProcess(const std::vector<std::string>& arguments);
