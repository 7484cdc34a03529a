#pragma once

#include <cstdint>
#include <span>

/// What a camera's notes say of how a picture is to be shown.
struct ExifNotes {
    int Orientation = 1;      ///< 1 to 8
    double XDotsPerInch = 0;  ///< 0: not said
    double YDotsPerInch = 0;
};

/// Reads the first directory of an EXIF block, which begins with its byte order. What is damaged
/// or absent keeps its default: a picture is printed without its notes.
ExifNotes ReadExif(std::span<const uint8_t> block);
