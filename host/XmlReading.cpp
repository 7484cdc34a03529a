#include "host/XmlReading.h"

namespace {

// Everything is kept, blanks at the top level too (which pugixml keeps in fragments alone), so
// that a document that is loaded and saved changes only where a caller changed it.
constexpr unsigned kParseFlags = pugi::parse_full | pugi::parse_ws_pcdata | pugi::parse_fragment;

bool IsText(const pugi::xml_node& node) {
    return node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata;
}

bool IsBlank(std::string_view text) {
    return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

/// What the top level holds beyond that of a document: one element, and no text beside it.
std::optional<XmlFault> TopLevelFault(const pugi::xml_node& top) {
    bool hasRoot = false;
    for (const pugi::xml_node node : top) {
        if (IsFilledText(node))
            return XmlFault{"text outside the root element", node.offset_debug()};
        if (node.type() != pugi::node_element) continue;
        // pugixml counts to an element's name, behind the bracket.
        if (hasRoot) return XmlFault{"a second root element", node.offset_debug() - 1};
        hasRoot = true;
    }
    if (!hasRoot) return XmlFault{"no root element", 0};
    return std::nullopt;
}

std::optional<XmlFault> FaultOf(const pugi::xml_parse_result& result, std::string_view text,
                                const pugi::xml_node& top) {
    if (!result) return XmlFault{result.description(), result.offset};
    // pugixml would read up to it and be content.
    const std::size_t zero = text.find('\0');
    if (zero != std::string_view::npos)
        return XmlFault{"a zero byte", static_cast<std::ptrdiff_t>(zero)};
    return TopLevelFault(top);
}

}  // namespace

XmlText ReadXml(std::string_view bytes, pugi::xml_document& document) {
    XmlText text = DecodeXml(bytes);
    document.reset();
    if (text.Fault) return text;
    const std::string_view utf8 = text.Utf8 ? *text.Utf8 : bytes;
    const pugi::xml_parse_result result =
        document.load_buffer(utf8.data(), utf8.size(), kParseFlags, pugi::encoding_utf8);
    text.Fault = FaultOf(result, utf8, document);
    if (text.Fault) document.reset();
    return text;
}

pugi::xml_node FirstElement(pugi::xml_node node) {
    while (node && node.type() != pugi::node_element)
        node = node.next_sibling();
    return node;
}

pugi::xml_node TextOf(const pugi::xml_node& element) {
    pugi::xml_node first;
    for (const pugi::xml_node node : element) {
        if (IsFilledText(node)) return node;
        if (!first && IsText(node)) first = node;
    }
    return first;
}

bool IsFilledText(const pugi::xml_node& node) {
    return node.type() == pugi::node_cdata || (IsText(node) && !IsBlank(node.value()));
}
