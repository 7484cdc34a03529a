#pragma once

#include <cstddef>
#include <optional>
#include <pugixml.hpp>
#include <string>
#include <string_view>

/// How every XML document is read. The document service stands on this; so does whoever explains
/// what is wrong with a document, and must neither accept nor refuse another than the service does.

/// Why a text is no document.
struct XmlFault {
    std::string Reason;
    std::ptrdiff_t Offset = 0;  ///< bytes in the text's UTF-8 form
};

struct XmlOutcome {
    std::optional<XmlFault> Fault;
    pugi::xml_encoding Encoding = pugi::encoding_auto;  ///< of the bytes
};

/// Reads `bytes`, in any of XML's encodings, into `document`: one element at the top level and no
/// text beside it. Everything is kept, comments and blanks too. On a fault the document is empty.
XmlOutcome ReadXml(std::string_view bytes, pugi::xml_document& document);

/// The first element from `node` on among its siblings; null when none.
pugi::xml_node FirstElement(pugi::xml_node node);

/// The text node that is an element's text: the first text or CDATA node, but blanks only where
/// there is no other text, for they may just lay out what follows. Null when none.
pugi::xml_node TextOf(const pugi::xml_node& element);

/// Whether the node is text and says something.
bool IsFilledText(const pugi::xml_node& node);
