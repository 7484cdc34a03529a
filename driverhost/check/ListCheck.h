#pragma once

#include <cstdint>
#include <pugixml.hpp>
#include <string>
#include <unordered_map>

#include "description/DescriptionLists.h"
#include "driverhost/check/CheckedDocument.h"

/// What all lists of a description have in common.

/// The end of an error: that the driver refuses the description, and its message.
std::string Refusal(const char* message);

/// The base resource number of a list with so many items.
void CheckBaseNumber(const CheckedDocument& document, const ListKind& kind, int32_t itemCount);

/// An item's `ID`, which must be its position. `met` gathers the list's items by their identifiers.
void CheckItemIdentifier(const CheckedDocument& document, const pugi::xml_node& item,
                         int32_t position, const ListKind& kind,
                         std::unordered_map<int32_t, pugi::xml_node>& met);

/// The text of the child `name` of an item, of which the host sees `mostBytes` bytes.
std::string CheckItemName(const CheckedDocument& document, const pugi::xml_node& item,
                          const char* name, std::size_t mostBytes);
