#include "driverhost/ModelList.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>

#include "description/DescriptionNodes.h"
#include "driverhost/HostError.h"
#include "host/AXMLTree.h"

namespace {

constexpr char kRootName[] = "RootElement";
constexpr char kFolder[] = "OutputDrivers";

/// Whether an entry serves a model.
bool Serves(const ListedModel& entry, const std::string& model) {
    return model.find(entry.Name) != std::string::npos;
}

std::vector<ListedModel> ReadEntries() {
    const AFilePath path = AFilePath().Append(kFolder).Append("ZeComFile.xml");
    AEnXMLTree document(kRootName);
    AXMLTreeNode root;
    if (document.loadFromFileEn(path, 1) == 0 || document.getRootNode(root) == 0)
        throw HostError(kFailed, fmt::format("cannot read the model list {}", path.fullPath()));
    std::vector<ListedModel> entries;
    VisitChildren(document, root, [&](const AXMLTreeNode& entry, int32_t) {
        entries.push_back(
            {document.getAttribute(entry, "Name"), document.getAttribute(entry, "XMLFile")});
        return true;
    });
    return entries;
}

/// The models that a description has output rules for; none when it cannot be read, which the
/// driver is the one to say.
std::vector<std::string> ModelsOf(const std::string& descriptionFile) {
    std::vector<std::string> models;
    AEnXMLTree document(kRootName);
    AXMLTreeNode root;
    AXMLTreeNode list;
    if (document.loadFromFileEn(AFilePath().Append(kFolder).Append(descriptionFile), 1) == 0 ||
        document.getRootNode(root) == 0 || document.getChild("ModelList", root, list) == 0)
        return models;
    VisitChildren(document, list, [&](const AXMLTreeNode& model, int32_t) {
        models.push_back(document.getAttribute(model, "Name"));
        return true;
    });
    return models;
}

}  // namespace

std::vector<ListedModel> ReadModelList() {
    const std::vector<ListedModel> entries = ReadEntries();
    std::map<std::string, std::vector<std::string>> described;
    std::vector<ListedModel> models;
    std::set<std::string> seen;
    for (const ListedModel& entry : entries) {
        if (!described.contains(entry.DescriptionFile))
            described[entry.DescriptionFile] = ModelsOf(entry.DescriptionFile);
        std::vector<std::string> names;
        for (const std::string& name : described[entry.DescriptionFile])
            if (!name.empty() && Serves(entry, name)) names.push_back(name);
        if (names.empty() && !entry.Name.empty()) names.push_back(entry.Name);
        for (const std::string& name : names) {
            // The first entry that serves a model is the one the driver takes.
            const auto first =
                std::find_if(entries.begin(), entries.end(),
                             [&name](const ListedModel& earlier) { return Serves(earlier, name); });
            if (&*first == &entry && seen.insert(name).second)
                models.push_back({name, entry.DescriptionFile});
        }
    }
    return models;
}
