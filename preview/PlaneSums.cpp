#include "preview/PlaneSums.h"

#include <algorithm>
#include <cstring>

namespace {

/// Rows whose sums fit into 32 bits: a byte's most, 1530 at two bits a pixel, times the numbers of
/// all rows.
constexpr int32_t kMostRows = 2048;

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
    int64_t ink = 0;
    int64_t inkByPixel = 0;
    int64_t inkByRow = 0;
    int64_t inkByPixelRow = 0;
};

/// Where the rows of the sums lie in the preview.
struct PlaneSums::RowPlace {
    double rest = 0;     ///< of the first row's position, behind its row of cells
    double unit = 1;     ///< intensity that the sums count as 1
    double* cells;       ///< of the row
    double* cellsBelow;  ///< of the next
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
    shortSums_.assign(4 * count, 0);
    uint16_t* const parts = shortSums_.data();
    shortParts_ = {parts, parts + count, parts + 2 * count, parts + 3 * count};
    sums_.assign(4 * count, 0);
    group_.fill(blankLanes_.data());
}

void PlaneSums::AddRow(int32_t row, std::span<const uint8_t> data) {
    const int32_t cellRow = geometry_.Row(int64_t{geometry_.sourceHeight} - 1 - row);
    const bool continues = rowCount_ != 0 && row - firstRow_ == rowCount_ && cellRow == cellRow_ &&
                           rowCount_ < kMostRows;
    if (!continues) {
        Flush();
        firstRow_ = row;
        cellRow_ = cellRow;
    }
    const std::size_t place = static_cast<std::size_t>(rowCount_) % kGroupRows;
    ++rowCount_;
    if (!IsBlank(data)) {
        uint8_t* const lanes = lanes_.data() + place * layout_->LaneCount();
        layout_->FillLanes(data, lanes);
        group_[place] = lanes;
        hasInk_ = true;
    }
    if (place + 1 == kGroupRows) AddGroup();
    if (rowCount_ - carriedRows_ == MostByteSumRows(layout_->Bits())) CarryOver();
}

void PlaneSums::AddGroup() {
    const bool isBlank = std::all_of(group_.begin(), group_.end(), [&](const uint8_t* lanes) {
        return lanes == blankLanes_.data();
    });
    if (isBlank) return;
    constexpr auto kRows = static_cast<int32_t>(kGroupRows);
    const int32_t firstRow = (rowCount_ - 1) / kRows * kRows - carriedRows_;
    AddToByteSums(layout_->Bits(), group_.data(), layout_->LaneCount(),
                  static_cast<uint16_t>(firstRow), shortParts_);
    group_.fill(blankLanes_.data());
}

/// Moves the short sums into the long ones. Rows before the first ink are forgotten.
void PlaneSums::CarryOver() {
    if (!hasInk_) {
        firstRow_ += rowCount_;
        rowCount_ = 0;
        return;
    }
    const auto row = static_cast<uint32_t>(carriedRows_);
    carriedRows_ = rowCount_;
    if (row == 0) {
        std::copy(shortSums_.begin(), shortSums_.end(), sums_.begin());
    } else {
        const std::size_t half = sums_.size() / 2;  // behind it, the sums by row
        for (std::size_t i = 0; i < half; ++i) {
            sums_[i] += shortSums_[i];
            sums_[half + i] += shortSums_[half + i] + row * shortSums_[i];
        }
    }
    std::fill(shortSums_.begin(), shortSums_.end(), uint16_t{0});
}

PlaneSums::CellSums PlaneSums::SumsOf(const RowLayout::Cell& cell) const {
    const std::size_t count = layout_->LaneCount();
    const uint32_t* const lanes = sums_.data();
    CellSums sums;
    const auto add = [&](std::size_t lane, int64_t distance, int64_t sign) {
        const int64_t ink = sign * lanes[lane];
        const int64_t inkByRow = sign * lanes[2 * count + lane];
        sums.ink += ink;
        sums.inkByPixel += sign * lanes[count + lane] + distance * ink;
        sums.inkByRow += inkByRow;
        sums.inkByPixelRow += sign * lanes[3 * count + lane] + distance * inkByRow;
    };
    const int64_t pixelsPerByte = layout_->PixelsPerByte();
    int64_t distance = cell.distance;
    for (std::size_t byte = cell.byte; byte < cell.endByte; ++byte, distance += pixelsPerByte)
        add(byte, distance, 1);
    add(cell.cut, cell.distance, -1);
    add(cell.endCut, cell.endDistance, 1);
    return sums;
}

/// With the first pixel's position (x, y) behind its cell, a pixel that is p pixels and r rows
/// further lies at x - p * scaleX, y - r * scaleY, for both axes are mirrored. These shares of its
/// ink go to the next column and the next row; as they are linear, so are those of the sums.
void PlaneSums::Spread(const RowLayout::Cell& cell, const CellSums& sums, const RowPlace& place) {
    const double ink = place.unit * static_cast<double>(sums.ink);
    const double inkByRow = place.unit * static_cast<double>(sums.inkByRow);
    const double xByPixel = place.unit * geometry_.scaleX;
    const double right = cell.rest * ink - xByPixel * static_cast<double>(sums.inkByPixel);
    const double rightByRow =
        cell.rest * inkByRow - xByPixel * static_cast<double>(sums.inkByPixelRow);
    const double below = place.rest * ink - geometry_.scaleY * inkByRow;
    const double both = place.rest * right - geometry_.scaleY * rightByRow;
    place.cells[cell.column] += ink - right - below + both;
    place.cells[cell.column + 1] += right - both;
    place.cellsBelow[cell.column] += below - both;
    place.cellsBelow[cell.column + 1] += both;
}

void PlaneSums::Flush() {
    AddGroup();
    if (carriedRows_ != rowCount_) CarryOver();
    rowCount_ = 0;
    carriedRows_ = 0;
    if (!hasInk_) return;
    const int64_t row = int64_t{geometry_.sourceHeight} - 1 - firstRow_;
    const RowPlace place = {.rest = geometry_.PositionY(row) - cellRow_,
                            .unit = layout_->Bits() == 1 ? 255.0 : 1.0,
                            .cells = &cells_[CellIndex(0, cellRow_)],
                            .cellsBelow = &cells_[CellIndex(0, cellRow_ + 1)]};
    for (const RowLayout::Cell& cell : layout_->Cells()) {
        const CellSums sums = SumsOf(cell);
        if (sums.ink != 0) Spread(cell, sums, place);
    }
    hasInk_ = false;
}
