#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "host/AFilePath.h"
#include "host/AXMLTree.h"
#include "host/Records.h"

/// One level of the way to an answer: the element that served and the `ID` that it has.
struct HalftoneEntry {
    AString Element;
    AString ID;
};

/// How a look into a parameter file went.
struct HalftoneReading {
    int32_t Answer = 0;                  ///< what the operation answers
    const char* Message = nullptr;       ///< to be shown to the user; null: it ended without a word
    AFilePath File{""};                  ///< where the answer was looked for
    std::vector<HalftoneEntry> Entries;  ///< what served, from the model down
};

/// An `ID` is read up to this length.
inline constexpr std::size_t kMostIDCharacters = 255;

/// The `ID` that stands for every value that no other entry of its level lists.
inline constexpr const char* kDefaultEntryID = "Default";

/// Whether a list of identifiers holds `wanted`. The list ends at its first empty field; a field
/// is read up to the first character that belongs to no number.
bool ListHolds(std::string_view list, int32_t wanted);

/// The child of `parent` named `elementName` that serves `wanted`: the first whose `ID` lists it,
/// else the last "Default".
std::optional<AXMLTreeNode> FindHalftoneEntry(const AXMLTree& document, const AXMLTreeNode& parent,
                                              const char* elementName, int32_t wanted);

/// The `ColorMode` element for the settings: the way through the document from the model down.
/// Notes each entry in `reading`, and the message where there is none.
std::optional<AXMLTreeNode> FindColorModeNode(const AXMLTree& document,
                                              const PrintSettings& settings,
                                              HalftoneReading& reading);

/// FindHalftoneEntry that notes the entry, or `message` where there is none.
std::optional<AXMLTreeNode> TakeHalftoneEntry(const AXMLTree& document, const AXMLTreeNode& parent,
                                              const char* elementName, int32_t wanted,
                                              const char* message, HalftoneReading& reading);
