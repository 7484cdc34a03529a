#pragma once

#include <pugixml.hpp>
#include <string_view>

#include "host/XmlEncoding.h"

/// How every XML document is read. The document service stands on this; so does whoever explains
/// what is wrong with a document, and must neither accept nor refuse another than the service does.

/// Reads `bytes`, in any encoding that the system knows, into `document`: one element at the top
/// level and no text beside it. Everything is kept, comments and blanks too. On a fault the
/// document is empty. Answers what it read.
XmlText ReadXml(std::string_view bytes, pugi::xml_document& document);

/// The first element from `node` on among its siblings; null when none.
pugi::xml_node FirstElement(pugi::xml_node node);

/// The text node that is an element's text: the first text or CDATA node, but blanks only where
/// there is no other text, for they may just lay out what follows. Null when none.
pugi::xml_node TextOf(const pugi::xml_node& element);

/// Whether the node is text and says something.
bool IsFilledText(const pugi::xml_node& node);
