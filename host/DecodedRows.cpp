#include <algorithm>
#include <cstring>
#include <vector>

#include "host/ContainerHandle.h"
#include "host/RowSource.h"

namespace {

/// Strips up to this size are decoded whole: what common writers make, with room to spare.
constexpr uint64_t kMostStripBytes = uint64_t{4} * 1024 * 1024;

constexpr const char* kDamagedStrip = "the data of a strip is damaged or ends early";

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

/// Decodes large strips row by row. Rows are asked for in order but for a caller who looks twice;
/// going back starts the strip again.
class ScanlineRows final : public RowSource {
  public:
    ScanlineRows(const RandomAccessFile& file, const ContainerDirectory& directory,
                 const SeparationFormat& format)
        : format_(format),
          handle_(file, directory),
          untouched_(format, 0),
          row_(static_cast<std::size_t>(format.RowBytes())) {}

    /// Whether rows of this format show that no decoder has written them: a few bytes may look
    /// untouched by chance.
    static bool CanTell(const SeparationFormat& format) { return format.RowBytes() >= 16; }

    const ContainerHandle& Handle() const { return handle_; }

    const uint8_t* Row(uint32_t row) override {
        const uint32_t stripStart = row - row % format_.rowsPerStrip;
        if (row < nextRow_ || stripStart > nextRow_) nextRow_ = stripStart;
        for (; nextRow_ <= row; ++nextRow_) {
            if (DecodeNext()) continue;
            failure_ = handle_.CallFailure(kDamagedStrip);
            return nullptr;
        }
        return row_.data();
    }

  private:
    bool DecodeNext() {
        const bool canTell = CanTell(format_);
        if (canTell) untouched_.PutInto(row_.data());
        handle_.StartCalls();
        return TIFFReadScanline(handle_.Tiff(), row_.data(), nextRow_, 0) == 1 &&
               !handle_.HasFailed() && !(canTell && untouched_.Is(row_.data()));
    }

    const SeparationFormat& format_;
    ContainerHandle handle_;
    UntouchedRow untouched_;
    std::vector<uint8_t> row_;
    uint32_t nextRow_ = 0;
};

/// Decodes whole strips. From one that is damaged on, rows are decoded one by one: those before
/// the damage are still good.
class StripRows final : public RowSource {
  public:
    StripRows(const RandomAccessFile& file, const ContainerDirectory& directory,
              const SeparationFormat& format)
        : file_(file),
          directory_(directory),
          format_(format),
          handle_(file, directory),
          rowBytes_(static_cast<std::size_t>(format.RowBytes())),
          untouched_{UntouchedRow(format, 0), UntouchedRow(format, 0xFF)},
          strip_(rowBytes_ * format.rowsPerStrip) {}

    const ContainerHandle& Handle() const { return handle_; }

    const uint8_t* Row(uint32_t row) override {
        const uint32_t strip = row / format_.rowsPerStrip;
        if (!isDamaged_ && (!hasStrip_ || strip != stripIndex_)) {
            hasStrip_ = Decode(strip);
            stripIndex_ = strip;
            isDamaged_ = !hasStrip_;
        }
        if (isDamaged_) return RowOfDamaged(row);
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
            handle_.StartCalls();
            const tmsize_t decoded = TIFFReadEncodedStrip(handle_.Tiff(), strip, strip_.data(),
                                                          static_cast<tmsize_t>(bytes));
            if (decoded != static_cast<tmsize_t>(bytes) || handle_.HasFailed()) break;
            if (!untouched.Is(lastRow)) return true;
        }
        failure_ = handle_.CallFailure(kDamagedStrip);
        return false;
    }

    const uint8_t* RowOfDamaged(uint32_t row) {
        if (!ScanlineRows::CanTell(format_)) return nullptr;
        if (oneByOne_ == nullptr)
            oneByOne_ = std::make_unique<ScanlineRows>(file_, directory_, format_);
        const bool isOpen = oneByOne_->Handle().Tiff() != nullptr;
        const uint8_t* const bytes = isOpen ? oneByOne_->Row(row) : nullptr;
        if (bytes == nullptr)
            failure_ = isOpen ? oneByOne_->Failure() : oneByOne_->Handle().Failure();
        return bytes;
    }

    const RandomAccessFile& file_;
    const ContainerDirectory& directory_;
    const SeparationFormat& format_;
    ContainerHandle handle_;
    std::size_t rowBytes_;
    UntouchedRow untouched_[2];
    std::vector<uint8_t> strip_;
    uint32_t stripIndex_ = 0;
    bool hasStrip_ = false;
    bool isDamaged_ = false;
    std::unique_ptr<ScanlineRows> oneByOne_;
};

template <class Rows>
std::unique_ptr<RowSource> Open(const RandomAccessFile& file, const ContainerDirectory& directory,
                                const SeparationFormat& format, ContainerFailure& failure) {
    auto rows = std::make_unique<Rows>(file, directory, format);
    failure = rows->Handle().Failure();
    if (rows->Handle().Tiff() == nullptr) return nullptr;
    return rows;
}

}  // namespace

std::unique_ptr<RowSource> OpenDecodedRows(const RandomAccessFile& file,
                                           const ContainerDirectory& directory,
                                           const SeparationFormat& format,
                                           ContainerFailure& failure) {
    const bool isSmall = format.RowBytes() * format.rowsPerStrip <= kMostStripBytes;
    return isSmall ? Open<StripRows>(file, directory, format, failure)
                   : Open<ScanlineRows>(file, directory, format, failure);
}
