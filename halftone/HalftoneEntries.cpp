#include "halftone/HalftoneEntries.h"

#include "halftone/GetCommaField.h"
#include "host/Numbers.h"
#include "host/Text.h"
#include "host/XMLChildren.h"

namespace {

AString EntryID(const AXMLTree& document, const AXMLTreeNode& node) {
    return document.getAttribute(node, "ID").substr(0, kMostIDCharacters);
}

/// The first child named `elementName` whose `ID` serves, else the last "Default".
template <class Serves>
std::optional<AXMLTreeNode> FindServingChild(const AXMLTree& document, const AXMLTreeNode& parent,
                                             std::string_view elementName, Serves serves) {
    std::optional<AXMLTreeNode> found;
    VisitChildren(document, parent, [&](const AXMLTreeNode& child, int32_t) {
        if (document.getName(child) != elementName) return true;
        const AString id = EntryID(document, child);
        const bool isDefault = id == kDefaultEntryID;
        if (!isDefault && !serves(id)) return true;
        found = child;
        return isDefault;
    });
    return found;
}

void Note(const AXMLTree& document, const AXMLTreeNode& node, HalftoneReading& reading) {
    reading.Entries.push_back({document.getName(node), document.getAttribute(node, "ID")});
}

}  // namespace

bool ListHolds(std::string_view list, int32_t wanted) {
    char field[kCommaFieldBytes];
    for (int index = 0; GetCommaField(index, list, field) != 0; ++index) {
        if (LeadingDecimal(field) == wanted) return true;
    }
    return false;
}

std::optional<AXMLTreeNode> FindHalftoneEntry(const AXMLTree& document, const AXMLTreeNode& parent,
                                              const char* elementName, int32_t wanted) {
    return FindServingChild(document, parent, elementName,
                            [&](const AString& id) { return ListHolds(id, wanted); });
}

std::optional<AXMLTreeNode> TakeHalftoneEntry(const AXMLTree& document, const AXMLTreeNode& parent,
                                              const char* elementName, int32_t wanted,
                                              const char* message, HalftoneReading& reading) {
    const std::optional<AXMLTreeNode> entry =
        FindHalftoneEntry(document, parent, elementName, wanted);
    if (entry) {
        Note(document, *entry, reading);
    } else {
        reading.Message = message;
    }
    return entry;
}

std::optional<AXMLTreeNode> FindColorModeNode(const AXMLTree& document,
                                              const PrintSettings& settings,
                                              HalftoneReading& reading) {
    struct Level {
        const char* Element;
        int32_t Wanted;
        const char* Message;
    };
    const Level levels[] = {
        {"Media", settings.MediaIndex, "Getting media node fails"},
        {"PrintMode", settings.PrintModeIndex, "Getting printmode node fails"},
        {"Resolution", settings.ResolutionIndex, "Getting resolution node fails"},
        {"ColorMode", settings.ColorModeIndex, "Getting colormode node fails"},
    };
    AXMLTreeNode root;
    AXMLTreeNode hardware;
    if (document.getRootNode(root) == 0 ||
        document.getChild("PrinterHardware", root, hardware) == 0) {
        return std::nullopt;
    }
    const std::string_view modelName = FieldText(settings.ModelName, sizeof settings.ModelName);
    std::optional<AXMLTreeNode> node = FindServingChild(
        document, hardware, "Model",
        [&](const AString& id) { return FindText(id, modelName) != AString::npos; });
    if (node) Note(document, *node, reading);
    for (const Level& level : levels) {
        // Without a model there is nothing below it, and the first level says so.
        node = TakeHalftoneEntry(document, node.value_or(AXMLTreeNode()), level.Element,
                                 level.Wanted, level.Message, reading);
        if (!node) break;
    }
    return node;
}
