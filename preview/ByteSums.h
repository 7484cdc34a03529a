#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// Rows are summed up in groups of so many.
inline constexpr std::size_t kGroupRows = 4;
/// Byte counts of rows are padded to a multiple of this, the longest vector there is.
inline constexpr std::size_t kByteSumsPadding = 64;

/// What the ink of each byte of a row amounts to over the rows since the sums were cleared, for
/// a byte whose pixels count from its least significant bit. The four arrays are equally long.
struct ByteSums {
    uint16_t* ink;            ///< sum of the pixels' intensities; of one-bit pixels, their count
    uint16_t* inkByPixel;     ///< each times the pixel's place in its byte
    uint16_t* inkByRow;       ///< each times its row's number
    uint16_t* inkByPixelRow;  ///< each times both
};

/// Rows, a multiple of kGroupRows, whose sums the 16 bits of a sum can hold; 0 for a depth that is
/// not 1, 2, 4 or 8 bits per pixel.
uint16_t MostByteSumRows(int32_t bits);

/// Adds a group of rows, numbered from `firstRow`. `byteCount` is a multiple of kByteSumsPadding;
/// bytes that hold no ink in any of the rows cost next to nothing.
void AddToByteSums(int32_t bits, const uint8_t* const rows[kGroupRows], std::size_t byteCount,
                   uint16_t firstRow, const ByteSums& sums);

/// The forms that AddToByteSums has for this processor, the one that it uses first and the one
/// without a vector unit last.
std::vector<decltype(&AddToByteSums)> ByteSumsForms();
