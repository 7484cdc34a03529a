#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "driverhost/Inspection.h"

/// How two files differ.
struct FileDifference {
    /// The first line and pixel that differ, from 0, and how many pixels do.
    struct Pixels {
        int64_t Line = 0;
        int64_t Pixel = 0;
        int64_t Count = 0;
    };
    /// The first byte that differs, from 0, and how many do.
    struct Bytes {
        uint64_t Byte = 0;
        uint64_t Count = 0;
    };

    std::string Text;  ///< all of it, in words
    std::optional<Pixels> InPixels;
    std::optional<Bytes> InBytes;
};

/// Nothing when the files are equal.
///
/// Two TIFF channels are equal when their lines and resolution are, however they are stored. Where
/// both are channels of one width and depth the answer names the first line and pixel that
/// differ, from 0, and how many pixels do; of other files the first byte, and how many bytes do.
/// Throws HostError for a file that cannot be read, or not to its end.
std::optional<FileDifference> DifferenceOf(const std::filesystem::path& a,
                                           const std::filesystem::path& b,
                                           const RawShapeOptions& options, PrintedShapes& printed);
