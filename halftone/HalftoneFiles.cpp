#include "halftone/HalftoneFiles.h"

#include "host/Text.h"
#include "host/XMLChildren.h"

namespace {

/// The first child of `parent` with that name, in any letter case.
bool FindNamedChild(const AXMLTree& document, const AXMLTreeNode& parent, std::string_view name,
                    AXMLTreeNode& out) {
    return !VisitChildren(document, parent, [&](const AXMLTreeNode& child, int32_t) {
        if (!EqualsIgnoringCase(document.getAttribute(child, "Name"), name)) return true;
        out = child;
        return false;
    });
}

}  // namespace

HalftoneFiles::HalftoneFiles(std::string_view listFileName)
    : listFileName_(listFileName),
      folder_(AFilePath().Append("OutputDrivers")),
      listPath_(AFilePath(folder_).Append(listFileName)) {}

AFilePath HalftoneFiles::LocateHalftoneFile(std::string_view modelName,
                                            std::string_view manufacturer) {
    AFilePath manufacturerPath = folder_;
    AFilePath modelPath = folder_;
    bool isParameterFile = false;
    const bool found = FindManufacturerFile(manufacturer, manufacturerPath, isParameterFile);
    bool hasModel = true;
    if (isParameterFile) {
        modelPath = manufacturerPath;
    } else {
        hasModel = FindModelFile(manufacturerPath, modelName, modelPath);
    }
    if (hasModel && HasPrinterHardware(modelPath)) return modelPath;
    if (found && HasPrinterHardware(manufacturerPath)) return manufacturerPath;
    return listPath_;
}

bool HalftoneFiles::FindManufacturerFile(std::string_view manufacturer, AFilePath& path,
                                         bool& isParameterFile) {
    const AXMLTree* const list = LoadPlain(listPath_);
    AXMLTreeNode root;
    AXMLTreeNode manufacturers;
    AXMLTreeNode entry;
    if (list == nullptr || list->getRootNode(root) == 0 ||
        list->getChild("ManufacturerList", root, manufacturers) == 0 ||
        !FindNamedChild(*list, manufacturers, manufacturer, entry)) {
        return false;
    }
    if (const AString file = list->getAttribute(entry, "ManufactureXML"); !file.empty()) {
        path.Append(file);
        isParameterFile = true;
        return true;
    }
    const AString map = list->getAttribute(entry, "ManufactureMAPXML");
    if (!map.empty()) path.Append(map);
    return !map.empty();
}

bool HalftoneFiles::FindModelFile(const AFilePath& mapFile, std::string_view modelName,
                                  AFilePath& path) {
    const AXMLTree* const map = LoadEncoded(mapFile);
    AXMLTreeNode root;
    AXMLTreeNode entry;
    if (map == nullptr || map->getRootNode(root) == 0 ||
        !FindNamedChild(*map, root, modelName, entry)) {
        return false;
    }
    path.Append(map->getAttribute(entry, "XMLFile"));
    return true;
}

bool HalftoneFiles::HasPrinterHardware(const AFilePath& file) {
    const AXMLTree* const document = LoadEncoded(file);
    AXMLTreeNode root;
    AXMLTreeNode hardware;
    return document != nullptr && document->getRootNode(root) != 0 &&
           document->getChild("PrinterHardware", root, hardware) != 0;
}

const AXMLTree* HalftoneFiles::LoadParameterFile(const AFilePath& path) {
    const bool isPlain = FindText(path.fullPath(), listFileName_) != AString::npos;
    return isPlain ? LoadPlain(path) : LoadEncoded(path);
}

const HalftoneFiles::Document& HalftoneFiles::Load(const AFilePath& path) {
    const auto [entry, isNew] = documents_.try_emplace(path.fullPath());
    Document& document = entry->second;
    if (isNew) document.IsLoaded = document.Tree.loadFromFileEn(path, 1) != 0;
    return document;
}

const AXMLTree* HalftoneFiles::LoadPlain(const AFilePath& path) {
    const Document& document = Load(path);
    return document.IsLoaded && !document.Tree.wasEncoded() ? &document.Tree : nullptr;
}

const AXMLTree* HalftoneFiles::LoadEncoded(const AFilePath& path) {
    const Document& document = Load(path);
    return document.IsLoaded ? &document.Tree : nullptr;
}
