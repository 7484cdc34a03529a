#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "driverhost/Halftone.h"

/// How the amounts of one colorant become the levels of its separation. Another way to screen is
/// another class below this one.
class InkScreen {
  public:
    virtual ~InkScreen() = default;

    /// Turns a row of ink amounts (0 to 255, one byte a pixel) into packed levels of the
    /// colorant's depth, as HalftoneRow does. `place` is that of its first pixel on the page, so
    /// that tiles of a page meet without a seam.
    virtual void ScreenRow(std::span<const uint8_t> amounts, const PagePoint& place,
                           std::span<uint8_t> packed) const = 0;
};

/// Evenly spaced levels through a dispersed-dot matrix: that of the ink at position `ink` of its
/// mode. 8 bits keep their amounts.
std::unique_ptr<InkScreen> MakeDispersedScreen(std::size_t ink, int32_t bits);
