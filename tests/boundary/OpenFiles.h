#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

/// The open descriptors of this process, each as a path of its own and what it leads to.
inline std::vector<std::pair<std::filesystem::path, std::string>> Descriptors() {
    std::vector<std::pair<std::filesystem::path, std::string>> files;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code failure;
        const auto target = std::filesystem::read_symlink(entry.path(), failure);
        if (!failure && target.filename() != "fd") files.emplace_back(entry.path(), target);
    }
    return files;
}

/// What the open descriptors lead to, sorted.
inline std::vector<std::string> OpenFiles() {
    std::vector<std::string> targets;
    for (const auto& [descriptor, target] : Descriptors())
        targets.push_back(target);
    std::sort(targets.begin(), targets.end());
    return targets;
}

/// Puts the file, opened anew with these flags of open(), in the place of its open descriptors.
/// With O_WRONLY its reads fail from now on, with O_RDONLY its writes. Answers how many there were.
inline int Reopen(const std::filesystem::path& file, int flags) {
    int count = 0;
    for (const auto& [path, target] : Descriptors()) {
        if (target != file) continue;
        const int descriptor = std::stoi(path.filename());
        const int lesser = open(path.c_str(), flags | O_CLOEXEC);
        lseek(lesser, lseek(descriptor, 0, SEEK_CUR), SEEK_SET);
        if (dup3(lesser, descriptor, O_CLOEXEC) >= 0) ++count;
        close(lesser);
    }
    return count;
}
