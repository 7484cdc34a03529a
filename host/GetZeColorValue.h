#pragma once

#include <cstdint>
#include <string_view>

/// The display colour of an ink, 0x00BBGGRR, from its name in any case: the process inks and
/// their light forms, orange, green, violet, red, blue, white, varnish. Any other name has a
/// colour of its own that is always the same.
uint32_t GetZeColorValue(std::string_view name);
