#include "driverhost/pictures/TiffRows.h"

#include <fmt/format.h>

#include <algorithm>

#include "driverhost/HostError.h"

namespace {

/// Of one row of tiles, all planes. The tiles of common programs are 64 to 512 pixels high.
constexpr int64_t kMostTileRowBytes = 1 << 30;

}  // namespace

TiffRows::TiffRows(const std::filesystem::path& path, uint64_t directoryOffset,
                   const TiffLayout& layout)
    : layout_(layout) {
    for (int32_t plane = 0; plane < layout.PlaneCount(); ++plane) {
        planes_.push_back(OpenTiff(path, "rm"));
        TIFF* const tiff = planes_.back().get();
        if (tiff == nullptr || TIFFSetSubDirectory(tiff, directoryOffset) != 1)
            throw HostError(kFailed, fmt::format("{} cannot be read", path.string()));
        // For JPEG within TIFF; other compressions do not know it.
        TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    }
    TIFF* const tiff = planes_.front().get();
    if (!layout.IsTiled) {
        if (TIFFScanlineSize64(tiff) != static_cast<uint64_t>(layout.RowBytes()))
            throw HostError(kFailed, fmt::format("{} has rows of an unknown kind", path.string()));
        return;
    }
    uint32_t width = 0;
    uint32_t rows = 0;
    TIFFGetField(tiff, TIFFTAG_TILEWIDTH, &width);
    TIFFGetField(tiff, TIFFTAG_TILELENGTH, &rows);
    tileWidth_ = width;
    tileRows_ = rows;
    const auto bytes = static_cast<int64_t>(std::min<uint64_t>(TIFFTileSize64(tiff), INT64_MAX));
    // A tile's rows must be whole bytes, of as many samples as the picture's.
    const int64_t tileRowBytes =
        tileWidth_ * layout.Bits * (layout.IsApart ? 1 : layout.SampleCount) / 8;
    if (width == 0 || rows == 0 || width % 8 != 0 || bytes != tileRowBytes * tileRows_)
        throw HostError(kFailed, fmt::format("{} has tiles of an unknown kind", path.string()));
    if (bytes > kMostTileRowBytes ||
        layout.RowBytes() * layout.PlaneCount() > kMostTileRowBytes / tileRows_)
        throw HostError(kFailed, fmt::format("{} has tiles of {} x {} pixels, which are too large",
                                             path.string(), width, rows));
    tile_.resize(static_cast<std::size_t>(bytes));
    tileRow_.resize(planes_.size());
    for (std::vector<uint8_t>& plane : tileRow_)
        plane.resize(static_cast<std::size_t>(layout.RowBytes() * tileRows_));
}

bool TiffRows::Read(int32_t plane, int64_t row, std::span<uint8_t> packed) {
    const auto index = static_cast<std::size_t>(plane);
    if (!layout_.IsTiled)
        return TIFFReadScanline(planes_[index].get(), packed.data(), static_cast<uint32_t>(row),
                                static_cast<uint16_t>(plane)) == 1;
    if (row % tileRows_ == 0 && !ReadTiles(index, row)) return false;
    const auto at = tileRow_[index].begin() + row % tileRows_ * layout_.RowBytes();
    std::copy_n(at, packed.size(), packed.begin());
    return true;
}

bool TiffRows::ReadTiles(std::size_t plane, int64_t row) {
    TIFF* const tiff = planes_[plane].get();
    const int64_t rowBytes = layout_.RowBytes();
    const int64_t tileRowBytes = static_cast<int64_t>(tile_.size()) / tileRows_;
    for (int64_t column = 0; column * tileRowBytes < rowBytes; ++column) {
        // The planes follow each other in the file's list of tiles.
        const uint32_t number =
            TIFFComputeTile(tiff, static_cast<uint32_t>(column * tileWidth_),
                            static_cast<uint32_t>(row), 0, static_cast<uint16_t>(plane));
        if (TIFFReadEncodedTile(tiff, number, tile_.data(), static_cast<tmsize_t>(tile_.size())) <
            0)
            return false;
        const int64_t at = column * tileRowBytes;
        const int64_t bytes = std::min(tileRowBytes, rowBytes - at);
        for (int64_t y = 0; y < tileRows_; ++y)
            std::copy_n(tile_.begin() + y * tileRowBytes, bytes,
                        tileRow_[plane].begin() + y * rowBytes + at);
    }
    return true;
}
