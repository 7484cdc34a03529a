#pragma once

#include <pugixml.hpp>
#include <string>

#include "driverhost/check/CheckedDocument.h"

/// Checks the preview of a `ModelList` entry, which has one whether it says so or not. The name
/// pattern of its file.
std::string CheckPreview(const CheckedDocument& document, const pugi::xml_node& entry);
