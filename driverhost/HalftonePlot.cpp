#include "driverhost/HalftonePlot.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "driverhost/Halftone.h"
#include "driverhost/HostError.h"
#include "driverhost/PngFile.h"

namespace {

// Measured in cells of the coarsest screen: enough for an eye to see angle and frequency.
constexpr double kStripCells = 96;
constexpr double kStripHeightCells = 16;
constexpr double kGapCells = 1;
constexpr int64_t kMostRows = 1'000'000;
constexpr int64_t kRgb = 3;

using Rgb = std::array<uint8_t, kRgb>;

Rgb RgbOf(uint32_t value) {
    return {static_cast<uint8_t>(value), static_cast<uint8_t>(value >> 8),
            static_cast<uint8_t>(value >> 16)};
}

/// White paper, but grey under inks that would not show on it.
Rgb PaperUnder(const Rgb& ink) {
    constexpr int kFaint = 3 * 255 - 96;
    constexpr Rgb kWhite = {255, 255, 255};
    constexpr Rgb kGrey = {120, 120, 120};
    return ink[0] + ink[1] + ink[2] > kFaint ? kGrey : kWhite;
}

/// One strip's rows: a ramp, screened at the printed resolution and shown in square pixels.
class Strip {
  public:
    Strip(const ColorantInfo& ink, const ScreenEntry& entry, const ResolutionItem& resolution,
          int64_t width)
        : screen_(MakeScreen(entry, ink, resolution)),
          ink_(RgbOf(ink.ColorValue)),
          paper_(PaperUnder(ink_)) {
        const double finest = std::max<double>(resolution.XResolution, resolution.YResolution);
        xScale_ = resolution.XResolution / finest;
        yScale_ = resolution.YResolution / finest;
        amounts_.resize(static_cast<std::size_t>(Printed(width - 1, xScale_) + 1));
        for (std::size_t x = 0; x < amounts_.size(); ++x)
            amounts_[x] = static_cast<uint8_t>(x * 256 / amounts_.size());
        packed_.resize(static_cast<std::size_t>(PackedRowBytes(std::ssize(amounts_), 1)));
    }

    void DrawRow(int64_t row, std::vector<uint8_t>& rgb) {
        screen_.ScreenRow(amounts_, {0, Printed(row, yScale_)}, packed_);
        const int64_t width = std::ssize(rgb) / kRgb;
        for (int64_t x = 0; x < width; ++x) {
            const auto printed = static_cast<std::size_t>(Printed(x, xScale_));
            const bool inked = (packed_[printed / 8] << printed % 8 & 0x80) != 0;
            std::copy_n((inked ? ink_ : paper_).begin(), kRgb, rgb.begin() + x * kRgb);
        }
    }

  private:
    static int64_t Printed(int64_t place, double scale) {
        return static_cast<int64_t>(std::floor(static_cast<double>(place) * scale));
    }

    DotScreen screen_;
    Rgb ink_;
    Rgb paper_;
    double xScale_ = 1;
    double yScale_ = 1;
    std::vector<uint8_t> amounts_;
    std::vector<uint8_t> packed_;
};

}  // namespace

std::vector<PlotStrip> PlotScreens(const std::vector<ColorantInfo>& inks,
                                   const ResolutionItem& resolution,
                                   const ScreeningParams& screening,
                                   const std::filesystem::path& path) {
    if (inks.empty()) throw HostError(kFailed, "the colour mode has no inks to draw");
    double largestCell = 0;
    for (std::size_t ink = 0; ink < inks.size(); ++ink) {
        const ScreenEntry& entry = ScreenOfInk(screening, inks[ink], ink);
        // Refuses what cannot be drawn before a file is begun.
        MakeScreen(entry, inks[ink], resolution);
        largestCell =
            std::max(largestCell, std::max<double>(resolution.XResolution, resolution.YResolution) /
                                      double{entry.Frequency});
    }
    const auto width = std::llround(kStripCells * largestCell);
    const auto height = std::llround(kStripHeightCells * largestCell);
    const auto gap = std::llround(kGapCells * largestCell);
    const auto count = static_cast<int64_t>(inks.size());
    if (count * (height + gap) > kMostRows)
        throw HostError(kFailed, fmt::format("{} inks are too many for a picture", count));

    PngFile picture(path, width, count * (height + gap) - gap);
    std::vector<PlotStrip> strips;
    std::vector<uint8_t> rgb(static_cast<std::size_t>(width * kRgb));
    for (std::size_t ink = 0; ink < inks.size(); ++ink) {
        const int64_t first = static_cast<int64_t>(ink) * (height + gap);
        strips.push_back({ink, first, first + height});
        std::fill(rgb.begin(), rgb.end(), uint8_t{255});
        for (int64_t row = 0; ink > 0 && row < gap; ++row)
            picture.WriteRow(rgb);
        Strip strip(inks[ink], ScreenOfInk(screening, inks[ink], ink), resolution, width);
        for (int64_t row = 0; row < height; ++row) {
            strip.DrawRow(row, rgb);
            picture.WriteRow(rgb);
        }
    }
    picture.Close();
    return strips;
}
