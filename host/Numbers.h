#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "host/AString.h"

/// The *leading decimal* of a text: skips white space, takes a sign, then digits up to the first
/// character that is none. Nothing when there are no digits or the number is beyond 32 bits.
/// Independent of the locale.
std::optional<int32_t> LeadingDecimal(std::string_view text);

/// The same with 0 for nothing; a number beyond 32 bits is the nearest that fits.
int32_t Atoi(std::string_view text);

/// The leading decimal fraction of a text, read as the C library's "%f" does: with the decimal
/// point of the locale in force. Nothing when there is none, or none that a float can hold.
std::optional<float> LeadingFraction(const AString& text);

/// LeadingDecimal in 64 bits; a number beyond is the nearest that fits.
std::optional<int64_t> LeadingWhole(std::string_view text);

/// The hexadecimal digits at the start of a text; 0 without any, beyond 64 bits the largest.
uint64_t HexadecimalNumber(std::string_view digits);

/// A leading decimal fraction: white space, a sign, digits with a ".", an exponent; also "inf" and
/// "nan". Nothing without a number; beyond double precision infinite or 0. Independent of the
/// locale.
std::optional<double> FractionWithPoint(std::string_view text);
