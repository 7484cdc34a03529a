// The tree of a parameter file, as the selection walks it, and the lists of identifiers in it.

#include <fmt/format.h>

#include <algorithm>

#include "driverhost/TextCompare.h"
#include "driverhost/check/HalftoneCheck.h"
#include "halftone/GetCommaField.h"
#include "halftone/HalftoneEntries.h"
#include "platform/CodePage.h"

namespace {

using Kind = ParameterFileUse::Kind;

struct Level {
    const char* Element;
    const char* Message;  ///< of the driver when nothing serves
    int32_t ServedModels::*Count = nullptr;
};

constexpr Level kLevels[] = {
    {"Media", "Getting media node fails", &ServedModels::Media},
    {"PrintMode", "Getting printmode node fails", &ServedModels::PrintModes},
    {"Resolution", "Getting resolution node fails", &ServedModels::Resolutions},
    {"ColorMode", "Getting colormode node fails", &ServedModels::ColorModes},
};

bool HoldsIgnoringCase(std::string_view text, std::string_view part) {
    for (std::size_t at = 0; at + part.size() <= text.size(); ++at)
        if (SameIgnoringCase(text.substr(at, part.size()), part)) return true;
    return false;
}

/// Reports a number that no item of the model has.
void CheckRange(const CheckedDocument& document, const pugi::xml_node& element,
                const ServedIDs& served, int32_t count) {
    for (const int32_t number : served.Numbers) {
        if (number >= 0 && (number < count || count == ServedModels::kAny)) continue;
        document.Warning(
            element, "ID",
            fmt::format("nothing reaches {} {}: {}", element.name(), number,
                        number < 0 ? "identifiers are 0 or more"
                                   : fmt::format("the models of this file have {}", count)));
    }
}

void CheckLeaves(const CheckedDocument& document, const pugi::xml_node& colorMode, Kind leaves,
                 const ServedModels& served) {
    CheckChildNames(document, colorMode, {"DitherParams", "Item"});
    Siblings siblings(document);
    bool hasDither = false;
    ForEachElement(colorMode, [&](const pugi::xml_node& child, int32_t) {
        if (std::string_view(child.name()) != "DitherParams") return;
        hasDither = true;
        const ServedIDs levelCounts = ReadIDs(document, child);
        siblings.Add(child, levelCounts);
        CheckDitherEntry(document, child, levelCounts);
    });
    const bool hasItems = static_cast<bool>(ChildElement(colorMode, "Item"));
    if (hasItems) CheckScreens(document, colorMode, served.Colors);
    if (leaves == Kind::kDither && !hasDither)
        document.Error(colorMode,
                       "no element \"DitherParams\"; the driver shows \"Getting ditherparams node "
                       "fails\"");
    if (leaves == Kind::kScreening && !hasItems)
        document.Warning(colorMode, "no element \"Item\": the driver's built-in screens are used");
}

/// Goes down from `parent` through the levels from `index` on.
void CheckLevel(const CheckedDocument& document, const pugi::xml_node& parent, std::size_t index,
                Kind leaves, const ServedModels& served) {
    if (index == std::size(kLevels)) return CheckLeaves(document, parent, leaves, served);
    const Level& level = kLevels[index];
    CheckChildNames(document, parent, {level.Element});
    Siblings siblings(document);
    bool isEmpty = true;
    ForEachElement(parent, [&](const pugi::xml_node& child, int32_t) {
        if (std::string_view(child.name()) != level.Element) return;
        isEmpty = false;
        document.CheckNames(child, {{}, {"ID"}, true, false});
        const ServedIDs identifiers = ReadIDs(document, child);
        siblings.Add(child, identifiers);
        CheckRange(document, child, identifiers, served.*level.Count);
        CheckLevel(document, child, index + 1, leaves, served);
    });
    if (isEmpty)
        document.Error(parent, fmt::format("no element \"{}\"; the driver shows \"{}\"",
                                           level.Element, level.Message));
}

/// The `Model` elements: which names reach them.
class Models {
  public:
    Models(const CheckedDocument& document, const ParameterFileUse& use)
        : document_(document), use_(use) {}

    void Add(const pugi::xml_node& model) {
        const std::string_view id = model.attribute("ID").value();
        if (id == kDefaultEntryID) {
            if (default_) ReportReplaced();
            default_ = model;
            return;
        }
        if (id.size() > kMostIDCharacters)
            document_.Error(
                model, "ID",
                fmt::format("only the first {} bytes of the ID are read", kMostIDCharacters));
        const auto holdsID = [&](const pugi::xml_node& earlier) {
            return std::string_view(earlier.attribute("ID").value()).find(id) !=
                   std::string_view::npos;
        };
        const auto serves = [&](const std::string& name) { return HoldsIgnoringCase(id, name); };
        const auto taker = std::find_if(met_.begin(), met_.end(), holdsID);
        if (id.empty()) {
            document_.Error(model, "the model has no ID, so no model's name reaches it");
        } else if (taker != met_.end()) {
            document_.Warning(
                model, "ID",
                fmt::format("nothing reaches this model: every name in its ID stands in that of "
                            "line {}",
                            document_.PositionOf(*taker).Line));
        } else if (!use_.Models.empty() &&
                   std::none_of(use_.Models.begin(), use_.Models.end(), serves)) {
            document_.Warning(
                model, "ID",
                "nothing reaches this model: no model that leads to this file stands in its ID");
        }
        if (met_.size() < kMostModels) met_.push_back(model);
    }

