#include "FailingCalls.h"

#include <dlfcn.h>
#include <execinfo.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr int64_t kNever = std::numeric_limits<int64_t>::max();

Call failing = Call::kRead;
int64_t failingNumber = kNever;
int64_t lastFailing = kNever;
int64_t calls = 0;

bool Fails(Call call) {
    if (failingNumber == kNever || call != failing) return false;
    ++calls;
    return calls >= failingNumber && calls <= lastFailing;
}

bool FailsToAllocate() {
    if (!Fails(Call::kAllocate)) return false;
    errno = ENOMEM;
    return true;
}

template <class Function>
Function* Next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

void* New(std::size_t bytes) {
    void* const memory = Fails(Call::kNew) ? nullptr : std::malloc(bytes);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

/// Prints the way to where the process died, and dies.
void TellPlace(int signal) {
    std::array<void*, 32> frames{};
    backtrace_symbols_fd(frames.data(), backtrace(frames.data(), frames.size()), STDERR_FILENO);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

}  // namespace

FailingCall::FailingCall(Call call, int64_t nth, bool fromThenOn) {
    failing = call;
    calls = 0;
    lastFailing = fromThenOn ? kNever : nth;
    failingNumber = nth;
}

FailingCall::~FailingCall() {
    failingNumber = kNever;
}

bool FailingCall::HasFailed() const {
    return calls >= failingNumber;
}

int InChild(const std::string& name, const std::function<int()>& work) noexcept {
    constexpr int kAnswered = 64;
    std::array<void*, 1> frames{};
    backtrace(frames.data(), 1);  // loads what it needs
    const pid_t child = fork();
    if (child == 0) {
        if (std::freopen(name.c_str(), "w", stderr) == nullptr) _exit(0);
        for (const int signal : {SIGSEGV, SIGBUS, SIGABRT})
            std::signal(signal, TellPlace);
        _exit(kAnswered + work());
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) - kAnswered : -1;
}

// Visible, so that they stand in front of the C library's own.
extern "C" {

__attribute__((visibility("default"))) ssize_t pread(int file, void* buffer, std::size_t count,
                                                     off_t offset) {
    if (!Fails(Call::kRead)) return syscall(SYS_pread64, file, buffer, count, offset);
    errno = EIO;
    return -1;
}

__attribute__((visibility("default"))) int unlink(const char* path) noexcept {
    if (!Fails(Call::kRemove)) return static_cast<int>(syscall(SYS_unlink, path));
    errno = EACCES;
    return -1;
}

__attribute__((visibility("default"))) void* malloc(std::size_t bytes) noexcept {
    static auto* const next = Next<void*(std::size_t)>("malloc");
    return FailsToAllocate() ? nullptr : next(bytes);
}

__attribute__((visibility("default"))) void* calloc(std::size_t count, std::size_t bytes) noexcept {
    static auto* const next = Next<void*(std::size_t, std::size_t)>("calloc");
    return FailsToAllocate() ? nullptr : next(count, bytes);
}

__attribute__((visibility("default"))) void* realloc(void* memory, std::size_t bytes) noexcept {
    static auto* const next = Next<void*(void*, std::size_t)>("realloc");
    return FailsToAllocate() ? nullptr : next(memory, bytes);
}

#ifdef __SANITIZE_ADDRESS__
/// The leak check knows the dynamic linker's own memory by who calls malloc, which is this file.
__attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
    return "leak:_dl_";
}
#endif
}

void* operator new(std::size_t bytes) {
    return New(bytes);
}
void* operator new[](std::size_t bytes) {
    return New(bytes);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t /*bytes*/) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t /*bytes*/) noexcept {
    std::free(memory);
}
