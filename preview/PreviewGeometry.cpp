#include "preview/PreviewGeometry.h"

#include <algorithm>

int32_t PreviewGeometry::Column(int64_t x) const {
    return std::clamp(static_cast<int32_t>(PositionX(x)), 0, previewWidth - 1);
}

int32_t PreviewGeometry::Row(int64_t y) const {
    return std::clamp(static_cast<int32_t>(PositionY(y)), 0, previewHeight - 1);
}

PreviewGeometry FitIntoBox(int32_t previewWidth, int32_t previewHeight, int32_t sourceWidth,
                           int32_t sourceHeight, int32_t xResolution, int32_t yResolution) {
    PreviewGeometry fit = {.sourceWidth = sourceWidth,
                           .sourceHeight = sourceHeight,
                           .previewWidth = previewWidth,
                           .previewHeight = previewHeight};
    const bool known = xResolution != 0 && yResolution != 0;
    const double xDots = known ? xResolution : 1;
    const double yDots = known ? yResolution : 1;
    const double boxWidth = previewWidth;
    const double boxHeight = previewHeight;
    if (sourceWidth < previewWidth && sourceHeight < previewHeight) {
        fit.offsetX = (boxWidth - sourceWidth) * 0.5;
        fit.offsetY = (boxHeight - sourceHeight) * 0.5;
        return fit;
    }
    const double aspect =
        (double{1} * sourceWidth / sourceHeight) * (yDots / xDots) / (boxWidth / boxHeight);
    if (aspect > 1) {
        fit.scaleX = boxWidth / sourceWidth;
        fit.scaleY = fit.scaleX * xDots / yDots;
        fit.offsetY = (boxHeight - fit.scaleY * sourceHeight) * 0.5;
    } else {
        fit.scaleY = boxHeight / sourceHeight;
        fit.scaleX = fit.scaleY * yDots / xDots;
        fit.offsetX = (boxWidth - fit.scaleX * sourceWidth) * 0.5;
    }
    return fit;
}

PreviewGeometry FitBest(int32_t size, int32_t sourceWidth, int32_t sourceHeight,
                        int32_t xResolution, int32_t yResolution) {
    const bool known = xResolution != 0 && yResolution != 0;
    const double ratio = known ? double{1} * yResolution / xResolution : 1;
    const double width = sourceWidth * ratio;
    int32_t previewWidth = size;
    int32_t previewHeight = size;
    if (sourceHeight > width)
        previewWidth = static_cast<int32_t>(width / sourceHeight * size);
    else
        previewHeight = static_cast<int32_t>(sourceHeight / width * size);
    // A page so long that its other side vanishes still has one.
    return FitIntoBox(std::max(previewWidth, 1), std::max(previewHeight, 1), sourceWidth,
                      sourceHeight, xResolution, yResolution);
}
