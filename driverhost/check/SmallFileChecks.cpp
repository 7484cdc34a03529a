// Files of which little is to be said: options files and halftone lists.

#include <fmt/format.h>

#include "driverhost/check/FileChecks.h"
#include "host/Text.h"
#include "platform/CodePage.h"

namespace {

using Known = CheckedDocument::Known;

/// Follows an attribute that names a file below `OutputDrivers`. The path, when there is a file.
std::optional<AFilePath> FollowAttribute(CheckRun& run, const CheckedDocument& document,
                                         const pugi::xml_node& node, const char* attribute) {
    const AFilePath path =
        AFilePath().Append("OutputDrivers").Append(Utf8ToAnsi(node.attribute(attribute).value()));
    if (!FollowName(run, document, node, attribute, path)) return std::nullopt;
    if (!run.Found.BeginFile(path.fullPath())) return std::nullopt;
    return path;
}

}  // namespace

bool LoadNext(CheckRun& run, CheckedDocument& document, const AFilePath& path,
              CheckedDocument::Form form) {
    run.Named.insert(path.fullPath());
    if (document.Load(path, form)) return true;
    run.HasUnread = true;
    return false;
}

bool FollowName(CheckRun& run, const CheckedDocument& document, const pugi::xml_node& node,
                const char* attribute, const AFilePath& path) {
    if (!run.HasBaseFolder) return false;
    const std::string reason = NoFileReason(path);
    if (reason.empty()) {
        run.Named.insert(path.fullPath());
        return true;
    }
    const std::string name = path.isValid() ? AnsiToUtf8(path.fullPath())
                                            : std::string(node.attribute(attribute).value());
    document.Error(node, attribute, fmt::format("{} {}", Quoted(name), reason));
    return false;
}

void CheckOptionsFile(CheckRun& run, const AFilePath& path) {
    CheckedDocument document(run.Found);
    if (!LoadNext(run, document, path, CheckedDocument::Form::kPlain)) return;
    document.CheckNames(document.Root(), {{"DriverOptions"}, {}, false, false});
    const pugi::xml_node options = ChildElement(document.Root(), "DriverOptions");
    if (!options) {
        document.Error(document.Root(), "no element \"DriverOptions\": the model's default counts");
        return;
    }
    document.CheckNames(options, {{}, {"SupportWhiteType"}, false, false});
    const std::string choice = options.attribute("SupportWhiteType").value();
    if (!choice.empty() && !document.Number(options, "SupportWhiteType")) {
        document.Warning(
            options, "SupportWhiteType",
            fmt::format("SupportWhiteType {} is no number of 32 bits", Quoted(choice)));
    }
}

void CheckManufacturerList(CheckRun& run, const AFilePath& path) {
    CheckedDocument document(run.Found);
    if (!LoadNext(run, document, path, CheckedDocument::Form::kPlain)) return;
    document.CheckNames(document.Root(),
                        {{"ManufacturerList", "PrinterHardware"}, {}, false, false});
    const pugi::xml_node list = ChildElement(document.Root(), "ManufacturerList");
    document.CheckNames(list, {{}, {}, true, false});
    ForEachElement(list, [&](const pugi::xml_node& entry, int32_t) {
        document.CheckNames(entry,
                            {{}, {"Name", "ManufactureXML", "ManufactureMAPXML"}, false, false});
        const bool hasFile = *entry.attribute("ManufactureXML").value() != '\0';
        const bool hasMap = *entry.attribute("ManufactureMAPXML").value() != '\0';
        if (!hasFile && !hasMap) {
            document.Warning(entry,
                             "the manufacturer has neither ManufactureXML nor "
                             "ManufactureMAPXML; this list serves it");
            return;
        }
        if (hasFile && hasMap) {
            document.Warning(entry, "ManufactureMAPXML",
                             "the map is not read: ManufactureXML goes before it");
        }
        const char* const attribute = hasFile ? "ManufactureXML" : "ManufactureMAPXML";
        const std::optional<AFilePath> file = FollowAttribute(run, document, entry, attribute);
        if (!file) return;
        if (hasFile) {
            CheckParameterFile(run, *file);
        } else {
            CheckModelMap(run, *file);
        }
    });
}

void CheckModelMap(CheckRun& run, const AFilePath& path) {
    CheckedDocument document(run.Found);
    if (!LoadNext(run, document, path, CheckedDocument::Form::kEncoded)) return;
    document.CheckNames(document.Root(), {{}, {}, true, false});
    ForEachElement(document.Root(), [&](const pugi::xml_node& entry, int32_t) {
        document.CheckNames(entry, {{}, {"Name", "XMLFile"}, false, false});
        const std::optional<AFilePath> file = FollowAttribute(run, document, entry, "XMLFile");
        if (file) CheckParameterFile(run, *file);
    });
}

void CheckParameterFile(CheckRun& run, const AFilePath& path) {
    CheckedDocument document(run.Found);
    if (!LoadNext(run, document, path, CheckedDocument::Form::kEncoded)) return;
    if (ChildElement(document.Root(), "PrinterHardware")) return;
    document.Error(document.Root(), "no element \"PrinterHardware\": the file is passed over");
}
