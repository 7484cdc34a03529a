#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "host/AXMLTree.h"
#include "host/XMLChildren.h"

/// How the readers of a description walk its document. Message boxes are shown here for the
/// elements that every reader needs, so that a fault is named with the same words everywhere.

/// The text of a child element; "" when it is absent.
AString ChildText(const AXMLTree& document, const AXMLTreeNode& parent, std::string_view name);

/// The number that a child element holds; -1, which no list allows, when it holds none.
int32_t ChildNumber(const AXMLTree& document, const AXMLTreeNode& parent, std::string_view name);

/// The number in an attribute; nothing when it is absent or holds none.
std::optional<int32_t> AttributeNumber(const AXMLTree& document, const AXMLTreeNode& node,
                                       std::string_view name);

/// A colorant's colour: its `ID` attribute, 0 when absent, -1 when that holds no number.
int32_t ColorantColor(const AXMLTree& document, const AXMLTreeNode& colorant);

/// Finds `Definition` under the root, else shows the message.
bool FindDefinition(const AXMLTree& document, const AXMLTreeNode& root, AXMLTreeNode& definition);

/// Finds the list of colours under `Definition`, which must not be empty; else shows the message.
bool FindColorList(const AXMLTree& document, const AXMLTreeNode& definition,
                   AXMLTreeNode& colorList);

/// Shows `text` as every description fault is shown: an OK button, no owner, no caption. Answers
/// false, for the reader to hand on.
bool ShowFault(const char* text);
