#pragma once

#include <cstdint>
#include <span>

/// Repeats every pixel of a packed row `repeat` times. `bits` per pixel (1, 2, 4 or 8), most
/// significant bit first; `source` holds whole bytes, so the spare bits of the last one are
/// repeated along. The first (bitCount x repeat + 7) / 8 bytes of `destination` are cleared; pixels
/// go in from bit `bitPosition` on, which then moves by bitCount x repeat. Pixels that would fall
/// behind the end of `destination` are dropped.
void RepackRow(int32_t bits, int64_t bitCount, std::span<const uint8_t> source, int32_t repeat,
               int64_t& bitPosition, std::span<uint8_t> destination);
