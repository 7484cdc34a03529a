#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/RandomAccessFile.h"

/// A directory of a container as the links lead to it, before libtiff has seen it: what is known
/// of one that libtiff cannot read.
struct ContainerDirectory {
    uint64_t offset = 0;
    std::optional<uint16_t> pageNumber;  ///< from 0; nothing when the directory does not say
    uint16_t pageCount = 0;              ///< beside pageNumber; 0 for unknown
    /// Its link leads outside the file, to no directory or to one already met; the chain ends here.
    bool hasDamagedLink = false;
    /// An entry's values stand outside the file. libtiff passes over such an entry; a separation
    /// that lost its name that way would print as blank paper.
    bool hasLostEntry = false;
    uint64_t stripOffsetCount = 0;  ///< strips that the directory has an offset for
    uint64_t stripSizeCount = 0;    ///< strips that it has a byte count for
};

/// Walks the links of a classic or big TIFF of either byte order. Empty when the file is no TIFF
/// or its first link leads to no directory. Takes time and memory in proportion to the file.
std::vector<ContainerDirectory> ReadDirectoryChain(const RandomAccessFile& file);