    void Finish(const pugi::xml_node& hardware) const {
        if (default_) return;
        if (met_.empty())
            document_.Error(hardware,
                            "no element \"Model\"; the driver shows \"Getting media node fails\"");
        for (const std::string& name : use_.Models) {
            const auto serves = [&](const pugi::xml_node& model) {
                return HoldsIgnoringCase(model.attribute("ID").value(), name);
            };
            if (std::none_of(met_.begin(), met_.end(), serves))
                document_.Error(
                    hardware,
                    fmt::format("no element serves the model {}, which leads to this file; the "
                                "driver shows \"Getting media node fails\"",
                                Quoted(name)));
        }
    }

  private:
    void ReportReplaced() const {
        document_.Warning(default_, "ID", "nothing reaches this entry: a later \"Default\" counts");
    }

    const CheckedDocument& document_;
    const ParameterFileUse& use_;
    std::vector<pugi::xml_node> met_;
    pugi::xml_node default_;
};

}  // namespace

void CheckChildNames(const CheckedDocument& document, const pugi::xml_node& parent,
                     const std::vector<std::string_view>& names) {
    ForEachElement(parent, [&](const pugi::xml_node& child, int32_t) {
        if (std::find(names.begin(), names.end(), child.name()) != names.end()) return;
        document.Warning(child, fmt::format("element {} is not read{}", Quoted(child.name()),
                                            DidYouMean(child.name(), names)));
    });
}

ServedIDs ReadIDs(const CheckedDocument& document, const pugi::xml_node& element) {
    const AString whole = Utf8ToAnsi(element.attribute("ID").value());
    const std::string_view id = std::string_view(whole).substr(0, kMostIDCharacters);
    ServedIDs served;
    served.IsDefault = id == kDefaultEntryID;
    if (served.IsDefault) return served;
    if (SameIgnoringCase(id, kDefaultEntryID)) {
        document.Error(element, "ID",
                       fmt::format("{} is read as a list of numbers and serves nothing (did you "
                                   "mean \"Default\"?)",
                                   Quoted(id)));
        return served;
    }
    char field[kCommaFieldBytes];
    std::string_view rest = id;
    for (int index = 0; GetCommaField(index, id, field) != 0; ++index) {
        const std::optional<int32_t> number = document.Number(element, "ID", field);
        if (number) {
            served.Numbers.push_back(*number);
        } else {
            document.Warning(element, "ID",
                             fmt::format("{} is no number of 32 bits and serves nothing",
                                         Quoted(AnsiToUtf8(field))));
        }
        const std::size_t comma = rest.find(',');
        rest = comma == std::string_view::npos ? "" : rest.substr(comma + 1);
    }
    if (whole.size() > kMostIDCharacters) {
        document.Error(
            element, "ID",
            fmt::format("only the first {} bytes of the ID are read", kMostIDCharacters));
    } else if (id.empty()) {
        document.Error(element, "the element has no ID, so it serves nothing");
    } else if (const std::size_t lost = rest.find_first_not_of(',');
               lost != std::string_view::npos) {
        document.Error(element, "ID",
                       fmt::format("the list ends at its empty field: {} is not read",
                                   Quoted(AnsiToUtf8(rest.substr(lost)))));
    }
    return served;
}

void Siblings::Add(const pugi::xml_node& element, const ServedIDs& served) {
    if (served.IsDefault) {
        if (default_)
            document_.Warning(default_, "ID",
                              fmt::format("nothing reaches this entry: the \"Default\" of line {} "
                                          "counts",
                                          document_.PositionOf(element).Line));
        default_ = element;
    }
    for (const int32_t number : served.Numbers) {
        const auto [earlier, isNew] = serving_.try_emplace(number, element);
        if (isNew) continue;
        document_.Warning(element, "ID",
                          fmt::format("nothing reaches {} here: line {} serves it", number,
                                      document_.PositionOf(earlier->second).Line));
    }
}

void CheckPrinterHardware(const CheckedDocument& document, const pugi::xml_node& hardware,
                          const ParameterFileUse& use, const ServedModels& served) {
    document.CheckNames(hardware, {{}, {}, true, false});
    CheckChildNames(document, hardware, {"Model"});
    Models models(document, use);
    ForEachElement(hardware, [&](const pugi::xml_node& model, int32_t) {
        if (std::string_view(model.name()) != "Model") return;
        document.CheckNames(model, {{}, {"ID"}, true, false});
        models.Add(model);
        CheckLevel(document, model, 0, use.Leaves, served);
    });
    models.Finish(hardware);
}
