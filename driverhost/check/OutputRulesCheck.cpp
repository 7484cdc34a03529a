// The output rules of each model: a description's ModelList.

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>

#include "description/DescriptionLoader.h"
#include "description/ModelOutputSettings.h"
#include "driverhost/check/FileChecks.h"
#include "driverhost/check/FileNamesCheck.h"
#include "host/Numbers.h"
#include "host/Records.h"
#include "host/Text.h"
#include "platform/CodePage.h"

namespace {

/// Bytes of a white-ink offer that is looked into; a longer one is no list that a person chooses
/// from.
constexpr std::size_t kMostOfferBytes = 65536;
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
        CheckWhite();
        CheckTicket();
        CheckHeader();
        CheckPreview();
        return files_;
    }

  private:
    void CheckName();
    void CheckWord(const pugi::xml_node& node, const char* attribute,
                   const std::vector<std::string_view>& words, const char* otherwise);
    void CheckWhite();
    void CheckWhiteCodes(std::string_view offer, const std::vector<int32_t>& codes);
    void CheckTicket();
    void CheckHeader();
    void CheckPreview();
    void CheckPreviewSide(const pugi::xml_node& preview, const char* attribute, int32_t& side);

    CheckRun& run_;
    const CheckedDocument& document_;
    pugi::xml_node entry_;
    SideFiles files_;
};

void EntryCheck::CheckName() {
    const std::string name = entry_.attribute("Name").value();
    files_.Model = name;
    if (name.empty()) {
        document_.Warning(entry_, "the entry has no Name: no model has these rules");
    } else if (Utf8ToAnsi(name).size() > kMostModelNameBytes) {
        document_.Warning(entry_, "Name",
                          fmt::format("no model has these rules: names of models have at most {} "
                                      "bytes",
                                      kMostModelNameBytes));
    }
}

/// A word that is none of `words` is not refused: it counts as `otherwise`.
void EntryCheck::CheckWord(const pugi::xml_node& node, const char* attribute,
                           const std::vector<std::string_view>& words, const char* otherwise) {
    const std::string word = node.attribute(attribute).value();
    if (word.empty()) return;
    const auto isWord = [&](std::string_view known) { return EqualsIgnoringCase(known, word); };
    if (std::any_of(words.begin(), words.end(), isWord)) return;
    document_.Warning(node, attribute,
                      fmt::format("{} {} counts as {}{}", attribute, Quoted(word), otherwise,
                                  DidYouMean(word, words)));
}

void EntryCheck::CheckWhite() {
    const std::string offer = entry_.attribute("SupportWhite").value();
    if (offer.empty()) return;
    const auto warn = [&](std::string text) {
        document_.Warning(entry_, "SupportWhite", std::move(text));
    };
    if (offer.find('|') == std::string::npos) {
        warn(
            "SupportWhite has no '|': all of it is the default, and one treatment without a name, "
            "of code 0, is offered");
    } else if (offer.front() == '|') {
        warn("SupportWhite names no default; 0 is read, and the first name starts with '|'");
    }
    const auto semicolons = std::count(offer.begin(), offer.end(), ';');
    if (semicolons != 2) {
        warn(fmt::format("SupportWhite has {} ';' where 2 part names, codes and header codes",
                         semicolons));
    }
    if (offer.size() > kMostOfferBytes) {
        warn(fmt::format("not checked: SupportWhite has {} bytes", offer.size()));
        return;
    }
    ModelOutputSettings output;
    ReadWhiteOffer(offer, output);
    const std::size_t names = output.WhiteTypeNames.size();
    const std::vector<int32_t>& codes = output.WhiteTypeCodes;
    if (codes.size() != names || output.WhiteHeaderCodes.size() != names) {
        warn(fmt::format("SupportWhite has {} names, {} codes and {} header codes", names,
                         codes.size(), output.WhiteHeaderCodes.size()));
    }
    if (std::find(codes.begin(), codes.end(), output.DefaultWhiteType) == codes.end()) {
        warn(fmt::format("the default {} is none of the codes that SupportWhite offers",
                         output.DefaultWhiteType));
    }
    CheckWhiteCodes(offer, codes);
    files_.WhiteTypes = codes;
    files_.WhiteTypes.push_back(output.DefaultWhiteType);
}

