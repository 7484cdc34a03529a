#pragma once

#include <string>
#include <vector>

#include "boundary/ContainerMaker.h"
#include "host/ZEJob.h"

/// A row as it is delivered: "good", "damaged" when it fails, "wrong" when it is not as it was
/// made.
inline std::string RowState(AImage& image, const Page& page, uint32_t separation, uint32_t row) {
    const int depth = page.Separations[separation].Depth;
    const std::size_t rowBytes = RowBytes(page.Width, depth);
    std::string bytes(rowBytes, '\0');
    auto* const buffer = reinterpret_cast<uint8_t*>(bytes.data());
    if (image.ReadRow(separation, static_cast<int32_t>(row), 1, buffer, 0) == 0) return "damaged";
    std::string expected = page.Separations[separation].Rows.substr(row * rowBytes, rowBytes);
    // Bits behind the last pixel mean nothing.
    const std::size_t spareBits = rowBytes * 8 - std::size_t{page.Width} * unsigned(depth);
    bytes.back() = static_cast<char>(bytes.back() & (0xFF << spareBits));
    expected.back() = static_cast<char>(expected.back() & (0xFF << spareBits));
    return bytes == expected ? "good" : "wrong";
}

/// What became of a page: "none" without an image, else the worst of its rows, and "wrong" when
/// its separations are not those that were made.
inline std::string PageState(ZEJob& job, uint32_t number, const Page& page) {
    AImage* const image = job.GetImage(number);
    if (image == nullptr) return "none";
    AObList<AColorant> found;
    image->GetSeparations(found);
    if (found.size() != page.Separations.size()) return "wrong";
    std::string state = "good";
    for (uint32_t s = 0; s < found.size(); ++s) {
        const Separation& made = page.Separations[s];
        const std::string& display = made.DisplayName.empty() ? made.Name : made.DisplayName;
        if (found[s]->Depth != made.Depth || found[s]->InternalName != made.Name ||
            found[s]->DisplayName != display) {
            return "wrong";
        }
        for (uint32_t row = 0; row < page.Height; ++row) {
            const std::string read = RowState(*image, page, s, row);
            if (read != "good" && state != "wrong") state = read;
        }
    }
    return state;
}

/// The page count and what became of each page; `reason`, where given, receives why a page has no
/// image, "" for none.
inline std::string PageStates(const AFilePath& path, const std::vector<Page>& pages,
                              std::string* reason = nullptr) {
    ZEJob job(0);
    job.Load(path);
    job.OpenData(1);
    std::string states = std::to_string(job.PageCount) + ":";
    for (uint32_t i = 0; i < pages.size() && i < static_cast<uint32_t>(job.PageCount); ++i)
        states += ' ' + PageState(job, i, pages[i]);
    if (reason != nullptr) *reason = job.Failure().text;
    return states;
}

/// Writes every directory so.
inline AlterDirectory Encoded(int compression, int fillOrder = FILLORDER_MSB2LSB,
                              uint32_t rowsPerStrip = 4) {
    return [=](TIFF* tiff, std::size_t, std::size_t) {
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, compression);
        TIFFSetField(tiff, TIFFTAG_FILLORDER, fillOrder);
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, rowsPerStrip);
    };
}
