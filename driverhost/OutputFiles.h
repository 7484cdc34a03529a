#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

/// A file as a folder's listing shows it.
struct FileState {
    std::uintmax_t Bytes = 0;
    std::filesystem::file_time_type Time;
    bool operator==(const FileState&) const = default;
};

/// The files below a folder, by their path relative to it.
using Listing = std::map<std::string, FileState>;

/// Nothing for a folder that is not there. Throws HostError for one below it that cannot be read.
Listing ListFiles(const std::filesystem::path& folder);

/// Likewise the folders below a folder, by their path relative to it.
std::set<std::string> ListFolders(const std::filesystem::path& folder);

/// The folders that a job wrote into: the outermost of those that are new, and where a file of it
/// lies in none of these, the file's own ("." for the output folder itself).
std::set<std::string> FoldersOfJob(const std::set<std::string>& before,
                                   const std::set<std::string>& after, const Listing& files);

/// The files of `after` that are not in `before` as they are.
Listing ChangedFiles(const Listing& before, const Listing& after);

/// The files of a listing that lie in the folder of one tile; `tile` counts from 1.
Listing FilesOfTile(const Listing& files, int32_t tile);

/// What a page must leave on disk.
struct PageExpectation {
    int64_t WidthPixels = 0;
    int64_t Rows = 0;
    int32_t Bits = 1;
    int32_t ChannelCount = 0;

    /// Bytes of one line: every bit plane is padded to whole 32-pixel words.
    int64_t LineBytes() const { return (WidthPixels + 31) / 32 * 4 * Bits; }
};

/// What is wrong with the files of a page.
struct PageFaults {
    std::vector<std::string> ShortFiles;
    int32_t MissingChannels = 0;
    bool Any() const { return !ShortFiles.empty() || MissingChannels > 0; }
};

/// Looks for the page's channels among its files. A raw channel is complete when it has all
/// lines' bytes, a TIFF one when it has the page's lines and the last can be read. Other files
/// (headers, tickets, previews) are told from channels by their extension: that of a complete
/// channel, or when none is complete, that of the most files that are no picture and no XML.
PageFaults CheckPage(const std::filesystem::path& folder, const Listing& files,
                     const PageExpectation& expected);
