// The tree of allowed combinations: media > print mode > resolution > colour mode.

#include <fmt/format.h>

#include <unordered_map>

#include "driverhost/check/FileChecks.h"

namespace {

/// One level of the tree.
struct Level {
    const char* Item;              ///< what its items stand for
    const char* List;              ///< where those are described
    const char* DefaultAttribute;  ///< names the default among the items below; null: none does
    /// An only item is taken whatever its ID, where the driver looks for one.
    bool OnlyItemServesAll;
};

constexpr Level kLevels[] = {
    {"medium", "MediaList", "DefaultPrintMode", true},
    {"print mode", "PrintModeList", nullptr, true},
    {"resolution", "ResolutionList", "DefaultColorMode", true},
    {"colour mode", "ColorModeList", nullptr, false},
};
constexpr std::size_t kLevelCount = std::size(kLevels);

class CombinationsCheck {
  public:
    CombinationsCheck(const CheckedDocument& document, const DescriptionFacts& facts)
        : document_(document),
          items_{facts.Media, facts.PrintModes, facts.Resolutions, {}},
          allowed_(kLevelCount) {
        for (const DescribedColorMode& mode : facts.ColorModes)
            items_.back().push_back(mode.Node);
        for (std::size_t level = 0; level < kLevelCount; ++level)
            allowed_[level].resize(items_[level].size());
    }

    void Check(const pugi::xml_node& tree) {
        CheckLevel(tree, 0);
        for (std::size_t level = 0; level < kLevelCount; ++level) {
            for (std::size_t position = 0; position < items_[level].size(); ++position) {
                if (allowed_[level][position]) continue;
                document_.Warning(
                    items_[level][position],
                    fmt::format("no combination allows this {}", kLevels[level].Item));
            }
        }
    }

  private:
    using Met = std::unordered_map<int32_t, pugi::xml_node>;

    void CheckLevel(const pugi::xml_node& parent, std::size_t level);
    void CheckIdentifier(const pugi::xml_node& item, std::size_t level, bool isOnlyItem, Met& met);
    void CheckDefault(const pugi::xml_node& parent, std::size_t level, const Met& met);

    const CheckedDocument& document_;
    std::vector<std::vector<pugi::xml_node>> items_;  ///< of the lists, by level
    std::vector<std::vector<bool>> allowed_;          ///< which of them the tree names
};

/// Goes four levels deep at most, however deep the file nests.
void CombinationsCheck::CheckLevel(const pugi::xml_node& parent, std::size_t level) {
    const Level& rule = kLevels[level];
    const bool isOnlyItem = CountElements(parent) == 1;
    CheckedDocument::Known known = {{}, {"ID"}, level + 1 < kLevelCount, false};
    if (rule.DefaultAttribute != nullptr) known.Attributes.emplace_back(rule.DefaultAttribute);
    Met met;
    ForEachElement(parent, [&](const pugi::xml_node& item, int32_t) {
        document_.CheckNames(item, known);
        CheckIdentifier(item, level, isOnlyItem, met);
        if (level + 1 < kLevelCount) CheckLevel(item, level + 1);
    });
    if (level > 0) CheckDefault(parent, level, met);
}

void CombinationsCheck::CheckIdentifier(const pugi::xml_node& item, std::size_t level,
                                        bool isOnlyItem, Met& met) {
    const Level& rule = kLevels[level];
    const auto count = static_cast<int32_t>(items_[level].size());
    const std::optional<int32_t> identifier = document_.Number(item, "ID");
    const bool isPosition = identifier && *identifier >= 0 && *identifier < count;
    if (isOnlyItem && rule.OnlyItemServesAll && count > 1) {
        document_.Warning(item,
                          fmt::format("the only {0} here serves every {0}, whatever its ID; a "
                                      "second item makes it choosy",
                                      rule.Item));
    }
    if (isOnlyItem && rule.OnlyItemServesAll) allowed_[level].assign(items_[level].size(), true);
    if (!isPosition) {
        const std::string text = item.attribute("ID").value();
        document_.Error(item, "ID",
                        text.empty()
                            ? fmt::format("the item has no ID, which would name a {}", rule.Item)
                            : fmt::format("ID {} names nothing: {} has {} items", Quoted(text),
                                          rule.List, count));
        return;
    }
    allowed_[level][static_cast<std::size_t>(*identifier)] = true;
    const auto [earlier, isFirst] = met.emplace(*identifier, item);
    if (isFirst) return;
    document_.Error(item, "ID",
                    fmt::format("ID {} is taken by the item in line {}, which is found first",
                                *identifier, document_.PositionOf(earlier->second).Line));
}

/// The default that `parent` names among its items, which are of `level`.
void CombinationsCheck::CheckDefault(const pugi::xml_node& parent, std::size_t level,
                                     const Met& met) {
    const char* const name = kLevels[level - 1].DefaultAttribute;
    if (name == nullptr || met.empty()) return;
    const std::string text = parent.attribute(name).value();
    const std::optional<int32_t> identifier = document_.Number(parent, name);
    if (identifier && met.contains(*identifier)) return;
    const char* const counted =
        level == 1 ? "the first item here counts as the default" : "colour mode 0 is answered";
    const auto count = static_cast<int32_t>(items_[level].size());
    if (text.empty()) {
        // Without a choice the answer is the same, and right, when the first is the only one.
        if (met.size() > 1 || (level != 1 && !met.contains(0))) {
            document_.Warning(parent, fmt::format("no {}; {}", name, counted));
        }
    } else if (!identifier || *identifier < 0 || *identifier >= count) {
        document_.Warning(parent, name,
                          fmt::format("{} {} is no position of {}; {}", name, Quoted(text),
                                      kLevels[level].List, counted));
    } else {
        document_.Warning(parent, name,
                          fmt::format("{} {} is not allowed here{}", name, *identifier,
                                      level == 1 ? fmt::format("; {}", counted) : ""));
    }
}

}  // namespace

void CheckCombinations(const CheckedDocument& document, const DescriptionFacts& facts) {
    const pugi::xml_node tree = ChildElement(document.Root(), "Control_Definition");
    if (!tree) {
        document.Error(document.Root(),
                       "no element \"Control_Definition\": no combination is allowed");
        return;
    }
    document.CheckNames(tree, {{}, {}, true, false});
    CombinationsCheck(document, facts).Check(tree);
}
