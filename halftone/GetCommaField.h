#pragma once

#include <cstddef>
#include <string_view>

/// Room for a field of a list; what is longer is cut.
inline constexpr std::size_t kCommaFieldBytes = 64;

/// Copies one of the stretches between commas, counted from 0, into `field`, blanks kept and
/// terminated. Answers the field's length + 1, or 0 when it is empty or there is none.
int GetCommaField(int index, std::string_view text, char (&field)[kCommaFieldBytes]);
