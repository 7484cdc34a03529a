// The lists of a description: base resource numbers, media, print modes, resolutions, colours and
// colour modes.

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <unordered_map>
#include <utility>

#include "description/DescriptionLists.h"
#include "driverhost/check/FileChecks.h"
#include "driverhost/check/ListCheck.h"
#include "driverhost/check/ReferencesCheck.h"
#include "driverhost/check/ResolutionNameCheck.h"
#include "host/Records.h"

namespace {

using Known = CheckedDocument::Known;

constexpr std::size_t kMostItemBytes = 63;       // of a name in the host's lists
constexpr std::size_t kMostModeNameBytes = 255;  // of a colour mode's name

class DefinitionCheck {
  public:
    explicit DefinitionCheck(const CheckedDocument& document) : document_(document) {}

    DescriptionFacts Check() {
        definition_ = ChildElement(document_.Root(), "Definition");
        if (!definition_) {
            document_.Error(document_.Root(), "no element \"Definition\"" +
                                                  Refusal("Getting DEFINITIONNODE node fails"));
            return facts_;
        }
        document_.CheckNames(definition_, {{kMedia.name, kPrintModes.name, kResolutions.name,
                                            kColors.name, kColorModes.name},
                                           {},
                                           false,
                                           false});
        CheckMedia();
        CheckPrintModes();
        CheckResolutions();
        CheckColors();
        CheckColorModes();
        CheckReferences(document_, facts_);
        return std::move(facts_);
    }

  private:
    void CheckMedia();
    void CheckPrintModes();
    void CheckResolutions();
    void CheckColors();
    void CheckColorModes();
    void CheckColorMode(const pugi::xml_node& item);
    void CheckColorant(const pugi::xml_node& item, DescribedColorMode& mode,
                       std::optional<int32_t>& modeDepth);

    /// Checks one list and what all its items have; `checkItem(item)` sees the rest. The items.
    template <class CheckItem>
    std::vector<pugi::xml_node> CheckList(const ListKind& kind, const Known& item,
                                          const std::vector<std::string_view>& attributes,
                                          CheckItem checkItem);
    /// The dots per inch of one axis; 0 when there are none.
    int32_t CheckDots(const pugi::xml_node& item, const char* name, const char* message);

