#include "platform/Process.h"

#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <limits>

std::int64_t ProcessNumber() {
    return getpid();
}

bool HasProcessEnded(std::int64_t process) {
    // Other numbers mean groups of processes, or none that a process could have.
    if (process <= 0 || process > std::numeric_limits<pid_t>::max()) return false;
    return kill(static_cast<pid_t>(process), 0) != 0 && errno == ESRCH;
}
