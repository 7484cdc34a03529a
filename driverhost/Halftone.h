#pragma once

#include <cstdint>
#include <span>

#include "driverhost/InkLevels.h"

/// Bytes of a packed row of `width` pixels of `bits` bits.
constexpr int64_t PackedRowBytes(int64_t width, int32_t bits) {
    return (width * bits + 7) / 8;
}

/// A pixel's place on its page, from the upper left corner.
struct PagePoint {
    int64_t Column = 0;
    int64_t Row = 0;
};

/// Turns ink amounts (0 to 255, one byte a pixel) into packed levels of 1, 2 or 4 bits, most
/// significant bit first. A pixel gets the upper of an amount's two levels where its share is
/// above the pixel's threshold, 0 to 254. `packed` has PackedRowBytes bytes; the spare bits of its
/// last byte are 0.
void HalftoneRow(std::span<const uint8_t> amounts, std::span<const uint8_t> thresholds,
                 const InkLevels& levels, int32_t bits, std::span<uint8_t> packed);
