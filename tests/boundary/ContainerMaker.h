#pragma once

#include <tiffio.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

/// One separation of a page: packed rows, most significant bit first.
struct Separation {
    std::string Name;
    int Depth = 1;
    std::string DisplayName{};  ///< empty: none is stored
    std::string Rows{};         ///< RowBytes(width, depth) each
};

struct Page {
    uint32_t Width;
    uint32_t Height;
    std::vector<Separation> Separations;
};

/// Bytes of one container row.
std::size_t RowBytes(uint32_t width, int depth);

/// A page whose separations (only names and depths are given) hold random bytes, spare bits of
/// a row's last byte included.
Page RandomPage(uint32_t width, uint32_t height, std::vector<Separation> separations,
                uint32_t seed);
/// The same with one-bit separations named C1, C2, … like a numbered model's colours.
Page NumberedPage(uint32_t width, uint32_t height, int separationCount, uint32_t seed);

/// Changes a directory's tags after they are set and before its rows are written.
using AlterDirectory = std::function<void(TIFF*, std::size_t page, std::size_t separation)>;

/// `mode` is libtiff's: "w" and the letters that choose form and byte order.
void WriteContainer(const std::filesystem::path& path, const std::vector<Page>& pages,
                    const AlterDirectory& alter = {}, const char* mode = "w");
