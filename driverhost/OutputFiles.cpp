#include "driverhost/OutputFiles.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <string_view>
#include <system_error>

#include "driverhost/ChannelFile.h"
#include "driverhost/HostError.h"
#include "driverhost/TiffFile.h"

namespace fs = std::filesystem;

namespace {

std::string ExtensionOf(const std::string& file) {
    return fs::path(file).extension().string();
}

bool IsCompleteTiff(const fs::path& path, const PageExpectation& expected) {
    const TiffFile tiff = OpenTiff(path, "rm");
    if (!tiff) return false;
    uint32_t width = 0;
    uint32_t rows = 0;
    uint16_t bits = 1;
    TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &rows);
    TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_BITSPERSAMPLE, &bits);
    if (rows != expected.Rows || bits != expected.Bits ||
        width != (expected.WidthPixels + 31) / 32 * 32 || TIFFIsTiled(tiff.get()) != 0)
        return false;
    std::vector<uint8_t> line(static_cast<std::size_t>(TIFFScanlineSize64(tiff.get())));
    return TIFFReadScanline(tiff.get(), line.data(), rows - 1) == 1;
}

bool IsComplete(const fs::path& folder, const std::string& file, const FileState& state,
                const PageExpectation& expected) {
    if (IsTiffName(file)) return IsCompleteTiff(folder / file, expected);
    return state.Bytes == static_cast<std::uintmax_t>(expected.Rows) *
                              static_cast<std::uintmax_t>(expected.LineBytes());
}

/// Calls `visit` for everything below a folder; links to folders are not followed. A folder that
/// is gone has nothing in it.
template <class Visit>
void VisitBelow(const fs::path& folder, Visit visit) {
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        visit(*entry);
        std::error_code gone;
        if (entry->is_directory(gone) && !entry->is_symlink(gone)) VisitBelow(entry->path(), visit);
    }
    if (error && error != std::errc::no_such_file_or_directory)
        throw HostError(kFailed, fmt::format("cannot read the folder {}: {}", folder.string(),
                                             error.message()));
}

/// Whether a file is a picture or XML by its first bytes, and so no channel.
bool IsSideFile(const fs::path& path) {
    constexpr std::string_view kMarks[] = {"\x89PNG\r\n", "BM", "<?xml", "\xEF\xBB\xBF<?xml"};
    std::array<char, 8> head = {};
    std::ifstream file(path, std::ios::binary);
    file.read(head.data(), head.size());
    const std::string_view start(head.data(), static_cast<std::size_t>(file.gcount()));
    return std::any_of(std::begin(kMarks), std::end(kMarks),
                       [start](std::string_view mark) { return start.starts_with(mark); });
}

/// The extensions of the channels of a page of which none is complete.
std::set<std::string> CommonExtensions(const fs::path& folder, const Listing& files) {
    std::map<std::string, std::size_t> counts;
    std::size_t most = 0;
    for (const auto& [file, state] : files)
        if (!IsSideFile(folder / file)) most = std::max(most, ++counts[ExtensionOf(file)]);
    std::set<std::string> common;
    for (const auto& [extension, count] : counts)
        if (count == most) common.insert(extension);
    return common;
}

}  // namespace

Listing ListFiles(const fs::path& folder) {
    Listing listing;
    VisitBelow(folder, [&](const fs::directory_entry& entry) {
        std::error_code gone;  // somebody else's file may go at any time
        if (!entry.is_regular_file(gone) || gone) return;
        const FileState state = {entry.file_size(gone), entry.last_write_time(gone)};
        if (!gone) listing[entry.path().lexically_relative(folder).string()] = state;
    });
    return listing;
}

std::set<std::string> ListFolders(const fs::path& folder) {
    std::set<std::string> folders;
    VisitBelow(folder, [&](const fs::directory_entry& entry) {
        std::error_code gone;
        if (entry.is_directory(gone))
            folders.insert(entry.path().lexically_relative(folder).string());
    });
    return folders;
}

std::set<std::string> FoldersOfJob(const std::set<std::string>& before,
                                   const std::set<std::string>& after, const Listing& files) {
    std::set<std::string> folders;
    // The outermost new folder that a path lies in; empty when there is none.
    const auto newAbove = [&](const fs::path& path) {
        fs::path above;
        for (const fs::path& component : path) {
            above /= component;
            if (after.contains(above.string()) && !before.contains(above.string())) return above;
        }
        return fs::path();
    };
    for (const std::string& folder : after)
        if (!before.contains(folder)) folders.insert(newAbove(folder).string());
    for (const auto& [file, state] : files) {
        if (!newAbove(file).empty()) continue;
        const fs::path parent = fs::path(file).parent_path();
        folders.insert(parent.empty() ? "." : parent.string());
    }
    return folders;
}

Listing ChangedFiles(const Listing& before, const Listing& after) {
    Listing changed;
    for (const auto& [path, state] : after) {
        const auto old = before.find(path);
        if (old == before.end() || !(old->second == state)) changed.emplace(path, state);
    }
    return changed;
}

Listing FilesOfTile(const Listing& files, int32_t tile) {
    const std::string suffix = fmt::format("-tile{}", tile);
    Listing found;
    for (const auto& [path, state] : files)
        for (const fs::path& component : fs::path(path).parent_path())
            if (component.string().ends_with(suffix)) found.emplace(path, state);
    return found;
}

PageFaults CheckPage(const fs::path& folder, const Listing& files,
                     const PageExpectation& expected) {
    PageFaults faults;
    std::set<std::string> channelExtensions;
    std::set<std::string> complete;
    for (const auto& [file, state] : files) {
        if (!IsComplete(folder, file, state, expected)) continue;
        complete.insert(file);
        channelExtensions.insert(ExtensionOf(file));
    }
    if (complete.empty()) channelExtensions = CommonExtensions(folder, files);
    for (const auto& [file, state] : files)
        if (channelExtensions.contains(ExtensionOf(file)) && !complete.contains(file))
            faults.ShortFiles.push_back(file);
    const std::size_t found = complete.size() + faults.ShortFiles.size();
    faults.MissingChannels = std::max(expected.ChannelCount - static_cast<int32_t>(found), 0);
    return faults;
}
