#pragma once

#include <cstdint>
#include <functional>
#include <string>

/// Calls of this process, libraries included, that a test lets fail.
enum class Call {
    kRead,      ///< pread; its reason is EIO
    kRemove,    ///< unlink; its reason is EACCES
    kAllocate,  ///< of C and C++
    kNew,       ///< of C++ alone
};

/// While this lives, the `nth` call of a kind fails, counted from 1, and every later one where
/// `fromThenOn` says so. One at a time.
class FailingCall {
  public:
    FailingCall(Call call, int64_t nth, bool fromThenOn);
    ~FailingCall();
    FailingCall(const FailingCall&) = delete;
    FailingCall& operator=(const FailingCall&) = delete;

    /// Whether a call has failed yet.
    bool HasFailed() const;
};

/// The answer of `work`, below 64, in a process of its own; negative when that died. What it
/// prints on its standard error, where it died included, goes to the file `name`.
int InChild(const std::string& name, const std::function<int()>& work) noexcept;

/// Steps from one failing call to the next where each has a process of its own, which costs
/// twenty times as much under the sanitizers.
#ifdef __SANITIZE_ADDRESS__
inline constexpr int64_t kChildStride = 7;
#else
inline constexpr int64_t kChildStride = 1;
#endif
