#pragma once

#include <cstdint>
#include <pugixml.hpp>
#include <vector>

#include "driverhost/check/CheckedDocument.h"

/// Checks the white ink that a `ModelList` entry offers. The treatments that can be in effect: its
/// codes, then the default; none where it offers no white.
std::vector<int32_t> CheckWhiteOffer(const CheckedDocument& document, const pugi::xml_node& entry);
