#pragma once

#include <cstddef>
#include <string_view>

/// Equality without regard to the case of ASCII letters, in every locale.
bool EqualsIgnoringCase(std::string_view left, std::string_view right);

/// Copies `text` into a field of `fieldBytes` bytes: at most `mostCharacters` characters (and
/// always one byte less than the field), zero from there to the field's end.
void CopyText(char* field, std::size_t fieldBytes, std::string_view text,
              std::size_t mostCharacters);
inline void CopyText(char* field, std::size_t fieldBytes, std::string_view text) {
    CopyText(field, fieldBytes, text, fieldBytes);
}

/// The text of a fixed-width field, up to its NUL or its end.
std::string_view FieldText(const char* field, std::size_t fieldBytes);
