#pragma once

#include <cstdint>

// Stand-ins for system calls of this process and every library that it loads.

/// While this lives, the monotonic clock is a test's own: every look at it finds it
/// `milliseconds` later than the look before, so that time slices end at known rows.
class SteppingClock {
  public:
    explicit SteppingClock(int milliseconds);
    ~SteppingClock();
    SteppingClock(const SteppingClock&) = delete;
    SteppingClock& operator=(const SteppingClock&) = delete;
};

/// While this lives, every file system has this many bytes free.
class FreeSpace {
  public:
    explicit FreeSpace(uint64_t bytes);
    ~FreeSpace();
    FreeSpace(const FreeSpace&) = delete;
    FreeSpace& operator=(const FreeSpace&) = delete;
};
