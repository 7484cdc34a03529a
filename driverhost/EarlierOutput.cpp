#include "driverhost/EarlierOutput.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <system_error>

#include "driverhost/HostError.h"
#include "driverhost/OutputFiles.h"
#include "driverhost/PrintRecord.h"
#include "driverhost/Speech.h"

namespace fs = std::filesystem;

namespace {

/// Whether a path that a record lists lies below the folder; links on the way are not followed, for
/// a record may have come from anywhere.
bool IsBelow(const fs::path& folder, const std::string& file) {
    const fs::path path(file);
    if (path.empty() || path.is_absolute() || path.lexically_normal() != path) return false;
    fs::path place = folder;
    for (const fs::path& component : path) {
        std::error_code error;
        const bool isLink = place != folder && fs::is_symlink(fs::symlink_status(place, error));
        if (component == ".." || isLink) return false;
        place /= component;
    }
    return true;
}

bool IsFileBelow(const fs::path& folder, const std::string& file) {
    std::error_code error;
    return IsBelow(folder, file) && fs::is_regular_file(fs::symlink_status(folder / file, error));
}

/// Whether one of the files stands at a place, or in a folder there.
bool StandsAt(const std::string& place, const std::set<std::string>& files) {
    const std::string inside = place + '/';
    const auto next = files.lower_bound(inside);
    return files.contains(place) || (next != files.end() && next->starts_with(inside));
}

std::string Others(std::size_t count) {
    return count == 0 ? "" : fmt::format(" and {} other file{}", count, count == 1 ? "" : "s");
}

/// The planned paths that are taken. Throws HostError for one that is a folder, and for a file that
/// must stay.
std::vector<std::string> TakenPaths(const fs::path& folder, const PrintPlan& plan,
                                    const std::vector<fs::path>& kept) {
    std::vector<std::string> taken;
    for (const std::string& path : plan.AllPaths()) {
        std::error_code error;
        const fs::path place = folder / path;
        const fs::file_status status = fs::symlink_status(place, error);
        if (!fs::exists(status)) continue;
        if (fs::is_directory(status))
            throw HostError(kFailed, fmt::format("{} is a folder, where the job writes a file",
                                                 place.string()));
        for (const fs::path& file : kept)
            if (fs::equivalent(place, file, error))
                throw HostError(kFailed, fmt::format("the job would write over {}, which it is "
                                                     "printed from",
                                                     file.string()));
        taken.push_back(path);
    }
    return taken;
}

std::vector<std::string> TakenTileFolders(const fs::path& folder, const PrintPlan& plan) {
    std::vector<std::string> taken;
    for (const PlannedPage& page : plan.Pages) {
        std::error_code error;
        if (!page.Folder.empty() && fs::exists(fs::symlink_status(folder / page.Folder, error)))
            taken.push_back(page.Folder);
    }
    return taken;
}

void RemoveFile(const fs::path& path) {
    std::error_code error;
    fs::remove(path, error);
    if (error)
        throw HostError(kFailed,
                        fmt::format("cannot remove {}: {}", path.string(), error.message()));
}

}  // namespace

EarlierOutput::EarlierOutput(const fs::path& folder, const PrintPlan& plan,
                             const Replacing& replacing, const std::vector<fs::path>& kept)
    : folder_(folder) {
    if (plan.MakesFolder) return;  // a new one, where nothing lies
    const std::vector<std::string> taken = TakenPaths(folder, plan, kept);
    const std::vector<std::string> tileFolders = TakenTileFolders(folder, plan);
    std::vector<std::string> all = taken;
    all.insert(all.end(), tileFolders.begin(), tileFolders.end());
    if (all.empty()) return;
    FindJobs(all, replacing);
    std::copy_if(taken.begin(), taken.end(), std::inserter(unknown_, unknown_.end()),
                 [this](const std::string& path) { return !IsOfJob(path); });
    TakeTileFolders(tileFolders, replacing);
    if (!unknown_.empty() && !replacing.Unknown)
        throw HostError(
            kFailed,
            fmt::format("{}{} would be replaced, which no record of a run lists; "
                        "--force allows it",
                        (folder_ / *unknown_.begin()).string(), Others(unknown_.size() - 1)));
    for (const fs::path& file : kept)
        for (const Job& job : jobs_)
            for (const std::string& path : job.Files)
                if (std::error_code error; fs::equivalent(folder / path, file, error))
                    throw HostError(kFailed, fmt::format("{} is printed from, and is of the "
                                                         "earlier job {}",
                                                         file.string(), job.Record.string()));
    // What cannot be looked at later is met before anything is removed.
    if (!jobs_.empty() || !unknown_.empty()) ListFiles(folder);
}

