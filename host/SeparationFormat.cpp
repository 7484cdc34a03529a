#include "host/SeparationFormat.h"

#include <algorithm>
#include <limits>

namespace {

/// A field of one 16-bit number, its default where the file is silent; `otherwise` where the
/// format knows no default.
uint16_t ShortField(TIFF* tiff, uint32_t tag, uint16_t otherwise) {
    uint16_t value = otherwise;
    return TIFFGetFieldDefaulted(tiff, tag, &value) != 0 ? value : otherwise;
}

uint32_t LongField(TIFF* tiff, uint32_t tag, uint32_t otherwise) {
    uint32_t value = otherwise;
    return TIFFGetFieldDefaulted(tiff, tag, &value) != 0 ? value : otherwise;
}

/// A field of text; `otherwise` where the file has none.
AString TextField(TIFF* tiff, uint32_t tag, const AString& otherwise) {
    const char* text = nullptr;
    return TIFFGetField(tiff, tag, &text) != 0 && text != nullptr ? AString(text) : otherwise;
}

bool IsSize(uint32_t value) {
    return value > 0 && value <= uint32_t{std::numeric_limits<int32_t>::max()};
}

bool IsDepth(uint16_t bits) {
    return bits == 1 || bits == 2 || bits == 4 || bits == 8;
}

/// Nobody should allocate for the absurd width that a few damaged bytes can claim: a row beyond
/// this is taken for possible only where the file itself is as large.
bool IsPlausibleRow(const SeparationFormat& format, uint64_t fileBytes) {
    constexpr uint64_t kUnquestionedBytes = uint64_t{64} << 20;
    return format.RowBytes() <= std::max(fileBytes, kUnquestionedBytes);
}

}  // namespace

uint32_t SeparationFormat::RowsOfStrip(uint32_t strip) const {
    const uint64_t first = uint64_t{strip} * rowsPerStrip;
    return static_cast<uint32_t>(std::min<uint64_t>(rowsPerStrip, uint64_t(rows) - first));
}

std::optional<SeparationFormat> ReadSeparationFormat(TIFF* tiff,
                                                     const ContainerDirectory& directory,
                                                     uint64_t fileBytes) {
    if (directory.hasLostEntry) return std::nullopt;
    const uint32_t width = LongField(tiff, TIFFTAG_IMAGEWIDTH, 0);
    const uint32_t rows = LongField(tiff, TIFFTAG_IMAGELENGTH, 0);
    const uint16_t depth = ShortField(tiff, TIFFTAG_BITSPERSAMPLE, 0);
    const uint32_t rowsPerStrip = std::min(LongField(tiff, TIFFTAG_ROWSPERSTRIP, rows), rows);
    if (!IsSize(width) || !IsSize(rows) || !IsDepth(depth) || rowsPerStrip == 0) {
        return std::nullopt;
    }
    if (TIFFIsTiled(tiff) != 0 || ShortField(tiff, TIFFTAG_SAMPLESPERPIXEL, 0) != 1 ||
        ShortField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK) != PHOTOMETRIC_MINISWHITE) {
        return std::nullopt;
    }
    SeparationFormat format;
    format.internalName = TextField(tiff, TIFFTAG_PAGENAME, "");
    format.displayName = TextField(tiff, TIFFTAG_IMAGEDESCRIPTION, format.internalName);
    format.widthPixels = static_cast<int32_t>(width);
    format.rows = static_cast<int32_t>(rows);
    format.depth = static_cast<uint8_t>(depth);
    format.compression = ShortField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    format.isLowBitFirst =
        ShortField(tiff, TIFFTAG_FILLORDER, FILLORDER_MSB2LSB) == FILLORDER_LSB2MSB;
    format.rowsPerStrip = rowsPerStrip;
    if (TIFFIsCODECConfigured(format.compression) == 0 || !IsPlausibleRow(format, fileBytes)) {
        return std::nullopt;
    }
    return format;
}
