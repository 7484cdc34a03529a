#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "driverhost/DotShapes.h"
#include "driverhost/Halftone.h"

/// What a clustered-dot screen is to look like.
struct ScreenGeometry {
    double XResolution = 0;  ///< dots per inch
    double YResolution = 0;
    double Frequency = 0;  ///< cells per inch, along and across the angle
    double Angle = 0;      ///< degrees, counterclockwise as one looks at the page
};

/// A clustered-dot screen: thresholds 0 to 254 in one rectangle of many cells, seamless when
/// repeated. An amount prints a dot where it is above the threshold, so 0 prints none and 255 all.
/// The rectangle's sides are chosen so that whole cells fill it with next to no change of angle
/// and frequency, and its pixels are ranked together, so that every tone has its share of ink.
class DotScreen {
  public:
    /// Cells of a screen are 2 to 128 pixels along each side of a pixel.
    static constexpr double kLeastCellPixels = 2;
    static constexpr double kMostCellPixels = 128;

    /// Throws HostError when a cell would be smaller or larger, or a number is not finite.
    DotScreen(const ScreenGeometry& wanted, DotShape shape);

    /// The thresholds of one row of a page, to be repeated from its left edge on.
    std::span<const uint8_t> Row(int64_t row) const;

    /// Screens a row of ink amounts (0 to 255, one byte a pixel) into one bit a pixel, most
    /// significant bit first. `place` is that of the first on its page; `packed` has
    /// (amounts + 7) / 8 bytes, and the spare bits of its last byte are 0.
    void ScreenRow(std::span<const uint8_t> amounts, const PagePoint& place,
                   std::span<uint8_t> packed) const;

  private:
    std::size_t width_ = 0;
    std::size_t height_ = 0;
    std::vector<uint8_t> thresholds_;  ///< row by row
};
