#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// The ANSI code page: the system's on Windows; on POSIX the character set that QL_CODE_PAGE
/// names, read at each use, else UTF-8. A name that the system does not know counts as unset.

/// Whether QL_CODE_PAGE is unset, or the system knows what it names.
bool IsCodePageKnown() noexcept;

/// A text in the code page, as UTF-8. What is no character of the code page becomes '?'.
std::string AnsiToUtf8(std::string_view text);

/// The same; nothing when a byte is no character of the code page.
std::optional<std::string> ExactAnsiToUtf8(std::string_view text);

/// A UTF-8 text in the code page. A character that the code page lacks becomes '?', as does each
/// byte that is no UTF-8.
std::string Utf8ToAnsi(std::string_view text);

// In a code page of several bytes a character, bytes behind the first may look like ASCII: '\',
// ':' or a letter. Whoever looks for such a character in a text goes through it by these. They
// allocate nothing, and cost next to nothing where all bytes look what they are.

/// Bytes of the character that starts `text`, which is not empty; 1 for what is none.
std::size_t CharacterBytes(std::string_view text) noexcept;

/// As many whole characters from the start of `text` as fit into `mostBytes` bytes.
std::string_view WholeCharacters(std::string_view text, std::size_t mostBytes) noexcept;

/// `text` without the beginning of a character at its end, which somebody has cut there.
std::string_view WithoutCutCharacter(std::string_view text) noexcept;
