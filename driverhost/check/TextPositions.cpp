#include "driverhost/check/TextPositions.h"

#include <algorithm>
#include <cstdint>

namespace {

/// How the units of an encoding stand in bytes.
struct UnitForm {
    std::size_t Bytes = 1;
    bool BigEndian = false;
};

UnitForm FormOf(pugi::xml_encoding encoding) {
    switch (encoding) {
        case pugi::encoding_utf16_le:
            return {2, false};
        case pugi::encoding_utf16_be:
            return {2, true};
        case pugi::encoding_utf32_le:
            return {4, false};
        case pugi::encoding_utf32_be:
            return {4, true};
        default:
            return {1, false};
    }
}

uint32_t UnitAt(std::string_view bytes, std::size_t offset, UnitForm form) {
    uint32_t unit = 0;
    for (std::size_t i = 0; i < form.Bytes; ++i) {
        const std::size_t at = offset + (form.BigEndian ? i : form.Bytes - 1 - i);
        unit = unit << 8 | static_cast<unsigned char>(bytes[at]);
    }
    return unit;
}

void AppendUtf8(uint32_t character, std::string& text) {
    const auto tail = [&](int shift) {
        text += static_cast<char>(0x80 | ((character >> shift) & 0x3F));
    };
    if (character < 0x80) {
        text += static_cast<char>(character);
    } else if (character < 0x800) {
        text += static_cast<char>(0xC0 | character >> 6);
        tail(0);
    } else if (character < 0x10000) {
        text += static_cast<char>(0xE0 | character >> 12);
        tail(6);
        tail(0);
    } else {
        text += static_cast<char>(0xF0 | (character >> 18 & 0x07));
        tail(12);
        tail(6);
        tail(0);
    }
}

}  // namespace

TextPositions::TextPositions(std::string text) : text_(std::move(text)) {
    lineStarts_.push_back(text_.starts_with("\xEF\xBB\xBF") ? 3 : 0);  // a byte order mark
    for (std::size_t at = 0; at < text_.size(); ++at) {
        const bool beforeLineFeed = at + 1 < text_.size() && text_[at + 1] == '\n';
        if (text_[at] == '\n' || (text_[at] == '\r' && !beforeLineFeed)) {
            lineStarts_.push_back(at + 1);
        }
    }
}

TextPosition TextPositions::At(std::ptrdiff_t offset) const {
    const auto first = static_cast<std::ptrdiff_t>(lineStarts_[0]);
    const auto last = static_cast<std::ptrdiff_t>(text_.size());
    const auto at = static_cast<std::size_t>(std::clamp(offset, first, last));
    const auto behind = std::upper_bound(lineStarts_.begin(), lineStarts_.end(), at);
    const std::size_t lineStart = *(behind - 1);
    const auto characters =
        std::count_if(text_.begin() + static_cast<std::ptrdiff_t>(lineStart),
                      text_.begin() + static_cast<std::ptrdiff_t>(at),
                      [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; });
    return {static_cast<std::size_t>(behind - lineStarts_.begin()),
            static_cast<std::size_t>(characters) + 1};
}

std::string Utf8Form(std::string_view bytes, pugi::xml_encoding encoding) {
    const UnitForm form = FormOf(encoding);
    if (form.Bytes == 1 && encoding != pugi::encoding_latin1) return std::string(bytes);
    std::string text;
    text.reserve(bytes.size());
    for (std::size_t at = 0; at + form.Bytes <= bytes.size(); at += form.Bytes) {
        uint32_t character = UnitAt(bytes, at, form);
        const bool isPair = form.Bytes == 2 && character >= 0xD800 && character < 0xDC00;
        if (isPair && at + 4 <= bytes.size()) {
            at += 2;
            character = 0x10000 + ((character & 0x3FF) << 10) + (UnitAt(bytes, at, form) & 0x3FF);
        }
        AppendUtf8(character, text);
    }
    return text;
}
