// Stand-ins for the allocation functions of the process.

#include <cstdlib>
#include <new>

#include "sweep/Faults.h"

#define VISIBLE __attribute__((visibility("default")))

// AddressSanitizer has an allocator of its own, which nothing may stand in front of: in its build
// the driver's own allocations fail, those of libraries do not.
#ifndef __SANITIZE_ADDRESS__

extern "C" {

// The C library's own entry points, for those who stand in front of it.
void* __libc_malloc(std::size_t size);                     // NOLINT(bugprone-reserved-identifier)
void* __libc_calloc(std::size_t count, std::size_t size);  // NOLINT(bugprone-reserved-identifier)
void* __libc_realloc(void* block, std::size_t size);       // NOLINT(bugprone-reserved-identifier)

VISIBLE void* malloc(std::size_t size) noexcept {
    const bool strikes = StrikesAllocation(__builtin_return_address(0), false);
    return strikes ? nullptr : __libc_malloc(size);
}
VISIBLE void* calloc(std::size_t count, std::size_t size) noexcept {
    const bool strikes = StrikesAllocation(__builtin_return_address(0), false);
    return strikes ? nullptr : __libc_calloc(count, size);
}
VISIBLE void* realloc(void* block, std::size_t size) noexcept {
    const bool strikes = StrikesAllocation(__builtin_return_address(0), false);
    return strikes ? nullptr : __libc_realloc(block, size);
}

}  // extern "C"

#else

extern "C" constexpr auto* __libc_malloc = &std::malloc;  // NOLINT(bugprone-reserved-identifier)

#endif

namespace {

void* AllocateOrNull(std::size_t size, const void* caller) {
    return StrikesAllocation(caller, true) ? nullptr : __libc_malloc(size == 0 ? 1 : size);
}

void* AllocateOrThrow(std::size_t size, const void* caller) {
    void* const block = AllocateOrNull(size, caller);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

}  // namespace

VISIBLE void* operator new(std::size_t size) {
    return AllocateOrThrow(size, __builtin_return_address(0));
}
VISIBLE void* operator new[](std::size_t size) {
    return AllocateOrThrow(size, __builtin_return_address(0));
}
VISIBLE void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return AllocateOrNull(size, __builtin_return_address(0));
}
VISIBLE void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return AllocateOrNull(size, __builtin_return_address(0));
}
VISIBLE void operator delete(void* block) noexcept {
    std::free(block);
}
VISIBLE void operator delete[](void* block) noexcept {
    std::free(block);
}
VISIBLE void operator delete(void* block, std::size_t /*size*/) noexcept {
    std::free(block);
}
VISIBLE void operator delete[](void* block, std::size_t /*size*/) noexcept {
    std::free(block);
}
