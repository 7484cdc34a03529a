#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

/// Of at least one value.
inline double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t half = values.size() / 2;
    return values.size() % 2 == 1 ? values[half] : (values[half - 1] + values[half]) / 2;
}
