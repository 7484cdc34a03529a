#pragma once

#include <cstdint>
#include <span>

#include "driverhost/ThresholdMatrix.h"

/// Bytes of a packed row of `width` pixels of `bits` bits.
constexpr int64_t PackedRowBytes(int64_t width, int32_t bits) {
    return (width * bits + 7) / 8;
}

/// A pixel's place on its page, from the upper left corner.
struct PagePoint {
    int64_t Column = 0;
    int64_t Row = 0;
};

/// Turns a row of ink amounts (0 to 255, one byte a pixel) into a packed row of 1, 2, 4 or 8 bits
/// a pixel, most significant bit first. 8 bits keep the amounts; fewer bits print the two levels
/// around an amount in the share that the matrix decides, which lies over the whole page: `place`
/// is that of the first pixel. `packed` has PackedRowBytes bytes; the spare bits of its last byte
/// are 0.
void HalftoneRow(std::span<const uint8_t> amounts, int32_t bits, const ThresholdMatrix& matrix,
                 const PagePoint& place, std::span<uint8_t> packed);
