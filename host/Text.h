#pragma once

#include <cstddef>
#include <string_view>

#include "host/AString.h"

/// Position of the first, or last, character that is this ASCII one and not a byte inside another;
/// npos when there is none.
std::size_t FindCharacter(std::string_view text, char character);
std::size_t FindLastCharacter(std::string_view text, char character);
/// Position of the first occurrence of `part` that begins with a character; npos when there is
/// none.
std::size_t FindText(std::string_view text, std::string_view part);

/// A text with its ASCII letters in lower case.
AString LowerCase(std::string_view text);

/// Equality without regard to the case of ASCII letters, in every locale.
bool EqualsIgnoringCase(std::string_view left, std::string_view right);

/// Copies `text` into a field of `fieldBytes` bytes: as many whole characters as `mostBytes` bytes
/// hold (and always one byte less than the field), zero from there to the field's end.
void CopyText(char* field, std::size_t fieldBytes, std::string_view text, std::size_t mostBytes);
inline void CopyText(char* field, std::size_t fieldBytes, std::string_view text) {
    CopyText(field, fieldBytes, text, fieldBytes);
}

/// The text of a fixed-width field, up to its NUL or its end.
std::string_view FieldText(const char* field, std::size_t fieldBytes);
/// The same, without the character that the field cuts, if the text fills it.
std::string_view WholeFieldText(const char* field, std::size_t fieldBytes);