/// The jobs of which a file lies at a taken path, or in a folder there.
void EarlierOutput::FindJobs(const std::vector<std::string>& taken, const Replacing& replacing) {
    for (const fs::path& path : FindPrintRecords(folder_)) {
        PrintRecord record;
        try {
            record = ReadPrintRecord(path);
        } catch (const HostError&) {
            continue;  // one that cannot be read lists nothing
        }
        const std::vector<std::string> listed = record.AllFiles();
        std::set<std::string> files(listed.begin(), listed.end());
        if (std::none_of(taken.begin(), taken.end(),
                         [&](const std::string& place) { return StandsAt(place, files); }))
            continue;
        if (record.Complete && !replacing.Complete)
            throw HostError(
                kFailed,
                fmt::format("{} are those of a complete job, {}; --replace removes them first",
                            (folder_ / *files.begin()).string() + Others(files.size() - 1),
                            path.string()));
        jobs_.push_back({path, record.Complete, std::move(files)});
    }
}

bool EarlierOutput::IsOfJob(const std::string& file) const {
    return std::any_of(jobs_.begin(), jobs_.end(),
                       [&](const Job& job) { return job.Files.contains(file); });
}

/// Whether a folder is left empty when all that gives way is gone, and may go itself.
bool EarlierOutput::IsCleared(const std::string& tileFolder, const Replacing& replacing) const {
    std::error_code error;
    const fs::path path = folder_ / tileFolder;
    if (!fs::is_directory(fs::symlink_status(path, error)) || !ListFolders(path).empty())
        return false;
    for (const auto& [name, state] : ListFiles(path)) {
        const std::string file = fmt::format("{}/{}", tileFolder, name);
        if (!IsOfJob(file) && !(replacing.Unknown && unknown_.contains(file))) return false;
    }
    return replacing.Unknown || std::any_of(jobs_.begin(), jobs_.end(), [&](const Job& job) {
               return StandsAt(tileFolder, job.Files);
           });
}

/// The driver makes these folders itself, and cannot where one stands.
void EarlierOutput::TakeTileFolders(const std::vector<std::string>& folders,
                                    const Replacing& replacing) {
    std::vector<std::string> standing;
    for (const std::string& folder : folders) {
        if (IsCleared(folder, replacing))
            tileFolders_.push_back(folder);
        else
            standing.push_back((folder_ / folder).string());
    }
    if (standing.empty()) return;
    const bool isOne = standing.size() == 1;
    throw HostError(
        kFailed, fmt::format("{} stand{} in the way of the job's pages; move {} away",
                             fmt::join(standing, ", "), isOne ? "s" : "", isOne ? "it" : "them"));
}

std::uintmax_t EarlierOutput::Bytes() const {
    std::uintmax_t bytes = 0;
    const auto add = [&](const std::string& file) {
        std::error_code error;
        const std::uintmax_t size = fs::file_size(folder_ / file, error);
        if (!error) bytes += size;
    };
    for (const Job& job : jobs_)
        for (const std::string& file : job.Files)
            if (IsFileBelow(folder_, file)) add(file);
    std::for_each(unknown_.begin(), unknown_.end(), add);
    return bytes;
}

/// The folders of its pages, where nothing else lies in them.
void EarlierOutput::RemoveEmptyFolders(const Job& job) const {
    for (const std::string& file : job.Files) {
        const fs::path parent = fs::path(file).parent_path();
        std::error_code error;
        if (!parent.empty() && IsBelow(folder_, parent.string()) &&
            fs::is_directory(fs::symlink_status(folder_ / parent, error)))
            fs::remove(folder_ / parent, error);  // one that is not empty stays
    }
}

void EarlierOutput::Remove() const {
    for (const Job& job : jobs_) {
        Complain("{}: {}; its files are replaced", job.Record.string(),
                 job.IsComplete ? "a complete job" : "a job that did not come to its end");
        for (const std::string& file : job.Files)
            if (IsFileBelow(folder_, file)) RemoveFile(folder_ / file);
        RemoveEmptyFolders(job);
        RemoveFile(job.Record);
    }
    if (!unknown_.empty())
        Complain("replaced: {}{}", (folder_ / *unknown_.begin()).string(),
                 Others(unknown_.size() - 1));
    for (const std::string& file : unknown_)
        RemoveFile(folder_ / file);
    for (const std::string& folder : tileFolders_)
        RemoveFile(folder_ / folder);
}
