#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "host/ContainerFailure.h"
#include "host/ContainerTags.h"
#include "platform/RandomAccessFile.h"

/// A directory of a container as the links lead to it, before libtiff has seen it: what is known
/// of one that libtiff cannot read.
struct ContainerDirectory {
    uint64_t offset = 0;
    std::optional<uint16_t> pageNumber;  ///< from 0; nothing when the directory does not say
    uint16_t pageCount = 0;              ///< beside pageNumber; 0 for unknown
    bool hasDamagedLink = false;         ///< the chain ends here, and should not
    /// Why no separation can be read from it, a constant; null when nothing is known against it.
    const char* damage = nullptr;
    uint64_t stripOffsetCount = 0;  ///< strips that the directory has an offset for
    uint64_t stripSizeCount = 0;    ///< strips that it has a byte count for
    ContainerTagSet tags;
};

struct DirectoryChain {
    std::vector<ContainerDirectory> directories;
    ContainerFailure failure;  ///< why the chain ends before its end; no text when it does not
};

/// Walks the links of a classic or big TIFF of either byte order. A file that is no TIFF, or whose
/// first link leads to no directory, gives none. Takes time and memory in proportion to the file.
DirectoryChain ReadDirectoryChain(const RandomAccessFile& file);
