#include "description/ModelOutputSettings.h"

#include <optional>
#include <unordered_map>
#include <utility>

#include "description/DescriptionNodes.h"
#include "host/Numbers.h"
#include "host/Text.h"

namespace {

void ResetEveryRead(ModelOutputSettings& output) {
    const ModelOutputSettings initial;
    output.ChannelNames.clear();
    output.PreviewType = initial.PreviewType;
    output.PreviewSizeH = initial.PreviewSizeH;
    output.PreviewSizeV = initial.PreviewSizeV;
    output.PreviewBestFit = initial.PreviewBestFit;
    output.PreviewName = initial.PreviewName;
    output.JobTicketCode = initial.JobTicketCode;
    output.HasJobTicket = initial.HasJobTicket;
    output.JobTicketName = initial.JobTicketName;
}

/// Appends the parts of a comma-separated list; an empty one has one part, which is empty.
template <class Append>
void SplitList(std::string_view list, Append append) {
    do {
        std::string_view part;
        list = SplitAtSeparator(list, ",", part);
        append(part);
    } while (!list.empty());
}

std::vector<int32_t> CodesOf(std::string_view list) {
    std::vector<int32_t> codes;
    SplitList(list, [&](std::string_view part) { codes.push_back(Atoi(part)); });
    return codes;
}

/// Reads one model's entry of the `ModelList`.
class EntryReader {
  public:
    EntryReader(const AXMLTree& document, const AXMLTreeNode& entry, ModelOutputSettings& output)
        : document_(document), entry_(entry), output_(output) {}

    void Read() {
        if (Says(entry_, "TypeRead", "LINE_BY_LINE")) output_.LineByLine = 1;
        if (Says(entry_, "PrinterDirection", "YES")) output_.PrinterDirection = 1;
        output_.CreateFolder = Says(entry_, "CreateFolder", "No") ? 0 : 1;
        ReadWhiteOffer(document_.getAttribute(entry_, "SupportWhite"), output_);
        ReadJobTicket();
        ReadHeader();
        ReadPreview();
    }

  private:
    bool Says(const AXMLTreeNode& node, std::string_view attribute, std::string_view word) const {
        return EqualsIgnoringCase(document_.getAttribute(node, attribute), word);
    }
    void Take(const AXMLTreeNode& node, std::string_view attribute, AString& field) const {
        AString value = document_.getAttribute(node, attribute);
        if (!value.empty()) field = std::move(value);
    }
    void Take(const AXMLTreeNode& node, std::string_view attribute, int32_t& field) const {
        const AString value = document_.getAttribute(node, attribute);
        if (!value.empty()) field = Atoi(value);
    }

    void ReadJobTicket() {
        AXMLTreeNode ticket;
        if (document_.getChild("JobTicketParam", entry_, ticket) == 0) return;
        output_.HasJobTicket = 1;
        Take(ticket, "name", output_.JobTicketName);
        Take(ticket, "code", output_.JobTicketCode);
    }
    void ReadHeader() {
        AXMLTreeNode header;
        if (document_.getChild("HeaderParam", entry_, header) == 0) return;
        Take(header, "name", output_.HeaderTemplateName);
        Take(header, "output", output_.HeaderOutputName);
        output_.HeaderAtEndRip = Says(header, "EndRip", "YES") ? 1 : 0;
    }
    void ReadPreview() {
        AXMLTreeNode preview;
        if (document_.getChild("PreviewParam", entry_, preview) == 0) return;
        Take(preview, "type", output_.PreviewType);
        Take(preview, "sizeH", output_.PreviewSizeH);
        Take(preview, "sizeV", output_.PreviewSizeV);
        Take(preview, "bestFit", output_.PreviewBestFit);
        Take(preview, "name", output_.PreviewName);
    }

