#pragma once

#include <unistd.h>

#include <cerrno>
#include <string_view>

/// A file descriptor that is closed when this goes, by whatever way; negative for none.
class ScopedDescriptor {
  public:
    explicit ScopedDescriptor(int descriptor) : descriptor_(descriptor) {}
    ~ScopedDescriptor() {
        if (descriptor_ >= 0) close(descriptor_);
    }
    ScopedDescriptor(const ScopedDescriptor&) = delete;
    ScopedDescriptor& operator=(const ScopedDescriptor&) = delete;
    int Get() const { return descriptor_; }
    /// Closes now, for whom the answer matters.
    [[nodiscard]] bool Close() {
        const int descriptor = descriptor_;
        descriptor_ = -1;
        return close(descriptor) == 0;
    }

  private:
    int descriptor_;
};

/// Writes every byte, in as many calls as that takes. False at the first that fails.
inline bool WriteAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written == 0) errno = EIO;  // no file does that; it must not go on for ever
        if (written <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}
