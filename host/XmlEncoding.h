#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// Why a text is no document.
struct XmlFault {
    std::string Reason;
    std::ptrdiff_t Offset = 0;  ///< bytes in the text's UTF-8 form
};

/// A document's text.
struct XmlText {
    /// The UTF-8 form, as far as it could be made; nothing when the bytes are UTF-8 themselves.
    std::optional<std::string> Utf8;
    std::optional<XmlFault> Fault;
};

/// Reads a document's bytes in the encoding that it declares, without a declaration in UTF-8, or in
/// UTF-16 or UTF-32 where its bytes stand in their order.
XmlText DecodeXml(std::string_view bytes);
