#pragma once

#include <cstdint>

/// Bytes of one line of one channel. Each of its `bits` bit planes (1, 2, 4 or 8) is padded to
/// whole 32-pixel words. `widthPixels` > 0.
constexpr int64_t LineSizeBytes(int64_t widthPixels, int64_t bits) {
    return ((widthPixels + 31) >> 5) * 4 * bits;
}
