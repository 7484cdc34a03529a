#include "driverhost/FreeSpace.h"

#include <fmt/format.h>

#include <system_error>

namespace fs = std::filesystem;

std::optional<int64_t> FreeBytes(const fs::path& path) {
    std::error_code error;
    const fs::space_info space = fs::space(path, error);
    if (error || space.available == static_cast<std::uintmax_t>(-1)) return std::nullopt;
    return static_cast<int64_t>(space.available);
}

bool IsDiskFull(const fs::path& path) {
    constexpr int64_t kFewBlocks = 64 << 10;
    const std::optional<int64_t> free = FreeBytes(path);
    return free && *free < kFewBlocks;
}

std::string WriteFailure(const fs::path& path) {
    return fmt::format("cannot write {}{}", path.string(),
                       IsDiskFull(path.parent_path()) ? ": the disk is full" : "");
}

std::string SizeText(int64_t bytes) {
    constexpr const char* kUnits[] = {"kB", "MB", "GB", "TB"};
    constexpr double kStep = 1000;
    double size = static_cast<double>(bytes) / kStep;
    std::size_t unit = 0;
    for (; size >= kStep && unit + 1 < std::size(kUnits); ++unit)
        size /= kStep;
    return fmt::format("{:.1f} {}", size, kUnits[unit]);
}
