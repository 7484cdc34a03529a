#include "driverhost/ParameterFiles.h"

#include <fmt/format.h>

#include <filesystem>
#include <optional>
#include <string_view>

#include "driverhost/HostError.h"
#include "driverhost/NoFileReason.h"
#include "halftone/HalftoneFiles.h"
#include "host/Text.h"
#include "host/XMLChildren.h"
#include "platform/CodePage.h"

namespace {

/// What is wrong with a file that should have been read.
[[noreturn]] void Refuse(const AFilePath& file) {
    const std::string reason = NoFileReason(file);
    throw HostError(kFailed,
                    fmt::format("{} {}: other dither and screening parameters would be used",
                                AnsiToUtf8(file.fullPath()),
                                reason.empty() ? "cannot be read, or is no XML" : reason));
}

const AXMLTree& Load(HalftoneFiles& files, const AFilePath& file) {
    const AXMLTree* const document = files.LoadParameterFile(file);
    if (document == nullptr) Refuse(file);
    return *document;
}

/// The file that an attribute of the first child named `name`, in any letter case, names; nothing
/// when there is no such child or name.
std::optional<AFilePath> NamedFile(const AXMLTree& document, const AXMLTreeNode& parent,
                                   std::string_view name, std::string_view attribute) {
    std::optional<AFilePath> file;
    VisitChildren(document, parent, [&](const AXMLTreeNode& child, int32_t) {
        if (!EqualsIgnoringCase(document.getAttribute(child, "Name"), name)) return true;
        const AString value = document.getAttribute(child, attribute);
        if (!value.empty()) file = AFilePath().Append("OutputDrivers").Append(value);
        return false;
    });
    return file;
}

bool IsMissing(const AFilePath& file) {
    std::error_code error;
    return std::filesystem::status(file.fullPath(), error).type() ==
           std::filesystem::file_type::not_found;
}

}  // namespace

void ExpectReadableParameters(const char* listFile, const std::string& model,
                              const std::string& manufacturer) {
    const AFilePath list = AFilePath().Append("OutputDrivers").Append(listFile);
    if (IsMissing(list)) return;
    HalftoneFiles files(listFile);
    AXMLTreeNode root;
    AXMLTreeNode manufacturers;
    const AXMLTree& document = Load(files, list);
    if (document.getRootNode(root) == 0 ||
        document.getChild("ManufacturerList", root, manufacturers) == 0)
        return;
    if (const auto file = NamedFile(document, manufacturers, manufacturer, "ManufactureXML")) {
        Load(files, *file);
        return;
    }
    const auto map = NamedFile(document, manufacturers, manufacturer, "ManufactureMAPXML");
    if (!map) return;
    const AXMLTree& models = Load(files, *map);
    AXMLTreeNode mapRoot;
    if (models.getRootNode(mapRoot) == 0) return;
    if (const auto file = NamedFile(models, mapRoot, model, "XMLFile")) Load(files, *file);
}
