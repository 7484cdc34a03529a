#include "driverhost/Artwork.h"

#include "driverhost/pictures/PicturePdf.h"

Artwork::Artwork(const std::filesystem::path& path, Rasterizer& rasterizer, double pictureDpi)
    : path_(path), kind_(KindOfDocument(path)), rasterizer_(rasterizer) {
    switch (kind_) {
        case DocumentKind::kPdf:
            rasterizer.TakePdf(path);
            pages_ = rasterizer.ReadPages();
            break;
        case DocumentKind::kPostScript:
            rasterizer.ConvertPostScript(path);
            pages_ = rasterizer.ReadPages();
            break;
        default:
            pages_ = PicturePages(path, kind_, rasterizer.Document().parent_path(), pictureDpi);
            break;
    }
}

void Artwork::Prepare() {
    if (kind_ == DocumentKind::kPdf || kind_ == DocumentKind::kPostScript) return;
    WritePicturePdf(path_, kind_, pages_, rasterizer_.Document());
}
