#include "driverhost/PageCheck.h"

#include <system_error>

#include "driverhost/ChannelFile.h"
#include "driverhost/TiffFile.h"

namespace fs = std::filesystem;

namespace {

bool IsCompleteTiff(const fs::path& path, const ContainerPage& page) {
    const TiffFile tiff = OpenTiff(path, "rm");
    if (!tiff) return false;
    uint32_t width = 0;
    uint32_t rows = 0;
    uint16_t bits = 1;
    TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &rows);
    TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_BITSPERSAMPLE, &bits);
    if (rows != page.Rows || bits != page.Bits || width != (page.WidthPixels + 31) / 32 * 32 ||
        TIFFIsTiled(tiff.get()) != 0)
        return false;
    std::vector<uint8_t> line(static_cast<std::size_t>(TIFFScanlineSize64(tiff.get())));
    return TIFFReadScanline(tiff.get(), line.data(), rows - 1) == 1;
}

bool IsComplete(const fs::path& path, std::uintmax_t bytes, const PlannedPage& page) {
    if (IsTiffName(path)) return IsCompleteTiff(path, page.Shape);
    return bytes == static_cast<std::uintmax_t>(page.Shape.Rows) *
                        static_cast<std::uintmax_t>(page.LineBytes());
}

}  // namespace

PageFaults CheckPage(const fs::path& folder, const std::string& jobFolder,
                     const PlannedPage& page) {
    PageFaults faults;
    for (const std::string& channel : page.Channels) {
        const fs::path place = fs::path(jobFolder) / channel;
        std::error_code error;
        const std::uintmax_t bytes = fs::file_size(folder / place, error);
        if (error)
            faults.MissingFiles.push_back(place.string());
        else if (!IsComplete(folder / place, bytes, page))
            faults.ShortFiles.push_back(place.string());
    }
    for (const SideFile& side : page.Sides)
        if (std::string fault = FaultOf(folder, jobFolder, side); !fault.empty())
            faults.SideFaults.push_back(std::move(fault));
    return faults;
}
