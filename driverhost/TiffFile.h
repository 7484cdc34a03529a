#pragma once

#include <tiffio.h>

#include <filesystem>
#include <memory>

struct CloseTiff {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using TiffFile = std::unique_ptr<TIFF, CloseTiff>;

/// Opens a TIFF file; null on failure. The library's own messages are not shown: the callers say
/// what went wrong.
TiffFile OpenTiff(const std::filesystem::path& path, const char* mode);
