#include "driverhost/InkScreen.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "driverhost/ThresholdMatrix.h"

namespace {

/// Thresholds are 0 to one less.
constexpr uint32_t kThresholds = 255;

class ContinuousScreen final : public InkScreen {
  public:
    void ScreenRow(std::span<const uint8_t> amounts, const PagePoint& /*place*/,
                   std::span<uint8_t> packed) const override {
        std::copy(amounts.begin(), amounts.end(), packed.begin());
    }
};

class ClusteredScreen final : public InkScreen {
  public:
    explicit ClusteredScreen(DotScreen screen) : screen_(std::move(screen)) {}

    void ScreenRow(std::span<const uint8_t> amounts, const PagePoint& place,
                   std::span<uint8_t> packed) const override {
        screen_.ScreenRow(amounts, place, packed);
    }

  private:
    DotScreen screen_;
};

/// All bits of a number depend on all others (the finalizer of Austin Appleby's MurmurHash3).
uint32_t Mixed(uint32_t value) {
    value ^= value >> 16;
    value *= 0x85EBCA6BU;
    value ^= value >> 13;
    value *= 0xC2B2AE35U;
    value ^= value >> 16;
    return value;
}

class DispersedScreen final : public InkScreen {
  public:
    DispersedScreen(std::size_t ink, int32_t bits, const InkLevels& levels, double noise)
        : matrix_(ink), levels_(levels), bits_(bits), seed_(Mixed(static_cast<uint32_t>(ink) + 1)) {
        constexpr double kPart = kThresholds / 32.0;
        constexpr double kMostNoise = 16;
        const double level = noise > 0 ? std::min(noise, kMostNoise) : 0;  // 0 for no number too
        mostNoise_ = static_cast<uint32_t>(level * kPart);
    }

    void ScreenRow(std::span<const uint8_t> amounts, const PagePoint& place,
                   std::span<uint8_t> packed) const override {
        constexpr std::size_t kBlock = 4096;  // of whole bytes; stays in the nearest cache
        std::array<uint8_t, kBlock> thresholds;
        for (std::size_t start = 0; start < amounts.size(); start += kBlock) {
            const std::span<const uint8_t> block =
                amounts.subspan(start, std::min(kBlock, amounts.size() - start));
            const std::span<uint8_t> blockThresholds = std::span(thresholds).first(block.size());
            FillThresholds({place.Column + static_cast<int64_t>(start), place.Row},
                           blockThresholds);
            HalftoneRow(block, blockThresholds, levels_, bits_,
                        packed.subspan(start * static_cast<std::size_t>(bits_) / 8));
        }
    }

  private:
    void FillThresholds(const PagePoint& place, std::span<uint8_t> thresholds) const {
        const auto& row = matrix_.Row(place.Row);
        const auto first = static_cast<std::size_t>(place.Column);
        for (std::size_t i = 0; i < thresholds.size(); ++i)
            thresholds[i] = row[(first + i) % ThresholdMatrix::kSide];
        if (mostNoise_ == 0) return;
        // A threshold that is moved out of its range comes in again at the other end: all remain
        // equally frequent, and so the mean of a tone what it was.
        const uint32_t rowSeed = Mixed(seed_ ^ static_cast<uint32_t>(place.Row));
        const uint32_t values = 2 * mostNoise_ + 1;
        for (std::size_t i = 0; i < thresholds.size(); ++i) {
            const uint32_t chance = Mixed(rowSeed ^ static_cast<uint32_t>(first + i)) >> 16;
            const uint32_t moved =
                thresholds[i] + kThresholds - mostNoise_ + (chance * values >> 16);
            thresholds[i] = static_cast<uint8_t>(moved % kThresholds);
        }
    }

    ThresholdMatrix matrix_;
    InkLevels levels_;
    int32_t bits_;
    uint32_t seed_;
    uint32_t mostNoise_ = 0;
};

}  // namespace

std::unique_ptr<InkScreen> MakeContinuousScreen() {
    return std::make_unique<ContinuousScreen>();
}

std::unique_ptr<InkScreen> MakeClusteredScreen(DotScreen screen) {
    return std::make_unique<ClusteredScreen>(std::move(screen));
}

std::unique_ptr<InkScreen> MakeDispersedScreen(std::size_t ink, int32_t bits,
                                               const InkLevels& levels, double noise) {
    return std::make_unique<DispersedScreen>(ink, bits, levels, noise);
}
