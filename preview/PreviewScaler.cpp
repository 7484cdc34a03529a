#include "preview/PreviewScaler.h"

#include <algorithm>

#include "preview/convertCMYKtoRGB.h"

namespace {

bool IsPlane(int plane) {
    return plane >= 0 && plane < PreviewScaler::kPlanes;
}

/// Sums over the lines of one preview row and the pixels of one preview column.
struct CellSum {
    double intensity = 0;
    double position = 0;  ///< of intensity times x
    double weightedIntensity = 0;
    double weightedPosition = 0;

    /// `baseX` is the x of the lane's first pixel; the others lie to its left.
    void Add(const LaneSum& lane, double baseX) {
        const auto sum = static_cast<double>(lane.intensity);
        const auto weighted = static_cast<double>(lane.weightedIntensity);
        intensity += sum;
        position += baseX * sum - static_cast<double>(lane.position);
        weightedIntensity += weighted;
        weightedPosition += baseX * weighted - static_cast<double>(lane.weightedPosition);
    }
};

}  // namespace

PreviewScaler::PreviewScaler() = default;

PreviewScaler::~PreviewScaler() = default;

void PreviewScaler::Init(int previewWidth, int previewHeight, int sourceWidth, int sourceHeight,
                         int xResolution, int yResolution) {
    Start(FitIntoBox(previewWidth, previewHeight, sourceWidth, sourceHeight, xResolution,
                     yResolution));
}

void PreviewScaler::InitBestFit(int size, int sourceWidth, int sourceHeight, int xResolution,
                                int yResolution) {
    Start(FitBest(size, sourceWidth, sourceHeight, xResolution, yResolution));
}

void PreviewScaler::Start(const PreviewGeometry& geometry) {
    Release();
    geometry_ = geometry;
    // The spread of the last cell reaches one beyond it.
    planeColumns_ = geometry.previewWidth + 1;
    planeRows_ = geometry.previewHeight + 1;
    bits_ = 0;
}

void PreviewScaler::MapLanes(int bits) {
    for (int plane = 0; plane < kPlanes; ++plane) {
        Spread(plane);
        pending_[static_cast<std::size_t>(plane)].sums.reset();
    }
    bits_ = bits;
    const auto width = static_cast<std::size_t>(geometry_.sourceWidth);
    std::vector<int32_t> columns(width);
    for (std::size_t pixel = 0; pixel < width; ++pixel) {
        const auto x = static_cast<double>(width - 1 - pixel);
        const auto column = static_cast<int32_t>(x * geometry_.scaleX + geometry_.offsetX);
        columns[pixel] = std::clamp(column, 0, planeColumns_ - 2);
    }
    lanes_ = CutIntoLanes(columns, bits);
    pixelBytes_ = (width * static_cast<std::size_t>(bits) + 7) / 8;
}

std::vector<double>& PreviewScaler::Plane(int plane) {
    std::vector<double>& cells = planes_[static_cast<std::size_t>(plane)];
    if (cells.empty())
        cells.resize(static_cast<std::size_t>(planeColumns_) *
                     static_cast<std::size_t>(planeRows_));
    return cells;
}

void PreviewScaler::AddRow(int row, const unsigned char* data, int byteCount, int bitsPerPixel,
                           int plane) {
    const int32_t y = geometry_.sourceHeight - 1 - row;
    if (!IsPlane(plane) || row < 0 || y < 0) return;
    if (bits_ != bitsPerPixel) MapLanes(bitsPerPixel);
    const auto previewRow = std::clamp(
        static_cast<int32_t>(y * geometry_.scaleY + geometry_.offsetY), 0, planeRows_ - 2);
    Pending& pending = pending_[static_cast<std::size_t>(plane)];
    if (pending.sums == nullptr)
        pending.sums = std::make_unique<LaneSums>(lanes_, pixelBytes_, bits_);
    const int32_t count = pending.sums->LineCount();
    if (count == LaneSums::kMostLines || previewRow != pending.previewRow ||
        y != pending.firstY - count)
        Spread(plane);
    if (pending.sums->LineCount() == 0) {
        pending.firstY = y;
        pending.previewRow = previewRow;
    }
    pending.sums->AddLine({data, static_cast<std::size_t>(std::max(byteCount, 0))});
}

