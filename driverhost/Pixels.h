#pragma once

#include <cstdint>
#include <span>

/// Pixels of packed lines, most significant bit first, of 1, 2, 4 or 8 bits each.

/// The sum of the amounts of the first `widthPixels` pixels, which the line holds; 2^bits - 1 is
/// full ink.
uint64_t SumOfInk(std::span<const uint8_t> line, int64_t widthPixels, int32_t bits);

/// How two lines of one length differ.
struct LineDifference {
    int64_t FirstPixel = -1;  ///< -1: they are equal
    int64_t PixelCount = 0;
};
LineDifference Compare(std::span<const uint8_t> a, std::span<const uint8_t> b, int32_t bits);
