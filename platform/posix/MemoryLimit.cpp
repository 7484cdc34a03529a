#include "platform/MemoryLimit.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>

namespace {

/// Bytes of data that the process has; 0 when the system does not tell.
std::uint64_t DataBytes() {
    constexpr int kDataNumber = 6;  // of proc(5)'s statm, in pages
    std::ifstream statistics("/proc/self/statm");
    std::uint64_t pages = 0;
    for (int i = 0; i < kDataNumber; ++i)
        statistics >> pages;
    return statistics ? pages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE)) : 0;
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
