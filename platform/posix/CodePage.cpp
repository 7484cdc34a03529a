#include "platform/CodePage.h"

#include <algorithm>

#include "platform/Utf8.h"
#include "platform/posix/CodePageSet.h"
#include "platform/posix/Converter.h"

namespace {

constexpr const char* kUtf8 = "UTF-8";

std::size_t Utf8BytesOrOne(std::string_view text) {
    return std::max<std::size_t>(Utf8CharacterBytes(text), 1);
}

std::size_t BytesIn(const CodePageSet& page, std::string_view text) {
    return page.Name == nullptr ? Utf8BytesOrOne(text) : page.Characters.CharacterBytes(text);
}

/// A UTF-8 text with a '?' for each byte that is none.
std::string Mended(std::string_view text) {
    std::string out(text);
    for (std::size_t at = Utf8PrefixBytes(text); at < out.size();
         at += Utf8BytesOrOne(std::string_view(out).substr(at)))
        if (Utf8CharacterBytes(std::string_view(out).substr(at)) == 0) out[at] = '?';
    return out;
}

/// Converts with a '?' for each character that has no counterpart; `bytesOf` tells how long one is.
template <class BytesOf>
std::string Convert(std::string_view text, const char* to, const char* from, BytesOf bytesOf) {
    Converter converter(to, from);
    std::string out;
    out.reserve(text.size());
    while (!text.empty() && converter.Run(text, out) != 0 && !text.empty()) {
        out += '?';
        text.remove_prefix(bytesOf(text));
    }
    return out;
}

bool IsAscii(char byte) {
    return static_cast<unsigned char>(byte) < 0x80;
}

}  // namespace

bool IsCodePageKnown() noexcept {
    return CurrentCodePage().IsKnown;
}

std::string AnsiToUtf8(std::string_view text) {
    const CodePageSet page = CurrentCodePage();
    if (page.Name == nullptr) return Mended(text);
    return Convert(text, kUtf8, page.Name,
                   [&](std::string_view rest) { return BytesIn(page, rest); });
}

std::optional<std::string> ExactAnsiToUtf8(std::string_view text) {
    const CodePageSet page = CurrentCodePage();
    if (page.Name == nullptr) {
        const bool isUtf8 = Utf8PrefixBytes(text) == text.size();
        return isUtf8 ? std::optional<std::string>(text) : std::nullopt;
    }
    Converter converter(kUtf8, page.Name);
    std::string out;
    if (!text.empty() && converter.Run(text, out) != 0) return std::nullopt;
    return out;
}

std::string Utf8ToAnsi(std::string_view text) {
    const CodePageSet page = CurrentCodePage();
    if (page.Name == nullptr) return Mended(text);
    return Convert(text, page.Name, kUtf8, Utf8BytesOrOne);
}

std::size_t CharacterBytes(std::string_view text) noexcept {
    return IsAscii(text[0]) ? 1 : BytesIn(CurrentCodePage(), text);
}

std::string_view WholeCharacters(std::string_view text, std::size_t mostBytes) noexcept {
    if (text.size() <= mostBytes) return text;
    std::size_t end = 0;
    for (std::size_t next = 0; next <= mostBytes; next += CharacterBytes(text.substr(next)))
        end = next;
    return text.substr(0, end);
}

std::string_view WithoutCutCharacter(std::string_view text) noexcept {
    const CodePageSet page = CurrentCodePage();
    for (std::size_t at = 0; at < text.size();) {
        const std::string_view rest = text.substr(at);
        const bool isCut =
            page.Name == nullptr ? IsCutUtf8Character(rest) : page.Characters.IsCutCharacter(rest);
        if (isCut) return text.substr(0, at);
        at += BytesIn(page, rest);
    }
    return text;
}
