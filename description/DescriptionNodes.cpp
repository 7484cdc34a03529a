#include "description/DescriptionNodes.h"

#include "host/Numbers.h"
#include "ui/messages/ShowMessage.h"

AString ChildText(const AXMLTree& document, const AXMLTreeNode& parent, std::string_view name) {
    AXMLTreeNode child;
    return document.getChild(name, parent, child) != 0 ? document.getValue(child) : AString();
}

int32_t ChildNumber(const AXMLTree& document, const AXMLTreeNode& parent, std::string_view name) {
    return LeadingDecimal(ChildText(document, parent, name)).value_or(-1);
}

std::optional<int32_t> AttributeNumber(const AXMLTree& document, const AXMLTreeNode& node,
                                       std::string_view name) {
    return LeadingDecimal(document.getAttribute(node, name));
}

int32_t ColorantColor(const AXMLTree& document, const AXMLTreeNode& colorant) {
    const AString identifier = document.getAttribute(colorant, "ID");
    return identifier.empty() ? 0 : LeadingDecimal(identifier).value_or(-1);
}

bool FindDefinition(const AXMLTree& document, const AXMLTreeNode& root, AXMLTreeNode& definition) {
    if (document.getChild("Definition", root, definition) != 0) return true;
    return ShowFault("Getting DEFINITIONNODE node fails");
}

bool FindColorList(const AXMLTree& document, const AXMLTreeNode& definition,
                   AXMLTreeNode& colorList) {
    if (document.getChild("ColorList", definition, colorList) == 0) {
        return ShowFault("Loading COLORLISTNODE fails.");
    }
    return document.getChildCount(colorList) >= 1 || ShowFault("Wrong nClrDefCount");
}

bool ShowFault(const char* text) {
    ShowMessage(text, MB_OK, nullptr, nullptr);
    return false;
}
