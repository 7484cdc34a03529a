#include "driverhost/ManufacturerList.h"

#include <string_view>

#include "driverhost/TextCompare.h"
#include "halftone/HalftoneFiles.h"
#include "host/Records.h"
#include "host/XMLChildren.h"

namespace {

/// Whether a name that settings have room for stands at the beginning of a model's, as a word of
/// its own.
bool Begins(std::string_view model, std::string_view name) {
    if (name.empty() || name.size() >= sizeof PrintSettings::ManufacturerName ||
        name.size() > model.size() || !SameIgnoringCase(model.substr(0, name.size()), name))
        return false;
    return name.size() == model.size() || model[name.size()] == ' ' || model[name.size()] == '-' ||
           model[name.size()] == '_';
}

}  // namespace

std::string ManufacturerOf(const std::string& model) {
    std::string found;
    for (const char* const file : {kScreeningListFile, kDitherListFile}) {
        AXMLTree document("RootElement");
        AXMLTreeNode root;
        AXMLTreeNode list;
        if (document.loadFromFile(AFilePath().Append("OutputDrivers").Append(file), 1) == 0 ||
            document.getRootNode(root) == 0 ||
            document.getChild("ManufacturerList", root, list) == 0)
            continue;
        VisitChildren(document, list, [&](const AXMLTreeNode& entry, int32_t) {
            const AString name = document.getAttribute(entry, "Name");
            if (name.size() > found.size() && Begins(model, name)) found = name;
            return true;
        });
    }
    return found;
}
