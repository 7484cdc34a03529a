#pragma once

#include <optional>
#include <string>
#include <string_view>

/// The ANSI code page: the system's on Windows; on POSIX the character set that QL_CODE_PAGE
/// names, read at each conversion, else UTF-8. A name that the system does not know counts as
/// UTF-8.

/// A text in the code page, as UTF-8. Bytes that are no character of the code page become '?'.
std::string AnsiToUtf8(std::string_view text);

/// The same; nothing when a byte is no character of the code page.
std::optional<std::string> ExactAnsiToUtf8(std::string_view text);

/// A UTF-8 text in the code page. A character that the code page lacks becomes '?', as does each
/// byte that is no UTF-8.
std::string Utf8ToAnsi(std::string_view text);

inline bool IsCodePageKnown() { return true; }
