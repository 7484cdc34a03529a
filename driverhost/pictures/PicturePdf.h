#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include "driverhost/PdfPages.h"
#include "driverhost/pictures/PictureReader.h"

/// How large pictures print that do not say it.
inline constexpr double kDefaultPictureDpi = 300;

/// What a file of pictures becomes.
struct PictureDocument {
    std::vector<PdfPage> Pages;  ///< one a picture
    int64_t MostBytes = 0;       ///< on disk while and after it is written
};

/// Reads the pictures' physical size: by `dpi`, where that is above 0, else by the picture's own
/// resolution, else at kDefaultPictureDpi.
PictureDocument ReadPictures(const std::filesystem::path& path, DocumentKind kind,
                             const std::filesystem::path& workFolder, double dpi);

/// Decodes the pictures row by row into a PDF of these pages, each filled with its picture, upright
/// and with its colour profile. Throws HostError for a damaged picture and a full disk.
void WritePicturePdf(const std::filesystem::path& path, DocumentKind kind,
                     const std::vector<PdfPage>& pages, const std::filesystem::path& pdf);
