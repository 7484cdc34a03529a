#include "preview/PlaneSums.h"

#include <algorithm>
#include <cstring>

namespace {

bool IsBlank(std::span<const uint8_t> bytes) {
    constexpr std::size_t kStride = 64;
    std::size_t at = 0;
    for (; at + kStride <= bytes.size(); at += kStride) {
        uint64_t words[kStride / sizeof(uint64_t)];
        std::memcpy(words, bytes.data() + at, kStride);
        uint64_t any = 0;
        for (const uint64_t word : words)
            any |= word;
        if (any != 0) return false;
    }
    return std::all_of(bytes.data() + at, bytes.data() + bytes.size(),
                       [](uint8_t byte) { return byte == 0; });
}

}  // namespace

/// Sums of the intensities of a cell's pixels in some rows, plain and by the pixel's distance
/// from the first pixel and by the row's from the first row.
struct PlaneSums::CellSums {
    double ink = 0;
    double inkByPixel = 0;
    double inkByRow = 0;
    double inkByPixelRow = 0;

    /// Takes `part` over, whose pixels start `distance` behind the cell's first (or before it).
    void Add(double sign, double distance, int64_t partInk, int64_t byPixel, int64_t byRow,
             int64_t byPixelRow) {
        ink += sign * static_cast<double>(partInk);
        inkByPixel +=
            sign * (static_cast<double>(byPixel) + distance * static_cast<double>(partInk));
        inkByRow += sign * static_cast<double>(byRow);
        inkByPixelRow +=
            sign * (static_cast<double>(byPixelRow) + distance * static_cast<double>(byRow));
    }
};

PlaneSums::PlaneSums(const PreviewGeometry& geometry, const RowLayout& layout)
    : geometry_(geometry), layout_(nullptr) {
    cells_.resize(CellIndex(0, geometry.previewHeight + 1));
    ChangeLayout(layout);
}

std::size_t PlaneSums::CellIndex(int32_t column, int32_t row) const {
    return static_cast<std::size_t>(row) * (static_cast<std::size_t>(geometry_.previewWidth) + 1) +
           static_cast<std::size_t>(column);
}

void PlaneSums::ChangeLayout(const RowLayout& layout) {
    if (layout_ != nullptr) Flush();
    layout_ = &layout;
    const std::size_t count = layout.LaneCount();
    lanes_.assign(kGroupRows * count, 0);
    blankLanes_.assign(count, 0);
    sumLanes_.assign(4 * count, 0);
    uint16_t* const sums = sumLanes_.data();
    sums_ = {sums, sums + count, sums + 2 * count, sums + 3 * count};
    group_.fill(blankLanes_.data());
}

void PlaneSums::AddRow(int32_t row, std::span<const uint8_t> data) {
    const int64_t mirrored = int64_t{geometry_.sourceHeight} - 1 - row;
    const int64_t mirroredFirst = int64_t{geometry_.sourceHeight} - 1 - firstRow_;
    const bool continues = rowCount_ != 0 && row - firstRow_ == rowCount_ &&
                           rowCount_ < MostByteSumRows(layout_->Bits()) &&
                           geometry_.Row(mirrored) == geometry_.Row(mirroredFirst);
    if (!continues) {
        Flush();
        firstRow_ = row;
    }
    const std::size_t place = rowCount_ % kGroupRows;
    ++rowCount_;
    if (!IsBlank(data)) {
        uint8_t* const lanes = lanes_.data() + place * layout_->LaneCount();
        layout_->FillLanes(data, lanes);
        group_[place] = lanes;
        hasInk_ = true;
    }
    if (place + 1 == kGroupRows) AddGroup();
}

void PlaneSums::AddGroup() {
    const auto firstRow = static_cast<uint16_t>((rowCount_ - 1) / kGroupRows * kGroupRows);
    const bool isBlank = std::all_of(group_.begin(), group_.end(), [&](const uint8_t* lanes) {
        return lanes == blankLanes_.data();
    });
    if (isBlank) return;
    AddToByteSums(layout_->Bits(), group_.data(), layout_->LaneCount(), firstRow, sums_);
    group_.fill(blankLanes_.data());
}

