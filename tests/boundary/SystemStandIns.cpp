#include "SystemStandIns.h"

#include <dlfcn.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

// Visible, so that they stand in front of the C library's own.
#define STAND_IN extern "C" __attribute__((visibility("default")))

namespace {

/// One time for every clock: whoever asks, time goes on.
int64_t LookAtTheClockMs() {
    static std::atomic<int64_t> nowMs = 1'000'000'000'000;
    return nowMs += clockStepMs;
}

template <class Space>
int AnswerSpace(const char* call, const char* path, Space* space) {
    using Function = int(const char*, Space*);
    const int answer = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, call))(path, space);
    if (answer == 0 && freeSpaceBytes >= 0) {
        constexpr int64_t kUnitBytes = 64;  // small, so that tests can ask for nearly any number
        space->f_frsize = kUnitBytes;
        space->f_bavail = static_cast<decltype(space->f_bavail)>(freeSpaceBytes / kUnitBytes);
    }
    return answer;
}

}  // namespace

STAND_IN int clock_gettime(clockid_t clock, timespec* time) noexcept {
    const bool isProcessorTime =
        clock < 0 || clock == CLOCK_PROCESS_CPUTIME_ID || clock == CLOCK_THREAD_CPUTIME_ID;
    if (isProcessorTime || clockStepMs < 0)
        return static_cast<int>(syscall(SYS_clock_gettime, clock, time));
    const int64_t now = LookAtTheClockMs();
    *time = {now / 1000, now % 1000 * 1000000};
    return 0;
}

STAND_IN int gettimeofday(timeval* time, void* zone) noexcept {
    if (clockStepMs < 0) return static_cast<int>(syscall(SYS_gettimeofday, time, zone));
    const int64_t now = LookAtTheClockMs();
    *time = {now / 1000, now % 1000 * 1000};
    return 0;
}

STAND_IN int statvfs(const char* path, struct statvfs* space) noexcept {
    return AnswerSpace("statvfs", path, space);
}

STAND_IN int statvfs64(const char* path, struct statvfs64* space) noexcept {
    return AnswerSpace("statvfs64", path, space);
}
