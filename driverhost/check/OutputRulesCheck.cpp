// The output rules of each model: a description's ModelList.

#include <fmt/format.h>

#include <algorithm>
#include <map>

#include "description/DescriptionLoader.h"
#include "description/ModelOutputSettings.h"
#include "driverhost/check/FileChecks.h"
#include "driverhost/check/FileNamesCheck.h"
#include "driverhost/check/PreviewCheck.h"
#include "driverhost/check/WhiteOfferCheck.h"
#include "host/Records.h"
#include "host/Text.h"
#include "platform/CodePage.h"

namespace {

constexpr std::size_t kMostModelNameBytes = sizeof PrintSettings::ModelName - 1;

class EntryCheck {
  public:
    EntryCheck(CheckRun& run, const CheckedDocument& document, const pugi::xml_node& entry)
        : run_(run), document_(document), entry_(entry) {}

    SideFiles Check() {
        document_.CheckNames(
            entry_, {{"JobTicketParam", "HeaderParam", "PreviewParam"},
                     {"Name", "TypeRead", "PrinterDirection", "CreateFolder", "SupportWhite"},
                     false,
                     false});
        CheckName();
        CheckWord(entry_, "TypeRead", {"LINE_BY_LINE", "PAGE"}, "PAGE");
        CheckWord(entry_, "PrinterDirection", {"YES", "NO"}, "NO");
        CheckWord(entry_, "CreateFolder", {"YES", "NO"}, "YES");
        files_.CreateFolder = !EqualsIgnoringCase(entry_.attribute("CreateFolder").value(), "No");
        files_.WhiteTypes = CheckWhiteOffer(document_, entry_);
        CheckTicket();
        CheckHeader();
        files_.Preview = CheckPreview(document_, entry_);
        return files_;
    }

  private:
    void CheckName();
    void CheckWord(const pugi::xml_node& node, const char* attribute,
                   const std::vector<std::string_view>& words, const char* otherwise);
    void CheckTicket();
    void CheckHeader();

    CheckRun& run_;
    const CheckedDocument& document_;
    pugi::xml_node entry_;
    SideFiles files_;
};

void EntryCheck::CheckName() {
    const std::string name = entry_.attribute("Name").value();
    files_.Model = name;
    if (name.empty()) {
        document_.Error(entry_, "the entry has no Name: no model has these rules");
    } else if (Utf8ToAnsi(name).size() > kMostModelNameBytes) {
        document_.Error(entry_, "Name",
                        fmt::format("no model has these rules: names of models have at most {} "
                                    "bytes",
                                    kMostModelNameBytes));
    }
}

/// A word that is none of `words` is not refused: it counts as `otherwise`, and the files come out
/// in another shape than the one that was meant.
void EntryCheck::CheckWord(const pugi::xml_node& node, const char* attribute,
                           const std::vector<std::string_view>& words, const char* otherwise) {
    const std::string word = node.attribute(attribute).value();
    if (word.empty()) return;
    const auto isWord = [&](std::string_view known) { return EqualsIgnoringCase(known, word); };
    if (std::any_of(words.begin(), words.end(), isWord)) return;
    document_.Error(node, attribute,
                    fmt::format("{} {} counts as {}{}", attribute, Quoted(word), otherwise,
                                DidYouMean(word, words)));
}

void EntryCheck::CheckTicket() {
    const pugi::xml_node ticket = ChildElement(entry_, "JobTicketParam");
    if (!ticket) return;
    document_.CheckNames(ticket, {{}, {"name", "code"}, false, false});
    const std::string code = ticket.attribute("code").value();
    if (!code.empty() && !EqualsIgnoringCase(code, "utf-8")) {
        document_.Warning(
            ticket, "code",
            fmt::format("code {} is not followed: texts in tickets are UTF-8", Quoted(code)));
    }
    files_.Ticket = ticket.attribute("name").value();
    if (files_.Ticket.empty()) files_.Ticket = ModelOutputSettings().JobTicketName;
    const AFilePath path = AFilePath()
                               .Append("OutputDrivers")
                               .Append("JobTicketTemplates")
                               .Append(Utf8ToAnsi(files_.Ticket));
    if (FollowName(run_, document_, ticket, "name", path)) CheckJobTicketTemplate(run_, path);
}

void EntryCheck::CheckHeader() {
    const pugi::xml_node header = ChildElement(entry_, "HeaderParam");
    if (!header) return;
    document_.CheckNames(header, {{}, {"name", "output", "EndRip"}, false, false});
    CheckWord(header, "EndRip", {"YES", "NO"}, "NO");
    const std::string name = header.attribute("name").value();
    files_.Header = header.attribute("output").value();
    if (name.empty() || files_.Header.empty()) {
        document_.Error(header, fmt::format("no {}: the driver writes no header",
                                            name.empty() ? "name" : "output"));
        files_.Header.clear();
        if (name.empty()) return;
    }
    const AFilePath path =
        AFilePath().Append("OutputDrivers").Append("HeaderTemplates").Append(Utf8ToAnsi(name));
    if (FollowName(run_, document_, header, "name", path)) CheckHeaderTemplate(run_, path);
}

/// Whether the model list leads a model of the entry's name here.
void CheckRoute(const CheckRun& run, const CheckedDocument& document, const pugi::xml_node& entry) {
    const std::string model = entry.attribute("Name").value();
    if (run.Models == nullptr || model.empty()) return;
    const std::optional<AString> file = FindModelDescriptionFile(*run.Models, Utf8ToAnsi(model));
    if (file && AFilePath().Append("OutputDrivers").Append(*file).fullPath() == document.File()) {
        return;
    }
    document.Error(entry, "Name",
                   fmt::format("no model has these rules: the model list {}",
                               file ? "leads " + Quoted(model) + " to " + Quoted(AnsiToUtf8(*file))
                                    : "has no entry for " + Quoted(model)));
}

}  // namespace

void CheckOutputRules(CheckRun& run, const CheckedDocument& document,
                      const DescriptionFacts& facts) {
    const pugi::xml_node list = ChildElement(document.Root(), "ModelList");
    document.CheckNames(list, {{}, {}, true, false});
    std::map<std::string, pugi::xml_node> met;
    std::vector<SideFiles> models;
    OutputRules& rules = run.Rules[document.File()];
    rules.HasList = static_cast<bool>(list);
    ForEachElement(list, [&](const pugi::xml_node& entry, int32_t position) {
        SideFiles model = EntryCheck(run, document, entry).Check();
        model.Entry = entry;
        const auto [earlier, isFirst] = met.emplace(model.Model, entry);
        if (!isFirst) {
            document.Error(entry, "Name",
                           fmt::format("the entry is not read: that in line {} has the same Name",
                                       document.PositionOf(earlier->second).Line));
        } else if (position < kMostModels) {
            CheckRoute(run, document, entry);
            rules.Models.push_back(model.Model);
            models.push_back(std::move(model));
        }
    });
    CheckFileNames(document, facts, models);
}
