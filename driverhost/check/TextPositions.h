#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "driverhost/check/Findings.h"

/// Turns offsets in a text into lines and columns. Lines end as they do in any editor: LF, CR LF
/// or CR.
class TextPositions {
  public:
    /// `text` is UTF-8; what is none counts a column for each byte that starts no character.
    explicit TextPositions(std::string text);

    /// The place of the byte at `offset`; the nearest there is for one outside the text.
    TextPosition At(std::ptrdiff_t offset) const;
    std::string_view Text() const { return text_; }

  private:
    std::string text_;
    std::vector<std::size_t> lineStarts_;
};
