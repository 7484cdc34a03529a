#include "PlateMaker.h"

#include <gtest/gtest.h>

#include <algorithm>

std::vector<uint8_t> PlateRow(const Plate& plate, std::size_t position, uint32_t row) {
    std::vector<uint8_t> bytes((uint64_t{plate.width} * plate.bits + 7) / 8);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        // Runs of some length, so that every compression has something to do; never blank.
        bytes[i] = static_cast<uint8_t>((i / 3 + std::size_t{row} * 7 + position * 31) * 37 + 1);
    }
    const uint64_t spareBits = bytes.size() * 8 - uint64_t{plate.width} * plate.bits;
    bytes.back() = static_cast<uint8_t>(bytes.back() & (0xFF << spareBits));
    return bytes;
}

namespace {

void WriteRows(TIFF* tiff, const Plate& plate, std::size_t position) {
    if (plate.tiles) {
        std::vector<uint8_t> tile(static_cast<std::size_t>(TIFFTileSize(tiff)));
        for (uint32_t i = 0; i < TIFFNumberOfTiles(tiff); ++i) {
            TIFFWriteEncodedTile(tiff, i, tile.data(), static_cast<tmsize_t>(tile.size()));
        }
        return;
    }
    for (uint32_t row = 0; row < plate.rows; ++row) {
        std::vector<uint8_t> bytes = PlateRow(plate, position, row);
        bytes.resize(bytes.size() * plate.samples);
        ASSERT_EQ(TIFFWriteScanline(tiff, bytes.data(), row, 0), 1);
    }
}

}  // namespace

void MakeContainer(const std::string& path, const std::string& mode,
                   const std::vector<Plate>& plates) {
    TIFF* const tiff = TIFFOpen(path.c_str(), mode.c_str());
    ASSERT_NE(tiff, nullptr);
    for (std::size_t i = 0; i < plates.size(); ++i) {
        const Plate& plate = plates[i];
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, plate.width);
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, plate.rows);
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, plate.bits);
        TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, plate.samples);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, plate.photometric);
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, plate.compression);
        TIFFSetField(tiff, TIFFTAG_FILLORDER, plate.fillOrder);
        TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
        if (plate.tiles) {
            TIFFSetField(tiff, TIFFTAG_TILEWIDTH, 16);
            TIFFSetField(tiff, TIFFTAG_TILELENGTH, 16);
        } else {
            TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, plate.rowsPerStrip);
        }
        if (plate.pages >= 0) TIFFSetField(tiff, TIFFTAG_PAGENUMBER, plate.page, plate.pages);
        if (!plate.name.empty()) TIFFSetField(tiff, TIFFTAG_PAGENAME, plate.name.c_str());
        if (!plate.display.empty()) {
            TIFFSetField(tiff, TIFFTAG_IMAGEDESCRIPTION, plate.display.c_str());
        }
        WriteRows(tiff, plate, i);
        ASSERT_EQ(TIFFWriteDirectory(tiff), 1);
    }
    TIFFClose(tiff);
}

uint32_t NumberAt(const std::string& bytes, std::size_t offset, int size) {
    uint32_t number = 0;
    for (int i = size - 1; i >= 0; --i) {
        number = number << 8 | static_cast<uint8_t>(bytes.at(offset + static_cast<std::size_t>(i)));
    }
    return number;
}

void PutNumber(std::string& bytes, std::size_t offset, int size, uint32_t number) {
    for (int i = 0; i < size; ++i, number >>= 8) {
        bytes.at(offset + static_cast<std::size_t>(i)) = static_cast<char>(number & 0xFF);
    }
}

std::vector<DirectoryPlace> FindDirectories(const std::string& bytes) {
    std::vector<DirectoryPlace> places;
    for (std::size_t offset = NumberAt(bytes, 4, 4); offset != 0;) {
        const std::size_t link = offset + 2 + std::size_t{12} * NumberAt(bytes, offset, 2);
        places.push_back({offset, link});
        offset = NumberAt(bytes, link, 4);
    }
    return places;
}

std::size_t FindEntry(const std::string& bytes, std::size_t directory, uint32_t tag) {
    for (uint32_t i = 0; i < NumberAt(bytes, directory, 2); ++i) {
        const std::size_t entry = directory + 2 + std::size_t{12} * i;
        if (NumberAt(bytes, entry, 2) == tag) return entry;
    }
    return 0;
}
