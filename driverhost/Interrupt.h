#pragma once

#include "driverhost/HostError.h"
#include "platform/Program.h"

/// For loops that read much: ends the command when the user has asked for it.
inline void StopWhenInterrupted() {
    if (InterruptNoted()) throw HostError(kAborted, "interrupted");
}
