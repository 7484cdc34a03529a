#pragma once

#include <cstddef>
#include <string_view>

/// The number under which the system keeps why this thread's last failed call failed. Read it at
/// once: the next call may change it.
int LastSystemError();
/// From here on no failed call is known; for a caller who cannot tell whether a call below it
/// reached the system.
void ForgetSystemError();

/// The system's own text for such a number, in `buffer`; "" for 0. Allocates nothing.
std::string_view SystemErrorText(int error, char* buffer, std::size_t bufferBytes);
