#include "SystemStandIns.h"

#include <dlfcn.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>

// Visible, so that they stand in front of the C library's own.

extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t clock,
                                                                    timespec* time) noexcept {
    static std::atomic<int64_t> nowMs = 0;
    if ((clock != CLOCK_MONOTONIC && clock != CLOCK_MONOTONIC_COARSE) || clockStepMs == 0) {
        return static_cast<int>(syscall(SYS_clock_gettime, clock, time));
    }
    const int64_t now = nowMs += std::max<int64_t>(clockStepMs, 0);
    *time = {now / 1000, now % 1000 * 1000000};
    return 0;
}

extern "C" __attribute__((visibility("default"))) int statvfs(const char* path,
                                                              struct statvfs* space) noexcept {
    using Function = int(const char*, struct statvfs*);
    const int answer = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, "statvfs"))(path, space);
    if (answer == 0 && freeSpaceBytes >= 0) {
        space->f_frsize = 1;
        space->f_bavail = static_cast<fsblkcnt_t>(freeSpaceBytes.load());
    }
    return answer;
}
