#include <fmt/format.h>

#include <algorithm>

#include "description/DescriptionLoader.h"
#include "driverhost/check/FileChecks.h"
#include "host/Records.h"
#include "platform/CodePage.h"

namespace {

constexpr std::size_t kMostModelNameBytes = sizeof PrintSettings::ModelName - 1;

/// Entries in front that take every model whose name contains theirs.
class Earlier {
  public:
    /// The first entry in front whose Name occurs in `name`: it gets all of that entry's models.
    const pugi::xml_node* Taker(std::string_view name) const {
        for (const auto& [earlier, entry] : entries_) {
            if (name.find(earlier) != std::string_view::npos) return &entry;
        }
        return nullptr;
    }
    void Add(std::string name, const pugi::xml_node& entry) {
        if (entries_.size() < kMostModels) entries_.emplace_back(std::move(name), entry);
    }

  private:
    std::vector<std::pair<std::string, pugi::xml_node>> entries_;
};

/// Whether any model reaches the entry.
bool CheckEntryName(const CheckedDocument& document, const pugi::xml_node& entry,
                    Earlier& earlier) {
    const std::string name = entry.attribute("Name").value();
    if (const pugi::xml_node* const taker = earlier.Taker(name)) {
        document.Error(entry, "Name",
                       fmt::format("no model reaches this entry: the entry in line {} takes every "
                                   "model whose name contains {}",
                                   document.PositionOf(*taker).Line,
                                   Quoted(taker->attribute("Name").value())));
        return false;
    }
    earlier.Add(name, entry);
    if (name.empty()) {
        document.Warning(entry, "the entry has no Name: it takes every model that comes this far");
    } else if (Utf8ToAnsi(name).size() > kMostModelNameBytes) {
        document.Error(entry, "Name",
                       fmt::format("no model reaches this entry: names of models have at most {} "
                                   "bytes",
                                   kMostModelNameBytes));
        return false;
    }
    return true;
}

void CheckEntryFile(CheckRun& run, const CheckedDocument& document, const pugi::xml_node& entry,
                    bool isReached) {
    const AString file = Utf8ToAnsi(entry.attribute("XMLFile").value());
    if (file.empty()) {
        document.Error(entry, "XMLFile",
                       "the entry has no XMLFile, so its models have no description");
        return;
    }
    if (file.size() > kMostFileNameCharacters) {
        document.Error(
            entry, "XMLFile",
            fmt::format("only the first {} bytes of XMLFile are read", kMostFileNameCharacters));
    }
    const AFilePath path =
        AFilePath().Append("OutputDrivers").Append(file.substr(0, kMostFileNameCharacters));
    if (!FollowName(run, document, entry, "XMLFile", path)) return;
    if (run.Found.BeginFile(path.fullPath())) CheckDescription(run, path);
    const auto found = run.Rules.find(path.fullPath());
    if (!isReached || found == run.Rules.end()) return;
    const OutputRules& rules = found->second;
    const std::string name = entry.attribute("Name").value();
    const bool hasRules = std::any_of(
        rules.Models.begin(), rules.Models.end(),
        [&](const std::string& model) { return model.find(name) != std::string::npos; });
    if (hasRules) return;
    std::string text = fmt::format(
        "{} has no output rules for a model whose name contains {}; the defaults are used",
        Quoted(AnsiToUtf8(file)), Quoted(name));
    if (rules.HasList)
        document.Error(entry, std::move(text));
    else
        document.Warning(entry, std::move(text));
}

}  // namespace

void CheckModelList(CheckRun& run, const AFilePath& path) {
    CheckedDocument document(run.Found);
    if (!LoadNext(run, document, path, CheckedDocument::Form::kEncoded)) return;
    const int32_t count = CountElements(document.Root());
    if (count == 0) document.Error(document.Root(), "the list names no model");
    run.Models = std::make_unique<AEnXMLTree>("RootElement");
    if (count > kMostModels || run.Models->loadXML(document.Bytes(), 1) == 0) run.Models.reset();
    document.CheckNames(document.Root(), {{}, {}, true, false});
    Earlier earlier;
    ForEachElement(document.Root(), [&](const pugi::xml_node& entry, int32_t position) {
        document.CheckNames(entry, {{}, {"Name", "XMLFile"}, false, false});
        const bool isReached = position < kMostModels && CheckEntryName(document, entry, earlier);
        CheckEntryFile(run, document, entry, isReached);
    });
}
