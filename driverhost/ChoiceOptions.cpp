#include "driverhost/ChoiceOptions.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <optional>

#include "driverhost/HostError.h"
#include "driverhost/TextCompare.h"

namespace {

std::optional<int32_t> WholeNumber(const std::string& text) {
    int32_t value = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    if (result.ec != std::errc() || result.ptr != end) return std::nullopt;
    return value;
}

std::string NamesOf(const CapabilityList& items) {
    std::string names;
    for (const CapabilityItem& item : items)
        names += fmt::format("{}{} \"{}\"", names.empty() ? "" : ", ", item.ID, item.DisplayName);
    return names;
}

[[noreturn]] void Unknown(const char* what, const std::string& text, const std::string& known) {
    throw HostError(kUsage, fmt::format("no {} \"{}\"; there is {}", what, text,
                                        known.empty() ? "none" : known));
}

/// A name wins over an identifier, for a model may name an item "2".
const CapabilityItem& FindItem(const char* what, const CapabilityList& items,
                               const std::string& text) {
    for (const CapabilityItem& item : items)
        if (SameIgnoringCase(item.DisplayName, text) || SameIgnoringCase(item.InternalName, text))
            return item;
    const std::optional<int32_t> id = WholeNumber(text);
    for (const CapabilityItem& item : items)
        if (id == item.ID) return item;
    Unknown(what, text, NamesOf(items));
}

std::string DotsText(const ResolutionItem& item) {
    // By value: the records of a list are packed, and these numbers not aligned.
    return fmt::format("{}x{}", double{item.XResolution}, double{item.YResolution});
}

const ResolutionItem& FindResolution(const ResolutionList& items, const std::string& text) {
    for (const ResolutionItem& item : items)
        if (SameIgnoringCase(item.DisplayName, text) || SameIgnoringCase(DotsText(item), text))
            return item;
    const std::optional<int32_t> id = WholeNumber(text);
    std::string names;
    for (const ResolutionItem& item : items) {
        if (id == item.ID) return item;
        names += fmt::format("{}{} {}", names.empty() ? "" : ", ", item.ID, DotsText(item));
    }
    Unknown("resolution", text, names);
}

const ColorMode& FindColorMode(const std::vector<ColorMode>& modes, const std::string& text) {
    for (const ColorMode& mode : modes)
        if (SameIgnoringCase(mode.Name, text)) return mode;
    const std::optional<int32_t> position = WholeNumber(text);
    std::string names;
    for (const ColorMode& mode : modes) {
        if (position == mode.Position) return mode;
        names += fmt::format("{}{} \"{}\"", names.empty() ? "" : ", ", mode.Position, mode.Name);
    }
    Unknown("colour mode", text, names);
}

int32_t DefaultMediaOf(const Capabilities& capabilities) {
    for (const CapabilityItem& item : capabilities.Media())
        if (item.ID == capabilities.DefaultMedia()) return item.ID;
    return capabilities.Media().front().ID;
}

int32_t DefaultPrintModeOf(const Capabilities& capabilities, const PrintModes& modes,
                           int32_t media) {
    if (modes.Items.empty())
        throw HostError(
            kUsage, fmt::format("{} has no print mode for medium {}", capabilities.Model(), media));
    const std::size_t position = static_cast<std::size_t>(std::max(modes.DefaultPosition, 0));
    return modes.Items[position < modes.Items.size() ? position : 0].ID;
}

/// The wanted colour mode, or the default one when none is wanted; -1 when it is not allowed.
int32_t Allowed(const AllowedModes& modes, const ColorMode* wanted) {
    if (wanted == nullptr) return modes.Default;
    const bool listed = std::find(modes.Positions.begin(), modes.Positions.end(),
                                  wanted->Position) != modes.Positions.end();
    return listed ? wanted->Position : -1;
}

}  // namespace

void AddChoiceOptions(CLI::App& command, ChoiceOptions& options) {
    command.add_option("--media", options.Media, "Medium, by name or identifier");
    command.add_option("--print-mode", options.PrintMode, "Print mode, by name or identifier");
    command.add_option("--resolution", options.Resolution,
                       "Resolution, by name, as 720x360 or by identifier");
}

ChosenPrint Choose(const Capabilities& capabilities, const ChoiceOptions& options) {
    ChosenPrint chosen = {};
    PrintChoice& choice = chosen.Choice;
    choice.Media = options.Media.empty()
                       ? DefaultMediaOf(capabilities)
                       : FindItem("medium", capabilities.Media(), options.Media).ID;

    const PrintModes printModes = capabilities.PrintModesOf(choice.Media);
    choice.PrintMode = options.PrintMode.empty()
                           ? DefaultPrintModeOf(capabilities, printModes, choice.Media)
                           : FindItem("print mode", printModes.Items, options.PrintMode).ID;

    const ColorMode* const wanted =
        options.ColorMode.empty() ? nullptr
                                  : &FindColorMode(capabilities.ColorModes(), options.ColorMode);

    ResolutionList resolutions = capabilities.ResolutionsOf(choice.Media, choice.PrintMode);
    if (!options.Resolution.empty())
        resolutions = {FindResolution(resolutions, options.Resolution)};
    for (const ResolutionItem& resolution : resolutions) {
        choice.Resolution = resolution.ID;
        choice.ColorMode = Allowed(capabilities.ColorModesOf(choice), wanted);
        if (choice.ColorMode < 0) continue;
        chosen.Resolution = resolution;
        chosen.Mode = capabilities.ColorModes()[static_cast<std::size_t>(choice.ColorMode)];
        return chosen;
    }
    throw HostError(
        kUsage, fmt::format("{} does not allow this combination of medium {}, print mode {}{}{}; "
                            "`driverhost capabilities \"{}\"` lists those it allows",
                            capabilities.Model(), choice.Media, choice.PrintMode,
                            options.Resolution.empty() ? "" : ", resolution " + options.Resolution,
                            wanted == nullptr ? "" : ", colour mode \"" + wanted->Name + '"',
                            capabilities.Model()));
}
