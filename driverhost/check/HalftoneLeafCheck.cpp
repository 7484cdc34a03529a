// The leaves of a parameter file: dither levels and screens.

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>

#include "driverhost/check/HalftoneCheck.h"
#include "halftone/HalftoneEntries.h"
#include "halftone/ReadScreeningParams.h"
#include "host/Numbers.h"
#include "host/Records.h"
#include "host/Text.h"
#include "platform/CodePage.h"

namespace {

constexpr int32_t kMostLevels = DitherParams::kMostLevels;
constexpr int32_t kMostInks = DitherParams::kMostInks;

/// The fraction of an attribute; what follows the number is reported.
std::optional<float> Fraction(const CheckedDocument& document, const pugi::xml_node& node,
                              const char* attribute) {
    const std::string text = node.attribute(attribute).value();
    const std::optional<float> value = LeadingFraction(text);
    if (!value) return value;
    const std::size_t rest = text.find_first_not_of("+-.0123456789eE \t\r\n");
    if (rest != std::string::npos)
        document.Warning(
            node, attribute,
            fmt::format("only the {} of {} {} is read", *value, attribute, Quoted(text)));
    return value;
}

bool IsLevelCount(int32_t count) {
    return count >= 2 && count <= kMostLevels && (count & (count - 1)) == 0;
}

void CheckLevelCount(const CheckedDocument& document, const pugi::xml_node& entry, int32_t count) {
    if (IsLevelCount(count)) return;
    document.Warning(entry, "ID",
                     fmt::format("nothing reaches the level count {}: a colour mode has 2, 4, 8, "
                                 "16, 32 or 64 levels",
                                 count));
}

/// The weights of one `Level`.
class Weights {
  public:
    Weights(const CheckedDocument& document, int32_t levelCount)
        : document_(document), positions_(levelCount - 1) {}

    void Add(const pugi::xml_node& weight) {
        document_.CheckNames(weight, {{}, {"Value", "ColorInk", "Level"}, false, false});
        const std::optional<int32_t> ink = Ink(weight);
        const std::optional<int32_t> position = Number(weight, "Level", kMostLevels);
        const std::optional<float> value = Fraction(document_, weight, "Value");
        if (!value) Skip(weight, "Value", "a number");
        if (!ink || !position || !value) return;
        const auto [earlier, isNew] = met_[*ink].try_emplace(*position, weight);
        if (!isNew) {
            document_.Warning(earlier->second, "the weight is not used: a later one has its place");
            earlier->second = weight;
        }
        if (*position >= positions_)
            document_.Warning(
                weight, "Level",
                fmt::format("position {} is not used: of {} levels, positions 0 to {} are",
                            *position, positions_ + 1, positions_ - 1));
        if (*value < 0 || *value > 1)
            document_.Warning(weight, "Value",
                              fmt::format("{} is no share of full ink, 0 to 1", *value));
    }

    /// Every ink that has a weight should have all, each with more ink than the one before.
    void Finish(const pugi::xml_node& level) const {
        if (met_.empty()) document_.Warning(level, "no weight: the levels stay evenly spaced");
        for (const auto& [ink, weights] : met_) {
            for (int32_t position = 0; position < positions_; ++position)
                if (!weights.contains(position))
                    document_.Warning(level,
                                      fmt::format("ink {} has no weight at position {}, which "
                                                  "stays {:.3f}",
                                                  ink, position, EvenShare(position)));
            CheckRise(level, ink, weights);
        }
    }

  private:
    using InkWeights = std::map<int32_t, pugi::xml_node>;  ///< by position

    double EvenShare(int32_t position) const {
        return (position + 1) / static_cast<double>(positions_);
    }

