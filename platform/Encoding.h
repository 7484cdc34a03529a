#pragma once

#include <cstddef>
#include <string>
#include <string_view>

enum class Conversion {
    kDone,
    kUnknown,   ///< the system does not know the encoding
    kInvalid,   ///< bytes that are none of the encoding's, or end within a character
    kTooLarge,  ///< more than `mostBytes`
};

/// A text in an encoding that `encoding` names, as UTF-8. `utf8` receives what was converted, also
/// when that is not all. A byte order mark stays.
Conversion EncodedToUtf8(std::string_view text, const char* encoding, std::size_t mostBytes,
                         std::string& utf8);
