#include "driverhost/check/HalftoneCheck.h"

#include <fmt/format.h>

#include <algorithm>

#include "description/DescriptionLoader.h"
#include "driverhost/TextCompare.h"
#include "halftone/HalftoneFiles.h"
#include "host/XmlReading.h"
#include "platform/CodePage.h"

namespace {

using Kind = ParameterFileUse::Kind;

/// Follows an attribute that names a file below `OutputDrivers`. The path, when there is a file.
std::optional<AFilePath> FollowAttribute(CheckRun& run, const CheckedDocument& document,
                                         const pugi::xml_node& node, const char* attribute) {
    const AFilePath path =
        AFilePath().Append("OutputDrivers").Append(Utf8ToAnsi(node.attribute(attribute).value()));
    if (!FollowName(run, document, node, attribute, path)) return std::nullopt;
    return path;
}

/// Reports an entry of a list by name that an earlier one keeps from being found.
class Names {
  public:
    explicit Names(const CheckedDocument& document) : document_(document) {}
    /// Whether anything reaches the entry.
    bool Add(const pugi::xml_node& entry) {
        const std::string_view name = entry.attribute("Name").value();
        const auto same = [&](const pugi::xml_node& earlier) {
            return SameIgnoringCase(earlier.attribute("Name").value(), name);
        };
        const auto taker = std::find_if(met_.begin(), met_.end(), same);
        const bool isFirst = taker == met_.end();
        if (!isFirst) {
            document_.Warning(entry, "Name",
                              fmt::format("nothing reaches this entry: line {} has the name first",
                                          document_.PositionOf(*taker).Line));
        } else if (met_.size() < kMostModels) {
            met_.push_back(entry);
        }
        if (name.empty()) document_.Warning(entry, "the entry has no Name, so nothing reaches it");
        return isFirst && !name.empty();
    }

  private:
    const CheckedDocument& document_;
    std::vector<pugi::xml_node> met_;
};

void CheckManufacturer(CheckRun& run, const CheckedDocument& document, const pugi::xml_node& entry,
                       Kind leaves) {
    document.CheckNames(entry, {{}, {"Name", "ManufactureXML", "ManufactureMAPXML"}, false, false});
    const bool hasFile = *entry.attribute("ManufactureXML").value() != '\0';
    const bool hasMap = *entry.attribute("ManufactureMAPXML").value() != '\0';
    if (!hasFile && !hasMap) {
        document.Warning(entry,
                         "the manufacturer has neither ManufactureXML nor ManufactureMAPXML; this "
                         "list serves it");
        return;
    }
    if (hasFile && hasMap) {
        document.Warning(entry, "ManufactureMAPXML",
                         "the map is not read: ManufactureXML goes before it");
    }
    const char* const attribute = hasFile ? "ManufactureXML" : "ManufactureMAPXML";
    const std::optional<AFilePath> file = FollowAttribute(run, document, entry, attribute);
    if (!file || !run.Found.BeginFile(file->fullPath())) return;
    if (hasFile) {
        CheckParameterFile(run, *file, {leaves, {}});
    } else {
        CheckModelMap(run, *file, leaves);
    }
}

/// Adds what a model's description has; any, when it cannot be read.
void AddModel(const std::string& model, ServedModels& served) {
    Findings unused;  // they are the description's own
    CheckedDocument description(unused);
    const std::optional<AString> file = FindModelDescriptionFile(Utf8ToAnsi(model).c_str());
    if (!file || !description.Load(AFilePath().Append("OutputDrivers").Append(*file),
                                   CheckedDocument::Form::kEncoded)) {
        served = {};
        return;
    }
    const pugi::xml_node definition = ChildElement(description.Root(), "Definition");
    const auto raise = [&](int32_t& count, const char* list) {
        count = std::max(count, CountElements(ChildElement(definition, list)));
    };
    raise(served.Media, "MediaList");
    raise(served.PrintModes, "PrintModeList");
    raise(served.Resolutions, "ResolutionList");
    raise(served.ColorModes, "ColorModeList");
    ForEachElement(ChildElement(definition, "ColorList"),
                   [&](const pugi::xml_node& color, int32_t) {
                       for (const char* const name : {"InternalName", "DisplayName"})
                           served.Colors.insert(Folded(TextOf(ChildElement(color, name)).value()));
                   });
}

ServedModels FindServedModels(const ParameterFileUse& use) {
    constexpr std::size_t kMostDescriptions = 16;  // that are read for one file
    if (use.Models.empty() || use.Models.size() > kMostDescriptions) return {};
    ServedModels served = {0, 0, 0, 0, {}};
    for (const std::string& model : use.Models) {
        AddModel(model, served);
        if (served.Media == ServedModels::kAny) break;
    }
    return served;
}

bool HoldsListName(const AFilePath& path, const char* listFile, Kind leaves, Kind kind) {
    return leaves == kind && path.fullPath().find(listFile) != AString::npos;
}

}  // namespace

