#pragma once

#include <array>
#include <cstdint>

#include "sweep/Faults.h"
#include "sweep/JobRun.h"

/// How a run ends; the columns of the sweep's table.
enum class Outcome : uint8_t {
    kRight,         ///< to the byte
    kFailureSaid,   ///< a 0 of the call, and what failed stands in the log
    kEntryNamesIt,  ///< a preview, thumbnail or stored option that is lost, and the log names it
    kDoubtSaid,     ///< success, other bytes, and the log names the job
    kNoReason,      ///< a failure said without the system's reason
    kFalseSuccess,  ///< success, other bytes, and nothing said
    kSilentFailure,
    kOptionsLost,  ///< a cancelled dialog changed what it was to keep
    kDescriptorLeaked,
    kFileLeft,
    kNextJobWrong,  ///< the next job of the same driver, without a fault
    kCrash,
    kHang,
};
inline constexpr std::array kOutcomeNames = {
    "right to the byte",
    "failure said",
    "entry names it",
    "doubt said",
    "no reason given",
    "false success",
    "silent failure",
    "options lost",
    "descriptor leaked",
    "temporary file left",
    "next job wrong",
    "crash",
    "hang",
};
inline constexpr std::size_t kOutcomeCount = kOutcomeNames.size();

/// What a finished run comes to, against the files of a run without a fault.
Outcome OutcomeOf(const Scenario& scenario, const Files& right, const RunFacts& facts,
                  const Fault& fault, const Injection& injection);

/// Whether the driver keeps its word with that end. A library may crash when an allocation of its
/// own fails.
bool IsKept(Outcome outcome, bool isStrict, const Injection& injection);
