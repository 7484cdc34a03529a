#include "driverhost/InspectCommand.h"

#include <fmt/format.h>

#include <cstdio>
#include <nlohmann/json.hpp>
#include <vector>

#include "driverhost/CommandTree.h"
#include "driverhost/Inspection.h"

namespace {

using Json = nlohmann::ordered_json;

struct InspectOptions {
    std::vector<std::string> Files;
    RawShapeOptions Raw;
    bool Json = false;
};

std::string TextOf(const Json& value) {
    return value.is_string() ? value.get<std::string>() : value.dump();
}

std::string BitsText(const Json& part) {
    const Json& bits = part["bits"];
    return fmt::format("{} bit{}", TextOf(bits), bits == 1 ? "" : "s");
}

std::string DotsText(const Json& part) {
    if (!part.contains("xResolution") || part["xResolution"].is_null()) return "unknown resolution";
    return fmt::format("{} x {} dpi", part["xResolution"].get<double>(),
                       part["yResolution"].get<double>());
}

/// How much ink there is and the sum, or what is wrong.
std::string InkText(const Json& part) {
    if (part.contains("error")) return "error: " + TextOf(part["error"]);
    if (part["coverage"].is_null()) return "sha256 " + TextOf(part["sha256"]);
    return fmt::format("{:6.2f} % ink, sha256 {}", part["coverage"].get<double>(),
                       TextOf(part["sha256"]));
}

void PrintPage(const Json& page) {
    if (page.contains("error")) {
        fmt::print("  page {}: error: {}\n", page["page"].get<int32_t>(), TextOf(page["error"]));
        return;
    }
    fmt::print("  page {}: {} x {} pixels, {}\n", page["page"].get<int32_t>(),
               page["width"].get<int64_t>(), page["rows"].get<int64_t>(), DotsText(page));
    std::size_t nameWidth = 0;
    for (const Json& separation : page["separations"])
        nameWidth = std::max(nameWidth, TextOf(separation["name"]).size());
    for (const Json& separation : page["separations"])
        fmt::print("    {:<{}}  {}, {}\n", TextOf(separation["name"]), nameWidth,
                   BitsText(separation), InkText(separation));
}

void PrintChannel(const Json& channel) {
    const std::string format = TextOf(channel["format"]);
    if (channel["width"].is_null())
        fmt::print("{} file, {} bytes{}\n", format, channel["bytes"].get<uint64_t>(),
                   channel.contains("error") ? ""
                                             : "; as a channel its size is not known, for no "
                                               "record of run lists it: say --width and --bits");
    else
        fmt::print("{} channel, {} lines of {} pixels, {}, {}\n", format,
                   channel["lines"].get<int64_t>(), channel["width"].get<int64_t>(),
                   BitsText(channel), DotsText(channel));
    fmt::print("  {}\n", InkText(channel));
}

void PrintText(const Json& file) {
    fmt::print("{}: ", TextOf(file["file"]));
    if (file["kind"] == "channel") return PrintChannel(file);
    if (file["kind"] == "job")
        fmt::print("job for {}, made from {}, {}, colour mode {}\n", TextOf(file["model"]),
                   TextOf(file["source"]), DotsText(file), TextOf(file["colorMode"]));
    else
        fmt::print("job container\n");
    for (const Json& page : file["pages"])
        PrintPage(page);
}

/// Looks into one file; one that cannot be looked into is an object with an error.
Json TryInspect(const std::string& file, const RawShapeOptions& raw, PrintedShapes& printed) {
    try {
        return Inspect(file, raw, printed);
    } catch (const HostError& error) {
        if (error.Status() == kAborted) throw;
        return {{"file", file}, {"kind", nullptr}, {"error", error.what()}};
    }
}

void InspectFiles(const InspectOptions& options) {
    PrintedShapes printed;
    Json all = Json::array();
    std::size_t faulty = 0;
    for (const std::string& file : options.Files) {
        Json inspected = TryInspect(file, options.Raw, printed);
        faulty += HasError(inspected) ? 1U : 0U;
        if (options.Json) {
            all.push_back(std::move(inspected));
        } else if (inspected["kind"].is_null()) {
            std::fflush(stdout);
            fmt::print(stderr, "driverhost: {}\n", TextOf(inspected["error"]));
        } else {
            PrintText(inspected);
        }
    }
    // Names are bytes of the files, JSON is UTF-8.
    if (options.Json) fmt::print("{}\n", all.dump(2, ' ', false, Json::error_handler_t::replace));
    if (faulty > 0)
        throw HostError(kFailed, fmt::format("{} of {} files cannot be read, or not to their end",
                                             faulty, options.Files.size()));
}

}  // namespace

void AddInspectCommand(CommandTree& tree) {
    auto [command, options] = tree.Add(
        "inspect", "Show what job files, job containers and channel files hold", InspectFiles);
    command.add_option("FILE", options.Files, "Job files, containers or channel files")
        ->required()
        ->type_name(kFileArgument);
    AddRawShapeOptions(command, options.Raw);
    command.add_flag("--json", options.Json, "Print JSON");
    AddHelp(
        command,
        "Ink is the amount laid down, in percent of a page full of it. The sum is SHA-256 of a\n"
        "channel's lines: of a raw file that of sha256sum, of a TIFF file that of the same lines\n"
        "in a raw file. A separation of a job has the sum of the channel that is printed from it\n"
        "top line first.",
        {"driverhost inspect poster.job", "driverhost inspect poster.job.pages.tif --json",
         "driverhost inspect printed/poster/poster_C.tif printed/poster/poster_K.tif",
         "driverhost inspect raw/glass_1C.raw --width 300 --bits 2"});
}
