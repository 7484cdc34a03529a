#include "BenchContainer.h"

#include <tiffio.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <stdexcept>
#include <vector>

namespace {

constexpr int64_t kStripBytes = int64_t{256} * 1024;

struct CloseTiff {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};

/// 64 bits of which each is set with a probability of one in 2 to the `halvings`.
uint64_t RareBits(std::mt19937_64& random, int halvings) {
    uint64_t bits = ~uint64_t{0};
    for (int halving = 0; halving < halvings; ++halving)
        bits &= random();
    return bits;
}

/// 64 bits of which 15 % are set: 1/8 and, of the rest, 1/32.
uint64_t InkBits(std::mt19937_64& random) {
    return RareBits(random, 3) | RareBits(random, 5);
}

void SetFields(TIFF* tiff, const BenchPage& page, int32_t channel, int64_t stripRows,
               uint16_t compression) {
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<uint32_t>(page.widthPixels));
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<uint32_t>(page.rows));
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, page.bits);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, compression);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, static_cast<uint32_t>(stripRows));
    TIFFSetField(tiff, TIFFTAG_XRESOLUTION, 720.0);
    TIFFSetField(tiff, TIFFTAG_YRESOLUTION, 720.0);
    TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    TIFFSetField(tiff, TIFFTAG_PAGENUMBER, 0, 1);
    TIFFSetField(tiff, TIFFTAG_PAGENAME, kBenchColorants[channel]);
}

}  // namespace

void WriteBenchContainer(const std::filesystem::path& path, const BenchPage& page,
                         uint16_t compression) {
    // Classic TIFF ends at 4 GiB; the directories take far less than this reserve.
    constexpr int64_t kReserve = int64_t{16} << 20;
    const bool isBig = page.Bytes() + kReserve > std::numeric_limits<uint32_t>::max();
    const std::unique_ptr<TIFF, CloseTiff> tiff(TIFFOpen(path.c_str(), isBig ? "w8" : "w"));
    if (tiff == nullptr) throw std::runtime_error("cannot create " + path.string());

    const int64_t stripRows = std::clamp(kStripBytes / page.RowBytes(), int64_t{1}, page.rows);
    std::mt19937_64 random(20260401);
    std::vector<uint64_t> strip(static_cast<std::size_t>(stripRows * page.RowBytes() / 8 + 1));
    for (int32_t channel = 0; channel < BenchPage::kChannels; ++channel) {
        SetFields(tiff.get(), page, channel, stripRows, compression);
        for (int64_t row = 0; row < page.rows; row += stripRows) {
            std::generate(strip.begin(), strip.end(), [&] { return InkBits(random); });
            const int64_t bytes = std::min(stripRows, page.rows - row) * page.RowBytes();
            if (TIFFWriteEncodedStrip(tiff.get(), static_cast<uint32_t>(row / stripRows),
                                      strip.data(), bytes) != bytes) {
                throw std::runtime_error("cannot write " + path.string());
            }
        }
        if (TIFFWriteDirectory(tiff.get()) == 0) {
            throw std::runtime_error("cannot write " + path.string());
        }
    }
}
