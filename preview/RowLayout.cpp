#include "preview/RowLayout.h"

#include <algorithm>
#include <cstring>

#include "preview/ByteSums.h"

namespace {

constexpr std::size_t kWordBytes = sizeof(uint64_t);

/// Leaves the bits of a word's bytes that `mask` has.
void MaskWord(uint8_t* bytes, const uint8_t* mask) {
    uint64_t word = 0;
    uint64_t kept = 0;
    std::memcpy(&word, bytes, kWordBytes);
    std::memcpy(&kept, mask, kWordBytes);
    word &= kept;
    std::memcpy(bytes, &word, kWordBytes);
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
    std::memcpy(lanes, row.data(), filled);
    std::memset(lanes + filled, 0, rowBytes_ - filled);
    uint8_t* const cutLanes = lanes + rowBytes_;
    const std::size_t count = cutBytes_.size();
    const uint32_t* const bytes = cutBytes_.data();
    for (std::size_t i = 0; i < count; ++i)
        cutLanes[i] = lanes[bytes[i]];
    // Word by word, the last one perhaps twice.
    for (std::size_t i = 0; i < count; i += kWordBytes)
        MaskWord(cutLanes + std::min(i, count - kWordBytes),
                 cutMasks_.data() + std::min(i, count - kWordBytes));
}
