#pragma once

#include <algorithm>
#include <string_view>

/// Equal but for the case of the letters A to Z, whatever the locale.
inline bool SameIgnoringCase(std::string_view a, std::string_view b) {
    const auto lower = [](char character) {
        return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                    : character;
    };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [lower](char x, char y) { return lower(x) == lower(y); });
}
