#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// One page of a document as the rasteriser will show it.
struct PdfPage {
    double WidthPoints = 0;  ///< turned by the page's rotation, scaled by its user unit
    double HeightPoints = 0;
    std::vector<std::string> Spots;   ///< names of its inks beside the process inks
    int64_t SpoolBytes = 0;           ///< that the rasteriser lays aside to draw it
    std::vector<std::string> Faults;  ///< what of its content is not drawn
};

/// What the rasteriser's page report says of a document. Throws HostError, naming the cause, for
/// a document without pages, one that asks for a password, a page without a size and a report
/// that lacks a page.
std::vector<PdfPage> ParsePageReport(std::string_view report);

/// Pixels of a length at a resolution, as the rasteriser rounds them.
int64_t PixelsOf(double points, double dotsPerInch);
