#include "host/Numbers.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace {

constexpr int64_t kLargest = std::numeric_limits<int32_t>::max();
constexpr int64_t kSmallest = std::numeric_limits<int32_t>::min();

bool IsBlank(char character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

bool IsDigit(char character) {
    return character >= '0' && character <= '9';
}

/// The leading number, saturated just outside 32 bits.
std::optional<int64_t> LeadingNumber(std::string_view text) {
    std::size_t at = 0;
    while (at < text.size() && IsBlank(text[at]))
        ++at;
    const bool negative = at < text.size() && text[at] == '-';
    if (negative || (at < text.size() && text[at] == '+')) ++at;
    if (at == text.size() || !IsDigit(text[at])) return std::nullopt;
    int64_t magnitude = 0;
    for (; at < text.size() && IsDigit(text[at]); ++at) {
        magnitude = std::min(magnitude * 10 + (text[at] - '0'), kLargest + 2);
    }
    return negative ? -magnitude : magnitude;
}

}  // namespace

std::optional<int32_t> LeadingDecimal(std::string_view text) {
    const std::optional<int64_t> number = LeadingNumber(text);
    if (!number || *number > kLargest || *number < kSmallest) return std::nullopt;
    return static_cast<int32_t>(*number);
}

int32_t Atoi(std::string_view text) {
    return static_cast<int32_t>(std::clamp(LeadingNumber(text).value_or(0), kSmallest, kLargest));
}

std::optional<float> LeadingFraction(const AString& text) {
    char* end = nullptr;
    const float value = std::strtof(text.c_str(), &end);
    if (end == text.c_str() || !std::isfinite(value)) return std::nullopt;
    return value;
}
