#include "host/XmlEncoding.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/FileBytes.h"
#include "host/Text.h"
#include "platform/Encoding.h"
#include "platform/Utf8.h"

namespace {

/// How far a declaration reaches at most, in bytes.
constexpr std::size_t kMostHeadBytes = 1024;
/// Of a document as UTF-8, in which no character has more than three times the bytes that it has in
/// another encoding.
constexpr std::size_t kMostUtf8Bytes = 3 * kMostTextBytes;

constexpr std::string_view kUtf8 = "UTF-8";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// How the first characters stand in bytes. The first one of a document is ASCII, or the mark.
struct Shape {
    std::string_view Encoding;  ///< to read a declaration in
    std::string_view Order;     ///< behind the names of encodings that come in two orders
};

Shape ShapeOf(std::string_view bytes) {
    using namespace std::string_view_literals;
    // An empty text, or one that ends before, has none of the shapes.
    const auto isZero = [&](std::size_t at) { return at < bytes.size() && bytes[at] == '\0'; };
    const auto isOther = [&](std::size_t at) { return at < bytes.size() && bytes[at] != '\0'; };
    const bool startsWide = isZero(2) && isZero(3);
    if (bytes.starts_with("\0\0\xFE\xFF"sv) || (isZero(0) && isZero(1) && isZero(2) && isOther(3)))
        return {"UTF-32BE", "BE"};
    if (bytes.starts_with("\xFF\xFE\0\0"sv) || (isOther(0) && isZero(1) && startsWide))
        return {"UTF-32LE", "LE"};
    if (bytes.starts_with("\xFE\xFF"sv) || (isZero(0) && isOther(1))) return {"UTF-16BE", "BE"};
    if (bytes.starts_with("\xFF\xFE"sv) || (isOther(0) && isZero(1))) return {"UTF-16LE", "LE"};
    if (bytes.starts_with("\x4C\x6F\xA7\x94"sv)) return {"IBM037", ""};  // "<?xm" of mainframes
    return {kUtf8, ""};
}

constexpr std::string_view kBlanks = " \t\r\n";

std::string_view SkipBlanks(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of(kBlanks), text.size()));
}

/// The declaration that `text` begins with; "" when it begins with none.
std::string_view Declaration(std::string_view text) {
    constexpr std::string_view kBegin = "<?xml";
    if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
    text = SkipBlanks(text);
    if (!text.starts_with(kBegin)) return {};
    const std::string_view rest = text.substr(kBegin.size());
    if (rest.find_first_of(kBlanks) != 0) return {};  // a word that begins like this one
    return text.substr(0, text.find("?>"));
}

/// The encoding that a declaration names; "" when it names none.
std::string_view DeclaredIn(std::string_view head) {
    std::string_view rest = Declaration(head);
    const std::size_t word = rest.find("encoding");
    if (word == std::string_view::npos) return {};
    rest = SkipBlanks(rest.substr(word + std::string_view("encoding").size()));
    if (!rest.starts_with('=')) return {};
    rest = SkipBlanks(rest.substr(1));
    if (!rest.starts_with('"') && !rest.starts_with('\'')) return {};
    const std::size_t end = rest.find(rest[0], 1);
    return end == std::string_view::npos ? std::string_view() : rest.substr(1, end - 1);
}

/// As XML spells names of encodings: without what a converter takes for its own orders.
bool IsEncodingName(std::string_view name) {
    const auto isLetter = [](char c) { return (c | 0x20) >= 'a' && (c | 0x20) <= 'z'; };
    return isLetter(name[0]) && std::all_of(name.begin(), name.end(), [&](char c) {
               return isLetter(c) || (c >= '0' && c <= '9') || c == '.' || c == '_' || c == '-';
           });
}

bool IsUtf8Name(std::string_view name) {
    return EqualsIgnoringCase(name, kUtf8) || EqualsIgnoringCase(name, "UTF8");
}

XmlText Utf8Text(std::string_view bytes) {
    XmlText text;
    const std::size_t good = Utf8PrefixBytes(bytes);
    if (good < bytes.size())
        text.Fault = {"bytes that are no UTF-8", static_cast<std::ptrdiff_t>(good)};
    return text;
}

/// The name under which the system reads a document that declares `name` and has this shape; ""
/// when it cannot be read so.
std::string ServingName(std::string_view head, std::string_view name, const Shape& shape) {
    for (const std::string_view order : {std::string_view(), shape.Order}) {
        std::string candidate = std::string(name).append(order);
        std::string begin;
        EncodedToUtf8(head, candidate.c_str(), kMostUtf8Bytes, begin);
        if (!Declaration(begin).empty()) return candidate;
    }
    return {};
}

XmlText ConvertedText(std::string_view bytes, const std::string& encoding) {
    std::string utf8;
    const Conversion conversion = EncodedToUtf8(bytes, encoding.c_str(), kMostUtf8Bytes, utf8);
    XmlText text;
    if (conversion != Conversion::kDone)
        text.Fault = {conversion == Conversion::kTooLarge
                          ? fmt::format("more than {} bytes of UTF-8", kMostUtf8Bytes)
                          : fmt::format("bytes that are no {}", encoding),
                      static_cast<std::ptrdiff_t>(utf8.size())};
    text.Utf8 = std::move(utf8);
    return text;
}

XmlText Refused(std::string reason) {
    return {{}, XmlFault{std::move(reason), 0}};
}

}  // namespace

XmlText DecodeXml(std::string_view bytes) {
    if (bytes.size() > kMostTextBytes)
        return Refused(fmt::format("more than {} bytes", kMostTextBytes));
    const Shape shape = ShapeOf(bytes);
    const std::string_view head = bytes.substr(0, kMostHeadBytes);
    std::string begin(head);
    if (shape.Encoding != kUtf8)
        EncodedToUtf8(head, std::string(shape.Encoding).c_str(), kMostUtf8Bytes, begin);
    const std::string declared(DeclaredIn(begin));
    if (declared.empty()) {
        const bool isWide = !shape.Order.empty();
        return isWide ? ConvertedText(bytes, std::string(shape.Encoding)) : Utf8Text(bytes);
    }
    if (IsUtf8Name(declared)) return Utf8Text(bytes);
    if (!IsEncodingName(declared)) return Refused("no name of an encoding: " + declared);
    const std::string serving = ServingName(head, declared, shape);
    if (serving.empty()) {
        std::string nothing;
        const bool isKnown =
            EncodedToUtf8({}, declared.c_str(), 0, nothing) != Conversion::kUnknown;
        return Refused((isKnown ? "not in the encoding that it declares: "
                                : "an encoding that nobody knows: ") +
                       declared);
    }
    return ConvertedText(bytes, serving);
}
