#include "driverhost/ModelsCommand.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "driverhost/Capabilities.h"
#include "driverhost/CommandTree.h"
#include "driverhost/DriverLibrary.h"
#include "driverhost/ModelList.h"
#include "platform/CodePage.h"

namespace {

using Json = nlohmann::ordered_json;

struct ModelsOptions {
    bool Names = false;
    bool Json = false;
};

std::size_t MostInks(const Capabilities& capabilities) {
    std::size_t inks = 0;
    for (const ColorMode& mode : capabilities.ColorModes())
        inks = std::max(inks, mode.Colorants.size());
    return inks;
}

/// What the driver answers for a model; the member "error" instead when it refuses it. Every
/// model has a driver of its own, for a driver keeps the first that it meets.
Json Summary(const DriverLibrary& library, const ListedModel& model) {
    Json summary = {{"name", AnsiToUtf8(model.Name)},
                    {"description", AnsiToUtf8(model.DescriptionFile)}};
    try {
        const std::unique_ptr<DriverInterface> driver = library.CreateDriver();
        const Capabilities capabilities(*driver, model.Name);
        std::size_t resolutions = 0;
        for (const CapabilityItem& media : capabilities.Media())
            for (const CapabilityItem& printMode : capabilities.PrintModesOf(media.ID).Items)
                resolutions = std::max(resolutions,
                                       capabilities.ResolutionsOf(media.ID, printMode.ID).size());
        summary["media"] = capabilities.Media().size();
        summary["resolutions"] = resolutions;
        summary["colorModes"] = capabilities.ColorModes().size();
        summary["mostInks"] = MostInks(capabilities);
    } catch (const HostError& error) {
        summary["error"] = AnsiToUtf8(error.what());
    }
    return summary;
}

void PrintLine(const ListedModel& model, const Json& summary, std::size_t nameWidth) {
    fmt::print("{:<{}}  {}  ", model.Name, nameWidth, model.DescriptionFile);
    if (summary.contains("error"))
        fmt::print("refused\n");
    else
        fmt::print("{} media, {} resolutions, {} colour modes, up to {} inks\n",
                   summary["media"].get<std::size_t>(), summary["resolutions"].get<std::size_t>(),
                   summary["colorModes"].get<std::size_t>(),
                   summary["mostInks"].get<std::size_t>());
}

void ListModels(const ModelsOptions& options) {
    const std::vector<ListedModel> models = ReadModelList();
    if (options.Names) {
        for (const ListedModel& model : models)
            fmt::print("{}\n", model.Name);
        return;
    }
    std::size_t nameWidth = 0;
    for (const ListedModel& model : models)
        nameWidth = std::max(nameWidth, model.Name.size());
    const DriverLibrary library;
    Json all = Json::array();
    std::size_t refused = 0;
    for (const ListedModel& model : models) {
        all.push_back(Summary(library, model));
        refused += all.back().contains("error") ? 1U : 0U;
        if (!options.Json) PrintLine(model, all.back(), nameWidth);
    }
    if (options.Json) fmt::print("{}\n", all.dump(2, ' ', false, Json::error_handler_t::replace));
    if (refused > 0)
        throw HostError(kFailed,
                        fmt::format("the driver refuses {} of {} models", refused, models.size()));
}

}  // namespace

void AddModelsCommand(CommandTree& tree) {
    auto [command, options] = tree.Add(
        "models", "List the models of the base folder and how much each offers", ListModels);
    command.add_flag("--names", options.Names, "Print the names alone");
    command.add_flag("--json", options.Json, "Print JSON");
    AddHelp(command, "The exit status is 1 when the driver refuses a model that is listed.",
            {"driverhost models", "driverhost models --json"});
}
