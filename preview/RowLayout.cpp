#include "preview/RowLayout.h"

#include <algorithm>
#include <cstring>

#include "host/CopyRow.h"
#include "preview/ByteSums.h"

namespace {

constexpr std::size_t kWordBytes = sizeof(uint64_t);

/// The bytes that the offsets name, as they lie in memory: a word is written at a time, since byte
/// after byte takes longer.
uint64_t GatherWord(const uint8_t* from, const uint32_t* offsets) {
    uint8_t bytes[kWordBytes];
    for (std::size_t i = 0; i < kWordBytes; ++i)
        bytes[i] = from[offsets[i]];
    uint64_t word = 0;
    std::memcpy(&word, bytes, kWordBytes);
    return word;
}

/// The first source column of a preview column; `last` is one that falls into it.
int64_t FirstSourceColumn(const PreviewGeometry& geometry, int64_t last) {
    const int32_t column = geometry.Column(last);
    int64_t outside = -1;
    int64_t inside = last;
    while (inside - outside > 1) {
        const int64_t middle = outside + (inside - outside) / 2;
        (geometry.Column(middle) == column ? inside : outside) = middle;
    }
    return inside;
}

}  // namespace

RowLayout::RowLayout(const PreviewGeometry& geometry, int32_t bits)
    : bits_(bits),
      rowBytes_(static_cast<std::size_t>((int64_t{geometry.sourceWidth} * bits + 7) / 8)) {
    const int64_t width = geometry.sourceWidth;
    // A border at a byte's start cuts nothing; it refers to the lane behind the row's bytes, which
    // stays empty.
    cutBytes_.push_back(0);
    cutMasks_.push_back(0);
    const int64_t perByte = PixelsPerByte();
    for (int64_t pixel = 0; pixel < width;) {
        const int64_t last = width - 1 - pixel;
        const int32_t column = geometry.Column(last);
        const int64_t byte = pixel / perByte;
        const int64_t end =
            std::min(width - FirstSourceColumn(geometry, last), (byte + kMostCellBytes) * perByte);
        const int64_t endByte = end / perByte;
        const std::size_t cut = cells_.empty() ? rowBytes_ : cells_.back().endCut;
        cells_.push_back({.column = column,
                          .rest = geometry.PositionX(last) - column,
                          .distance = byte * perByte - pixel,
                          .endDistance = endByte * perByte - pixel,
                          .byte = static_cast<std::size_t>(byte),
                          .endByte = static_cast<std::size_t>(endByte),
                          .cut = cut,
                          .endCut = CutLane(end)});
        pixel = end;
    }
    const std::size_t lanes = rowBytes_ + std::max(cutBytes_.size(), kWordBytes);
    laneCount_ = (lanes + kByteSumsPadding - 1) / kByteSumsPadding * kByteSumsPadding;
    cutBytes_.resize(laneCount_ - rowBytes_);
    cutMasks_.resize(laneCount_ - rowBytes_);
}

/// The lane of what stands before `pixel` in its byte.
std::size_t RowLayout::CutLane(int64_t pixel) {
    const auto before = static_cast<int>(pixel % PixelsPerByte()) * bits_;
    if (before == 0) return rowBytes_;
    cutBytes_.push_back(static_cast<uint32_t>(pixel / PixelsPerByte()));
    cutMasks_.push_back(static_cast<uint8_t>((1U << before) - 1));
    return rowBytes_ + cutBytes_.size() - 1;
}

void RowLayout::FillLanes(std::span<const uint8_t> row, uint8_t* lanes) const {
    const std::size_t filled = std::min(row.size(), rowBytes_);
    CopyRow(lanes, row.data(), filled);
    std::memset(lanes + filled, 0, rowBytes_ - filled);
    uint8_t* const cutLanes = lanes + rowBytes_;
    const std::size_t count = cutBytes_.size();
    for (std::size_t i = 0; i < count; i += kWordBytes) {
        const std::size_t at = std::min(i, count - kWordBytes);  // the last word perhaps overlaps
        uint64_t mask = 0;
        std::memcpy(&mask, cutMasks_.data() + at, kWordBytes);
        const uint64_t word = GatherWord(lanes, cutBytes_.data() + at) & mask;
        std::memcpy(cutLanes + at, &word, kWordBytes);
    }
}
