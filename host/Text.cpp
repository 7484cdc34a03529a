#include "host/Text.h"

#include <algorithm>
#include <cstring>

namespace {

char LowerAscii(char character) {
    const bool upper = character >= 'A' && character <= 'Z';
    return upper ? static_cast<char>(character - 'A' + 'a') : character;
}

}  // namespace

bool EqualsIgnoringCase(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return LowerAscii(a) == LowerAscii(b); });
}

void CopyText(char* field, std::size_t fieldBytes, std::string_view text,
              std::size_t mostCharacters) {
    const std::size_t count = std::min({text.size(), mostCharacters, fieldBytes - 1});
    text.copy(field, count);  // an empty text may point nowhere
    std::memset(field + count, 0, fieldBytes - count);
}

std::string_view FieldText(const char* field, std::size_t fieldBytes) {
    const void* end = std::memchr(field, '\0', fieldBytes);
    return {field, end == nullptr
                       ? fieldBytes
                       : static_cast<std::size_t>(static_cast<const char*>(end) - field)};
}
