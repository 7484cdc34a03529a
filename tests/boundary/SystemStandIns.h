#pragma once

#include <atomic>
#include <cstdint>

// Stand-ins for system calls of this process and every library that it loads. Each serves while its
// setting is not negative.

/// Every look at a clock finds it this much later than the look before, so that time slices end at
/// known rows; 0: time stands still.
inline std::atomic<int64_t> clockStepMs = -1;
/// Every file system has so many bytes free.
inline std::atomic<int64_t> freeSpaceBytes = -1;

/// Gives a stand-in a value for as long as this lives.
class StandIn {
  public:
    StandIn(std::atomic<int64_t>& setting, int64_t value)
        : setting_(setting), before_(setting.exchange(value)) {}
    ~StandIn() { setting_ = before_; }
    StandIn(const StandIn&) = delete;
    StandIn& operator=(const StandIn&) = delete;

  private:
    std::atomic<int64_t>& setting_;
    int64_t before_;
};
