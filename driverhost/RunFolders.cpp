#include "driverhost/RunFolders.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <system_error>
#include <thread>

#include "driverhost/HostError.h"
#include "driverhost/Speech.h"
#include "platform/Program.h"

namespace fs = std::filesystem;

namespace {

void Await(const fs::path& folder, FolderLock& lock) {
    bool said = false;
    while (lock.TryLock(folder.string()) == FolderLock::Answer::kHeldByAnother) {
        if (InterruptNoted()) throw HostError(kAborted, "interrupted before the first job");
        if (!said) Complain("another run uses {}: waiting for its end", folder.string());
        said = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

}  // namespace

OutputFolder::OutputFolder(const std::string& folder)
    : path_(fs::absolute(folder).lexically_normal()) {
    std::error_code error;
    if (!path_.has_filename()) path_ = path_.parent_path();  // "printed/"
    if (fs::is_directory(path_, error)) return;
    if (fs::exists(path_, error)) throw HostError(kFailed, fmt::format("{} is no folder", folder));
    for (fs::path missing = path_; !fs::exists(missing, error); missing = missing.parent_path())
        made_.push_back(missing);
    fs::create_directories(path_, error);
    if (error)
        throw HostError(kFailed,
                        fmt::format("cannot create the folder {}: {}", folder, error.message()));
}

OutputFolder::~OutputFolder() {
    std::error_code error;  // one in which something lies stays
    for (const fs::path& folder : made_)
        fs::remove(folder, error);
}

OwnFolders::OwnFolders(const fs::path& output) {
    std::error_code error;
    const char* const base = std::getenv("QL_BASE_FOLDER");
    std::vector<fs::path> folders = {fs::canonical(output, error)};
    if (base != nullptr && !fs::equivalent(base, output, error))
        folders.push_back(fs::canonical(base, error));
    // In one order for every run, so that no two wait for each other.
    std::sort(folders.begin(), folders.end());
    for (const fs::path& folder : folders)
        Await(folder, locks_.emplace_back());
}
