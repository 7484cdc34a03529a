#include "platform/Utf8.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace {

bool IsContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/// ASCII bytes at the start of `text`, as many as whole words of them.
std::size_t AsciiBytes(std::string_view text) {
    constexpr uint64_t kHighBits = 0x8080808080808080;
    std::size_t at = 0;
    for (uint64_t word = 0; at + sizeof word <= text.size(); at += sizeof word) {
        std::memcpy(&word, text.data() + at, sizeof word);
        if ((word & kHighBits) != 0) break;
    }
    return at;
}

/// Bytes that a character has by its first one; 0 for a byte that starts none.
std::size_t LengthByLead(char byte) {
    const auto lead = static_cast<unsigned char>(byte);
    if (lead < 0x80) return 1;
    if (lead < 0xC2 || lead > 0xF4) return 0;
    return lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
}

}  // namespace

std::size_t Utf8CharacterBytes(std::string_view text) noexcept {
    const std::size_t length = LengthByLead(text[0]);
    if (length <= 1) return length;
    if (length > text.size()) return 0;
    uint32_t character = static_cast<unsigned char>(text[0]) & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if (!IsContinuation(text[i])) return 0;
        character = character << 6 | (static_cast<unsigned char>(text[i]) & 0x3FU);
    }
    constexpr uint32_t kFirstOfLength[] = {0, 0, 0x80, 0x800, 0x10000};
    constexpr uint32_t kLast = 0x10FFFF;
    const bool isHalfOfPair = character >= 0xD800 && character < 0xE000;
    const bool isOne = character >= kFirstOfLength[length] && character <= kLast && !isHalfOfPair;
    return isOne ? length : 0;
}

bool IsCutUtf8Character(std::string_view text) noexcept {
    return text.size() < LengthByLead(text[0]) &&
           std::all_of(text.begin() + 1, text.end(), IsContinuation);
}

std::size_t Utf8PrefixBytes(std::string_view text) noexcept {
    std::size_t at = 0;
    while (at < text.size()) {
        at += AsciiBytes(text.substr(at));
        const std::size_t bytes = at < text.size() ? Utf8CharacterBytes(text.substr(at)) : 0;
        if (bytes == 0) break;
        at += bytes;
    }
    return at;
}
