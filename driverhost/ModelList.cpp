#include "driverhost/ModelList.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <set>

#include "description/DescriptionNodes.h"
#include "driverhost/HostError.h"
#include "driverhost/check/Findings.h"
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

bool IsModel(const std::string& name) {
    for (const ListedModel& entry : ReadEntries()) {
        if (!Serves(entry, name)) continue;
        // One without output rules, or that cannot be read, is the driver's to judge.
        const std::vector<std::string> models = ModelsOf(entry.DescriptionFile);
        return models.empty() || std::find(models.begin(), models.end(), name) != models.end();
    }
    return false;
}

/// The models whose names hold the unknown one or are held by it, else the nearest and all.
std::string ModelsNear(const std::string& unknown) {
    constexpr std::size_t kMostNames = 20;
    std::vector<std::string> names;
    for (const ListedModel& model : ReadModelList())
        names.push_back(model.Name);
    std::vector<std::string> near;
    std::copy_if(names.begin(), names.end(), std::back_inserter(near), [&](const auto& name) {
        return Folded(name).find(Folded(unknown)) != std::string::npos ||
               Folded(unknown).find(Folded(name)) != std::string::npos;
    });
    if (!near.empty() && !unknown.empty())
        return fmt::format("; near it: \"{}\"", fmt::join(near, "\", \""));
    const std::string hint = DidYouMean(unknown, {names.begin(), names.end()});
    if (names.size() > kMostNames) return hint + "; `driverhost models` lists those that there are";
    return fmt::format("{}; there are \"{}\"", hint, fmt::join(names, "\", \""));
}

}  // namespace

void RequireModel(const std::string& name) {
    if (!IsModel(name))
        throw HostError(kUsage, fmt::format("no model {}{}", Quoted(name), ModelsNear(name)));
}

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