void CheckManufacturerList(CheckRun& run, const AFilePath& path) {
    CheckedDocument document(run.Found);
    if (!LoadNext(run, document, path, CheckedDocument::Form::kPlain)) return;
    document.CheckNames(document.Root(),
                        {{"ManufacturerList", "PrinterHardware"}, {}, false, false});
    const bool isDither = path.fullPath().ends_with(kDitherListFile);
    const bool isScreening = path.fullPath().ends_with(kScreeningListFile);
    const Kind leaves = isDither ? Kind::kDither : isScreening ? Kind::kScreening : Kind::kEither;
    const pugi::xml_node list = ChildElement(document.Root(), "ManufacturerList");
    document.CheckNames(list, {{}, {}, true, false});
    Names names(document);
    ForEachElement(list, [&](const pugi::xml_node& entry, int32_t) {
        names.Add(entry);
        CheckManufacturer(run, document, entry, leaves);
    });
    const pugi::xml_node hardware = ChildElement(document.Root(), "PrinterHardware");
    if (hardware) CheckPrinterHardware(document, hardware, {leaves, {}}, {});
}

void CheckModelMap(CheckRun& run, const AFilePath& path, Kind leaves) {
    CheckedDocument document(run.Found);
    if (!LoadNext(run, document, path, CheckedDocument::Form::kEncoded)) return;
    document.CheckNames(document.Root(), {{}, {}, true, false});
    // A file is checked with all the models that lead to it.
    std::vector<AFilePath> files;
    std::map<std::string, ParameterFileUse> uses;
    Names names(document);
    const pugi::xml_node hardware = ChildElement(document.Root(), "PrinterHardware");
    if (hardware) CheckPrinterHardware(document, hardware, {leaves, {}}, {});
    ForEachElement(document.Root(), [&](const pugi::xml_node& entry, int32_t) {
        if (entry == hardware) return;  // the map is a parameter file too
        const bool isReached = names.Add(entry);
        document.CheckNames(entry, {{}, {"Name", "XMLFile"}, false, false});
        const std::optional<AFilePath> file = FollowAttribute(run, document, entry, "XMLFile");
        if (!file) return;
        const auto [use, isNew] = uses.try_emplace(file->fullPath());
        if (isNew) files.push_back(*file);
        use->second.Leaves = leaves;
        if (isReached && use->second.Models.size() < kMostModels)
            use->second.Models.emplace_back(entry.attribute("Name").value());
    });
    for (const AFilePath& file : files)
        if (run.Found.BeginFile(file.fullPath()))
            CheckParameterFile(run, file, uses[file.fullPath()]);
}

void CheckParameterFile(CheckRun& run, const AFilePath& path, const ParameterFileUse& use) {
    CheckedDocument document(run.Found);
    const bool isPlain = HoldsListName(path, kDitherListFile, use.Leaves, Kind::kDither) ||
                         HoldsListName(path, kScreeningListFile, use.Leaves, Kind::kScreening);
    if (!LoadNext(run, document, path,
                  isPlain ? CheckedDocument::Form::kPlain : CheckedDocument::Form::kEncoded)) {
        return;
    }
    document.CheckNames(document.Root(), {{"PrinterHardware"}, {}, false, false});
    const pugi::xml_node hardware = ChildElement(document.Root(), "PrinterHardware");
    if (!hardware) {
        document.Error(document.Root(), "no element \"PrinterHardware\": the file is passed over");
        return;
    }
    CheckPrinterHardware(document, hardware, use,
                         run.HasBaseFolder ? FindServedModels(use) : ServedModels());
}
