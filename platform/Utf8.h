#pragma once

#include <cstddef>
#include <string_view>

/// Bytes of the UTF-8 character that starts `text`, which is not empty; 0 when none does: what is
/// cut, longer than it must be, half of a pair, or beyond the last character.
std::size_t Utf8CharacterBytes(std::string_view text) noexcept;

/// Whether `text`, which is not empty, may be a character's beginning that was cut behind it.
bool IsCutUtf8Character(std::string_view text) noexcept;

/// How many bytes from the start of a text are UTF-8.
std::size_t Utf8PrefixBytes(std::string_view text) noexcept;
