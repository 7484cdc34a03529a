#include "driverhost/CapabilitiesCommand.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "driverhost/Capabilities.h"
#include "driverhost/ChoiceOptions.h"
#include "driverhost/CommandTree.h"
#include "driverhost/DriverLibrary.h"
#include "driverhost/ModelList.h"

namespace {

using Json = nlohmann::ordered_json;

Json MediaJson(const Capabilities& capabilities) {
    Json list = Json::array();
    for (const CapabilityItem& item : capabilities.Media())
        list.push_back({{"id", item.ID},
                        {"name", item.DisplayName},
                        {"internalName", item.InternalName},
                        {"default", item.ID == capabilities.DefaultMedia()}});
    return list;
}

Json ColorModesJson(const Capabilities& capabilities) {
    Json list = Json::array();
    for (const ColorMode& mode : capabilities.ColorModes()) {
        Json colorants = Json::array();
        for (const ColorantInfo& colorant : mode.Colorants)
            colorants.push_back(
                {{"name", colorant.DisplayName},
                 {"internalName", colorant.InternalName},
                 {"bits", colorant.ColorDepth},
                 {"spot", colorant.IsSpot != 0},
                 {"color",
                  fmt::format("#{:02x}{:02x}{:02x}", colorant.ColorValue & 0xFF,
                              colorant.ColorValue >> 8 & 0xFF, colorant.ColorValue >> 16 & 0xFF)}});
        list.push_back(
            {{"position", mode.Position}, {"name", mode.Name}, {"colorants", colorants}});
    }
    return list;
}

Json ResolutionsJson(const Capabilities& capabilities, PrintChoice choice) {
    Json list = Json::array();
    for (const ResolutionItem& resolution :
         capabilities.ResolutionsOf(choice.Media, choice.PrintMode)) {
        choice.Resolution = resolution.ID;
        const AllowedModes modes = capabilities.ColorModesOf(choice);
        list.push_back({{"id", resolution.ID},
                        {"name", resolution.DisplayName},
                        {"x", double{resolution.XResolution}},
                        {"y", double{resolution.YResolution}},
                        {"colorModes", modes.Positions},
                        {"defaultColorMode", modes.Default < 0 ? Json() : Json(modes.Default)}});
    }
    return list;
}

/// Every medium with its print modes, and those with every resolution and what it allows.
Json CombinationsJson(const Capabilities& capabilities) {
    Json list = Json::array();
    for (const CapabilityItem& media : capabilities.Media()) {
        const PrintModes modes = capabilities.PrintModesOf(media.ID);
        Json printModes = Json::array();
        for (std::size_t i = 0; i < modes.Items.size(); ++i) {
            const CapabilityItem& item = modes.Items[i];
            printModes.push_back(
                {{"id", item.ID},
                 {"name", item.DisplayName},
                 {"internalName", item.InternalName},
                 {"default", static_cast<int64_t>(i) == modes.DefaultPosition},
                 {"resolutions", ResolutionsJson(capabilities, {media.ID, item.ID, 0, 0})}});
        }
        list.push_back({{"media", media.ID}, {"printModes", printModes}});
    }
    return list;
}

Json DefaultsJson(const Capabilities& capabilities) {
    try {
        const PrintChoice choice = Choose(capabilities, {}).Choice;
        return {{"media", choice.Media},
                {"printMode", choice.PrintMode},
                {"resolution", choice.Resolution},
                {"colorMode", choice.ColorMode}};
    } catch (const std::exception&) {
        return nullptr;  // a model whose default medium prints in no way
    }
}

Json Describe(const Capabilities& capabilities) {
    return {{"model", capabilities.Model()},
            {"media", MediaJson(capabilities)},
            {"colorModes", ColorModesJson(capabilities)},
            {"combinations", CombinationsJson(capabilities)},
            {"defaults", DefaultsJson(capabilities)}};
}

const char* Mark(bool isDefault) {
    return isDefault ? "*" : " ";
}

void PrintColorModes(const Json& modes) {
    fmt::print("\nColour modes\n");
    for (const Json& mode : modes) {
        fmt::print("  {:>3}  {}:", mode["position"].get<int32_t>(),
                   mode["name"].get_ref<const std::string&>());
        const char* separator = " ";
        for (const Json& colorant : mode["colorants"]) {
            fmt::print("{}{} {} bit{}{}", separator, colorant["name"].get_ref<const std::string&>(),
                       colorant["bits"].get<uint32_t>(),
                       colorant["bits"].get<uint32_t>() == 1 ? "" : "s",
                       colorant["spot"].get<bool>() ? " (spot)" : "");
            separator = ", ";
        }
        fmt::print("\n");
    }
}

std::string PositionsText(const Json& resolution) {
    if (resolution["colorModes"].empty()) return "refused";
    std::string text = "colour modes";
    for (const Json& position : resolution["colorModes"])
        text += fmt::format(" {}{}", position.get<int32_t>(),
                            position == resolution["defaultColorMode"] ? "*" : "");
    return text;
}

void PrintText(const Json& model) {
    fmt::print("{}\n\nMedia, print modes and resolutions (* is the default)\n",
               model["model"].get_ref<const std::string&>());
    for (std::size_t i = 0; i < model["media"].size(); ++i) {
        const Json& media = model["media"][i];
        fmt::print("{} {:>3}  {}\n", Mark(media["default"].get<bool>()), media["id"].get<int32_t>(),
                   media["name"].get_ref<const std::string&>());
        for (const Json& printMode : model["combinations"][i]["printModes"]) {
            fmt::print("    {} {:>3}  {}\n", Mark(printMode["default"].get<bool>()),
                       printMode["id"].get<int32_t>(),
                       printMode["name"].get_ref<const std::string&>());
            for (const Json& resolution : printMode["resolutions"])
                fmt::print("          {:>3}  {:<18} {}\n", resolution["id"].get<int32_t>(),
                           resolution["name"].get_ref<const std::string&>(),
                           PositionsText(resolution));
        }
    }
    PrintColorModes(model["colorModes"]);
}

}  // namespace

void ShowCapabilities(const CapabilitiesOptions& options) {
    RequireModel(options.Model);
    const DriverLibrary library;
    const std::unique_ptr<DriverInterface> driver = library.CreateDriver();
    const Json model = Describe(Capabilities(*driver, options.Model));
    if (options.Json)
        // Names arrive in the host's code page, JSON is UTF-8.
        fmt::print("{}\n", model.dump(2, ' ', false, Json::error_handler_t::replace));
    else
        PrintText(model);
}

void AddCapabilitiesCommand(CommandTree& tree) {
    auto [command, options] =
        tree.Add("capabilities", "Show what a model offers and which combinations it allows",
                 ShowCapabilities);
    command.add_option("MODEL", options.Model, "The model's name")
        ->required()
        ->type_name(kModelArgument);
    command.add_flag("--json", options.Json, "Print JSON");
    AddHelp(command, "",
            {"driverhost capabilities \"Fenland R4\"",
             "driverhost capabilities \"Fenland F8\" --json"});
}
