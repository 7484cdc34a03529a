#include "driverhost/Artwork.h"

#include <fmt/format.h>

#include "driverhost/PdfContent.h"
#include "driverhost/pictures/PicturePdf.h"

Artwork::Artwork(const std::filesystem::path& path, Rasterizer& rasterizer, double pictureDpi)
    : path_(path), kind_(KindOfDocument(path)), rasterizer_(rasterizer) {
    switch (kind_) {
        case DocumentKind::kPdf:
            rasterizer.TakePdf(path);
            ReadPages();
            break;
        case DocumentKind::kPostScript:
            rasterizer.ConvertPostScript(path);
            documentBytes_ =
                static_cast<int64_t>(std::filesystem::file_size(rasterizer.Document()));
            ReadPages();
            break;
        default: {
            PictureDocument pictures =
                ReadPictures(path, kind_, rasterizer.Document().parent_path(), pictureDpi);
            pages_ = std::move(pictures.Pages);
            documentBytes_ = pictures.MostBytes;
            break;
        }
    }
}

void Artwork::ReadPages() {
    pages_ = rasterizer_.ReadPages();
    const std::vector<PageContent> contents = ReadPageContents(rasterizer_.Document());
    for (std::size_t i = 0; i < std::min(pages_.size(), contents.size()); ++i) {
        pages_[i].SpoolBytes = contents[i].SpoolBytes;
        for (const std::string& word : contents[i].UnknownOperators)
            pages_[i].Faults.push_back(fmt::format(
                "\"{}\" is no operator of a page; what it stands for is not drawn", word));
    }
}

void Artwork::Prepare() {
    if (kind_ == DocumentKind::kPdf || kind_ == DocumentKind::kPostScript) return;
    WritePicturePdf(path_, kind_, pages_, rasterizer_.Document());
}
