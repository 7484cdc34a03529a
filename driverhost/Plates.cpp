#include "driverhost/Plates.h"

#include <fmt/format.h>
#include <tiffio.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>

#include "driverhost/HostError.h"
#include "driverhost/TiffFile.h"

namespace fs = std::filesystem;

namespace {

/// "plate(Orange%2FRed).tif" names the ink Orange/Red.
std::optional<std::string> InkOfFile(std::string_view name) {
    constexpr std::string_view kHead = "plate(";
    constexpr std::string_view kTail = ").tif";
    if (!name.starts_with(kHead) || !name.ends_with(kTail)) return std::nullopt;
    name = name.substr(kHead.size(), name.size() - kHead.size() - kTail.size());
    std::string ink;
    for (std::size_t i = 0; i < name.size(); ++i) {
        int value = 0;
        if (name[i] == '%' && i + 2 < name.size() &&
            std::from_chars(name.data() + i + 1, name.data() + i + 3, value, 16).ptr ==
                name.data() + i + 3) {
            ink += static_cast<char>(value);
            i += 2;
        } else {
            ink += name[i];
        }
    }
    return ink;
}

}  // namespace

fs::path FindPlate(const fs::path& folder, const std::string& ink) {
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error))
        if (InkOfFile(entry->path().filename().string()) == ink) return entry->path();
    return {};
}

struct PlateReader::File {
    TiffFile Tiff;
    bool ZeroIsInk = true;
};

std::vector<PlateBand> BandsOfRows(const std::vector<PlateBand>& bands, int64_t firstRow,
                                   int64_t rows) {
    std::vector<PlateBand> part;
    int64_t pageRow = 0;  // of the band's first row that counts
    for (PlateBand band : bands) {
        const int64_t offset = pageRow - band.FirstRow;
        pageRow += band.EndRow - band.FirstRow;
        band.FirstRow = std::max(band.FirstRow, firstRow - offset);
        band.EndRow = std::min(band.EndRow, firstRow + rows - offset);
        if (band.FirstRow < band.EndRow) part.push_back(band);
    }
    return part;
}

PlateReader::PlateReader(std::vector<PlateBand> bands, std::string plate, int64_t widthPixels)
    : bands_(std::move(bands)),
      plate_(std::move(plate)),
      widthPixels_(widthPixels),
      skipped_(static_cast<std::size_t>(widthPixels)) {}

PlateReader::~PlateReader() = default;

void PlateReader::OpenBand() {
    const PlateBand& band = bands_[band_];
    const fs::path path = FindPlate(band.Folder, plate_);
    if (path.empty())
        throw HostError(kFailed, fmt::format("Ghostscript made no plate of {}", plate_));
    file_ = std::make_unique<File>();
    // Not mapped into memory: a plate may be larger than that.
    file_->Tiff = OpenTiff(path, "rm");
    if (!file_->Tiff)
        throw HostError(kFailed, fmt::format("the plate of {} is unreadable", plate_));
    TIFF* const tiff = file_->Tiff.get();
    uint32_t width = 0;
    uint32_t rows = 0;
    uint16_t bits = 0;
    uint16_t samples = 1;
    uint16_t photometric = PHOTOMETRIC_MINISBLACK;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &rows);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_BITSPERSAMPLE, &bits);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &samples);
    TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &photometric);
    if (width != widthPixels_ || rows != band.PlateRows)
        throw HostError(kFailed, fmt::format("the plate of {} is {} x {} pixels instead of {} x {}",
                                             plate_, width, rows, widthPixels_, band.PlateRows));
    if (bits != 8 || samples != 1 || TIFFIsTiled(tiff) != 0 ||
        TIFFScanlineSize64(tiff) != static_cast<uint64_t>(widthPixels_))
        throw HostError(kFailed, fmt::format("the plate of {} is of an unknown kind", plate_));
    file_->ZeroIsInk = photometric == PHOTOMETRIC_MINISBLACK;
    // A strip can be read without those before it.
    uint32_t stripRows = 1;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_ROWSPERSTRIP, &stripRows);
    row_ = band.FirstRow - band.FirstRow % std::max<int64_t>(stripRows, 1);
    for (; row_ < band.FirstRow; ++row_)
        ReadPlateRow(skipped_);
}

void PlateReader::ReadPlateRow(std::span<uint8_t> amounts) {
    if (TIFFReadScanline(file_->Tiff.get(), amounts.data(), static_cast<uint32_t>(row_)) != 1)
        throw HostError(kFailed, fmt::format("the plate of {} ends early, at row {} of {}", plate_,
                                             row_, bands_[band_].PlateRows));
}

void PlateReader::ReadRow(std::span<uint8_t> amounts) {
    if (!file_) OpenBand();
    ReadPlateRow(amounts);
    if (file_->ZeroIsInk)
        for (uint8_t& amount : amounts)
            amount = static_cast<uint8_t>(~amount);
    if (++row_ < bands_[band_].EndRow) return;
    file_.reset();
    ++band_;
}
