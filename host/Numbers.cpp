#include "host/Numbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>
#include <system_error>

namespace {

constexpr int64_t kLargest = std::numeric_limits<int32_t>::max();
constexpr int64_t kSmallest = std::numeric_limits<int32_t>::min();

using Limits = std::numeric_limits<int64_t>;

bool IsBlank(char character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

bool IsDigit(char character) {
    return character >= '0' && character <= '9';
}

/// Skips white space and takes a sign; true for a minus.
bool TakeSign(std::string_view& text) {
    while (!text.empty() && IsBlank(text.front()))
        text.remove_prefix(1);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    return negative;
}

}  // namespace

std::optional<int64_t> LeadingWhole(std::string_view text) {
    const bool negative = TakeSign(text);
    if (text.empty() || !IsDigit(text.front())) return std::nullopt;
    int64_t number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec != std::errc()) return negative ? Limits::min() : Limits::max();
    return negative ? -number : number;
}

uint64_t HexadecimalNumber(std::string_view digits) {
    uint64_t number = 0;
    const char* const end = digits.data() + digits.size();
    const auto result = std::from_chars(digits.data(), end, number, 16);
    return result.ec == std::errc::result_out_of_range ? std::numeric_limits<uint64_t>::max()
                                                       : number;
}

std::optional<double> FractionWithPoint(std::string_view text) {
    const bool negative = TakeSign(text);
    if (text.starts_with('-')) return std::nullopt;  // one sign only
    double number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec == std::errc::invalid_argument) return std::nullopt;
    if (result.ec == std::errc::result_out_of_range) {
        // The number's own text tells which end was passed.
        const std::string digits(text.data(), result.ptr);
        const std::size_t exponent = digits.find_first_of("eE");
        const bool small = exponent != std::string::npos
                               ? digits.find('-', exponent) != std::string::npos
                               : digits.starts_with("0") || digits.starts_with(".");
        number = small ? 0 : std::numeric_limits<double>::infinity();
    }
    return negative ? -number : number;
}

std::optional<int32_t> LeadingDecimal(std::string_view text) {
    const std::optional<int64_t> number = LeadingWhole(text);
    if (!number || *number > kLargest || *number < kSmallest) return std::nullopt;
    return static_cast<int32_t>(*number);
}

int32_t Atoi(std::string_view text) {
    return static_cast<int32_t>(std::clamp(LeadingWhole(text).value_or(0), kSmallest, kLargest));
}

std::optional<float> LeadingFraction(const AString& text) {
    char* end = nullptr;
    const float value = std::strtof(text.c_str(), &end);
    if (end == text.c_str() || !std::isfinite(value)) return std::nullopt;
    return value;
}
