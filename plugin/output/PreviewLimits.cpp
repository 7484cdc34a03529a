#include "plugin/output/PreviewLimits.h"

namespace {

bool IsPreviewSide(int32_t side) {
    return side >= 1 && side <= kLongestPreviewSide;
}

}  // namespace

bool HasPreviewSides(const ModelOutputSettings& model) {
    return IsPreviewSide(model.PreviewSizeV) &&
           (model.PreviewBestFit != 0 || IsPreviewSide(model.PreviewSizeH));
}

bool IsPreviewSize(int32_t width, int32_t height) {
    return int64_t{width} * height <= kMostPreviewPixels;
}
