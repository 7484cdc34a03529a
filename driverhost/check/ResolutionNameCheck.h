#pragma once

#include <cstdint>
#include <string_view>

/// Whether a display name of two numbers joined by x ("600x300", "600 x 300 dpi") says the dots per
/// inch of a resolution the other way round.
bool NamesExchanged(std::string_view displayName, int32_t xDots, int32_t yDots);
