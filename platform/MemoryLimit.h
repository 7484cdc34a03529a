#pragma once

#include <cstdint>

/// While it lives, this process gets at most so many bytes of memory more than it has: what asks
/// for more fails. For work whose need nobody can foresee, on input that nobody vouches for. Where
/// the system sets no such limit, nothing happens.
class MemoryLimit {
  public:
    explicit MemoryLimit(std::uint64_t moreBytes);
    ~MemoryLimit();
    MemoryLimit(const MemoryLimit&) = delete;
    MemoryLimit& operator=(const MemoryLimit&) = delete;

  private:
    std::uint64_t limitBefore_ = 0;
    bool isSet_ = false;
};
