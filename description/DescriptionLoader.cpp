#include "description/DescriptionLoader.h"

#include <memory>
#include <utility>

#include "description/DescriptionNodes.h"
#include "host/Records.h"
#include "host/Text.h"
#include "platform/CodePage.h"
#include "ui/messages/StringTable.h"

namespace {

/// Reads the lists in the order in which their faults are reported.
class Reader {
  public:
    Reader(CDynamic& description, DescriptionLists& lists)
        : description_(description), document_(description.GetDescriptionTree()), lists_(lists) {}

    bool Read() {
        return FindDefinition(document_, description_.GetDescriptionRoot(), definition_) &&
               ReadMedia() && ReadPrintModes() && ReadResolutions() && ReadColors() &&
               ReadColorModes();
    }

  private:
    bool ReadMedia();
    bool ReadPrintModes();
    bool ReadResolutions();
    bool ReadColors();
    bool ReadColorModes();
    bool ReadColorants(const AXMLTreeNode& colorMode, ColorModeColorants& colorants);
    bool ReadColorant(const AXMLTreeNode& colorant, ColorModeColorants& colorants);

    template <class ReadMore>
    bool ReadItems(const AXMLTreeNode& list, const ListKind& kind, NamedItems& items,
                   int32_t& count, ReadMore readMore);

    CDynamic& description_;
    const AXMLTree& document_;
    DescriptionLists& lists_;
    AXMLTreeNode definition_;
};

/// Reads one list; `readMore(item)` reads what only this kind has and answers false at a fault.
template <class ReadMore>
bool Reader::ReadItems(const AXMLTreeNode& list, const ListKind& kind, NamedItems& items,
                       int32_t& count, ReadMore readMore) {
    const int32_t base = description_.GetBaseResourceNumber(kind.baseName);
    const bool complete =
        VisitChildren(document_, list, [&](const AXMLTreeNode& item, int32_t position) {
            const int32_t identifier = ChildNumber(document_, item, "ID");
            if (identifier < 0) return ShowFault(kind.wrongIdentifier);
            if (!readMore(item)) return false;
            std::optional<AString> displayName = DisplayNameResource(base, position);
            if (!displayName) displayName = ChildText(document_, item, "DisplayName");
            items.Identifiers.push_back(static_cast<uint32_t>(identifier));
            items.InternalNames.push_back(ChildText(document_, item, "InternalName"));
            items.DisplayNames.push_back(std::move(*displayName));
            return true;
        });
    if (complete) count = static_cast<int32_t>(items.Identifiers.size());
    return complete;
}

bool NothingMore(const AXMLTreeNode&) {
    return true;
}

bool Reader::ReadMedia() {
    AXMLTreeNode list;  // an absent list counts as an empty one
    if (document_.getChild(kMedia.name, definition_, list) != 0) {
        lists_.DefaultMedia = AttributeNumber(document_, list, "DefaultMedia").value_or(0);
    }
    return ReadItems(list, kMedia, lists_.Media, lists_.MediaCount, NothingMore);
}

bool Reader::ReadPrintModes() {
    AXMLTreeNode list;
    document_.getChild(kPrintModes.name, definition_, list);
    return ReadItems(list, kPrintModes, lists_.PrintModes, lists_.PrintModeCount, NothingMore);
}

bool Reader::ReadResolutions() {
    AXMLTreeNode list;
    document_.getChild(kResolutions.name, definition_, list);
    return ReadItems(list, kResolutions, lists_.Resolutions, lists_.ResolutionCount,
                     [&](const AXMLTreeNode& item) {
                         const int32_t x = ChildNumber(document_, item, "XResValue");
                         if (x < 0) return ShowFault("Wrong xResolution.");
                         const int32_t y = ChildNumber(document_, item, "YResValue");
                         if (y < 0) return ShowFault("Wrong yResolution.");
                         lists_.XResolutions.push_back(static_cast<uint32_t>(x));
                         lists_.YResolutions.push_back(static_cast<uint32_t>(y));
                         return true;
                     });
}

bool Reader::ReadColors() {
    AXMLTreeNode list;
    return FindColorList(document_, definition_, list) &&
           ReadItems(list, kColors, lists_.Colors, lists_.ColorCount, NothingMore);
}

bool Reader::ReadColorModes() {
    AXMLTreeNode list;
    if (document_.getChild(kColorModes.name, definition_, list) == 0) return false;
    return ReadItems(list, kColorModes, lists_.ColorModes, lists_.ColorModeCount,
                     [&](const AXMLTreeNode& item) {
                         auto colorants = std::make_unique<ColorModeColorants>();
                         if (!ReadColorants(item, *colorants)) return false;
                         lists_.ColorModeRecords.push_back(std::move(colorants));
                         return true;
                     });
}

bool Reader::ReadColorants(const AXMLTreeNode& colorMode, ColorModeColorants& colorants) {
    AXMLTreeNode list;
    document_.getChild("ColorantList", colorMode, list);
    return VisitChildren(document_, list, [&](const AXMLTreeNode& colorant, int32_t) {
        return ReadColorant(colorant, colorants);
    });
}

bool Reader::ReadColorant(const AXMLTreeNode& colorant, ColorModeColorants& colorants) {
    const int32_t color = ColorantColor(document_, colorant);
    if (color < 0 || color >= lists_.ColorCount) return ShowFault("Wrong color ID.");
    const int32_t depth = ChildNumber(document_, colorant, "ColorDepth");
    if (depth < 0) return ShowFault("Wrong color depth.");
    const bool saysSpot = !document_.getAttribute(colorant, "IsSpotColor").empty();
    const int32_t spot = AttributeNumber(document_, colorant, "IsSpotColor").value_or(-1);
    if (saysSpot && spot < 0) return ShowFault("Wrong color spot.");
    colorants.Colors.push_back(static_cast<uint32_t>(color));
    colorants.ColorDepths.push_back(static_cast<uint32_t>(depth));
    colorants.SpotFlags.push_back(spot == 1 ? 1 : 0);
    return true;
}

}  // namespace

AFilePath ModelListPath() {
    return AFilePath().Append("OutputDrivers").Append("ZeComFile.xml");
}

std::optional<AString> FindModelDescriptionFile(const AString& modelName, int* systemError) {
    AEnXMLTree models("RootElement");
    if (models.loadFromFileEn(ModelListPath(), 1) == 0) {
        if (systemError != nullptr) *systemError = models.SystemError();
        return std::nullopt;
    }
    return FindModelDescriptionFile(models, modelName);
}

std::optional<AString> FindModelDescriptionFile(const AXMLTree& models, const AString& modelName) {
    AXMLTreeNode root;
    models.getRootNode(root);
    std::optional<AString> fileName;
    VisitChildren(models, root, [&](const AXMLTreeNode& entry, int32_t) {
        if (FindText(modelName, models.getAttribute(entry, "Name")) == AString::npos) return true;
        const AString file = models.getAttribute(entry, "XMLFile");
        fileName = WholeCharacters(file, kMostFileNameCharacters);
        return false;
    });
    return fileName;
}

std::optional<AString> DisplayNameResource(int32_t base, int32_t position) {
    const int64_t number = int64_t{base} + 1 + position;
    char text[256] = {};
    if (base == -1 || number < 0) return std::nullopt;
    if (LoadResString(static_cast<UINT>(number), text, sizeof text) == 0) return std::nullopt;
    return AString(text);
}

bool ReadDescriptionLists(CDynamic& description, DescriptionLists& lists) {
    return Reader(description, lists).Read();
}
