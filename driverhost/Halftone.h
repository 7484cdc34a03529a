#pragma once

#include <cstdint>
#include <span>

#include "driverhost/ThresholdMatrix.h"

/// Bytes of a packed row of `width` pixels of `bits` bits.
constexpr int64_t PackedRowBytes(int64_t width, int32_t bits) {
    return (width * bits + 7) / 8;
}

/// Turns a row of ink amounts (0 to 255, one byte a pixel) into a packed row of 1, 2, 4 or 8 bits
/// a pixel, most significant bit first. 8 bits keep the amounts; fewer bits print the two levels
/// around an amount in the share that the matrix decides. `packed` has PackedRowBytes bytes; the
/// spare bits of its last byte are 0.
void HalftoneRow(std::span<const uint8_t> amounts, int32_t bits, const ThresholdMatrix& matrix,
                 int64_t row, std::span<uint8_t> packed);
