#pragma once

#include <filesystem>
#include <memory>

#include "driverhost/pictures/PictureReader.h"

// One reader a format; OpenPicture chooses between them. Each throws HostError, naming the file.

/// Grey, palette, RGB, CMYK and Lab of 1 to 16 bits in strips or tiles, samples together or apart,
/// with or without alpha, in any compression that libtiff decodes.
std::unique_ptr<PictureReader> OpenTiffPicture(const std::filesystem::path& path);

/// Every PNG. The passes of an interlaced one come together in a file in `workFolder`.
std::unique_ptr<PictureReader> OpenPngPicture(const std::filesystem::path& path,
                                              const std::filesystem::path& workFolder);

/// Grey, RGB and CMYK, baseline or progressive.
std::unique_ptr<PictureReader> OpenJpegPicture(const std::filesystem::path& path);
