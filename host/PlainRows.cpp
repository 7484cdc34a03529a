#include <algorithm>
#include <vector>

#include "host/ContainerHandle.h"
#include "host/RowSource.h"

namespace {

/// A block stays in the processor's cache, and is large enough that the system's calls cost
/// nothing beside the copying.
constexpr uint64_t kBlockBytes = uint64_t{256} * 1024;

class PlainRows final : public RowSource {
  public:
    PlainRows(const RandomAccessFile& file, const ContainerDirectory& directory,
              const SeparationFormat& format)
        : file_(file),
          format_(format),
          handle_(file, directory),
          rowBytes_(static_cast<std::size_t>(format.RowBytes())),
          blockRows_(std::clamp<uint64_t>(kBlockBytes / rowBytes_, 1, uint64_t(format.rows))),
          block_(rowBytes_ * blockRows_) {}

    const ContainerHandle& Handle() const { return handle_; }

    const uint8_t* Row(uint32_t row) override {
        if (row < firstRow_ || row >= firstRow_ + rowCount_) {
            // Rows before a damaged one are still good, so a block that fails is tried as one row.
            if (!ReadBlock(row, blockRows_) && !ReadBlock(row, 1)) return nullptr;
        }
        return block_.data() + (row - firstRow_) * rowBytes_;
    }

  private:
    /// Bytes that follow each other in the file, and where they go in the block.
    struct Stretch {
        uint64_t offset = 0;
        std::size_t bytes = 0;
        std::size_t place = 0;
    };

    bool ReadBlock(uint64_t firstRow, uint64_t mostRows) {
        const uint64_t end = std::min(firstRow + mostRows, uint64_t(format_.rows));
        rowCount_ = 0;
        handle_.StartCalls();
        Stretch stretch;
        for (uint64_t row = firstRow; row < end;) {
            const uint64_t strip = row / format_.rowsPerStrip;
            const uint64_t rows = std::min((strip + 1) * format_.rowsPerStrip, end) - row;
            uint64_t offset = 0;
            if (!Locate(static_cast<uint32_t>(strip), row, rows, offset)) return false;
            if (offset != stretch.offset + stretch.bytes) {
                if (!ReadStretch(stretch)) return false;
                stretch = {offset, 0, stretch.place + stretch.bytes};
            }
            stretch.bytes += static_cast<std::size_t>(rows) * rowBytes_;
            row += rows;
        }
        if (!ReadStretch(stretch)) return false;
        firstRow_ = firstRow;
        rowCount_ = end - firstRow;
        return true;
    }

    /// Where `rows` rows from `row` on stand, all in `strip`; false when the strip has not so many
    /// bytes.
    bool Locate(uint32_t strip, uint64_t row, uint64_t rows, uint64_t& offset) {
        int failed = 0;
        const uint64_t start = TIFFGetStrileOffsetWithErr(handle_.Tiff(), strip, &failed);
        const uint64_t size =
            failed != 0 ? 0 : TIFFGetStrileByteCountWithErr(handle_.Tiff(), strip, &failed);
        const uint64_t before = (row - uint64_t{strip} * format_.rowsPerStrip) * rowBytes_;
        offset = start + before;
        const bool isKnown = failed == 0 && start != 0 && start < file_.Size();
        if (isKnown && before + rows * rowBytes_ <= std::min(size, file_.Size() - start))
            return true;
        failure_ = handle_.CallFailure("a strip ends early or stands outside the file");
        return false;
    }

    bool ReadStretch(const Stretch& stretch) {
        uint8_t* const place = block_.data() + stretch.place;
        int error = 0;
        if (file_.ReadAt(stretch.offset, place, stretch.bytes, &error) != stretch.bytes) {
            failure_ = ContainerFailure(
                error != 0 ? "the file cannot be read" : "the file has become shorter", error);
            return false;
        }
        if (format_.isLowBitFirst) TIFFReverseBits(place, static_cast<tmsize_t>(stretch.bytes));
        return true;
    }

    const RandomAccessFile& file_;
    const SeparationFormat& format_;
    ContainerHandle handle_;
    std::size_t rowBytes_;
    uint64_t blockRows_;
    std::vector<uint8_t> block_;
    uint64_t firstRow_ = 0;  // in the block
    uint64_t rowCount_ = 0;
};

}  // namespace

std::unique_ptr<RowSource> OpenPlainRows(const RandomAccessFile& file,
                                         const ContainerDirectory& directory,
                                         const SeparationFormat& format,
                                         ContainerFailure& failure) {
    auto rows = std::make_unique<PlainRows>(file, directory, format);
    failure = rows->Handle().Failure();
    if (rows->Handle().Tiff() == nullptr) return nullptr;
    return rows;
}
