#include "preview/PreviewScaler.h"

#include "preview/ByteSums.h"
#include "preview/convertCMYKtoRGB.h"

void PreviewScaler::Init(int previewWidth, int previewHeight, int sourceWidth, int sourceHeight,
                         int xResolution, int yResolution) {
    Release();
    geometry_ = FitIntoBox(previewWidth, previewHeight, sourceWidth, sourceHeight, xResolution,
                           yResolution);
}

void PreviewScaler::InitBestFit(int size, int sourceWidth, int sourceHeight, int xResolution,
                                int yResolution) {
    Release();
    geometry_ = FitBest(size, sourceWidth, sourceHeight, xResolution, yResolution);
}

void PreviewScaler::AddRow(int row, const unsigned char* data, int byteCount, int bitsPerPixel,
                           int plane) {
    if (row < 0 || row >= geometry_.sourceHeight || plane < 0 || plane >= kPlanes) return;
    if (byteCount < 1 || MostByteSumRows(bitsPerPixel) == 0) return;
    UseDepth(bitsPerPixel);
    std::unique_ptr<PlaneSums>& sums = planes_[static_cast<std::size_t>(plane)];
    if (sums == nullptr) sums = std::make_unique<PlaneSums>(geometry_, *layout_);
    sums->AddRow(row, {data, static_cast<std::size_t>(byteCount)});
}

void PreviewScaler::UseDepth(int bits) {
    if (layout_ != nullptr && layout_->Bits() == bits) return;
    auto layout = std::make_unique<RowLayout>(geometry_, bits);
    for (const std::unique_ptr<PlaneSums>& plane : planes_)
        if (plane != nullptr) plane->ChangeLayout(*layout);
    layout_ = std::move(layout);
}

void PreviewScaler::Render(const AString& path, Image_Writer* writer, int flipVertical) {
    for (const std::unique_ptr<PlaneSums>& plane : planes_)
        if (plane != nullptr) plane->Flush();
    writer->Create(path, geometry_.previewWidth, geometry_.previewHeight);
    convertCMYKtoRGB converter;
    // What a cell received is the sum over the source pixels that fall into it.
    const double pixelShare = geometry_.scaleX * geometry_.scaleY;
    for (int32_t y = 0; y < geometry_.previewHeight; ++y) {
        const int32_t row = flipVertical == 0 ? y : geometry_.previewHeight - 1 - y;
        for (int32_t x = 0; x < geometry_.previewWidth; ++x) {
            double inks[kPlanes] = {};
            for (std::size_t plane = 0; plane < kPlanes; ++plane)
                if (planes_[plane] != nullptr)
                    inks[plane] = planes_[plane]->At(x, row) * pixelShare;
            unsigned char rgb[3];
            converter.ConvertCMYK(inks[0], inks[1], inks[2], inks[3], rgb, rgb + 1, rgb + 2);
            writer->SetPixel(x, y, rgb[0], rgb[1], rgb[2]);
        }
    }
    writer->Save();
}

void PreviewScaler::Release() {
    for (std::unique_ptr<PlaneSums>& plane : planes_)
        plane.reset();
    layout_.reset();
}
