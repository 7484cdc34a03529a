#include "driverhost/NoFileReason.h"

#include <filesystem>

namespace fs = std::filesystem;

std::string NoFileReason(const AFilePath& path) {
    if (!path.isValid()) return "names a file outside its folder";
    std::error_code error;
    const fs::file_status status = fs::status(path.fullPath(), error);
    if (!fs::exists(status)) return "does not exist";
    if (fs::is_directory(status)) return "is a folder";
    return fs::is_regular_file(status) ? "" : "is no file";
}