PlaneSums::CellSums PlaneSums::SumsOf(const RowLayout::Cell& cell) const {
    const int64_t pixelsPerByte = layout_->PixelsPerByte();
    const auto distanceOf = [&](std::size_t byte) {
        return static_cast<double>(static_cast<int64_t>(byte) * pixelsPerByte - cell.firstPixel);
    };
    CellSums sums;
    const auto addCut = [&](double sign, std::size_t byte, std::size_t lane) {
        sums.Add(sign, distanceOf(byte), sums_.ink[lane], sums_.inkByPixel[lane],
                 sums_.inkByRow[lane], sums_.inkByPixelRow[lane]);
    };
    addCut(-1, cell.byte, cell.cut);
    addCut(1, cell.endByte, cell.endCut);
    // Whole numbers of 64 bits hold what so many bytes can amount to.
    constexpr std::size_t kMostBytes = std::size_t{1} << 16;
    for (std::size_t first = cell.byte; first < cell.endByte; first += kMostBytes) {
        const std::size_t end = std::min(first + kMostBytes, cell.endByte);
        int64_t ink = 0;
        int64_t byPixel = 0;
        int64_t byRow = 0;
        int64_t byPixelRow = 0;
        int64_t distance = 0;
        for (std::size_t byte = first; byte < end; ++byte, distance += pixelsPerByte) {
            ink += sums_.ink[byte];
            byPixel += sums_.inkByPixel[byte] + distance * sums_.ink[byte];
            byRow += sums_.inkByRow[byte];
            byPixelRow += sums_.inkByPixelRow[byte] + distance * sums_.inkByRow[byte];
        }
        sums.Add(1, distanceOf(first), ink, byPixel, byRow, byPixelRow);
    }
    return sums;
}

/// With the first pixel's position (x, y) behind its cell, a pixel that is p pixels and r rows
/// further lies at x - p * scaleX, y - r * scaleY, for both axes are mirrored. These shares of its
/// ink go to the next column and the next row; as they are linear, so are those of the sums.
void PlaneSums::Spread(const RowLayout::Cell& cell, const CellSums& sums) {
    const int64_t row = int64_t{geometry_.sourceHeight} - 1 - firstRow_;
    const int32_t cellRow = geometry_.Row(row);
    const double y = geometry_.PositionY(row) - cellRow;
    const double right = cell.rest * sums.ink - geometry_.scaleX * sums.inkByPixel;
    const double rightByRow = cell.rest * sums.inkByRow - geometry_.scaleX * sums.inkByPixelRow;
    const double below = y * sums.ink - geometry_.scaleY * sums.inkByRow;
    const double both = y * right - geometry_.scaleY * rightByRow;
    double* const at = &cells_[CellIndex(cell.column, cellRow)];
    double* const under = &cells_[CellIndex(cell.column, cellRow + 1)];
    at[0] += sums.ink - right - below + both;
    at[1] += right - both;
    under[0] += below - both;
    under[1] += both;
}

void PlaneSums::Flush() {
    if (rowCount_ % kGroupRows != 0) AddGroup();
    rowCount_ = 0;
    if (!hasInk_) return;
    const double unit = layout_->Bits() == 1 ? 255 : 1;  // the sums count the bits of one-bit rows
    for (const RowLayout::Cell& cell : layout_->Cells()) {
        CellSums sums = SumsOf(cell);
        if (sums.ink == 0) continue;
        sums.ink *= unit;
        sums.inkByPixel *= unit;
        sums.inkByRow *= unit;
        sums.inkByPixelRow *= unit;
        Spread(cell, sums);
    }
    std::fill(sumLanes_.begin(), sumLanes_.end(), uint16_t{0});
    hasInk_ = false;
}
