#include <algorithm>
#include <cstring>
#include <vector>

#include "host/ContainerHandle.h"
#include "host/RowSource.h"

namespace {

/// Strips up to this size are decoded whole: what common writers make, with room to spare.
constexpr uint64_t kMostStripBytes = uint64_t{4} * 1024 * 1024;

/// A row that no decoder has written. Some decoders, the fax ones above all, call a strip that
/// ends early a success and leave the rest of the buffer alone, so a buffer is given this content
/// before and looked at after. It is irregular, so that a flat tint is never taken for it.
class UntouchedRow {
  public:
    /// Rows with different `flip` differ in every byte.
    UntouchedRow(const SeparationFormat& format, uint8_t flip)
        : content_(static_cast<std::size_t>(format.RowBytes())) {
        // A linear congruential sequence (Numerical Recipes' multiplier and increment).
        uint32_t state = 1;
        for (uint8_t& byte : content_) {
            state = state * 1664525U + 1013904223U;
            byte = static_cast<uint8_t>(state >> 24) ^ flip;
        }
        // Decoders that write bits leave those behind the row's last pixel as they were.
        content_.back() = static_cast<uint8_t>(content_.back() & (0xFF << format.SpareBits()));
    }
    void PutInto(uint8_t* row) const { std::memcpy(row, content_.data(), content_.size()); }
    bool Is(const uint8_t* row) const {
        return std::memcmp(row, content_.data(), content_.size()) == 0;
    }

  private:
    std::vector<uint8_t> content_;
};

/// Decodes whole strips.
class StripRows final : public RowSource {
  public:
    StripRows(const RandomAccessFile& file, const ContainerDirectory& directory,
              const SeparationFormat& format)
        : format_(format),
          handle_(file, directory.offset),
          rowBytes_(static_cast<std::size_t>(format.RowBytes())),
          untouched_{UntouchedRow(format, 0), UntouchedRow(format, 0xFF)},
          strip_(rowBytes_ * format.rowsPerStrip) {}

    bool IsOpen() const { return handle_.Tiff() != nullptr; }

    const uint8_t* Row(uint32_t row) override {
        const uint32_t strip = row / format_.rowsPerStrip;
        if (!hasStrip_ || strip != stripIndex_) {
            hasStrip_ = Decode(strip);
            stripIndex_ = strip;
        }
        if (!hasStrip_) return nullptr;
        return strip_.data() + (row % format_.rowsPerStrip) * rowBytes_;
    }

  private:
    bool Decode(uint32_t strip) {
        const std::size_t bytes = format_.RowsOfStrip(strip) * rowBytes_;
        uint8_t* const lastRow = strip_.data() + bytes - rowBytes_;
        // A row may happen to look untouched, but not in two different ways.
        for (const UntouchedRow& untouched : untouched_) {
            if (format_.SpareBits() != 0) std::fill(strip_.begin(), strip_.end(), uint8_t{0});
            untouched.PutInto(lastRow);
            handle_.Client().ForgetComplaints();
            const tmsize_t decoded = TIFFReadEncodedStrip(handle_.Tiff(), strip, strip_.data(),
                                                          static_cast<tmsize_t>(bytes));
            if (decoded != static_cast<tmsize_t>(bytes)) return false;
            if (handle_.Client().HasComplained()) return false;
            if (!untouched.Is(lastRow)) return true;
        }
        return false;
    }

    const SeparationFormat& format_;
    ContainerHandle handle_;
    std::size_t rowBytes_;
    UntouchedRow untouched_[2];
    std::vector<uint8_t> strip_;
    uint32_t stripIndex_ = 0;
    bool hasStrip_ = false;
};

/// Decodes large strips row by row. Rows are asked for in order but for a caller who looks twice;
/// going back starts the strip again.
class ScanlineRows final : public RowSource {
  public:
    ScanlineRows(const RandomAccessFile& file, const ContainerDirectory& directory,
                 const SeparationFormat& format)
        : format_(format),
          handle_(file, directory.offset),
          untouched_(format, 0),
          row_(static_cast<std::size_t>(format.RowBytes())) {}

    bool IsOpen() const { return handle_.Tiff() != nullptr; }

    const uint8_t* Row(uint32_t row) override {
        const uint32_t stripStart = row - row % format_.rowsPerStrip;
        if (row < nextRow_ || stripStart > nextRow_) nextRow_ = stripStart;
        for (; nextRow_ <= row; ++nextRow_) {
            if (!DecodeNext()) {
                nextRow_ = static_cast<uint32_t>(format_.rows);  // the next try starts afresh
                return nullptr;
            }
        }
        return row_.data();
    }

  private:
    bool DecodeNext() {
        // A few bytes may look untouched by chance.
        const bool canTell = format_.RowBytes() >= 16;
        if (canTell) untouched_.PutInto(row_.data());
        handle_.Client().ForgetComplaints();
        return TIFFReadScanline(handle_.Tiff(), row_.data(), nextRow_, 0) == 1 &&
               !handle_.Client().HasComplained() && !(canTell && untouched_.Is(row_.data()));
    }

    const SeparationFormat& format_;
    ContainerHandle handle_;
    UntouchedRow untouched_;
    std::vector<uint8_t> row_;
    uint32_t nextRow_ = 0;
};

template <class Rows>
std::unique_ptr<RowSource> Open(const RandomAccessFile& file, const ContainerDirectory& directory,
                                const SeparationFormat& format) {
    auto rows = std::make_unique<Rows>(file, directory, format);
    if (!rows->IsOpen()) return nullptr;
    return rows;
}

}  // namespace

std::unique_ptr<RowSource> OpenDecodedRows(const RandomAccessFile& file,
                                           const ContainerDirectory& directory,
                                           const SeparationFormat& format) {
    const bool isSmall = format.RowBytes() * format.rowsPerStrip <= kMostStripBytes;
    return isSmall ? Open<StripRows>(file, directory, format)
                   : Open<ScanlineRows>(file, directory, format);
}
