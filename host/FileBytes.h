#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "host/AFilePath.h"
#include "host/WriterId.h"

/// The largest text that the host's readers take, from a file or inflated from one: far beyond any
/// description, and little enough for a desktop.
inline constexpr std::uint64_t kMostTextBytes = std::uint64_t{64} * 1024 * 1024;

/// The whole content of a file of at most `mostBytes` bytes; nothing when it cannot be read or is
/// larger; then `systemError`, where given, receives the system's number for it, 0 where it gave
/// none. Read in blocks, so that a file's claimed size never decides what is allocated; a pipe does
/// not block.
std::optional<std::string> ReadFileBytes(const AFilePath& path,
                                         std::uint64_t mostBytes = kMostTextBytes,
                                         int* systemError = nullptr);

/// A file's content up to its first NUL byte, likewise; what stands behind that is not read.
std::optional<std::string> ReadFileText(const AFilePath& path,
                                        std::uint64_t mostBytes = kMostTextBytes,
                                        int* systemError = nullptr);

/// How a write went.
struct WriteOutcome {
    bool IsWritten = false;
    int SystemError = 0;  ///< the system's number for the failure; 0 where it gave none

    explicit operator bool() const { return IsWritten; }
};

/// Replaces the content of a file, or makes it: complete, or it stays as it was. A link of that
/// name is replaced by a file.
///
/// The bytes are written beside it first, as NAME.PROCESS.WRITER.tmp: the file's name (cut where
/// the whole would be too long for its folder), the number of this process and that of `writer`.
/// What stands under that very name goes first, and so does what a process that lives no more has
/// left of the same file. A process of another machine that writes to the same folder at that
/// moment counts as one that lives no more; its write then fails, and says so.
WriteOutcome ReplaceFileBytes(const AFilePath& path, std::string_view bytes, WriterId writer = {});
