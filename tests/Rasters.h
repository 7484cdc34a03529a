#pragma once

// The rows of separations and channels, read with libtiff.

#include <gtest/gtest.h>
#include <tiffio.h>

#include <filesystem>
#include <string>
#include <vector>

#include "driverhost/TiffFile.h"

/// One separation of a container or one channel file.
struct Raster {
    std::string Name;
    std::vector<std::string> Lines;
};

inline std::vector<Raster> ReadTiff(const std::filesystem::path& path) {
    std::vector<Raster> rasters;
    const TiffFile tiff = OpenTiff(path, "r");
    for (bool more = tiff != nullptr; more; more = TIFFReadDirectory(tiff.get()) == 1) {
        char* name = nullptr;
        uint32_t rows = 0;
        TIFFGetField(tiff.get(), TIFFTAG_PAGENAME, &name);
        TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &rows);
        const auto rowBytes = static_cast<std::size_t>(TIFFScanlineSize(tiff.get()));
        rasters.push_back({name == nullptr ? "" : name, {rows, std::string(rowBytes, '\0')}});
        for (uint32_t row = 0; row < rows; ++row)
            EXPECT_EQ(TIFFReadScanline(tiff.get(), rasters.back().Lines[row].data(), row), 1);
    }
    return rasters;
}

/// The level of each pixel, a character each.
inline std::string Pixels(const std::string& line, std::size_t width, int bits) {
    std::string pixels;
    for (std::size_t x = 0; x < width; ++x) {
        const std::size_t bit = x * static_cast<std::size_t>(bits);
        const auto byte = static_cast<unsigned char>(line.at(bit / 8));
        pixels +=
            static_cast<char>(byte >> (8 - bits - static_cast<int>(bit % 8)) & ((1 << bits) - 1));
    }
    return pixels;
}
