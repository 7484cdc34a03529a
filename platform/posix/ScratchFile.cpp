#include "platform/ScratchFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace {

int Descriptor(std::intptr_t handle) {
    return static_cast<int>(handle);
}

/// Runs a call that moves bytes (pread, pwrite) until all are moved; false where the system moves
/// no more, with its number, or `errorAtEnd` where it gives none.
template <class Call>
bool MoveAll(std::int64_t offset, std::size_t count, int errorAtEnd, int& error, Call call) {
    std::size_t done = 0;
    while (done < count) {
        const ssize_t moved =
            call(done, count - done, static_cast<off_t>(offset + static_cast<std::int64_t>(done)));
        if (moved < 0 && errno == EINTR) continue;
        if (moved <= 0) {
            error = moved < 0 ? errno : errorAtEnd;
            return false;
        }
        done += static_cast<std::size_t>(moved);
    }
    return true;
}

}  // namespace

bool ScratchFile::Fail() {
    systemError_ = errno;
    return false;
}

bool ScratchFile::Create(const std::string& path) {
    Discard();
    path_ = path;
    for (;;) {
        handle_ = open(path_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600);
        if (handle_ >= 0) return true;
        if (errno != EEXIST) return Fail();
        // Never taken over: it may be another program's, which goes on with its own handle.
        if (unlink(path_.c_str()) != 0 && errno != ENOENT) return Fail();
    }
}

void ScratchFile::Reserve(std::int64_t bytes) {
#ifdef FALLOC_FL_KEEP_SIZE
    if (bytes > 0 && fallocate(Descriptor(handle_), FALLOC_FL_KEEP_SIZE, 0, bytes) != 0) {
        // A reservation that runs out of room may keep what it got.
        [[maybe_unused]] const int ignored = ftruncate(Descriptor(handle_), 0);
    }
#endif
}

bool ScratchFile::WriteAt(std::int64_t offset, const void* data, std::size_t count) {
    return MoveAll(
        offset, count, ENOSPC, systemError_, [&](std::size_t done, std::size_t left, off_t place) {
            return pwrite(Descriptor(handle_), static_cast<const char*>(data) + done, left, place);
        });
}

bool ScratchFile::ReadAt(std::int64_t offset, void* data, std::size_t count) {
    return MoveAll(
        offset, count, 0, systemError_, [&](std::size_t done, std::size_t left, off_t place) {
            return pread(Descriptor(handle_), static_cast<char*>(data) + done, left, place);
        });
}

/// Whether the name leads to this file. Where the system does not tell, it counts as its own.
bool ScratchFile::IsItsOwnName() const noexcept {
    struct stat own = {};
    struct stat named = {};
    if (fstat(Descriptor(handle_), &own) != 0 || lstat(path_.c_str(), &named) != 0) return true;
    return own.st_dev == named.st_dev && own.st_ino == named.st_ino;
}

void ScratchFile::Discard() noexcept {
    if (!IsOpen()) return;
    if (IsItsOwnName()) unlink(path_.c_str());
    close(Descriptor(handle_));
    handle_ = -1;
}
