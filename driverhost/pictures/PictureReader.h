#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <vector>

#include "driverhost/DocumentKind.h"

/// What the samples of a picture mean. Lab: lightness 0 to 255 for 0 to 100, and a and b plus 128.
enum class PictureColors { kGray, kRgb, kCmyk, kLab };

constexpr std::size_t SamplesOf(PictureColors colors) {
    return colors == PictureColors::kGray ? 1 : colors == PictureColors::kCmyk ? 4 : 3;
}

/// Longest side and most pixels of a picture: more is a damaged file, or one that would keep the
/// machine busy for hours.
inline constexpr int64_t kMostPictureSide = 1'000'000;
inline constexpr int64_t kMostPicturePixels = int64_t{1} << 34;

struct PictureHeader {
    int64_t Width = 0;  ///< pixels, as stored
    int64_t Rows = 0;
    PictureColors Colors = PictureColors::kGray;
    double XDotsPerInch = 0;  ///< along the stored rows; 0: the file does not say
    double YDotsPerInch = 0;
    /// How to turn the stored rows, 1 to 8 as TIFF and EXIF number it; 1: they stand as shown.
    int Orientation = 1;
    std::vector<uint8_t> Profile;  ///< ICC profile of the samples; empty: none
    int64_t SpoolBytes = 0;        ///< that reading the rows takes in the work folder
};

/// Reads a picture row by row from its stored top, 8 bits a sample, laid on white where it is
/// transparent. Holds no more than a few rows, or one row of tiles.
class PictureReader {
  public:
    virtual ~PictureReader() = default;

    const PictureHeader& Header() const { return header_; }
    /// The next row: `Width` pixels of `SamplesOf(Colors)` bytes. Throws HostError for a row that
    /// is damaged or missing.
    virtual void ReadRow(std::span<uint8_t> samples) = 0;
    /// Goes to the file's next picture, of which only TIFF can hold several; false: there is none.
    virtual bool NextPicture() { return false; }

  protected:
    PictureHeader header_;
};

/// Opens a picture. `workFolder` takes what a row-by-row reader cannot hold. Throws HostError,
/// naming the file, for one that is damaged, too large or of a kind that is not read.
std::unique_ptr<PictureReader> OpenPicture(const std::filesystem::path& path, DocumentKind kind,
                                           const std::filesystem::path& workFolder);

/// Throws HostError when a picture's sides are not within the limits above.
void CheckPictureSize(const std::filesystem::path& path, int64_t width, int64_t rows);

/// A sample laid on white: `alpha` 0 shows only the white, 255 only the sample. `white` is 255
/// where the samples are light, 0 where they are ink.
constexpr uint8_t OnWhite(uint8_t sample, uint8_t alpha, uint8_t white) {
    constexpr unsigned kFull = 255;
    return static_cast<uint8_t>((sample * unsigned{alpha} + white * (kFull - alpha) + kFull / 2) /
                                kFull);
}
