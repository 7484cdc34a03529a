#include "preview/RowLayout.h"

#include <algorithm>
#include <cstring>

#include "preview/ByteSums.h"

namespace {

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
    cuts_.push_back({0, 0});
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
    const std::size_t lanes = rowBytes_ + cuts_.size();
    laneCount_ = (lanes + kByteSumsPadding - 1) / kByteSumsPadding * kByteSumsPadding;
}

/// The lane of what stands before `pixel` in its byte.
std::size_t RowLayout::CutLane(int64_t pixel) {
    const auto before = static_cast<int>(pixel % PixelsPerByte()) * bits_;
    if (before == 0) return rowBytes_;
    cuts_.push_back({static_cast<std::size_t>(pixel / PixelsPerByte()),
                     static_cast<uint8_t>((1U << before) - 1)});
    return rowBytes_ + cuts_.size() - 1;
}

void RowLayout::FillLanes(std::span<const uint8_t> row, uint8_t* lanes) const {
    const std::size_t filled = std::min(row.size(), rowBytes_);
    std::memcpy(lanes, row.data(), filled);
    std::memset(lanes + filled, 0, rowBytes_ - filled);
    uint8_t* lane = lanes + rowBytes_;
    for (const Cut& cut : cuts_)
        *lane++ = lanes[cut.byte] & cut.mask;
    std::memset(lane, 0, static_cast<std::size_t>(lanes + laneCount_ - lane));
}
