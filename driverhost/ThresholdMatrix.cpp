#include "driverhost/ThresholdMatrix.h"

#include <cmath>
#include <vector>

namespace {

constexpr std::size_t kSide = ThresholdMatrix::kSide;
constexpr std::size_t kCells = kSide * kSide;

/// Robert Ulichney, "The void-and-cluster method for dither array generation" (1993): dots are
/// ranked by taking them away where they stand closest and adding them where the gap is largest.
/// Whole numbers throughout, so that every machine ranks the same.
class VoidAndCluster {
  public:
    std::vector<uint16_t> Ranks() {
        PlaceFirstDots();
        const std::vector<bool> first = dots_;
        const std::vector<uint32_t> firstDensity = density_;
        std::vector<uint16_t> ranks(kCells);
        for (std::size_t rank = firstDots_; rank-- > 0;) {
            const std::size_t cell = Extreme(true);
            Set(cell, false);
            ranks[cell] = static_cast<uint16_t>(rank);
        }
        dots_ = first;
        density_ = firstDensity;
        for (std::size_t rank = firstDots_; rank < kCells; ++rank) {
            const std::size_t cell = Extreme(false);
            Set(cell, true);
            ranks[cell] = static_cast<uint16_t>(rank);
        }
        return ranks;
    }

  private:
    static std::size_t Wrapped(std::size_t value) { return value % kSide; }

    /// Weight of a dot's neighbourhood by distance on the torus.
    static std::vector<uint32_t> Kernel() {
        constexpr double kSigma = 1.9;  // Ulichney uses 1.5 to 2
        constexpr double kScale = 1 << 16;
        std::vector<uint32_t> kernel(kCells);
        for (std::size_t y = 0; y < kSide; ++y) {
            for (std::size_t x = 0; x < kSide; ++x) {
                const double dx = static_cast<double>(x > kSide / 2 ? kSide - x : x);
                const double dy = static_cast<double>(y > kSide / 2 ? kSide - y : y);
                const double weight = std::exp(-(dx * dx + dy * dy) / (2 * kSigma * kSigma));
                kernel[y * kSide + x] = static_cast<uint32_t>(std::lround(weight * kScale));
            }
        }
        return kernel;
    }

    void Set(std::size_t cell, bool dot) {
        dots_[cell] = dot;
        const std::size_t cellX = cell % kSide;
        const std::size_t cellY = cell / kSide;
        for (std::size_t y = 0; y < kSide; ++y) {
            const uint32_t* const kernelRow = &kernel_[Wrapped(y + kSide - cellY) * kSide];
            uint32_t* const densityRow = &density_[y * kSide];
            for (std::size_t x = 0; x < kSide; ++x) {
                const uint32_t weight = kernelRow[Wrapped(x + kSide - cellX)];
                densityRow[x] += dot ? weight : 0U - weight;
            }
        }
    }

    /// The dot in the densest place, or the gap in the emptiest.
    std::size_t Extreme(bool dot) const {
        std::size_t best = kCells;
        for (std::size_t cell = 0; cell < kCells; ++cell) {
            if (dots_[cell] != dot) continue;
            if (best == kCells ||
                (dot ? density_[cell] > density_[best] : density_[cell] < density_[best]))
                best = cell;
        }
        return best;
    }

    void PlaceFirstDots() {
        // The multiplier and increment of Numerical Recipes' quick generator, from a fixed start.
        uint32_t random = 1;
        for (std::size_t placed = 0; placed < firstDots_;) {
            random = random * 1664525U + 1013904223U;
            const std::size_t cell = (random >> 16) % kCells;
            if (dots_[cell]) continue;
            Set(cell, true);
            ++placed;
        }
        // Move the most crowded dot to the largest gap until it comes from there.
        for (std::size_t moves = 0; moves < kCells; ++moves) {
            const std::size_t from = Extreme(true);
            Set(from, false);
            const std::size_t to = Extreme(false);
            Set(to, true);
            if (from == to) break;
        }
    }

    std::size_t firstDots_ = kCells / 10;
    std::vector<uint32_t> kernel_ = Kernel();
    std::vector<uint32_t> density_ = std::vector<uint32_t>(kCells);
    std::vector<bool> dots_ = std::vector<bool>(kCells);
};

const std::vector<uint16_t>& Ranks() {
    static const std::vector<uint16_t> kRanks = VoidAndCluster().Ranks();
    return kRanks;
}

}  // namespace

ThresholdMatrix::ThresholdMatrix(std::size_t ink) {
    constexpr std::size_t kThresholds = 255;
    const bool swap = (ink & 1) != 0;
    const bool mirror = (ink & 2) != 0;
    // Odd shares of the side, so that no ink of a common set comes back to another's place.
    const std::size_t shiftX = ink * 23;
    const std::size_t shiftY = ink * 37;
    for (std::size_t y = 0; y < kSide; ++y) {
        for (std::size_t x = 0; x < kSide; ++x) {
            const std::size_t fromX = ((mirror ? kSide - 1 - x : x) + shiftX) % kSide;
            const std::size_t fromY = (y + shiftY) % kSide;
            const std::size_t cell = swap ? fromX * kSide + fromY : fromY * kSide + fromX;
            rows_[y][x] = static_cast<uint8_t>(Ranks()[cell] * kThresholds / kCells);
        }
    }
}
