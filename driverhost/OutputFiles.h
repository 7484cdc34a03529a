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
