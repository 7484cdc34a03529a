#pragma once

/// Everything that job work throws, always as a plain int; the driver answers 0 to each.
enum JobFault : int {
    kOutputFailed = 0,  ///< the writer's error: any failed output, and out of memory
    kNoContainer = -3,
    kBeginChannelFailed = -4,
    kOutputBandFailed = -5,
    kEndChannelFailed = -6,
};

[[noreturn]] inline void Raise(JobFault fault) {
    throw static_cast<int>(fault);
}
