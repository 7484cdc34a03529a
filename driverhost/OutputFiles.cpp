#include "driverhost/OutputFiles.h"

#include <fmt/format.h>

#include <system_error>

#include "driverhost/HostError.h"

namespace fs = std::filesystem;

namespace {

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
