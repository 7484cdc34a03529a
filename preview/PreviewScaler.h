#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "preview/Image_Writer.h"
#include "preview/PlaneSums.h"
#include "preview/PreviewGeometry.h"
#include "preview/RowLayout.h"

/// Builds a page's preview while its lines stream by: every pixel with ink is spread over the four
/// preview cells around it, and a cell shows the average of what it received. Nothing of the page
/// is kept but sums. Both axes are mirrored, and a byte's least significant pixel counts as its
/// first.
class PreviewScaler {
  public:
    /// Cyan, magenta, yellow, black.
    static constexpr int kPlanes = 4;

    PreviewScaler() = default;
    PreviewScaler(const PreviewScaler&) = delete;
    PreviewScaler& operator=(const PreviewScaler&) = delete;

    /// See FitIntoBox and FitBest. Sizes of 1 or more.
    void Init(int previewWidth, int previewHeight, int sourceWidth, int sourceHeight,
              int xResolution, int yResolution);
    void InitBestFit(int size, int sourceWidth, int sourceHeight, int xResolution, int yResolution);
    const PreviewGeometry& Geometry() const { return geometry_; }

    /// Adds a packed line of 1, 2, 4 or 8 bits a pixel. Lines and planes that the page does not
    /// have are dropped, and pixels beyond its width.
    void AddRow(int row, const unsigned char* data, int byteCount, int bitsPerPixel, int plane);
    /// Converts the planes and saves them as a picture; a failed save is not the page's failure.
    void Render(const AString& path, Image_Writer* writer, int flipVertical);
    /// Frees the planes.
    void Release();

  private:
    void UseDepth(int bits);

    PreviewGeometry geometry_;
    std::unique_ptr<RowLayout> layout_;  ///< of lines of the depth that came last
    std::array<std::unique_ptr<PlaneSums>, kPlanes> planes_;  ///< of what has had a line
};
