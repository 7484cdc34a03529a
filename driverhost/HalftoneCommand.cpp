#include "driverhost/HalftoneCommand.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "driverhost/CommandTree.h"
#include "driverhost/DriverLibrary.h"
#include "driverhost/HalftoneAnswers.h"
#include "driverhost/HalftonePlot.h"
#include "driverhost/HostError.h"
#include "driverhost/ModelList.h"
#include "driverhost/Overwriting.h"
#include "driverhost/PngFile.h"
#include "halftone/ReadDitherParams.h"
#include "halftone/ReadScreeningParams.h"

namespace {

using Json = nlohmann::ordered_json;

/// Where an answer comes from, which the driver does not say: the pieces that it reads the files
/// with are asked again.
Json SourceJson(const HalftoneReading& reading) {
    Json entries = Json::array();
    for (const HalftoneEntry& entry : reading.Entries)
        entries.push_back({{"element", entry.Element}, {"id", entry.ID}});
    return {{"file", reading.File.fullPath()},
            {"entries", entries},
            {"fault", reading.Message == nullptr ? Json() : Json(reading.Message)}};
}

Json DitherSource(const ChosenPrint& chosen, const PrintSettings& settings) {
    std::vector<ColorantInfo> colorants = chosen.Mode.Colorants;
    const ColorantInfoList list = {static_cast<int32_t>(colorants.size()),
                                   {},
                                   colorants.data(),
                                   static_cast<int32_t>(colorants.size())};
    DitherParams scratch = {};
    if (!SetDefaultDitherParams(list, scratch)) return nullptr;  // contone: no file is read
    return SourceJson(
        ReadDitherParams(settings.ModelName, settings.ManufacturerName, settings, scratch));
}

Json ScreeningSource(const PrintSettings& settings) {
    ScreeningParams scratch = {};
    return SourceJson(
        ReadScreeningParams(settings.ModelName, settings.ManufacturerName, settings, scratch));
}

Json DitherJson(const HalftoneAnswers& answers, const ColorMode& mode) {
    const DitherParams& dither = answers.Dither;
    Json inks = Json::array();
    for (int32_t ink = 0; ink < dither.InkCount; ++ink) {
        Json amounts = Json::array();
        for (int32_t position = 0; position + 1 < dither.LevelCount; ++position)
            amounts.push_back(double{dither.Values[ink][position]});
        inks.push_back({{"name", mode.Colorants[static_cast<std::size_t>(ink)].DisplayName},
                        {"amounts", amounts}});
    }
    return {{"fromFile", answers.DitherIsFromFile},
            {"levels", int32_t{dither.LevelCount}},
            {"antiClogLevel", int32_t{dither.AntiClogLevel}},
            {"noiseLevel", double{dither.NoiseLevel}},
            {"inks", inks}};
}

/// Every screen that the driver answered.
Json ScreensJson(const ScreeningParams& screening) {
    Json list = Json::array();
    for (int32_t i = 0; i < screening.Count; ++i) {
        const ScreenEntry& entry = screening.Entries[i];
        list.push_back({{"color", entry.ColorName},
                        {"shape", entry.ShapeName},
                        {"drawnShape", DrawnShape(entry)},
                        {"frequency", double{entry.Frequency}},
                        {"angle", double{entry.Angle}}});
    }
    return list;
}

/// The mode's inks, each with the colour name of the screen that it gets.
Json InksJson(const ScreeningParams& screening, const ColorMode& mode) {
    Json list = Json::array();
    for (std::size_t ink = 0; ink < mode.Colorants.size(); ++ink) {
        const ScreenEntry& entry = ScreenOfInk(screening, mode.Colorants[ink], ink);
        list.push_back({{"name", mode.Colorants[ink].DisplayName}, {"screen", entry.ColorName}});
    }
    return list;
}

std::string Text(const Json& value) {
    return value.get<std::string>();
}

void PrintSource(const Json& source) {
    if (source.is_null()) return;
    fmt::print("  file   {}\n", Text(source["file"]));
    std::string way;
    for (const Json& entry : source["entries"])
        way += fmt::format("{}{} \"{}\"", way.empty() ? "" : " > ", Text(entry["element"]),
                           Text(entry["id"]));
    fmt::print("  entry  {}\n", way.empty() ? "none" : way);
    if (!source["fault"].is_null()) fmt::print("  fault  {}\n", Text(source["fault"]));
}

void PrintDither(const Json& dither) {
    fmt::print("Dither: {} levels, anti-clog level {}, noise level {}{}\n",
               dither["levels"].get<int32_t>(), dither["antiClogLevel"].get<int32_t>(),
               dither["noiseLevel"].get<double>(),
               dither["fromFile"].get<bool>() ? "" : "; no file supplies them");
    PrintSource(dither["source"]);
    // 63 columns help nobody; --json has them.
    constexpr std::size_t kMostColumns = 15;
    for (const Json& ink : dither["inks"]) {
        fmt::print("  {:<20}", Text(ink["name"]));
        for (std::size_t i = 0; i < std::min(ink["amounts"].size(), kMostColumns); ++i)
            fmt::print(" {:6.3f}", ink["amounts"][i].get<double>());
        fmt::print("{}\n", ink["amounts"].size() > kMostColumns ? " ..." : "");
    }
}

void PrintScreening(const Json& screening) {
    fmt::print("\nScreening\n");
    PrintSource(screening["source"]);
    for (const Json& screen : screening["screens"]) {
        std::string users;
        for (const Json& ink : screening["inks"])
            if (ink["screen"] == screen["color"])
                users += (users.empty() ? "for " : ", ") + Text(ink["name"]);
        if (const std::string drawn = Text(screen["drawnShape"]); drawn != Text(screen["shape"]))
            users += fmt::format("{}drawn as {}", users.empty() ? "" : ", ", drawn);
        fmt::print("  {:<20} {:<18} {:>7.2f} lines an inch {:>7.2f} degrees  {}\n",
                   Text(screen["color"]), Text(screen["shape"]), screen["frequency"].get<double>(),
                   screen["angle"].get<double>(), users);
    }
}

template <class Items>
std::string NameOf(const Items& items, int32_t id) {
    for (const auto& item : items)
        if (item.ID == id) return item.DisplayName;
    return {};
}

Json Plot(const HalftoneOptions& options, const ChosenPrint& chosen,
          const ScreeningParams& screening) {
    Json strips = Json::array();
    for (const PlotStrip& strip :
         PlotScreens(chosen.Mode.Colorants, chosen.Resolution, screening, options.Plot))
        strips.push_back({{"ink", chosen.Mode.Colorants[strip.Ink].DisplayName},
                          {"firstRow", strip.FirstRow},
                          {"endRow", strip.EndRow}});
    return {{"file", options.Plot}, {"strips", strips}};
}

void PrintText(const Json& answer) {
    fmt::print("{} by {}: {}; {}; {}; {}\n\n", Text(answer["model"]), Text(answer["manufacturer"]),
               Text(answer["media"]), Text(answer["printMode"]), Text(answer["resolution"]),
               Text(answer["colorMode"]));
    PrintDither(answer["dither"]);
    PrintScreening(answer["screening"]);
    if (answer["plot"].is_null()) return;
    fmt::print("\n{}\n", Text(answer["plot"]["file"]));
    for (const Json& strip : answer["plot"]["strips"])
        fmt::print("  rows {} to {}: {}\n", strip["firstRow"].get<int64_t>(),
                   strip["endRow"].get<int64_t>() - 1, Text(strip["ink"]));
}

}  // namespace