void EntryCheck::CheckWhiteCodes(std::string_view offer, const std::vector<int32_t>& codes) {
    std::set<int32_t> met;
    for (const int32_t code : codes) {
        if (!met.insert(code).second) {
            document_.Warning(entry_, "SupportWhite",
                              fmt::format("SupportWhite offers code {} twice", code));
        } else if (code == 4 || code > 5) {
            document_.Warning(
                entry_, "SupportWhite",
                fmt::format("white treatment {} leaves a white file without lines", code));
        }
    }
    // The default, then the codes behind the first ';': digits, signs and commas.
    std::string_view head;
    const std::string_view lists = SplitAtSeparator(offer, "|", head);
    std::string_view names;
    const std::string_view numbers = SplitAtSeparator(lists, ";", names);
    for (const std::string_view part : {head, numbers}) {
        if (part.find_first_not_of("0123456789-+,; \t") == std::string_view::npos) continue;
        document_.Warning(
            entry_, "SupportWhite",
            fmt::format("{} holds more than numbers; what is none counts as 0", Quoted(part)));
    }
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
        document_.Warning(header, fmt::format("no {}: the driver writes no header",
                                              name.empty() ? "name" : "output"));
        files_.Header.clear();
        if (name.empty()) return;
    }
    const AFilePath path =
        AFilePath().Append("OutputDrivers").Append("HeaderTemplates").Append(Utf8ToAnsi(name));
    if (FollowName(run_, document_, header, "name", path)) CheckHeaderTemplate(run_, path);
}

void EntryCheck::CheckPreviewSide(const pugi::xml_node& preview, const char* attribute,
                                  int32_t& side) {
    const std::string text = preview.attribute(attribute).value();
    if (text.empty()) return;
    side = Atoi(text);
    if (document_.Number(preview, attribute)) return;
    document_.Warning(preview, attribute,
                      fmt::format("{} {} is no number; {} is read", attribute, Quoted(text), side));
}

void EntryCheck::CheckPreview() {
    // A preview's largest side and most pixels; a larger one is not made.
    constexpr int32_t kLargestSide = 20'000;
    constexpr int64_t kMostPixels = 16'000'000;
    const ModelOutputSettings initial;
    const pugi::xml_node preview = ChildElement(entry_, "PreviewParam");
    files_.Preview = preview.attribute("name").value();
    document_.CheckNames(preview,
                         {{}, {"type", "sizeH", "sizeV", "bestFit", "name"}, false, false});
    const std::string type = preview.attribute("type").value();
    const bool isPng = type == "PNG";
    if (!isPng && !type.empty() && type != "BMP") {
        document_.Warning(
            preview, "type",
            fmt::format("type {} counts as BMP{}", Quoted(type), DidYouMean(type, {"PNG", "BMP"})));
    }
    int32_t height = initial.PreviewSizeH;
    int32_t width = initial.PreviewSizeV;
    int32_t bestFit = initial.PreviewBestFit;
    CheckPreviewSide(preview, "sizeH", height);
    CheckPreviewSide(preview, "sizeV", width);
    CheckPreviewSide(preview, "bestFit", bestFit);
    const auto isSide = [](int32_t side) { return side >= 1 && side <= kLargestSide; };
    const bool fits =
        bestFit != 0 ? isSide(width)
                     : isSide(width) && isSide(height) && int64_t{width} * height <= kMostPixels;
    if (!fits) {
        document_.Error(preview,
                        fmt::format("no preview is made: a side in use must be 1 to {} pixels, and "
                                    "there may be {} pixels",
                                    kLargestSide, kMostPixels));
    }
    if (files_.Preview.empty()) {
        if (isPng) {
            document_.Warning(preview, "no name: the PNG preview is named \"thumbnail.bmp\"");
        }
        files_.Preview = "thumbnail.bmp";
    } else if (EqualsIgnoringCase(std::string_view(files_.Preview)
                                      .substr(files_.Preview.size() -
                                              std::min<std::size_t>(files_.Preview.size(), 4)),
                                  isPng ? ".bmp" : ".png")) {
        document_.Warning(preview, "name",
                          fmt::format("name {} does not say that the preview is a {}",
                                      Quoted(files_.Preview), isPng ? "PNG" : "BMP"));
    }
}

/// Whether the model list leads a model of the entry's name here.
void CheckRoute(const CheckRun& run, const CheckedDocument& document, const pugi::xml_node& entry) {
    const std::string model = entry.attribute("Name").value();
    if (run.Models == nullptr || model.empty()) return;
    const std::optional<AString> file = FindModelDescriptionFile(*run.Models, Utf8ToAnsi(model));
    if (file && AFilePath().Append("OutputDrivers").Append(*file).fullPath() == document.File()) {
        return;
    }
    document.Warning(
        entry, "Name",
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
    std::vector<std::string>& names = run.ModelsWithRules[document.File()];
    ForEachElement(list, [&](const pugi::xml_node& entry, int32_t position) {
        SideFiles model = EntryCheck(run, document, entry).Check();
        model.Entry = entry;
        const auto [earlier, isFirst] = met.emplace(model.Model, entry);
        if (!isFirst) {
            document.Warning(entry, "Name",
                             fmt::format("the entry is not read: that in line {} has the same Name",
                                         document.PositionOf(earlier->second).Line));
        } else if (position < kMostModels) {
            CheckRoute(run, document, entry);
            names.push_back(model.Model);
            models.push_back(std::move(model));
        }
    });
    CheckFileNames(document, facts, models);
}
