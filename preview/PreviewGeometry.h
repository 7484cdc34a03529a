#pragma once

#include <cstdint>

/// Where a page lies in its preview. Source pixel x stands at preview column x * scaleX + offsetX,
/// rows likewise.
struct PreviewGeometry {
    int32_t sourceWidth = 0;
    int32_t sourceHeight = 0;
    int32_t previewWidth = 0;
    int32_t previewHeight = 0;
    double scaleX = 1;
    double scaleY = 1;
    double offsetX = 0;
    double offsetY = 0;

    double PositionX(int64_t x) const { return static_cast<double>(x) * scaleX + offsetX; }
    double PositionY(int64_t y) const { return static_cast<double>(y) * scaleY + offsetY; }
    /// The preview column or row that a source pixel falls into; what its position has beyond that
    /// goes to the next one. Rounding does not lead beyond the last.
    int32_t Column(int64_t x) const;
    int32_t Row(int64_t y) const;
};

/// A page in a box of the given size: reduced to fit, in its physical shape, and centred; a page
/// smaller than the box is not enlarged. Sizes of 1 or more.
PreviewGeometry FitIntoBox(int32_t previewWidth, int32_t previewHeight, int32_t sourceWidth,
                           int32_t sourceHeight, int32_t xResolution, int32_t yResolution);

/// A page in a box of its own shape whose longer side is `size`.
PreviewGeometry FitBest(int32_t size, int32_t sourceWidth, int32_t sourceHeight,
                        int32_t xResolution, int32_t yResolution);
