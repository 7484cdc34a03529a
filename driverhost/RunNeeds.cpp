#include "driverhost/RunNeeds.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <system_error>

#include "driverhost/HostError.h"
#include "host/AFilePath.h"
#include "platform/Program.h"
#include "platform/Volume.h"
#include "plugin/output/DiskSpace.h"

namespace fs = std::filesystem;

namespace {

fs::path TempFolder() {
    return AFilePath().Append("Temp").fullPath();
}

uint64_t Sum(uint64_t left, uint64_t right) {
    constexpr uint64_t kMost = std::numeric_limits<uint64_t>::max();
    return left > kMost - right ? kMost : left + right;
}

int32_t Clamped(int64_t value) {
    return static_cast<int32_t>(std::clamp<int64_t>(value, 0, std::numeric_limits<int32_t>::max()));
}

/// So many planes of a page, with some room for what lies beside them.
uint64_t PlanesBytes(const PlannedPage& page, std::size_t planes) {
    return RequiredPageBytes(Clamped(page.Shape.Rows), Clamped(static_cast<int64_t>(planes)),
                             Clamped(page.LineBytes()));
}

uint64_t PreviewBytes(const PlannedPage& page) {
    constexpr uint64_t kPixelBytes = 3;
    uint64_t bytes = 0;
    for (const SideFile& side : page.Sides)
        bytes +=
            kPixelBytes * static_cast<uint64_t>(side.Width) * static_cast<uint64_t>(side.Height);
    return bytes;
}

uint64_t OutputBytes(const PrintPlan& plan) {
    uint64_t all = 0;
    for (const PlannedPage& page : plan.Pages) {
        const uint64_t bytes = Sum(PlanesBytes(page, page.Channels.size()), PreviewBytes(page));
        // Pages in one folder take each other's place.
        all = page.Folder.empty() ? std::max(all, bytes) : Sum(all, bytes);
    }
    return all;
}

/// Of the page that takes most: what is gathered lies there while its channels are written.
uint64_t TemporaryBytes(const PrintPlan& plan) {
    uint64_t most = 0;
    for (const PlannedPage& page : plan.Pages) {
        std::size_t planes = plan.GathersWhite ? 1 : 0;
        if (plan.BottomLineFirst) planes += plan.LineInterleaved ? page.Channels.size() : 1;
        if (planes > 0) most = std::max(most, PlanesBytes(page, planes));
    }
    return most;
}

std::string SizeText(uint64_t bytes) {
    constexpr double kMegabyte = 1e6;
    constexpr double kGigabyte = 1e9;
    const auto size = static_cast<double>(bytes);
    return size < kGigabyte ? fmt::format("{:.1f} MB", size / kMegabyte)
                            : fmt::format("{:.1f} GB", size / kGigabyte);
}

void Require(const fs::path& folder, uint64_t bytes, std::uintmax_t givenBack,
             const std::string& what) {
    std::error_code error;
    const fs::space_info space = fs::space(folder, error);
    if (error) return;
    const uint64_t free = Sum(space.available, givenBack);
    if (free < bytes)
        throw HostError(
            kFailed, fmt::format("the job needs {} {} {}, where {} are free", SizeText(bytes), what,
                                 folder.string(), SizeText(free)));
}

}  // namespace

void RequireNames(const fs::path& folder, const PrintPlan& plan) {
    std::vector<std::string> paths = plan.AllPaths();
    // A folder of that name may be there already, and a record of it is kept.
    paths.push_back(plan.JobName + (plan.MakesFolder ? "_001" : "") + ".print.json");
    for (const std::string& path : paths) {
        for (const fs::path& name : fs::path(path)) {
            std::error_code error;
            [[maybe_unused]] const bool exists = fs::exists(folder / name, error);
            if (error == std::errc::filename_too_long)
                throw HostError(
                    kUsage,
                    fmt::format("the job's name is too long: with its {} bytes a file would "
                                "be called {}, which the file system does not take; "
                                "give it a shorter one with --name",
                                plan.JobName.size(), name.string()));
        }
    }
}

void RequireJobFolder(const fs::path& folder, const PrintPlan& plan) {
    constexpr int kLastSuffix = 1000;
    if (!plan.MakesFolder) return;
    fs::path path = folder / plan.JobName;
    std::error_code error;
    for (int suffix = 1; fs::exists(path, error); ++suffix) {
        if (suffix > kLastSuffix)
            throw HostError(kFailed, fmt::format("no folder is left for the job: all up to {} are "
                                                 "there already",
                                                 path.string()));
        path = folder / fmt::format("{}_{:03d}", plan.JobName, suffix);
    }
}

void RequireTempFolder(const PrintPlan& plan) {
    if (!plan.BottomLineFirst && !plan.GathersWhite) return;
    const fs::path folder = TempFolder();
    const char* const why = plan.BottomLineFirst ? "pages that are written bottom line first"
                                                 : "the union that white ink is made of";
    std::error_code error;
    if (!fs::is_directory(folder, error))
        throw HostError(kFailed, fmt::format("the folder {} is missing, where the driver gathers "
                                             "{}",
                                             folder.string(), why));
    // Rights, quotas and file systems that are only read: trying tells.
    const std::string attempt = CreatePrivateFolder((folder / "run-").string());
    if (attempt.empty())
        throw HostError(kFailed, fmt::format("the folder {} cannot be written in, where the driver "
                                             "gathers {}",
                                             folder.string(), why));
    fs::remove(attempt, error);
}

void RequireDiskSpace(const fs::path& folder, const PrintPlan& plan, std::uintmax_t givenBack) {
    const uint64_t output = OutputBytes(plan);
    const uint64_t temporary = TemporaryBytes(plan);
    const fs::path temp = TempFolder();
    if (temporary > 0 && IsSameVolume(folder.string(), temp.string())) {
        Require(folder, Sum(output, temporary), givenBack,
                fmt::format("on the volume of {} and", temp.string()));
        return;
    }
    Require(folder, output, givenBack, "in");
    if (temporary > 0) Require(temp, temporary, 0, "in");
}
