#include "driverhost/DotScreen.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <numbers>

#include "driverhost/HostError.h"
#include "driverhost/ThresholdMatrix.h"

namespace {

/// Sides of the rectangle. The shorter ones only cost time: rows are worked on in runs of a side.
constexpr int64_t kLeastSide = 256;
constexpr int64_t kMostSide = 2048;
/// Change of a cell's side against its length that is small enough to stop looking: over 2000
/// cells two screens drift against each other by one.
constexpr double kTolerance = 0.0005;

/// Steps of the cell's two coordinates along one axis of the page, as whole cells in a side.
struct Steps {
    int64_t Side = 0;
    int64_t Along = 0;   ///< cells along the angle in the side
    int64_t Across = 0;  ///< cells across it
};

/// The smallest side in which steps of `along` and `across` cells a pixel come close to whole
/// cells, else the one in which they come closest.
Steps FindSteps(double along, double across) {
    const double wanted = std::hypot(along, across);
    Steps best;
    double bestError = 1;
    for (int64_t side = kLeastSide; side <= kMostSide && bestError > kTolerance; ++side) {
        const auto length = static_cast<double>(side);
        const Steps steps = {side, std::llround(along * length), std::llround(across * length)};
        const double error = std::hypot(static_cast<double>(steps.Along) / length - along,
                                        static_cast<double>(steps.Across) / length - across) /
                             wanted;
        if (error >= bestError) continue;
        best = steps;
        bestError = error;
    }
    return best;
}

/// Place in the cell, -1 to 1, after `steps` of `whole` a cell.
double CellPlace(int64_t steps, int64_t whole) {
    const int64_t rest = ((steps % whole) + whole) % whole;
    return 2 * static_cast<double>(rest) / static_cast<double>(whole) - 1;
}

/// Pixels that the shape ranks alike follow each other as the dispersed matrix says, and where it
/// has no say either, by chance.
uint64_t TieBreak(const ThresholdMatrix& matrix, int64_t x, int64_t y) {
    constexpr uint64_t kChanceBits = 10;
    const auto column = static_cast<std::size_t>(x) % ThresholdMatrix::kSide;
    // Knuth's multiplicative hash.
    const uint64_t mixed = static_cast<uint64_t>(y * kMostSide + x) * 11400714819323198485U;
    return uint64_t{matrix.Row(y)[column]} << kChanceBits | mixed >> (64 - kChanceBits);
}

/// Thresholds of the rectangle: its pixels in the order in which they are inked.
std::vector<uint8_t> RankPixels(const Steps& x, const Steps& y, DotShape shape) {
    constexpr unsigned kIndexBits = 22;  // kMostSide squared
    constexpr unsigned kTieBits = 18;    // of TieBreak
    constexpr double kShapeSteps = (1 << 24) - 1;
    static_assert(kMostSide * kMostSide == int64_t{1} << kIndexBits);
    const ThresholdMatrix matrix(0);
    const int64_t whole = 2 * x.Side * y.Side;  // pixels' centres lie on half steps
    std::vector<uint64_t> order;
    order.reserve(static_cast<std::size_t>(x.Side * y.Side));
    for (int64_t row = 0; row < y.Side; ++row) {
        const int64_t down = (2 * row + 1) * x.Side;
        for (int64_t column = 0; column < x.Side; ++column) {
            const int64_t right = (2 * column + 1) * y.Side;
            const double value = shape(CellPlace(right * x.Along + down * y.Along, whole),
                                       CellPlace(right * x.Across + down * y.Across, whole));
            const double rank = std::clamp((1 - value) / 2, 0.0, 1.0) * kShapeSteps;
            order.push_back(
                (static_cast<uint64_t>(rank) << kTieBits | TieBreak(matrix, column, row))
                    << kIndexBits |
                order.size());
        }
    }
    std::sort(order.begin(), order.end());
    constexpr std::size_t kThresholds = 255;
    std::vector<uint8_t> thresholds(order.size());
    for (std::size_t rank = 0; rank < order.size(); ++rank) {
        const uint64_t index = order[rank] & ((uint64_t{1} << kIndexBits) - 1);
        thresholds[index] = static_cast<uint8_t>(rank * kThresholds / order.size());
    }
    return thresholds;
}

/// Eight bytes of 0 or 1 as the bits of one, the first the most significant.
uint8_t PackBits(const uint8_t* inked) {
    uint64_t bytes = 0;
    for (unsigned i = 0; i < 8; ++i)
        bytes |= uint64_t{inked[i]} << 8 * i;  // one load, for compilers know this loop
    // Byte i, from the lowest, arrives in bit 63 - i; no two sums meet in the upper eight.
    return static_cast<uint8_t>(bytes * 0x8040201008040201U >> 56);
}

}  // namespace

DotScreen::DotScreen(const ScreenGeometry& wanted, DotShape shape) {
    const double finest = std::max(wanted.XResolution, wanted.YResolution) / wanted.Frequency;
    const double coarsest = std::min(wanted.XResolution, wanted.YResolution) / wanted.Frequency;
    if (!(coarsest >= kLeastCellPixels && finest <= kMostCellPixels && std::isfinite(wanted.Angle)))
        throw HostError(
            kFailed,
            fmt::format("a screen of {} lines an inch at {} degrees cannot be made at {} x {} dpi; "
                        "its cells have {} to {} pixels a side",
                        wanted.Frequency, wanted.Angle, wanted.XResolution, wanted.YResolution,
                        kLeastCellPixels, kMostCellPixels));
    const double angle = wanted.Angle * std::numbers::pi / 180;
    const double cosine = std::cos(angle) * wanted.Frequency;
    const double sine = std::sin(angle) * wanted.Frequency;
    // Rows run down the page and angles up from its horizontal.
    const Steps x = FindSteps(cosine / wanted.XResolution, -sine / wanted.XResolution);
    const Steps y = FindSteps(-sine / wanted.YResolution, -cosine / wanted.YResolution);
    thresholds_ = RankPixels(x, y, shape);
    width_ = static_cast<std::size_t>(x.Side);
    height_ = static_cast<std::size_t>(y.Side);
}

std::span<const uint8_t> DotScreen::Row(int64_t row) const {
    const std::size_t start = static_cast<std::size_t>(row) % height_ * width_;
    return std::span(thresholds_).subspan(start, width_);
}

void DotScreen::ScreenRow(std::span<const uint8_t> amounts, const PagePoint& place,
                          std::span<uint8_t> packed) const {
    constexpr std::size_t kBlock = 4096;  // of whole bytes; stays in the nearest cache
    const std::span<const uint8_t> thresholds = Row(place.Row);
    const auto first = static_cast<std::size_t>(place.Column);
    std::array<uint8_t, kBlock> inked;
    for (std::size_t start = 0; start < amounts.size(); start += kBlock) {
        const std::size_t count = std::min(kBlock, amounts.size() - start);
        for (std::size_t done = 0; done < count;) {
            const std::size_t at = (first + start + done) % width_;
            const std::size_t run = std::min(count - done, width_ - at);
            const uint8_t* const amount = amounts.data() + start + done;
            const uint8_t* const threshold = thresholds.data() + at;
            uint8_t* const to = inked.data() + done;
            for (std::size_t i = 0; i < run; ++i)
                to[i] = amount[i] > threshold[i] ? 1 : 0;
            done += run;
        }
        const std::size_t bytes = (count + 7) / 8;
        std::memset(inked.data() + count, 0, bytes * 8 - count);
        for (std::size_t byte = 0; byte < bytes; ++byte)
            packed[start / 8 + byte] = PackBits(inked.data() + byte * 8);
    }
}
