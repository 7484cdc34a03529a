#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>

#include "driverhost/HostError.h"
#include "driverhost/pictures/PictureFormats.h"
#include "driverhost/pictures/TiffRows.h"

namespace fs = std::filesystem;

namespace {

constexpr unsigned kFull = 255;
constexpr double kCentimetresPerInch = 2.54;

template <class Value>
Value Field(TIFF* tiff, uint32_t tag, Value absent) {
    Value value = absent;
    TIFFGetFieldDefaulted(tiff, tag, &value);
    return value;
}

/// Samples of one pixel at most: four inks and whatever a program keeps beside them.
constexpr int32_t kMostSamples = 32;

class TiffPicture final : public PictureReader {
  public:
    explicit TiffPicture(const fs::path& path) : path_(path), tiff_(OpenTiff(path, "rm")) {
        if (!tiff_) Refuse("is a damaged TIFF");
        if (!FindPicture()) Refuse("holds no picture");
    }

    void ReadRow(std::span<uint8_t> samples) override {
        if (!rows_) rows_.emplace(path_, offset_, layout_);
        for (int32_t plane = 0; plane < layout_.PlaneCount(); ++plane) {
            if (!rows_->Read(plane, row_, packed_))
                Refuse(fmt::format("is damaged at row {} of {}", row_, layout_.Rows));
            Unpack(plane);
        }
        ++row_;
        for (int64_t x = 0; x < layout_.Width; ++x)
            ConvertPixel(pixels_.data() + x * layout_.SampleCount,
                         samples.data() + x * static_cast<int64_t>(SamplesOf(header_.Colors)));
    }

    bool NextPicture() override {
        if (TIFFLastDirectory(tiff_.get()) != 0) return false;
        if (TIFFReadDirectory(tiff_.get()) != 1) Refuse("is damaged after its first picture");
        return FindPicture();
    }

  private:
    [[noreturn]] void Refuse(const std::string& why) const {
        throw HostError(kFailed, fmt::format("{} {}", path_.string(), why));
    }

    /// Passes over the small views and masks that programs keep beside a picture.
    bool FindPicture() {
        do {
            const auto kind = Field<uint32_t>(tiff_.get(), TIFFTAG_SUBFILETYPE, 0);
            if ((kind & (FILETYPE_REDUCEDIMAGE | FILETYPE_MASK)) != 0) continue;
            ReadHeader();
            return true;
        } while (TIFFReadDirectory(tiff_.get()) == 1);
        return false;
    }

