#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

/// The *leading decimal* of a text: skips white space, takes a sign, then digits up to the first
/// character that is none. Nothing when there are no digits or the number is beyond 32 bits.
/// Independent of the locale.
std::optional<int32_t> LeadingDecimal(std::string_view text);

/// The same with 0 for nothing; a number beyond 32 bits is the nearest that fits.
int32_t Atoi(std::string_view text);
