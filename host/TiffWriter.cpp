#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "host/ChannelWriter.h"
#include "host/TiffHandle.h"

namespace {

/// libtiff's view of the channel file.
class FileClient final : public TiffClient {
  public:
    explicit FileClient(std::FILE* file) : file_(file) {}

    tmsize_t Read(void* data, tmsize_t count) noexcept override {
        const std::size_t got = std::fread(data, 1, static_cast<std::size_t>(count), file_);
        position_ += static_cast<std::int64_t>(got);
        return static_cast<tmsize_t>(got);
    }
    tmsize_t Write(void* data, tmsize_t count) noexcept override {
        // Nothing follows a failed write: a directory behind a gap would make the file look whole.
        if (hasFailed_) return 0;
        const std::size_t wanted = static_cast<std::size_t>(count);
        const std::size_t written = std::fwrite(data, 1, wanted, file_);
        if (written != wanted) hasFailed_ = true;
        position_ += static_cast<std::int64_t>(written);
        size_ = std::max(size_, position_);
        return static_cast<tmsize_t>(written);
    }
    toff_t Seek(toff_t offset, int origin) noexcept override {
        const std::int64_t from = origin == SEEK_SET ? 0 : origin == SEEK_CUR ? position_ : size_;
        const std::int64_t position = from + static_cast<std::int64_t>(offset);
        // libtiff seeks to the end before each strip; a stream that moves hands its buffer to the
        // system, and blocks would lose their alignment.
        if (position != position_ && !SeekStream(file_, position, SEEK_SET)) {
            hasFailed_ = true;
            return static_cast<toff_t>(-1);
        }
        position_ = position;
        return static_cast<toff_t>(position_);
    }
    toff_t Size() noexcept override { return static_cast<toff_t>(size_); }

    bool HasFailed() const { return hasFailed_; }
    /// From here on every write fails: what libtiff writes as it closes a file that is not whole
    /// would make it look so.
    void Refuse() { hasFailed_ = true; }

  private:
    std::FILE* file_;
    std::int64_t position_ = 0;
    std::int64_t size_ = 0;
    bool hasFailed_ = false;
};

/// Whether classic TIFF's 32-bit offsets cannot reach the end of such a file.
bool NeedsBigTiff(const ChannelFormat& format) {
    // Offset and byte count of a strip take 8 bytes in the classic directory, whose other
    // entries, values and header fit in the rest of the reserve by far.
    constexpr uint64_t kReserveBytes = 4096;
    const uint64_t strips = format.height / format.blockLines + 1;
    const uint64_t bytes = format.lineBytes * format.height + strips * 8 + kReserveBytes;
    return bytes > std::numeric_limits<uint32_t>::max();
}

class TiffWriter final : public ChannelWriter {
  public:
    TiffWriter(std::FILE* file, const ChannelFormat& format) : client_(file), format_(format) {}
    ~TiffWriter() override { client_.Refuse(); }

    bool Write(const void* lines, uint32_t lineCount) override {
        if (tiff_ == nullptr && !Begin()) return false;
        const auto count = static_cast<tmsize_t>(format_.lineBytes * lineCount);
        // An uncompressed strip is written as it stands; libtiff takes it without const.
        const bool written =
            TIFFWriteRawStrip(tiff_.get(), stripCount_, const_cast<void*>(lines), count) == count;
        // Without memory for its table of strips libtiff frees the table, and once more when the
        // handle is closed: such a handle is left alone.
        if (!written && !client_.HasFailed()) static_cast<void>(tiff_.release());
        if (!written) client_.Refuse();
        ++stripCount_;
        linesWritten_ += lineCount;
        return !client_.HasFailed();
    }

    bool Complete() override {
        TIFF* const tiff = tiff_.get();
        const bool written = TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, linesWritten_) != 0 &&
                             TIFFWriteDirectory(tiff) != 0;
        if (!written) client_.Refuse();
        tiff_.reset();
        return written && !client_.HasFailed();
    }

  private:
    bool Begin() {
        // libtiff holds the strip offsets and byte counts, 8 bytes each, in arrays that grow.
        constexpr uint64_t kMostAllocation = uint64_t{1} << 36;
        tiff_ = OpenTiff(client_, NeedsBigTiff(format_) ? "w8" : "w4", kMostAllocation);
        if (tiff_ == nullptr || SetFields()) return tiff_ != nullptr;
        client_.Refuse();
        tiff_.reset();
        return false;
    }

    bool SetFields() {
        TIFF* const tiff = tiff_.get();
        // One strip for now: libtiff makes room for further ones as they come, so that the
        // directory lists those that were written.
        return TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, format_.widthPixels) != 0 &&
               TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, format_.blockLines) != 0 &&
               TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, format_.blockLines) != 0 &&
               TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, format_.bits) != 0 &&
               TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1) != 0 &&
               TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE) != 0 &&
               TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE) != 0 &&
               TIFFSetField(tiff, TIFFTAG_FILLORDER, FILLORDER_MSB2LSB) != 0 &&
               TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) != 0 &&
               TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT) != 0 &&
               TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH) != 0 &&
               SetResolution(TIFFTAG_XRESOLUTION, format_.xResolution) &&
               SetResolution(TIFFTAG_YRESOLUTION, format_.yResolution);
    }

    /// A resolution that no fraction can say is left out.
    bool SetResolution(uint32_t tag, double resolution) {
        if (!std::isfinite(resolution) || resolution < 0) return true;
        return TIFFSetField(tiff_.get(), tag, resolution) != 0;
    }

    FileClient client_;
    ChannelFormat format_;
    TiffHandle tiff_;  // after client_, which it uses until it is closed
    uint32_t stripCount_ = 0;
    uint32_t linesWritten_ = 0;
};

}  // namespace

std::unique_ptr<ChannelWriter> MakeTiffWriter(std::FILE* file, const ChannelFormat& format) {
    return std::make_unique<TiffWriter>(file, format);
}
