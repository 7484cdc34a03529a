#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// A dispersed-dot screen: thresholds 0 to 254 in an order that spreads the dots of every tone
/// evenly, seamless when repeated. An amount prints a dot where it is above the threshold, so 0
/// prints none and 255 all.
class ThresholdMatrix {
  public:
    static constexpr std::size_t kSide = 64;

    /// The matrix of one ink: a turned and shifted copy of the same screen, so that the dots of
    /// two inks do not fall on each other more often than by chance.
    explicit ThresholdMatrix(std::size_t ink);

    const std::array<uint8_t, kSide>& Row(int64_t row) const {
        return rows_[static_cast<std::size_t>(row) % kSide];
    }

  private:
    std::array<std::array<uint8_t, kSide>, kSide> rows_ = {};
};
