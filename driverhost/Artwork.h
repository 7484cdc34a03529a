#pragma once

#include <filesystem>
#include <vector>

#include "driverhost/DocumentKind.h"
#include "driverhost/PdfPages.h"
#include "driverhost/Rasterizer.h"

/// What a job is made from, on its way to the rasteriser's document.
class Artwork {
  public:
    /// Reads the pages' sizes and spot inks. A PostScript document is run for that, once.
    /// `pictureDpi` replaces the resolution that pictures have; 0 keeps it. Borrows the
    /// rasteriser. Throws HostError for what cannot be read.
    Artwork(const std::filesystem::path& path, Rasterizer& rasterizer, double pictureDpi);

    const std::vector<PdfPage>& Pages() const { return pages_; }
    /// Bytes that the rasteriser's document takes at most, temporary files included, where it is
    /// not the artwork itself.
    int64_t MostDocumentBytes() const { return documentBytes_; }
    /// Does what costs time, once the sizes are known to be right: decodes pictures.
    void Prepare();

  private:
    void ReadPages();

    std::filesystem::path path_;
    DocumentKind kind_;
    Rasterizer& rasterizer_;
    std::vector<PdfPage> pages_;
    int64_t documentBytes_ = 0;
};
