#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "preview/Image_Writer.h"
#include "preview/LaneSums.h"
#include "preview/PreviewGeometry.h"

/// Builds a page's preview while its lines stream by: every pixel with ink is spread over the four
/// preview cells around it, and a cell shows the average of what it received. Nothing of the page
/// is kept but sums. Both axes are mirrored, and a byte's least significant pixel counts as its
/// first.
///
/// The lines of one preview row are summed up exactly, by preview column, and spread when the row
/// changes: within a line the vertical weight is the same, and a column's pixels spread as their
/// sum and the sum of their positions do.
class PreviewScaler {
  public:
    /// Cyan, magenta, yellow, black.
    static constexpr int kPlanes = 4;

    PreviewScaler();
    ~PreviewScaler();
    PreviewScaler(const PreviewScaler&) = delete;
    PreviewScaler& operator=(const PreviewScaler&) = delete;

    /// See FitIntoBox and FitBest. Sizes of 1 or more.
    void Init(int previewWidth, int previewHeight, int sourceWidth, int sourceHeight,
              int xResolution, int yResolution);
    void InitBestFit(int size, int sourceWidth, int sourceHeight, int xResolution, int yResolution);
    const PreviewGeometry& Geometry() const { return geometry_; }

    /// Adds a packed line of 1, 2, 4 or 8 bits a pixel; the same depth for all lines of a page.
    /// Lines and planes that the page does not have are dropped, and pixels beyond its width.
    void AddRow(int row, const unsigned char* data, int byteCount, int bitsPerPixel, int plane);
    /// Spreads one pixel, at a place that is mirrored already.
    void AddSample(int x, int y, int plane, unsigned char intensity);
    /// Converts the planes and saves them as a picture; a failed save is not the page's failure.
    void Render(const AString& path, Image_Writer* writer, int flipVertical);
    /// Frees the planes.
    void Release();

  private:
    /// What has been added to a plane and not yet spread: lines that follow each other and fall
    /// into one preview row.
    struct Pending {
        std::unique_ptr<LaneSums> sums;
        int32_t firstY = 0;  ///< of the first line; the others lie below it, one by one
        int32_t previewRow = -1;
    };

    void Start(const PreviewGeometry& geometry);
    void MapLanes(int bits);
    void Spread(int plane);
    void SpreadColumn(int plane, int32_t previewRow, int32_t column, double sum, double shifted,
                      double sumBelow, double shiftedBelow);
    std::vector<double>& Plane(int plane);

    PreviewGeometry geometry_;
    int32_t planeColumns_ = 0;
    int32_t planeRows_ = 0;
    int bits_ = 0;
    std::vector<Lane> lanes_;
    std::size_t pixelBytes_ = 0;                       ///< of a line
    std::array<std::vector<double>, kPlanes> planes_;  ///< rows of planeColumns_; empty: no ink
    std::array<Pending, kPlanes> pending_;
    std::vector<LaneSum> laneSums_;
};
