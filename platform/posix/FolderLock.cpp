#include "platform/FolderLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

FolderLock::~FolderLock() {
    if (handle_ >= 0) close(static_cast<int>(handle_));
}

FolderLock::Answer FolderLock::TryLock(const std::string& folder) {
    if (handle_ < 0) handle_ = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle_ < 0) return Answer::kCannotLock;
    if (flock(static_cast<int>(handle_), LOCK_EX | LOCK_NB) == 0) return Answer::kLocked;
    return errno == EWOULDBLOCK ? Answer::kHeldByAnother : Answer::kCannotLock;
}