    const CheckedDocument& document_;
    pugi::xml_node definition_;
    DescriptionFacts facts_;
};

template <class CheckItem>
std::vector<pugi::xml_node> DefinitionCheck::CheckList(
    const ListKind& kind, const Known& item, const std::vector<std::string_view>& attributes,
    CheckItem checkItem) {
    std::vector<pugi::xml_node> items;
    std::unordered_map<int32_t, pugi::xml_node> met;
    const pugi::xml_node list = ChildElement(definition_, kind.name);
    document_.CheckNames(list, {{}, attributes, true, false});
    ForEachElement(list, [&](const pugi::xml_node& node, int32_t position) {
        items.push_back(node);
        document_.CheckNames(node, item);
        CheckItemIdentifier(document_, node, position, kind, met);
        checkItem(node);
    });
    CheckBaseNumber(document_, kind, static_cast<int32_t>(items.size()));
    return items;
}

void DefinitionCheck::CheckMedia() {
    const Known item = {{"ID", "InternalName", "DisplayName"}, {}, false, false};
    facts_.Media = CheckList(kMedia, item, {"DefaultMedia"}, [&](const pugi::xml_node& node) {
        CheckItemName(document_, node, "InternalName", kMostItemBytes);
        CheckItemName(document_, node, "DisplayName", kMostItemBytes);
    });
    facts_.MediaCount = static_cast<int32_t>(facts_.Media.size());
    const pugi::xml_node list = ChildElement(definition_, kMedia.name);
    const std::string text = list.attribute("DefaultMedia").value();
    if (text.empty()) return;
    const std::optional<int32_t> media = document_.Number(list, "DefaultMedia");
    if (!media) {
        document_.Warning(list, "DefaultMedia",
                          fmt::format("DefaultMedia {} is no number; 0 is read", Quoted(text)));
    } else if (*media < 0 || *media >= facts_.MediaCount) {
        document_.Warning(
            list, "DefaultMedia",
            fmt::format("DefaultMedia {} names none of the {} media", *media, facts_.MediaCount));
    }
}

void DefinitionCheck::CheckPrintModes() {
    const Known item = {{"ID", "InternalName", "DisplayName"}, {}, false, false};
    facts_.PrintModes = CheckList(kPrintModes, item, {}, [&](const pugi::xml_node& node) {
        CheckItemName(document_, node, "InternalName", kMostItemBytes);
        CheckItemName(document_, node, "DisplayName", kMostItemBytes);
    });
    facts_.PrintModeCount = static_cast<int32_t>(facts_.PrintModes.size());
}

int32_t DefinitionCheck::CheckDots(const pugi::xml_node& item, const char* name,
                                   const char* message) {
    const pugi::xml_node node = ChildElement(item, name);
    if (!node) {
        document_.Error(
            item, fmt::format("the item has no element {}{}", Quoted(name), Refusal(message)));
        return 0;
    }
    const std::string text = document_.ChildText(item, name);
    const std::optional<int32_t> dots = document_.Number(node, name, text);
    if (!dots || *dots < 0) {
        document_.Error(node, fmt::format("{} {} is no number of 0 or more{}", name, Quoted(text),
                                          Refusal(message)));
    } else if (*dots == 0) {
        document_.Error(node, fmt::format("{} is 0 dots per inch: nothing can be printed", name));
    }
    return dots.value_or(0);
}

void DefinitionCheck::CheckResolutions() {
    const Known item = {{"ID", "XResValue", "YResValue", "DisplayName"}, {}, false, false};
    facts_.Resolutions = CheckList(kResolutions, item, {}, [&](const pugi::xml_node& node) {
        const int32_t x = CheckDots(node, "XResValue", "Wrong xResolution.");
        const int32_t y = CheckDots(node, "YResValue", "Wrong yResolution.");
        const std::string name = CheckItemName(document_, node, "DisplayName", kMostItemBytes);
        if (NamesExchanged(name, x, y))
            document_.Warning(ChildElement(node, "XResValue"),
                              fmt::format("{} has {} dots per inch across and {} down; are the two "
                                          "exchanged?",
                                          Quoted(name), x, y));
    });
    facts_.ResolutionCount = static_cast<int32_t>(facts_.Resolutions.size());
}

void DefinitionCheck::CheckColors() {
    const pugi::xml_node list = ChildElement(definition_, kColors.name);
    if (!list) {
        document_.Error(definition_, fmt::format("no element {}{}", Quoted(kColors.name),
                                                 Refusal("Loading COLORLISTNODE fails.")));
    } else if (CountElements(list) == 0) {
        document_.Error(list, "the list is empty" + Refusal("Wrong nClrDefCount"));
    }
    const Known item = {{"ID", "InternalName", "DisplayName", "ChannelName"}, {}, false, false};
    facts_.ColorNodes = CheckList(kColors, item, {}, [&](const pugi::xml_node& node) {
        DescribedColor color;
        color.InternalName = CheckItemName(document_, node, "InternalName", kMostItemBytes);
        CheckItemName(document_, node, "DisplayName", kMostItemBytes);
        color.ChannelName = document_.ChildText(node, "ChannelName");
        facts_.Colors.push_back(std::move(color));
    });
}

void DefinitionCheck::CheckColorModes() {
    const pugi::xml_node list = ChildElement(definition_, kColorModes.name);
    if (!list) {
        document_.Error(definition_,
                        fmt::format("no element {}; the driver refuses the description {}",
                                    Quoted(kColorModes.name), kWithoutMessage));
    } else if (CountElements(list) == 0) {
        document_.Error(list, "the list is empty: the model offers no colour mode");
    }
    const Known item = {{"ID", "InternalName", "DisplayName", "ColorantList"}, {}, false, false};
    CheckList(kColorModes, item, {}, [&](const pugi::xml_node& node) { CheckColorMode(node); });
    std::map<std::string, pugi::xml_node> met;
    for (const DescribedColorMode& mode : facts_.ColorModes) {
        const auto [earlier, isFirst] = met.emplace(Folded(mode.Name), mode.Node);
        if (isFirst) continue;
        document_.Warning(
            mode.Node, fmt::format("{} names the colour mode in line {} too, which is "
                                   "found by that name",
                                   Quoted(mode.Name), document_.PositionOf(earlier->second).Line));
    }
}

void DefinitionCheck::CheckColorMode(const pugi::xml_node& item) {
    DescribedColorMode mode;
    mode.Node = item;
    CheckItemName(document_, item, "InternalName", kMostModeNameBytes);
    mode.Name = CheckItemName(document_, item, "DisplayName", kMostModeNameBytes);
    const pugi::xml_node list = ChildElement(item, "ColorantList");
    document_.CheckNames(list, {{}, {}, true, false});
    std::optional<int32_t> depth;
    ForEachElement(list, [&](const pugi::xml_node& colorant, int32_t) {
        CheckColorant(colorant, mode, depth);
    });
    const int32_t count = CountElements(list);
    if (count == 0) document_.Error(item, "the colour mode has no colorants: it prints nothing");
    if (count > DitherParams::kMostInks) {
        document_.Warning(item, fmt::format("{} colorants: dither parameters describe the first {}",
                                            count, DitherParams::kMostInks));
    }
    if (count > kColorantCapacity) {
        document_.Error(
            item, fmt::format("{} colorants: a job has room for {}", count, kColorantCapacity));
    }
    facts_.ColorModes.push_back(std::move(mode));
}

void DefinitionCheck::CheckColorant(const pugi::xml_node& item, DescribedColorMode& mode,
                                    std::optional<int32_t>& modeDepth) {
    document_.CheckNames(item, {{"ColorDepth"}, {"ID", "IsSpotColor"}, false, false});
    const std::string idText = item.attribute("ID").value();
    const std::optional<int32_t> color =
        idText.empty() ? std::optional<int32_t>(0) : document_.Number(item, "ID");
    if (idText.empty()) document_.Warning(item, "the colorant has no ID; it counts as colour 0");
    const auto colorCount = static_cast<int32_t>(facts_.Colors.size());
    if (!color || *color < 0 || *color >= colorCount) {
        document_.Error(item, "ID",
                        fmt::format("ID {} is no position of the {} colours{}", Quoted(idText),
                                    colorCount, Refusal("Wrong color ID.")));
    } else {
        mode.Colors.push_back(*color);
    }

    const pugi::xml_node depthNode = ChildElement(item, "ColorDepth");
    const std::string depthText = document_.ChildText(item, "ColorDepth");
    const pugi::xml_node& at = depthNode ? depthNode : item;
    const std::optional<int32_t> depth = document_.Number(at, "ColorDepth", depthText);
    if (!depth || *depth < 0) {
        document_.Error(at, fmt::format("ColorDepth {} is no number of 0 or more{}",
                                        Quoted(depthText), Refusal("Wrong color depth.")));
    } else if (*depth != 1 && *depth != 2 && *depth != 4 && *depth != 8) {
        document_.Error(at, fmt::format("ColorDepth {} cannot be printed: job containers hold "
                                        "separations of 1, 2, 4 or 8 bits",
                                        *depth));
    } else if (!modeDepth) {
        modeDepth = depth;
    } else if (*modeDepth != *depth) {
        document_.Error(at, fmt::format("ColorDepth {} beside the {} of an earlier colorant: a "
                                        "page is written in its greatest depth, in which the "
                                        "others come out wrong",
                                        *depth, *modeDepth));
    }

    const std::string spotText = item.attribute("IsSpotColor").value();
    const std::optional<int32_t> spot = document_.Number(item, "IsSpotColor");
    if (!spotText.empty() && (!spot || *spot < 0)) {
        document_.Error(item, "IsSpotColor",
                        fmt::format("IsSpotColor {} is no number of 0 or more{}", Quoted(spotText),
                                    Refusal("Wrong color spot.")));
    } else if (spot && *spot > 1) {
        document_.Warning(item, "IsSpotColor",
                          fmt::format("IsSpotColor {} counts as 0; 1 is a spot colour", *spot));
    }
}

}  // namespace

DescriptionFacts CheckDefinition(const CheckedDocument& document) {
    const pugi::xml_node bases = ChildElement(document.Root(), "BaseResourceNumber");
    if (bases) {
        document.CheckNames(bases, {{kMedia.baseName, kPrintModes.baseName, kResolutions.baseName,
                                     kColors.baseName, kColorModes.baseName},
                                    {},
                                    false,
                                    false});
    } else {
        document.Error(document.Root(),
                       "no element \"BaseResourceNumber\"; the driver shows "
                       "\"Getting BASERESOURCENODE node fails\" for each list at "
                       "each load");
    }
    return DefinitionCheck(document).Check();
}
