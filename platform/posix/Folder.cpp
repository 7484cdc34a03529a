#include "platform/Folder.h"

#include <dirent.h>
#include <unistd.h>

#include <memory>
#include <string_view>

namespace {

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};

/// What every file system of today allows; told where the system does not say.
constexpr std::size_t kUsualNameBytes = 255;

}  // namespace

bool VisitFolder(const char* folder, const std::function<void(const char* name)>& visit) {
    const std::unique_ptr<DIR, CloseFolder> stream(opendir(folder));
    if (stream == nullptr) return false;
    while (const dirent* const entry = readdir(stream.get())) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") visit(entry->d_name);
    }
    return true;
}

std::size_t MostNameBytes(const char* folder) {
    const long most = pathconf(folder, _PC_NAME_MAX);
    return most > 0 ? static_cast<std::size_t>(most) : kUsualNameBytes;
}