    /// Reports the first position of an ink that carries no more of it than the one before.
    void CheckRise(const pugi::xml_node& level, int32_t ink, const InkWeights& weights) const {
        double before = 0;
        for (int32_t position = 0; position < positions_; ++position) {
            const auto weight = weights.find(position);
            const bool isSet = weight != weights.end();
            const double share =
                isSet ? double{LeadingFraction(weight->second.attribute("Value").value()).value()}
                      : EvenShare(position);
            if (share <= before) {
                const std::string text = fmt::format(
                    "the weights of ink {} do not rise: position {} has {:.4g} after "
                    "{:.4g}",
                    ink, position, share, before);
                const pugi::xml_node at = isSet ? weight->second : level;
                return share < before ? document_.Error(at, "Value", text)
                                      : document_.Warning(at, "Value", text);
            }
            before = share;
        }
    }

    void Skip(const pugi::xml_node& weight, const char* attribute,
              const std::string& wanted) const {
        document_.Error(weight, attribute,
                        fmt::format("the weight is skipped: its {} {} is not {}", attribute,
                                    Quoted(weight.attribute(attribute).value()), wanted));
    }
    std::optional<int32_t> Number(const pugi::xml_node& weight, const char* attribute,
                                  int32_t end) const {
        const std::optional<int32_t> number = document_.Number(weight, attribute);
        if (number && *number >= 0 && *number < end) return number;
        Skip(weight, attribute, fmt::format("a number of 0 to {}", end - 1));
        return std::nullopt;
    }
    std::optional<int32_t> Ink(const pugi::xml_node& weight) const {
        const std::string_view text = weight.attribute("ColorInk").value();
        return EqualsIgnoringCase(text, kDefaultEntryID) ? 0
                                                         : Number(weight, "ColorInk", kMostInks);
    }

    const CheckedDocument& document_;
    int32_t positions_;
    std::map<int32_t, InkWeights> met_;  ///< by ink
};

void CheckLevel(const CheckedDocument& document, const pugi::xml_node& entry,
                const ServedIDs& levelCounts) {
    const pugi::xml_node level = ChildElement(entry, "Level");
    if (!level) {
        document.Error(entry,
                       "no element \"Level\"; the driver shows \"Getting ditherparams-level node "
                       "fails\"");
        return;
    }
    document.CheckNames(level, {{}, {"Value"}, true, false});
    CheckChildNames(document, level, {"Weight"});
    const std::optional<int32_t> count = document.Number(level, "Value");
    for (const int32_t served : levelCounts.Numbers)
        if (served != count)
            document.Error(level, "Value",
                           fmt::format("the entry serves {} levels, but its Level is for {}: the "
                                       "driver refuses it without a message",
                                       served, Quoted(level.attribute("Value").value())));
    if (levelCounts.IsDefault)
        document.Warning(level, "Value",
                         fmt::format("of the level counts that \"Default\" serves, all but {} are "
                                     "refused without a message",
                                     Quoted(level.attribute("Value").value())));
    if (!count || !IsLevelCount(*count)) return;
    Weights weights(document, *count);
    ForEachElement(level, [&](const pugi::xml_node& child, int32_t) {
        if (std::string_view(child.name()) == "Weight") weights.Add(child);
    });
    weights.Finish(level);
}

/// One of the two single values of an entry.
pugi::xml_node NeededValue(const CheckedDocument& document, const pugi::xml_node& entry,
                           const char* name, const char* message) {
    const pugi::xml_node node = ChildElement(entry, name);
    if (!node) {
        document.Error(entry,
                       fmt::format("no element \"{}\"; the driver shows \"{}\"", name, message));
    } else {
        document.CheckNames(node, {{}, {"Value"}, false, false});
    }
    return node;
}

/// A number of a screen that can be left to its place.
void CheckScreenNumber(const CheckedDocument& document, const pugi::xml_node& item,
                       const char* attribute, bool mustBePositive) {
    const std::string text = item.attribute(attribute).value();
    const std::optional<float> value = Fraction(document, item, attribute);
    if (!value) {
        document.Warning(item, attribute,
                         fmt::format("{} {} is no number: the screen keeps the value that stands "
                                     "at its place",
                                     attribute, Quoted(text)));
    } else if (mustBePositive && *value <= 0) {
        document.Error(item, attribute, fmt::format("{} is no {}", *value, attribute));
    } else if (text.find('.') != std::string::npos) {
        document.Warning(item, attribute,
                         fmt::format("where the decimal sign is a comma, only the {} of {} is read",
                                     static_cast<int64_t>(*value), Quoted(text)));
    }
}

void CheckScreenName(const CheckedDocument& document, const pugi::xml_node& item,
                     const char* attribute, std::size_t fieldBytes) {
    if (Utf8ToAnsi(item.attribute(attribute).value()).size() < fieldBytes) return;
    document.Error(item, attribute,
                   fmt::format("{} is cut to {} bytes", attribute, fieldBytes - 1));
}

void CheckScreenColor(const CheckedDocument& document, const pugi::xml_node& item,
                      const std::set<std::string>& colors) {
    const std::string name = item.attribute("ColorName").value();
    if (colors.empty() || colors.contains(Folded(name))) return;
    const std::vector<std::string_view> known(colors.begin(), colors.end());
    document.Error(item, "ColorName",
                   fmt::format("no colour of the models that lead to this file is named {}{}",
                               Quoted(name), DidYouMean(name, known)));
}

void CheckShape(const CheckedDocument& document, const pugi::xml_node& item) {
    const std::string_view shape = item.attribute("ShapeName").value();
    const std::vector<std::string_view> known(kShapeNames.begin(), kShapeNames.end());
    if (std::find(known.begin(), known.end(), shape) != known.end()) return;
    document.Warning(item, "ShapeName",
                     fmt::format("no dot shape is named {}; the host gets the name as it stands{}",
                                 Quoted(shape), DidYouMean(shape, known)));
}

}  // namespace

