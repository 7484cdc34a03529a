#include "driverhost/Container.h"

#include <fmt/format.h>

#include <algorithm>

#include "driverhost/FreeSpace.h"
#include "driverhost/Halftone.h"
#include "driverhost/HostError.h"
#include "driverhost/JobFile.h"

namespace fs = std::filesystem;

namespace {

/// Rows are written in strips of about this size: few directory entries, little memory.
constexpr int64_t kStripBytes = 256 << 10;

/// Below this a container keeps the classic form that every imaging tool reads. The rest of 4 GiB
/// is left to directories and to rows that packing makes longer (one byte in 128).
constexpr int64_t kMostClassicBytes = 4'000'000'000;

}  // namespace

ContainerWriter::ContainerWriter(const fs::path& path, int64_t expectedBytes)
    : path_(path), tiff_(OpenTiff(path, expectedBytes > kMostClassicBytes ? "w8" : "w")) {
    if (!tiff_) Fail();
}

void ContainerWriter::Fail() const {
    throw HostError(kFailed, WriteFailure(path_));
}

void ContainerWriter::BeginSeparation(const SeparationHeader& header) {
    TIFF* const tiff = tiff_.get();
    const int64_t rowBytes = PackedRowBytes(header.WidthPixels, header.Bits);
    const int64_t stripRows = std::clamp<int64_t>(kStripBytes / rowBytes, 1, header.Rows);
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<uint32_t>(header.WidthPixels));
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<uint32_t>(header.Rows));
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, header.Bits);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_PACKBITS);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, static_cast<uint32_t>(stripRows));
    TIFFSetField(tiff, TIFFTAG_XRESOLUTION, header.XResolution);
    TIFFSetField(tiff, TIFFTAG_YRESOLUTION, header.YResolution);
    TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    TIFFSetField(tiff, TIFFTAG_SUBFILETYPE, FILETYPE_PAGE);
    TIFFSetField(tiff, TIFFTAG_PAGENUMBER, header.Page, header.PageCount);
    TIFFSetField(tiff, TIFFTAG_PAGENAME, header.InternalName.c_str());
    TIFFSetField(tiff, TIFFTAG_IMAGEDESCRIPTION, header.DisplayName.c_str());
    row_ = 0;
}

void ContainerWriter::WriteRow(std::span<uint8_t> packed) {
    if (TIFFWriteScanline(tiff_.get(), packed.data(), row_++) != 1) Fail();
}

void ContainerWriter::EndSeparation() {
    if (TIFFWriteDirectory(tiff_.get()) != 1) Fail();
}

void ContainerWriter::Close() {
    // The last directory is written; a file without a further one has nothing left to flush.
    tiff_.reset();
    std::error_code error;
    if (fs::file_size(path_, error) == 0 || error) Fail();
}

std::vector<ContainerPage> ReadContainerPages(const fs::path& path) {
    const TiffFile tiff = OpenTiff(path, "rm");
    if (!tiff) throw HostError(kFailed, fmt::format("{} is no job container", path.string()));
    std::vector<ContainerPage> pages;
    int32_t next = 0;
    do {
        uint16_t number = 0;
        uint16_t count = 1;
        uint32_t width = 0;
        uint32_t rows = 0;
        uint16_t bits = 1;
        TIFFGetField(tiff.get(), TIFFTAG_PAGENUMBER, &number, &count);
        TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &width);
        TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &rows);
        TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_BITSPERSAMPLE, &bits);
        if (next++ == 0) pages.resize(std::max<uint16_t>(count, 1));
        if (number >= pages.size()) pages.resize(number + std::size_t{1});
        ContainerPage& page = pages[number];
        float x = 0;
        float y = 0;
        TIFFGetField(tiff.get(), TIFFTAG_XRESOLUTION, &x);
        TIFFGetField(tiff.get(), TIFFTAG_YRESOLUTION, &y);
        page.WidthPixels = width;
        page.Rows = rows;
        page.Bits = std::max<int32_t>(page.Bits, bits);
        page.XResolution = double{x};
        page.YResolution = double{y};
        const char* name = nullptr;
        TIFFGetField(tiff.get(), TIFFTAG_PAGENAME, &name);
        page.Separations.emplace_back(name == nullptr ? "" : name);
    } while (TIFFReadDirectory(tiff.get()) == 1);
    return pages;
}

std::vector<ContainerPage> ReadJobPages(const fs::path& job) {
    std::error_code error;
    fs::path container = ContainerOf(job);
    if (!fs::exists(container, error)) {
        container = job;
        container += ".tif";
    }
    if (!fs::exists(container, error))
        throw HostError(kFailed,
                        fmt::format("the job's pages, {}, are missing", ContainerOf(job).string()));
    return ReadContainerPages(container);
}

bool IsContainer(const fs::path& path) {
    const TiffFile tiff = OpenTiff(path, "rm");
    const char* name = nullptr;
    uint16_t number = 0;
    uint16_t count = 0;
    return tiff && (TIFFGetField(tiff.get(), TIFFTAG_PAGENAME, &name) == 1 ||
                    TIFFGetField(tiff.get(), TIFFTAG_PAGENUMBER, &number, &count) == 1);
}
