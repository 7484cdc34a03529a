#include "host/Text.h"

#include <algorithm>
#include <cstring>

#include "platform/CodePage.h"

namespace {

char LowerAscii(char character) {
    const bool upper = character >= 'A' && character <= 'Z';
    return upper ? static_cast<char>(character - 'A' + 'a') : character;
}

}  // namespace

std::size_t FindCharacter(std::string_view text, char character) {
    return FindText(text, {&character, 1});
}

std::size_t FindLastCharacter(std::string_view text, char character) {
    std::size_t last = std::string_view::npos;
    const std::size_t end = text.rfind(character);
    if (end == std::string_view::npos) return last;
    for (std::size_t at = 0; at <= end; at += CharacterBytes(text.substr(at)))
        if (text[at] == character) last = at;
    return last;
}

std::size_t FindText(std::string_view text, std::string_view part) {
    std::size_t at = 0;
    std::size_t found = text.find(part);
    while (found != std::string_view::npos) {
        while (at < found)
            at += CharacterBytes(text.substr(at));
        if (at == found) break;
        found = text.find(part, at);
    }
    return found;
}

AString LowerCase(std::string_view text) {
    AString lower(text);
    for (std::size_t at = 0; at < lower.size();) {
        const std::size_t bytes = CharacterBytes(text.substr(at));
        if (bytes == 1) lower[at] = LowerAscii(lower[at]);
        at += bytes;
    }
    return lower;
}

bool EqualsIgnoringCase(std::string_view left, std::string_view right) {
    if (left.size() != right.size()) return false;
    for (std::size_t at = 0; at < left.size();) {
        const std::size_t bytes = CharacterBytes(left.substr(at));
        const bool same = bytes == 1 ? LowerAscii(left[at]) == LowerAscii(right[at])
                                     : left.substr(at, bytes) == right.substr(at, bytes);
        if (!same) return false;
        at += bytes;
    }
    return true;
}

void CopyText(char* field, std::size_t fieldBytes, std::string_view text, std::size_t mostBytes) {
    const std::string_view copied = WholeCharacters(text, std::min(mostBytes, fieldBytes - 1));
    copied.copy(field, copied.size());  // an empty text may point nowhere
    std::memset(field + copied.size(), 0, fieldBytes - copied.size());
}

std::string_view FieldText(const char* field, std::size_t fieldBytes) {
    const void* end = std::memchr(field, '\0', fieldBytes);
    return {field, end == nullptr
                       ? fieldBytes
                       : static_cast<std::size_t>(static_cast<const char*>(end) - field)};
}

std::string_view WholeFieldText(const char* field, std::size_t fieldBytes) {
    const std::string_view text = FieldText(field, fieldBytes);
    return text.size() + 1 < fieldBytes ? text : WithoutCutCharacter(text);
}
