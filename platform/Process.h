#pragma once

#include <cstdint>

/// The number of this process; above 0.
std::int64_t ProcessNumber();

/// Whether no process has that number any more. It speaks of this machine alone: the number of a
/// process on another one that works on the same disk cannot be told from a number of this one.
bool HasProcessEnded(std::int64_t process);
