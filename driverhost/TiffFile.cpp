#include "driverhost/TiffFile.h"

TiffFile OpenTiff(const std::filesystem::path& path, const char* mode) {
    TIFFSetErrorHandler(nullptr);
    TIFFSetWarningHandler(nullptr);
    return TiffFile(TIFFOpen(path.string().c_str(), mode));
}
