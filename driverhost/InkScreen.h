#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "driverhost/DotScreen.h"
#include "driverhost/Halftone.h"
#include "driverhost/InkLevels.h"

/// How the amounts of one colorant become the levels of its separation. Another way to screen is
/// another class below this one.
class InkScreen {
  public:
    virtual ~InkScreen() = default;

    /// Turns a row of ink amounts (0 to 255, one byte a pixel) into packed levels of the
    /// colorant's depth, most significant bit first. `place` is that of its first pixel on the
    /// page, so that tiles of a page meet without a seam. `packed` has PackedRowBytes bytes; the
    /// spare bits of its last byte are 0.
    virtual void ScreenRow(std::span<const uint8_t> amounts, const PagePoint& place,
                           std::span<uint8_t> packed) const = 0;
};

/// How the ink amounts of each colorant are screened, in the colour mode's order.
using InkScreens = std::vector<std::unique_ptr<InkScreen>>;

/// 8 bits a pixel, which keep their amounts.
std::unique_ptr<InkScreen> MakeContinuousScreen();

/// One bit a pixel, in clustered dots.
std::unique_ptr<InkScreen> MakeClusteredScreen(DotScreen screen);

/// Levels of 1, 2 or 4 bits a pixel in dispersed dots: the matrix of the ink at position `ink` of
/// its mode decides which pixels get the upper one of two levels. `noise` moves each pixel's
/// threshold by chance, at 1 by up to 1/32 of their range either way; it changes no tone's mean.
/// Below 0 counts as 0, and from 16 on chance alone decides.
std::unique_ptr<InkScreen> MakeDispersedScreen(std::size_t ink, int32_t bits,
                                               const InkLevels& levels, double noise);