    void ReadHeader() {
        TIFF* const tiff = tiff_.get();
        header_ = {};
        layout_ = {};
        rows_.reset();
        row_ = 0;
        offset_ = TIFFCurrentDirOffset(tiff);
        header_.Width = Field<uint32_t>(tiff, TIFFTAG_IMAGEWIDTH, 0);
        header_.Rows = Field<uint32_t>(tiff, TIFFTAG_IMAGELENGTH, 0);
        CheckPictureSize(path_, header_.Width, header_.Rows);
        layout_.Width = header_.Width;
        layout_.Rows = header_.Rows;
        layout_.Bits = Field<uint16_t>(tiff, TIFFTAG_BITSPERSAMPLE, 1);
        layout_.SampleCount = Field<uint16_t>(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
        layout_.IsApart = layout_.SampleCount > 1 &&
                          Field<uint16_t>(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) ==
                              PLANARCONFIG_SEPARATE;
        layout_.IsTiled = TIFFIsTiled(tiff) != 0;
        const auto format = Field<uint16_t>(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
        const int32_t bits = layout_.Bits;
        if ((bits != 1 && bits != 2 && bits != 4 && bits != 8 && bits != 16) ||
            (format != SAMPLEFORMAT_UINT && format != SAMPLEFORMAT_VOID &&
             Photometric() != PHOTOMETRIC_CIELAB))
            Refuse(fmt::format("has samples of {} bits in a form that is not read", bits));
        ReadColors();
        ReadAlpha();
        ReadNotes();
        packed_.resize(static_cast<std::size_t>(layout_.RowBytes()));
        pixels_.resize(static_cast<std::size_t>(layout_.Width * layout_.SampleCount));
    }

    uint16_t Photometric() const {
        return Field<uint16_t>(tiff_.get(), TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    }

    void ReadColors() {
        const uint16_t photometric = Photometric();
        inverted_ = photometric == PHOTOMETRIC_MINISWHITE;
        signedLab_ = photometric == PHOTOMETRIC_CIELAB;
        palette_ = {};
        switch (photometric) {
            case PHOTOMETRIC_MINISWHITE:
            case PHOTOMETRIC_MINISBLACK:
                header_.Colors = PictureColors::kGray;
                break;
            case PHOTOMETRIC_PALETTE:
                header_.Colors = PictureColors::kRgb;
                ReadPalette();
                break;
            case PHOTOMETRIC_YCBCR:
                // libtiff converts it on its way out of JPEG only.
                if (Field<uint16_t>(tiff_.get(), TIFFTAG_COMPRESSION, 0) != COMPRESSION_JPEG)
                    Refuse("is a YCbCr picture without JPEG compression, which is not read");
                header_.Colors = PictureColors::kRgb;
                break;
            case PHOTOMETRIC_RGB:
                header_.Colors = PictureColors::kRgb;
                break;
            case PHOTOMETRIC_SEPARATED:
                if (Field<uint16_t>(tiff_.get(), TIFFTAG_INKSET, INKSET_CMYK) != INKSET_CMYK)
                    Refuse("has inks other than cyan, magenta, yellow and black");
                header_.Colors = PictureColors::kCmyk;
                break;
            case PHOTOMETRIC_CIELAB:
            case PHOTOMETRIC_ICCLAB:
                header_.Colors = PictureColors::kLab;
                break;
            default:
                Refuse(fmt::format("has colours of kind {}, which is not read", photometric));
        }
        colorSamples_ =
            palette_[0] != nullptr ? 1 : static_cast<int32_t>(SamplesOf(header_.Colors));
        if (layout_.SampleCount < colorSamples_ || layout_.SampleCount > kMostSamples)
            Refuse(fmt::format("has {} samples a pixel", layout_.SampleCount));
    }

    void ReadPalette() {
        if (layout_.Bits > 8 || TIFFGetField(tiff_.get(), TIFFTAG_COLORMAP, palette_.data(),
                                             &palette_[1], &palette_[2]) != 1)
            Refuse("has no palette");
        // Eight-bit entries in sixteen-bit fields are a known fault of old programs.
        paletteShift_ = 0;
        for (const uint16_t* const ink : palette_)
            for (std::size_t i = 0; i < std::size_t{1} << layout_.Bits; ++i)
                if (ink[i] > kFull) paletteShift_ = 8;
    }

    void ReadAlpha() {
        uint16_t count = 0;
        const uint16_t* kinds = nullptr;
        TIFFGetFieldDefaulted(tiff_.get(), TIFFTAG_EXTRASAMPLES, &count, &kinds);
        alpha_ = -1;
        for (uint16_t i = 0; i < count && colorSamples_ + i < layout_.SampleCount; ++i) {
            if (kinds[i] == EXTRASAMPLE_UNSPECIFIED) continue;
            alpha_ = colorSamples_ + i;
            alphaIsApplied_ = kinds[i] == EXTRASAMPLE_ASSOCALPHA;
            return;
        }
    }

    void ReadNotes() {
        TIFF* const tiff = tiff_.get();
        const auto unit = Field<uint16_t>(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
        const double perInch = unit == RESUNIT_CENTIMETER ? kCentimetresPerInch : 1;
        if (unit != RESUNIT_NONE) {
            header_.XDotsPerInch = double{Field<float>(tiff, TIFFTAG_XRESOLUTION, 0)} * perInch;
            header_.YDotsPerInch = double{Field<float>(tiff, TIFFTAG_YRESOLUTION, 0)} * perInch;
        }
        const auto orientation = Field<uint16_t>(tiff, TIFFTAG_ORIENTATION, 1);
        if (orientation >= 1 && orientation <= 8) header_.Orientation = orientation;
        uint32_t bytes = 0;
        const uint8_t* profile = nullptr;
        if (TIFFGetField(tiff, TIFFTAG_ICCPROFILE, &bytes, &profile) == 1)
            header_.Profile.assign(profile, profile + bytes);
    }

    /// Spreads a packed row of a plane to the pixels' samples: 8 bits, or a palette's index.
    void Unpack(int32_t plane) {
        const int64_t step = layout_.IsApart ? layout_.SampleCount : 1;
        const int64_t count = layout_.IsApart ? layout_.Width : layout_.Width * layout_.SampleCount;
        uint8_t* out = pixels_.data() + plane;
        if (layout_.Bits == 16) {
            for (int64_t i = 0; i < count; ++i, out += step)  // libtiff gives this machine's order
                *out = HighByte(packed_.data() + 2 * i);
            return;
        }
        const int64_t perByte = 8 / layout_.Bits;
        const unsigned top = (1U << layout_.Bits) - 1;
        const unsigned scale = palette_[0] != nullptr ? 1 : kFull / top;
        for (int64_t i = 0; i < count; ++i, out += step) {
            const auto shift = static_cast<unsigned>(8 - layout_.Bits * (i % perByte + 1));
            const unsigned byte = packed_[static_cast<std::size_t>(i / perByte)];
            *out = static_cast<uint8_t>((byte >> shift & top) * scale);
        }
    }

    static uint8_t HighByte(const uint8_t* sample) {
        uint16_t value = 0;
        std::memcpy(&value, sample, sizeof value);
        return static_cast<uint8_t>(value >> 8);
    }

    void ConvertPixel(const uint8_t* pixel, uint8_t* out) const {
        const std::size_t count = SamplesOf(header_.Colors);
        for (std::size_t i = 0; i < count; ++i) {
            uint8_t sample = palette_[0] != nullptr
                                 ? static_cast<uint8_t>(palette_[i][*pixel] >> paletteShift_)
                                 : pixel[i];
            if (inverted_) sample = static_cast<uint8_t>(~sample);
            if (signedLab_ && i > 0) sample ^= 0x80;
            if (alpha_ >= 0) sample = Blend(sample, pixel[alpha_], WhiteOf(i));
            out[i] = sample;
        }
    }

    uint8_t WhiteOf(std::size_t sample) const {
        if (header_.Colors == PictureColors::kCmyk) return 0;
        return header_.Colors == PictureColors::kLab && sample > 0 ? 128 : 255;
    }

    uint8_t Blend(uint8_t sample, uint8_t alpha, uint8_t white) const {
        if (!alphaIsApplied_) return OnWhite(sample, alpha, white);
        return static_cast<uint8_t>(std::min(sample + unsigned{OnWhite(0, alpha, white)}, kFull));
    }

    fs::path path_;
    TiffFile tiff_;
    uint64_t offset_ = 0;
    TiffLayout layout_;
    std::optional<TiffRows> rows_;
    int64_t row_ = 0;
    std::vector<uint8_t> packed_;
    std::vector<uint8_t> pixels_;  ///< SampleCount bytes a pixel
    int32_t colorSamples_ = 1;
    int32_t alpha_ = -1;  ///< its sample; -1: none
    bool alphaIsApplied_ = false;
    bool inverted_ = false;
    bool signedLab_ = false;
    std::array<const uint16_t*, 3> palette_ = {};  ///< owned by libtiff
    unsigned paletteShift_ = 8;
};

}  // namespace

std::unique_ptr<PictureReader> OpenTiffPicture(const fs::path& path) {
    return std::make_unique<TiffPicture>(path);
}
