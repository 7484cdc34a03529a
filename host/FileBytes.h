#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "host/AFilePath.h"

/// The largest text that the host's readers take, from a file or inflated from one: far beyond any
/// description, and little enough for a desktop.
inline constexpr std::uint64_t kMostTextBytes = std::uint64_t{64} * 1024 * 1024;

/// The whole content of a file of at most `mostBytes` bytes; nothing when it cannot be read or is
/// larger. Read in blocks, so that a file's claimed size never decides what is allocated; a pipe
/// does not block.
std::optional<std::string> ReadFileBytes(const AFilePath& path,
                                         std::uint64_t mostBytes = kMostTextBytes);

/// A file's content up to its first NUL byte, likewise; what stands behind that is not read.
std::optional<std::string> ReadFileText(const AFilePath& path,
                                        std::uint64_t mostBytes = kMostTextBytes);

/// Replaces the content of a file, or makes it: complete, or it stays as it was. False when it
/// cannot be written.
bool ReplaceFileBytes(const AFilePath& path, const std::string& bytes);
