#pragma once

#include <cstdint>

#include "host/AXMLTree.h"

/// Calls `visit(child, position)` for the child elements of `parent` in document order until it
/// answers false. Whether all were visited.
template <class Visit>
bool VisitChildren(const AXMLTree& document, const AXMLTreeNode& parent, Visit visit) {
    const int32_t count = document.getChildCount(parent);
    for (int32_t position = 0; position < count; ++position) {
        AXMLTreeNode child;
        if (document.getChild(position, parent, child) == 0) return false;
        if (!visit(child, position)) return false;
    }
    return true;
}
