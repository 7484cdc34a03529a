#pragma once

#include <cstdint>
#include <optional>

#include "host/AString.h"
#include "host/ContainerFailure.h"
#include "host/TiffHandle.h"

/// What a container's directory says of one separation.
struct SeparationFormat {
    AString internalName;
    AString displayName;
    int32_t widthPixels = 0;
    int32_t rows = 0;
    uint8_t depth = 0;  ///< bits per pixel: 1, 2, 4 or 8
    uint16_t compression = 0;
    bool isLowBitFirst = false;  ///< FillOrder 2
    uint32_t rowsPerStrip = 0;   ///< at most `rows`

    /// Bytes of one packed row.
    uint64_t RowBytes() const { return (uint64_t(widthPixels) * depth + 7) / 8; }
    /// Bits of a row's last byte that belong to no pixel: the low ones.
    int SpareBits() const {
        return static_cast<int>(RowBytes() * 8 - uint64_t(widthPixels) * depth);
    }
    /// Strips that the rows fill.
    uint64_t StripCount() const { return (uint64_t(rows) + rowsPerStrip - 1) / rowsPerStrip; }
    /// Rows that strip `strip` holds: fewer in the last one.
    uint32_t RowsOfStrip(uint32_t strip) const;
};

/// Reads the format off a handle's current directory. Nothing when a container holds no such image,
/// and `failure` says why: its size, depth, samples, ink sense, tiles or compression.
std::optional<SeparationFormat> ReadSeparationFormat(TIFF* tiff, uint64_t fileBytes,
                                                     ContainerFailure& failure);
