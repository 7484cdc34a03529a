#include "driverhost/check/TextPositions.h"

#include <algorithm>

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
