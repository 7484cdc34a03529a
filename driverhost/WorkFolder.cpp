#include "driverhost/WorkFolder.h"

#include <fmt/format.h>

#include <system_error>

#include "driverhost/HostError.h"
#include "platform/Program.h"

namespace fs = std::filesystem;

WorkFolder::WorkFolder(const fs::path& target)
    : path_(CreatePrivateFolder(target.string() + ".work-")) {
    if (path_.empty())
        throw HostError(kFailed,
                        fmt::format("cannot create a work folder beside {}", target.string()));
}

WorkFolder::~WorkFolder() {
    std::error_code ignored;  // nothing left to do about a folder that stays
    fs::remove_all(path_, ignored);
}

std::uintmax_t FolderBytes(const fs::path& folder) {
    // Files come and go while this looks at them.
    std::uintmax_t bytes = 0;
    std::error_code error;
    for (fs::recursive_directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        std::error_code gone;
        const std::uintmax_t size =
            entry->is_regular_file(gone) && !entry->is_symlink(gone) ? entry->file_size(gone) : 0;
        if (!gone) bytes += size;
    }
    return bytes;
}
