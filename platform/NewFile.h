#pragma once

#include <string_view>

/// Makes a file of these bytes where nothing stands yet, a link included: whole, or it is gone
/// again. Answers 0, or the system's number for the failure. Allocates nothing.
[[nodiscard]] int WriteNewFile(const char* path, std::string_view bytes) noexcept;

/// Gives a file the name `to`, in the same folder, at once: whoever looks finds what stood there or
/// this file. A link of that name is replaced, not followed. Answers likewise.
[[nodiscard]] int RenameOver(const char* from, const char* to) noexcept;
