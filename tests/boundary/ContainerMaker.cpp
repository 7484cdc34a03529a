#include "ContainerMaker.h"

#include <algorithm>
#include <random>
#include <stdexcept>

namespace {

constexpr uint32_t kRowsPerStrip = 5;  // few, so that small pages have several strips

void SetTags(TIFF* tiff, const Page& page, const Separation& separation, std::size_t pageIndex,
             std::size_t pageCount) {
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, page.Width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, page.Height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, separation.Depth);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_PACKBITS);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, kRowsPerStrip);
    TIFFSetField(tiff, TIFFTAG_XRESOLUTION, 300.0);
    TIFFSetField(tiff, TIFFTAG_YRESOLUTION, 600.0);
    TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    TIFFSetField(tiff, TIFFTAG_PAGENUMBER, static_cast<int>(pageIndex),
                 static_cast<int>(pageCount));
    TIFFSetField(tiff, TIFFTAG_PAGENAME, separation.Name.c_str());
    if (!separation.DisplayName.empty()) {
        TIFFSetField(tiff, TIFFTAG_IMAGEDESCRIPTION, separation.DisplayName.c_str());
    }
}

}  // namespace

std::size_t RowBytes(uint32_t width, int depth) {
    return (std::size_t{width} * static_cast<std::size_t>(depth) + 7) / 8;
}

Page RandomPage(uint32_t width, uint32_t height, std::vector<Separation> separations,
                uint32_t seed) {
    std::mt19937 random(seed);
    for (Separation& separation : separations) {
        separation.Rows.resize(height * RowBytes(width, separation.Depth));
        for (char& byte : separation.Rows)
            byte = static_cast<char>(random());
    }
    return {width, height, std::move(separations)};
}

Page NumberedPage(uint32_t width, uint32_t height, int separationCount, uint32_t seed) {
    std::vector<Separation> separations;
    for (int i = 1; i <= separationCount; ++i)
        separations.push_back({"C" + std::to_string(i)});
    return RandomPage(width, height, std::move(separations), seed);
}

void WriteContainer(const std::filesystem::path& path, const std::vector<Page>& pages,
                    const AlterDirectory& alter, const char* mode) {
    TIFF* const tiff = TIFFOpen(path.c_str(), mode);
    bool written = tiff != nullptr;
    for (std::size_t p = 0; written && p < pages.size(); ++p) {
        for (std::size_t s = 0; written && s < pages[p].Separations.size(); ++s) {
            const Separation& separation = pages[p].Separations[s];
            SetTags(tiff, pages[p], separation, p, pages.size());
            if (alter) alter(tiff, p, s);
            // libtiff takes rows as writable and may reorder bits in place: it gets a copy.
            std::string row;
            const auto rowBytes = static_cast<std::size_t>(TIFFScanlineSize(tiff));
            uint32_t rows = 0;
            TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &rows);
            rows = std::min(rows, pages[p].Height);
            for (uint32_t y = 0; written && !TIFFIsTiled(tiff) && y < rows; ++y) {
                const std::size_t at = y * RowBytes(pages[p].Width, separation.Depth);
                row = separation.Rows.substr(std::min(at, separation.Rows.size()), rowBytes);
                row.resize(rowBytes);
                written = TIFFWriteScanline(tiff, row.data(), y, 0) == 1;
            }
            written = written && TIFFWriteDirectory(tiff) == 1;
        }
    }
    if (tiff != nullptr) TIFFClose(tiff);
    if (!written) throw std::runtime_error("cannot write " + path.string());
}
