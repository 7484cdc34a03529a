#include "driverhost/InkLevels.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "driverhost/HostError.h"

namespace {

constexpr double kFull = 255;

/// The two levels around an amount of ink, 1 being full tone. `amounts` never fall.
template <class Amounts>
InkLevels::Step StepOf(const Amounts& amounts, double wanted) {
    if (wanted <= 0) return {};
    const auto above = std::lower_bound(amounts.begin(), amounts.end(), wanted);
    const auto level = static_cast<uint8_t>(above - amounts.begin());
    if (above == amounts.end()) return {level, 0};
    const double lower = level == 0 ? 0 : double{amounts[level - std::size_t{1}]};
    const double share = (wanted - lower) / (double{*above} - lower);
    return {level, static_cast<uint8_t>(std::lround(share * kFull))};
}

}  // namespace

InkLevels::InkLevels(int32_t bits) {
    const int32_t top = (1 << bits) - 1;
    std::vector<double> amounts;
    for (int32_t level = 1; level <= top; ++level)
        amounts.push_back(static_cast<double>(level) / top);
    for (std::size_t amount = 0; amount < steps_.size(); ++amount)
        steps_[amount] = StepOf(amounts, static_cast<double>(amount) / kFull);
}

InkLevels::InkLevels(std::span<const float> amounts) {
    float before = 0;
    for (const float amount : amounts) {
        if (!std::isfinite(amount) || amount < before)
            throw HostError(kFailed, fmt::format("its levels carry {} of ink, which do not rise",
                                                 fmt::join(amounts, ", ")));
        before = amount;
    }
    for (std::size_t amount = 0; amount < steps_.size(); ++amount)
        steps_[amount] = StepOf(amounts, static_cast<double>(amount) / kFull);
}
