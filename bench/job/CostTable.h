#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "BenchContainer.h"

/// One row of the table: what is measured, what it may cost, and what it costs at each depth.
struct CostRow {
    std::string name;
    double target = 0;
    std::string unit;  ///< of the target and the values; empty for a ratio of CPU times
    std::vector<double>
        values;  ///< one for each of the table's depths; fewer where only some count
};

/// What whole jobs on a page of artwork cost beside a plain copy of their container.
struct CostTable {
    int64_t widthPixels = 0;
    int64_t rows = 0;
    std::vector<int32_t> depths;  ///< bits per pixel
    std::vector<CostRow> costs;
};

/// Makes a job of the page at every depth, in `folder`, and measures it. Shows on standard error
/// how far it is. Throws std::runtime_error when something fails.
CostTable MeasureCosts(const std::filesystem::path& folder, int64_t widthPixels, int64_t rows);

void PrintCosts(const CostTable& table);
void PrintCostsAsJson(const CostTable& table);
