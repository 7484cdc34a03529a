#include "driverhost/pictures/PictureReader.h"

#include <fmt/format.h>

#include "driverhost/HostError.h"
#include "driverhost/pictures/PictureFormats.h"

std::unique_ptr<PictureReader> OpenPicture(const std::filesystem::path& path, DocumentKind kind,
                                           const std::filesystem::path& workFolder) {
    switch (kind) {
        case DocumentKind::kTiff:
            return OpenTiffPicture(path);
        case DocumentKind::kPng:
            return OpenPngPicture(path, workFolder);
        default:
            return OpenJpegPicture(path);
    }
}

void CheckPictureSize(const std::filesystem::path& path, int64_t width, int64_t rows) {
    if (width >= 1 && rows >= 1 && width <= kMostPictureSide && rows <= kMostPictureSide &&
        width * rows <= kMostPicturePixels)
        return;
    throw HostError(kFailed,
                    fmt::format("{} has {} x {} pixels; a picture has 1 to {} a side and at most "
                                "{} in all",
                                path.string(), width, rows, kMostPictureSide, kMostPicturePixels));
}
