#include "SystemStandIns.h"

#include <dlfcn.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <atomic>

namespace {

std::atomic<int> stepMilliseconds = 0;  // 0: the system's own clock
std::atomic<int64_t> nowMilliseconds = 0;
std::atomic<bool> isSpaceGiven = false;
std::atomic<uint64_t> spaceBytes = 0;

}  // namespace

SteppingClock::SteppingClock(int milliseconds) {
    stepMilliseconds = milliseconds;
}
SteppingClock::~SteppingClock() {
    stepMilliseconds = 0;
}

FreeSpace::FreeSpace(uint64_t bytes) {
    spaceBytes = bytes;
    isSpaceGiven = true;
}
FreeSpace::~FreeSpace() {
    isSpaceGiven = false;
}

// Visible, so that they stand in front of the C library's own.

extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t clock,
                                                                    timespec* time) noexcept {
    const int step = stepMilliseconds;
    if (clock != CLOCK_MONOTONIC || step == 0) {
        return static_cast<int>(syscall(SYS_clock_gettime, clock, time));
    }
    const int64_t now = nowMilliseconds += step;
    *time = {now / 1000, now % 1000 * 1000000};
    return 0;
}

extern "C" __attribute__((visibility("default"))) int statvfs(const char* path,
                                                              struct statvfs* space) noexcept {
    using Function = int(const char*, struct statvfs*);
    auto* const original = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, "statvfs"));
    const int answer = original(path, space);
    if (answer == 0 && isSpaceGiven) {
        space->f_frsize = 1;
        space->f_bsize = 1;
        space->f_bavail = spaceBytes;
        space->f_bfree = spaceBytes;
    }
    return answer;
}
