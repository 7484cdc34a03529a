#pragma once

// Calls of the system, and allocations, that fail on order: everything that the plug-in and the
// libraries it loads call by name goes through stand-ins of this program.

#include <array>
#include <cstdint>

#include "sweep/CallSite.h"

/// What can fail; the rows of the sweep's table.
enum class Call : uint8_t {
    kOpen,
    kRead,
    kShortRead,
    kWrite,
    kShortWrite,
    kSeek,
    kClose,
    kStat,
    kMakeFolder,
    kRename,
    kUnlink,
    kTruncate,
    kReserve,
    kFreeSpace,
    kAllocation,
    kLibraryAllocation,
};
inline constexpr std::array kCallNames = {
    "open",
    "read",
    "read, cut short",
    "write",
    "write, cut short",
    "seek",
    "close",
    "stat",
    "mkdir",
    "rename",
    "unlink",
    "truncate",
    "fallocate",
    "statvfs",
    "allocation",
    "a library's allocation",
};
inline constexpr std::size_t kCallCount = kCallNames.size();

/// The call that fails: the `Position`-th of its kind (from 1; 0: none does), and when it lasts
/// every later one as well.
struct Fault {
    Call What = Call::kOpen;
    int32_t Position = 0;
    bool Lasts = false;
};

/// What became of a fault. Plain data, so that it outlives the process that met it.
struct Injection {
    std::array<int32_t, kCallCount> Seen{};  ///< calls counted
    bool HasStruck = false;
    int32_t Error = 0;  ///< errno of the failed call; 0: it was only cut short
    CallSite Site;      ///< of the first failed call
    CodePlace Owner;    ///< of a failed allocation
    CallSite Crash;     ///< where the process was killed
};

/// From here on the calls of armed stretches are counted into `injection`, and `fault` strikes.
void PlanFault(const Fault& fault, Injection& injection);

/// The stretch of a run that counts: a call of the driver. The host's own files (its log, its
/// messages, the script that answers a dialog) never fail.
class Armed {
  public:
    Armed();
    ~Armed();
    Armed(const Armed&) = delete;
    Armed& operator=(const Armed&) = delete;
};

// For the stand-ins.

/// Counts a call; true, with errno set, when it is to fail.
bool Strikes(Call call) noexcept;
/// The same for an allocation that `caller` asks for.
bool StrikesAllocation(const void* caller, bool isOperatorNew) noexcept;
