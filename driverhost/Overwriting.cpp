#include "driverhost/Overwriting.h"

#include <fmt/format.h>

#include <system_error>

#include "driverhost/HostError.h"

namespace fs = std::filesystem;

void RefuseToReplaceOther(const fs::path& path, bool (*isOfKind)(const fs::path&), const char* kind,
                          bool force) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (fs::is_directory(status))
        throw HostError(kUsage, fmt::format("{} is a folder", path.string()));
    // A device takes what it is given.
    if (force || !fs::is_regular_file(status)) return;
    if (fs::file_size(path, error) == 0 || isOfKind(path)) return;
    throw HostError(kFailed, fmt::format("{} is not {} and would be replaced; --force allows it",
                                         path.string(), kind));
}