void PreviewScaler::Spread(int plane) {
    Pending& pending = pending_[static_cast<std::size_t>(plane)];
    if (pending.sums == nullptr || pending.sums->LineCount() == 0) return;
    const double lineCount = pending.sums->LineCount();
    pending.sums->Take(laneSums_);
    std::vector<CellSum> cells(static_cast<std::size_t>(planeColumns_));
    const int pixelsPerByte = 8 / bits_;
    for (std::size_t i = 0; i < lanes_.size(); ++i) {
        const double firstX =
            geometry_.sourceWidth - 1.0 - double{1} * lanes_[i].byte * pixelsPerByte;
        cells[static_cast<std::size_t>(lanes_[i].column)].Add(laneSums_[i], firstX);
    }
    // The first line's distance below its preview row; each further line lies one step less.
    const double first = pending.firstY * geometry_.scaleY + geometry_.offsetY - pending.previewRow;
    for (int32_t column = 0; column + 1 < planeColumns_; ++column) {
        const CellSum& cell = cells[static_cast<std::size_t>(column)];
        if (cell.intensity == 0) continue;
        const double shift = geometry_.offsetX - column;
        const double shifted = geometry_.scaleX * cell.position + shift * cell.intensity;
        const double weightedShifted =
            geometry_.scaleX * cell.weightedPosition + shift * cell.weightedIntensity;
        const auto below = [&](double sum, double weighted) {
            return first * sum - geometry_.scaleY * (lineCount * sum - weighted);
        };
        SpreadColumn(plane, pending.previewRow, column, cell.intensity, shifted,
                     below(cell.intensity, cell.weightedIntensity),
                     below(shifted, weightedShifted));
    }
}

/// `shifted` is the part of `sum` that goes to the next column, the other two what goes to the
/// next row.
void PreviewScaler::SpreadColumn(int plane, int32_t previewRow, int32_t column, double sum,
                                 double shifted, double sumBelow, double shiftedBelow) {
    double* const cell =
        Plane(plane).data() + static_cast<std::ptrdiff_t>(previewRow) * planeColumns_ + column;
    double* const cellBelow = cell + planeColumns_;
    cell[0] += sum - shifted - sumBelow + shiftedBelow;
    cell[1] += shifted - shiftedBelow;
    cellBelow[0] += sumBelow - shiftedBelow;
    cellBelow[1] += shiftedBelow;
}

void PreviewScaler::AddSample(int x, int y, int plane, unsigned char intensity) {
    const bool isInside =
        x >= 0 && x < geometry_.sourceWidth && y >= 0 && y < geometry_.sourceHeight;
    if (!IsPlane(plane) || !isInside) return;
    const double column = x * geometry_.scaleX + geometry_.offsetX;
    const double row = y * geometry_.scaleY + geometry_.offsetY;
    const int32_t left = std::clamp(static_cast<int32_t>(column), 0, planeColumns_ - 2);
    const int32_t top = std::clamp(static_cast<int32_t>(row), 0, planeRows_ - 2);
    const double shifted = (column - left) * intensity;
    SpreadColumn(plane, top, left, intensity, shifted, (row - top) * intensity,
                 (row - top) * shifted);
}

void PreviewScaler::Render(const AString& path, Image_Writer* writer, int flipVertical) {
    for (int plane = 0; plane < kPlanes; ++plane)
        Spread(plane);
    writer->Create(path, geometry_.previewWidth, geometry_.previewHeight);
    convertCMYKtoRGB converter;
    // What a cell received is the sum over the source pixels that fall into it.
    const double pixelShare = geometry_.scaleX * geometry_.scaleY;
    for (int32_t x = 0; x < geometry_.previewWidth; ++x) {
        for (int32_t y = 0; y < geometry_.previewHeight; ++y) {
            const int32_t row = flipVertical == 0 ? y : geometry_.previewHeight - 1 - y;
            const std::size_t cell =
                static_cast<std::size_t>(row) * static_cast<std::size_t>(planeColumns_) +
                static_cast<std::size_t>(x);
            double inks[kPlanes] = {};
            for (std::size_t plane = 0; plane < kPlanes; ++plane)
                if (!planes_[plane].empty()) inks[plane] = planes_[plane][cell] * pixelShare;
            unsigned char rgb[3];
            converter.ConvertCMYK(inks[0], inks[1], inks[2], inks[3], rgb, rgb + 1, rgb + 2);
            writer->SetPixel(x, y, rgb[0], rgb[1], rgb[2]);
        }
    }
    writer->Save();
}

void PreviewScaler::Release() {
    for (std::vector<double>& plane : planes_)
        plane = {};
    for (Pending& pending : pending_)
        pending = {};
    lanes_ = {};
    bits_ = 0;
}