    const AXMLTree& document_;
    const AXMLTreeNode& entry_;
    ModelOutputSettings& output_;
};

/// The first child of `parent` that `matches`; nothing when none does.
template <class Matches>
std::optional<AXMLTreeNode> FindChild(const AXMLTree& document, const AXMLTreeNode& parent,
                                      Matches matches) {
    std::optional<AXMLTreeNode> found;
    VisitChildren(document, parent, [&](const AXMLTreeNode& child, int32_t) {
        if (matches(child)) found = child;
        return !found;
    });
    return found;
}

void ReadModelEntry(const AXMLTree& document, const AXMLTreeNode& root, std::string_view modelName,
                    ModelOutputSettings& output) {
    AXMLTreeNode models;
    output.HasModelList = document.getChild("ModelList", root, models) != 0;
    const auto entry = FindChild(document, models, [&](const AXMLTreeNode& model) {
        return document.getAttribute(model, "Name") == modelName;
    });
    output.HasModelEntry = entry.has_value();
    if (entry) EntryReader(document, *entry, output).Read();
}

/// Appends the channel name of every colorant of the colour mode whose colour is listed.
void ReadChannelNames(const AXMLTree& document, const AXMLTreeNode& colorList,
                      const AXMLTreeNode& colorMode, AStringArray& channelNames) {
    std::unordered_map<int32_t, AXMLTreeNode> colors;  // the first of each identifier
    VisitChildren(document, colorList, [&](const AXMLTreeNode& color, int32_t) {
        colors.emplace(ChildNumber(document, color, "ID"), color);
        return true;
    });
    AXMLTreeNode colorants;
    document.getChild("ColorantList", colorMode, colorants);
    VisitChildren(document, colorants, [&](const AXMLTreeNode& colorant, int32_t) {
        const auto color = colors.find(ColorantColor(document, colorant));
        if (color == colors.end()) return true;
        channelNames.push_back(ChildText(document, color->second, "ChannelName"));
        return channelNames.size() < kColorantCapacity;  // no job has a channel beyond
    });
}

}  // namespace

int32_t ReadModelOutputSettings(CDynamic& description, const PrintSettings& settings,
                                ModelOutputSettings& output) {
    const AString modelName(FieldText(settings.ModelName, sizeof settings.ModelName));
    if (description.LoadDescription(modelName.c_str()) == 0) return 0;
    const AXMLTree& document = description.GetDescriptionTree();
    const AXMLTreeNode root = description.GetDescriptionRoot();
    ResetEveryRead(output);
    ReadModelEntry(document, root, modelName, output);

    AXMLTreeNode definition;
    AXMLTreeNode colors;
    if (!FindDefinition(document, root, definition)) return 0;
    if (!FindColorList(document, definition, colors)) return 0;
    VisitChildren(document, colors, [&](const AXMLTreeNode& color, int32_t) {
        output.ChannelNameMap[ChildText(document, color, "InternalName")] =
            ChildText(document, color, "ChannelName");
        return true;
    });
    AXMLTreeNode colorModes;
    if (document.getChild("ColorModeList", definition, colorModes) == 0) return 0;
    const auto colorMode = FindChild(document, colorModes, [&](const AXMLTreeNode& candidate) {
        return ChildNumber(document, candidate, "ID") == settings.ColorModeIndex;
    });
    if (!colorMode) return 1;
    ReadChannelNames(document, colors, *colorMode, output.ChannelNames);
    return 1;
}

AString GetChannelName(CDynamic& description, const AString& colorName, const char* modelName) {
    if (description.LoadDescription(modelName) == 0) return AString();
    const AXMLTree& document = description.GetDescriptionTree();
    AXMLTreeNode definition;
    AXMLTreeNode colors;
    if (!FindDefinition(document, description.GetDescriptionRoot(), definition)) return AString();
    if (!FindColorList(document, definition, colors)) return AString();
    const auto color = FindChild(document, colors, [&](const AXMLTreeNode& candidate) {
        return ChildText(document, candidate, "InternalName") == colorName;
    });
    return color ? ChildText(document, *color, "ChannelName") : AString();
}

void ReadWhiteOffer(std::string_view offer, ModelOutputSettings& output) {
    output.OffersWhite = !offer.empty();
    if (!output.OffersWhite) {
        output.DefaultWhiteType = -1;
        return;
    }
    std::string_view defaultType;
    const std::string_view lists = SplitAtSeparator(offer, "|", defaultType);
    output.DefaultWhiteType = Atoi(defaultType);
    std::string_view rest = defaultType.empty() ? offer : lists;
    std::string_view names;
    std::string_view codes;
    std::string_view headerCodes;
    rest = SplitAtSeparator(rest, ";", names);
    rest = SplitAtSeparator(rest, ";", codes);
    SplitAtSeparator(rest, ";", headerCodes);
    output.WhiteTypeNames.clear();
    SplitList(names, [&](std::string_view name) { output.WhiteTypeNames.emplace_back(name); });
    output.WhiteTypeCodes = CodesOf(codes);
    output.WhiteHeaderCodes = CodesOf(headerCodes);
}

std::string_view SplitAtSeparator(std::string_view text, std::string_view separators,
                                  std::string_view& head) {
    for (const char separator : separators) {
        const std::size_t at = FindCharacter(text, separator);
        if (at == std::string_view::npos) continue;
        head = text.substr(0, at);
        return text.substr(at + 1);
    }
    head = text;
    return {};
}
