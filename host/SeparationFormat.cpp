#include "host/SeparationFormat.h"

#include <algorithm>
#include <limits>
#include <string_view>

#include "host/LogText.h"

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

bool IsDepth(uint16_t bits) {
    return bits == 1 || bits == 2 || bits == 4 || bits == 8;
}

/// Nobody should allocate for the absurd width that a few damaged bytes can claim: a row beyond
/// this is taken for possible only where the file itself is as large.
bool IsPlausibleRow(const SeparationFormat& format, uint64_t fileBytes) {
    constexpr uint64_t kUnquestionedBytes = uint64_t{64} << 20;
    return format.RowBytes() <= std::max(fileBytes, kUnquestionedBytes);
}

/// What a container does not hold; null when the directory is a separation by these tags.
const char* Refusal(TIFF* tiff) {
    constexpr uint32_t kLargest = std::numeric_limits<int32_t>::max();
    const uint32_t width = LongField(tiff, TIFFTAG_IMAGEWIDTH, 0);
    const uint32_t rows = LongField(tiff, TIFFTAG_IMAGELENGTH, 0);
    if (width == 0 || rows == 0) return "a separation has a size of 0";
    if (width > kLargest || rows > kLargest) return "a separation has a size beyond 31 bits";
    if (!IsDepth(ShortField(tiff, TIFFTAG_BITSPERSAMPLE, 0)))
        return "a separation has another depth than 1, 2, 4 or 8 bits";
    if (ShortField(tiff, TIFFTAG_SAMPLESPERPIXEL, 0) != 1)
        return "a separation has more than one sample a pixel";
    if (ShortField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK) != PHOTOMETRIC_MINISWHITE)
        return "a separation has another photometric interpretation than white is zero";
    if (TIFFIsTiled(tiff) != 0) return "a separation is stored in tiles";
    if (LongField(tiff, TIFFTAG_ROWSPERSTRIP, rows) == 0) return "a separation has empty strips";
    return nullptr;
}

ContainerFailure UnknownCompression(uint16_t compression) {
    LogText text;
    text << "compression " << int32_t{compression};
    const TIFFCodec* const codec = TIFFFindCODEC(compression);
    if (codec != nullptr) text << " (" << std::string_view(codec->name) << ')';
    text << " cannot be decoded";
    return ContainerFailure(text.View());
}

}  // namespace

uint32_t SeparationFormat::RowsOfStrip(uint32_t strip) const {
    const uint64_t first = uint64_t{strip} * rowsPerStrip;
    return static_cast<uint32_t>(std::min<uint64_t>(rowsPerStrip, uint64_t(rows) - first));
}

std::optional<SeparationFormat> ReadSeparationFormat(TIFF* tiff, uint64_t fileBytes,
                                                     ContainerFailure& failure) {
    const char* const refusal = Refusal(tiff);
    if (refusal != nullptr) {
        failure = ContainerFailure(refusal);
        return std::nullopt;
    }
    SeparationFormat format;
    format.internalName = TextField(tiff, TIFFTAG_PAGENAME, "");
    format.displayName = TextField(tiff, TIFFTAG_IMAGEDESCRIPTION, format.internalName);
    format.widthPixels = static_cast<int32_t>(LongField(tiff, TIFFTAG_IMAGEWIDTH, 0));
    const uint32_t rows = LongField(tiff, TIFFTAG_IMAGELENGTH, 0);
    format.rows = static_cast<int32_t>(rows);
    format.depth = static_cast<uint8_t>(ShortField(tiff, TIFFTAG_BITSPERSAMPLE, 0));
    format.compression = ShortField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    format.isLowBitFirst =
        ShortField(tiff, TIFFTAG_FILLORDER, FILLORDER_MSB2LSB) == FILLORDER_LSB2MSB;
    format.rowsPerStrip = std::min(LongField(tiff, TIFFTAG_ROWSPERSTRIP, rows), rows);
    if (TIFFIsCODECConfigured(format.compression) == 0) {
        failure = UnknownCompression(format.compression);
        return std::nullopt;
    }
    if (!IsPlausibleRow(format, fileBytes)) {
        failure = ContainerFailure("a separation has rows larger than the file");
        return std::nullopt;
    }
    return format;
}
