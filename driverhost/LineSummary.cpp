#include "driverhost/LineSummary.h"

#include "driverhost/Pixels.h"

void LineSummary::Add(std::span<const uint8_t> line) {
    sum_.Add(line);
    ink_ += static_cast<double>(SumOfInk(line, widthPixels_, bits_));
    ++lines_;
}

double LineSummary::CoveragePercent() const {
    if (lines_ == 0) return 0;
    constexpr double kPercent = 100;
    const double fullInk = static_cast<double>((1 << bits_) - 1) *
                           static_cast<double>(widthPixels_) * static_cast<double>(lines_);
    return ink_ / fullInk * kPercent;
}
