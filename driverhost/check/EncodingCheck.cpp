#include "driverhost/check/EncodingCheck.h"

#include <fmt/format.h>

#include <array>
#include <cstdint>

#include "host/Text.h"

namespace {

/// The sequences that a first byte of this range begins (RFC 3629): how many bytes follow it, and
/// what the next of them can be; those behind are 80 to BF.
struct Utf8Sequence {
    uint8_t First;
    uint8_t Last;
    std::size_t Following;
    uint8_t LowestNext;
    uint8_t HighestNext;
};
constexpr std::array<Utf8Sequence, 9> kUtf8Sequences = {{
    {0x00, 0x7F, 0, 0x00, 0x00},
    {0xC2, 0xDF, 1, 0x80, 0xBF},
    {0xE0, 0xE0, 2, 0xA0, 0xBF},  // no longer form of a shorter character
    {0xE1, 0xEC, 2, 0x80, 0xBF},
    {0xED, 0xED, 2, 0x80, 0x9F},  // no half of a pair
    {0xEE, 0xEF, 2, 0x80, 0xBF},
    {0xF0, 0xF0, 3, 0x90, 0xBF},
    {0xF1, 0xF3, 3, 0x80, 0xBF},
    {0xF4, 0xF4, 3, 0x80, 0x8F},  // up to 10FFFF
}};

/// Bytes of the character that `bytes` begins with; 0 when it begins with none.
std::size_t CharacterBytes(std::string_view bytes) {
    const auto byteAt = [&](std::size_t at) { return static_cast<uint8_t>(bytes[at]); };
    for (const Utf8Sequence& sequence : kUtf8Sequences) {
        if (byteAt(0) < sequence.First || byteAt(0) > sequence.Last) continue;
        if (bytes.size() <= sequence.Following) return 0;
        for (std::size_t at = 1; at <= sequence.Following; ++at) {
            const uint8_t lowest = at == 1 ? sequence.LowestNext : 0x80;
            const uint8_t highest = at == 1 ? sequence.HighestNext : 0xBF;
            if (byteAt(at) < lowest || byteAt(at) > highest) return 0;
        }
        return sequence.Following + 1;
    }
    return 0;
}

/// The name in the `encoding` of the document's first line; "" when it declares none.
std::string_view DeclaredEncoding(std::string_view bytes) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    constexpr std::string_view kLabel = "encoding";
    if (bytes.starts_with(kByteOrderMark)) bytes.remove_prefix(kByteOrderMark.size());
    if (!bytes.starts_with("<?xml")) return {};
    bytes = bytes.substr(0, bytes.find("?>"));
    const std::size_t label = bytes.find(kLabel);
    if (label == std::string_view::npos) return {};
    const std::size_t quote = bytes.find_first_of("\"'", label + kLabel.size());
    if (quote == std::string_view::npos) return {};
    const std::string_view name = bytes.substr(quote + 1);
    return name.substr(0, name.find(bytes[quote]));
}

}  // namespace

std::optional<XmlFault> EncodingFault(std::string_view bytes, pugi::xml_encoding encoding) {
    const std::string_view declared = DeclaredEncoding(bytes);
    const bool isUtf8 = declared.empty() || EqualsIgnoringCase(declared, "UTF-8");
    if (encoding != pugi::encoding_utf8 || !isUtf8) return std::nullopt;
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t count = CharacterBytes(bytes.substr(at));
        if (count == 0)
            return XmlFault{fmt::format("the byte {:02X} is part of no character in UTF-8, {}",
                                        static_cast<uint8_t>(bytes[at]),
                                        declared.empty() ? "and no other encoding is declared"
                                                         : "the declared encoding"),
                            static_cast<std::ptrdiff_t>(at)};
        at += count;
    }
    return std::nullopt;
}
