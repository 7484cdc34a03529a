#pragma once

#include <optional>
#include <pugixml.hpp>
#include <string_view>

#include "host/XmlReading.h"

/// The first byte of a document that is none of a character in the encoding that it declares, or in
/// UTF-8 where it declares none. `encoding` is the one that the document was read in. Nothing for
/// bytes that are right, and in encodings that have a character for every byte.
std::optional<XmlFault> EncodingFault(std::string_view bytes, pugi::xml_encoding encoding);
