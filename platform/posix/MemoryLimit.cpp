#include "platform/MemoryLimit.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>

#include "platform/Stream.h"

namespace {

/// Bytes of data that the process has; 0 when the system does not tell.
std::uint64_t DataBytes() {
    const Stream statistics = OpenStream("/proc/self/statm", "r");
    unsigned long long pages = 0;
    // The sixth number.
    if (statistics == nullptr ||
        std::fscanf(statistics.get(), "%*u %*u %*u %*u %*u %llu", &pages) != 1) {
        return 0;
    }
    return std::uint64_t{pages} * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

}  // namespace

MemoryLimit::MemoryLimit(std::uint64_t moreBytes) {
    const std::uint64_t bytes = DataBytes();
    rlimit limit = {};
    if (bytes == 0 || getrlimit(RLIMIT_DATA, &limit) != 0) return;
    limitBefore_ = limit.rlim_cur;
    limit.rlim_cur = std::min<rlim_t>(limit.rlim_cur, bytes + moreBytes);
    isSet_ = setrlimit(RLIMIT_DATA, &limit) == 0;
}

MemoryLimit::~MemoryLimit() {
    rlimit limit = {};
    if (!isSet_ || getrlimit(RLIMIT_DATA, &limit) != 0) return;
    limit.rlim_cur = limitBefore_;
    setrlimit(RLIMIT_DATA, &limit);
}
