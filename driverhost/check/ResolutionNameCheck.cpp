#include "driverhost/check/ResolutionNameCheck.h"

#include <algorithm>
#include <optional>

#include "host/Numbers.h"
#include "host/Text.h"

namespace {

constexpr std::string_view kDigits = "0123456789";

void SkipBlanks(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
}

std::optional<int32_t> TakeNumber(std::string_view& text) {
    const std::size_t end = std::min(text.find_first_not_of(kDigits), text.size());
    const std::optional<int32_t> number = LeadingDecimal(text.substr(0, end));
    text.remove_prefix(end);
    SkipBlanks(text);
    return number;
}

bool TakeTimes(std::string_view& text) {
    for (const std::string_view sign : {"x", "X", "\xC3\x97"}) {  // the last is ×
        if (!text.starts_with(sign)) continue;
        text.remove_prefix(sign.size());
        SkipBlanks(text);
        return true;
    }
    return false;
}

}  // namespace

bool NamesExchanged(std::string_view displayName, int32_t xDots, int32_t yDots) {
    SkipBlanks(displayName);
    const std::optional<int32_t> first = TakeNumber(displayName);
    if (!first || !TakeTimes(displayName)) return false;
    const std::optional<int32_t> second = TakeNumber(displayName);
    const bool isWhole = displayName.empty() || EqualsIgnoringCase(displayName, "dpi");
    return second && isWhole && xDots != yDots && *first == yDots && *second == xDots;
}
