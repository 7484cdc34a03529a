#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

/// Copies the bytes of one or more rows, which do not overlap. Beyond 2 KiB the C library changes
/// to a string instruction, which is made for large and aligned blocks; rows are neither, and cost
/// less in pieces below that.
inline void CopyRow(uint8_t* to, const uint8_t* from, std::size_t count) {
    constexpr std::size_t kPiece = 1024;
    while (count > 0) {
        const std::size_t piece = std::min(count, kPiece);
        std::memcpy(to, from, piece);
        to += piece;
        from += piece;
        count -= piece;
    }
}
