#include "driverhost/ChannelFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <system_error>
#include <vector>

#include "driverhost/HostError.h"
#include "driverhost/TextCompare.h"
#include "driverhost/TiffFile.h"

namespace fs = std::filesystem;

namespace {

/// No channel of a printer comes near; what a damaged file asks for stops here.
constexpr uint64_t kMostStripBytes = uint64_t{64} << 20;

class TiffChannel final : public ChannelFile {
  public:
    TiffChannel(fs::path path, TiffFile tiff, const ChannelShape& shape)
        : ChannelFile(shape), path_(std::move(path)), tiff_(std::move(tiff)) {
        TIFFGetFieldDefaulted(tiff_.get(), TIFFTAG_ROWSPERSTRIP, &rowsPerStrip_);
        rowsPerStrip_ = static_cast<uint32_t>(std::clamp<int64_t>(rowsPerStrip_, 1, shape_.Lines));
        uint16_t photometric = PHOTOMETRIC_MINISWHITE;
        TIFFGetField(tiff_.get(), TIFFTAG_PHOTOMETRIC, &photometric);
        zeroIsInk_ = photometric == PHOTOMETRIC_MINISBLACK;
        const uint64_t stripBytes = TIFFStripSize64(tiff_.get());
        if (stripBytes == 0 || stripBytes > kMostStripBytes)
            throw HostError(kFailed, fmt::format("{}: its strips are too large", path_.string()));
        strip_.resize(static_cast<std::size_t>(stripBytes));
    }

    std::span<const uint8_t> Line(int64_t line) override {
        const int64_t index = line / rowsPerStrip_;
        if (index != stripIndex_) ReadStrip(index);
        const auto lineBytes = static_cast<std::size_t>(shape_.LineBytes());
        const auto offset = static_cast<std::size_t>(line % rowsPerStrip_) * lineBytes;
        if (offset + lineBytes > stripBytes_) Fail(line);
        return std::span(strip_).subspan(offset, lineBytes);
    }

  private:
    void ReadStrip(int64_t index) {
        stripIndex_ = -1;
        const tmsize_t count =
            TIFFReadEncodedStrip(tiff_.get(), static_cast<uint32_t>(index), strip_.data(),
                                 static_cast<tmsize_t>(strip_.size()));
        if (count < 0) Fail(index * rowsPerStrip_);
        stripBytes_ = static_cast<std::size_t>(count);
        stripIndex_ = index;
        if (!zeroIsInk_) return;
        for (uint8_t& byte : strip_)
            byte = static_cast<uint8_t>(~byte);
    }

    [[noreturn]] void Fail(int64_t line) const {
        throw HostError(kFailed, fmt::format("{}: line {} cannot be read", path_.string(), line));
    }

    fs::path path_;
    TiffFile tiff_;
    uint32_t rowsPerStrip_ = 1;
    bool zeroIsInk_ = false;
    std::vector<uint8_t> strip_;
    std::size_t stripBytes_ = 0;  ///< that the strip in memory really has
    int64_t stripIndex_ = -1;
};

class RawChannel final : public ChannelFile {
  public:
    RawChannel(fs::path path, const ChannelShape& shape)
        : ChannelFile(shape),
          path_(std::move(path)),
          file_(path_, std::ios::binary),
          line_(static_cast<std::size_t>(shape.LineBytes())) {}

    std::span<const uint8_t> Line(int64_t line) override {
        if (line != next_) file_.seekg(line * shape_.LineBytes());
        file_.read(reinterpret_cast<char*>(line_.data()),
                   static_cast<std::streamsize>(line_.size()));
        if (!file_)
            throw HostError(kFailed,
                            fmt::format("{}: line {} cannot be read", path_.string(), line));
        next_ = line + 1;
        return line_;
    }

  private:
    fs::path path_;
    std::ifstream file_;
    std::vector<uint8_t> line_;
    int64_t next_ = 0;  ///< the line at the stream's position
};

bool IsChannelDepth(int64_t bits) {
    return bits == 1 || bits == 2 || bits == 4 || bits == 8;
}

}  // namespace

bool IsTiffName(const fs::path& path) {
    const std::string extension = path.extension().string();
    return SameIgnoringCase(extension, ".tif") || SameIgnoringCase(extension, ".tiff");
}

std::unique_ptr<ChannelFile> OpenTiffChannel(const fs::path& path) {
    std::error_code error;
    if (!fs::exists(path, error))
        throw HostError(kFailed, fmt::format("{} is missing", path.string()));
    TiffFile tiff = OpenTiff(path, "rm");
    if (!tiff) throw HostError(kFailed, fmt::format("{} is no TIFF file", path.string()));
    uint32_t width = 0;
    uint32_t lines = 0;
    uint16_t bits = 1;
    uint16_t samples = 1;
    float x = 0;
    float y = 0;
    TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &lines);
    TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_BITSPERSAMPLE, &bits);
    TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_SAMPLESPERPIXEL, &samples);
    TIFFGetField(tiff.get(), TIFFTAG_XRESOLUTION, &x);
    TIFFGetField(tiff.get(), TIFFTAG_YRESOLUTION, &y);
    if (width == 0 || lines == 0 || samples != 1 || !IsChannelDepth(bits) ||
        TIFFIsTiled(tiff.get()) != 0)
        throw HostError(kFailed, fmt::format("{} is no channel: it must have one sample of 1, 2, "
                                             "4 or 8 bits a pixel, in strips",
                                             path.string()));
    const ChannelShape shape = {width, lines, bits, double{x}, double{y}};
    return std::make_unique<TiffChannel>(path, std::move(tiff), shape);
}

std::unique_ptr<ChannelFile> OpenRawChannel(const fs::path& path, int64_t widthPixels,
                                            int32_t bits) {
    if (widthPixels <= 0 || widthPixels % 32 != 0 || !IsChannelDepth(bits))
        throw HostError(kUsage, fmt::format("a raw channel's lines are a multiple of 32 pixels "
                                            "wide and 1, 2, 4 or 8 bits deep"));
    std::error_code error;
    const std::uintmax_t bytes = fs::file_size(path, error);
    if (error) throw HostError(kFailed, fmt::format("{}: {}", path.string(), error.message()));
    ChannelShape shape = {widthPixels, 0, bits, 0, 0};
    const auto lineBytes = static_cast<std::uintmax_t>(shape.LineBytes());
    if (lineBytes > kMostStripBytes || bytes % lineBytes != 0)
        throw HostError(kFailed, fmt::format("{} has {} bytes, no whole number of lines of {} "
                                             "bytes",
                                             path.string(), bytes, lineBytes));
    shape.Lines = static_cast<int64_t>(bytes / lineBytes);
    return std::make_unique<RawChannel>(path, shape);
}
