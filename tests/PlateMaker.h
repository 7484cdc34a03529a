#pragma once

#include <tiffio.h>

#include <cstdint>
#include <string>
#include <vector>

/// One separation that a container is made of. Its content follows from its place and size.
struct Plate {
    int page = 0;
    int pages = 1;  ///< -1: no PageNumber at all
    std::string name = "Cyan";
    std::string display;
    uint32_t width = 40;
    uint32_t rows = 9;
    uint16_t bits = 1;
    uint16_t compression = COMPRESSION_NONE;
    uint32_t rowsPerStrip = 4;
    uint16_t fillOrder = FILLORDER_MSB2LSB;
    uint16_t photometric = PHOTOMETRIC_MINISWHITE;
    uint16_t samples = 1;
    bool tiles = false;
};

/// Row `row` of the plate that stands as number `position` in its file.
std::vector<uint8_t> PlateRow(const Plate& plate, std::size_t position, uint32_t row);

/// Writes a container with libtiff; `mode` is "w" and the letters that choose form and byte order.
void MakeContainer(const std::string& path, const std::string& mode,
                   const std::vector<Plate>& plates);

/// Where the directories of a classic little-endian file stand, and where the links to the next.
struct DirectoryPlace {
    std::size_t offset;
    std::size_t link;
};
std::vector<DirectoryPlace> FindDirectories(const std::string& bytes);

uint32_t NumberAt(const std::string& bytes, std::size_t offset, int size);
void PutNumber(std::string& bytes, std::size_t offset, int size, uint32_t number);
/// The offset of a tag's entry in the directory at `directory`; 0 when it has none.
std::size_t FindEntry(const std::string& bytes, std::size_t directory, uint32_t tag);