void ShowHalftone(const HalftoneOptions& options) {
    RequireModel(options.Model);
    if (!options.Plot.empty())
        RefuseToReplaceOther(options.Plot, IsPngFile, "a PNG picture", options.Force);
    const DriverLibrary library;
    const std::unique_ptr<DriverInterface> driver = library.CreateDriver();
    const Capabilities capabilities(*driver, options.Model);
    const ChosenPrint chosen = Choose(capabilities, options.Choice);
    const PrintSettings settings =
        HalftoneSettings(options.Model, options.Manufacturer, chosen.Choice);
    const HalftoneAnswers answers = AskHalftone(*driver, settings);

    Json answer = {
        {"model", options.Model},
        {"manufacturer", options.Manufacturer},
        {"media", NameOf(capabilities.Media(), chosen.Choice.Media)},
        {"printMode",
         NameOf(capabilities.PrintModesOf(chosen.Choice.Media).Items, chosen.Choice.PrintMode)},
        {"resolution", chosen.Resolution.DisplayName},
        {"colorMode", chosen.Mode.Name},
        {"dither", DitherJson(answers, chosen.Mode)},
        {"screening",
         {{"screens", ScreensJson(answers.Screening)},
          {"inks", InksJson(answers.Screening, chosen.Mode)}}},
        {"plot", options.Plot.empty() ? Json() : Plot(options, chosen, answers.Screening)}};
    answer["dither"]["source"] = DitherSource(chosen, settings);
    answer["screening"]["source"] = ScreeningSource(settings);
    if (options.Json)
        // Names arrive in the host's code page, JSON is UTF-8.
        fmt::print("{}\n", answer.dump(2, ' ', false, Json::error_handler_t::replace));
    else
        PrintText(answer);
}

void AddHalftoneCommand(CommandTree& tree) {
    auto [command, options] =
        tree.Add("halftone", "Show a model's dither and screening parameters, and draw its screens",
                 ShowHalftone);
    command.add_option("MODEL", options.Model, "The model's name")
        ->required()
        ->type_name(kModelArgument);
    command.add_option("--manufacturer", options.Manufacturer, "The manufacturer's name")
        ->required();
    AddChoiceOptions(command, options.Choice);
    command.add_option("--color-mode", options.Choice.ColorMode,
                       "Colour mode, by name or position");
    command.add_flag("--json", options.Json, "Print JSON");
    command
        .add_option("--plot", options.Plot,
                    "Draw a ramp of each ink, with its angle, frequency and dot shape, into this "
                    "PNG file")
        ->type_name(kFileArgument);
    command.add_flag("--force", options.Force, "Let --plot replace a file that is no PNG picture");
    AddHelp(command, "Every number is the driver's own answer; what is not given is its default.",
            {"driverhost halftone \"Fenland R4\" --manufacturer Fenland",
             "driverhost halftone \"Fenland F8\" --manufacturer Fenland --json",
             "driverhost halftone \"Fenland S1\" --manufacturer Fenland --plot screens.png"});
}