void CheckDitherEntry(const CheckedDocument& document, const pugi::xml_node& entry,
                      const ServedIDs& levelCounts) {
    document.CheckNames(entry, {{"Level", "AntiClogLevel", "NoiseLevel"}, {"ID"}, false, false});
    for (const int32_t count : levelCounts.Numbers)
        CheckLevelCount(document, entry, count);
    CheckLevel(document, entry, levelCounts);
    const pugi::xml_node antiClog = NeededValue(document, entry, "AntiClogLevel",
                                                "Getting ditherparams-anti clog level node fails");
    if (antiClog && !document.Number(antiClog, "Value"))
        document.Warning(antiClog, "Value", "the Value is no number of 32 bits: 0 is kept");
    const pugi::xml_node noise =
        NeededValue(document, entry, "NoiseLevel", "Getting ditherparams-noise level node fails");
    if (noise && !Fraction(document, noise, "Value"))
        document.Warning(noise, "Value", "the Value is no number: 1 is kept");
}

void CheckScreens(const CheckedDocument& document, const pugi::xml_node& colorMode,
                  const std::set<std::string>& colors) {
    int32_t count = 0;
    std::map<std::string, pugi::xml_node> met;
    ForEachElement(colorMode, [&](const pugi::xml_node& item, int32_t) {
        if (std::string_view(item.name()) != "Item") return;
        document.CheckNames(item,
                            {{}, {"ColorName", "Angle", "Frequency", "ShapeName"}, false, false});
        const std::string name = item.attribute("ColorName").value();
        if (name.empty()) {
            document.Warning(item, "the item has no ColorName and is passed over");
            return;
        }
        if (++count == ScreeningParams::kMostEntries + 1)
            document.Error(item, fmt::format("only the first {} items are read",
                                             ScreeningParams::kMostEntries));
        const auto [earlier, isNew] = met.try_emplace(name, item);
        if (!isNew)
            document.Warning(item, "ColorName",
                             fmt::format("line {} has a screen of that name",
                                         document.PositionOf(earlier->second).Line));
        CheckScreenName(document, item, "ColorName", sizeof ScreenEntry::ColorName);
        CheckScreenColor(document, item, colors);
        CheckScreenName(document, item, "ShapeName", sizeof ScreenEntry::ShapeName);
        CheckScreenNumber(document, item, "Angle", false);
        CheckScreenNumber(document, item, "Frequency", true);
        CheckShape(document, item);
    });
}
