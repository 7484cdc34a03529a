#include "driverhost/Inspection.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <system_error>
#include <vector>

#include "driverhost/ChannelFile.h"
#include "driverhost/Container.h"
#include "driverhost/HostError.h"
#include "driverhost/Interrupt.h"
#include "driverhost/JobFile.h"
#include "driverhost/LineSummary.h"
#include "host/ZEJob.h"
#include "platform/RandomAccessFile.h"

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

namespace {

Json KnownResolution(double resolution) {
    return resolution > 0 ? Json(resolution) : Json();
}

void AddSummary(Json& to, LineSummary& summary) {
    to["coverage"] = summary.CoveragePercent();
    to["sha256"] = summary.Sha256Hex();
}

/// Reads a separation's rows as the driver does. `lineBytes` is what a channel of the page has.
Json InspectSeparation(AImage& image, uint32_t index, const AColorant& separation,
                       std::size_t lineBytes) {
    Json json = {{"name", separation.InternalName},
                 {"displayName", separation.DisplayName},
                 {"bits", separation.Depth}};
    std::vector<uint8_t> line(lineBytes);
    LineSummary summary(image.Width(), separation.Depth);
    for (int32_t row = 0; row < image.Rows(); ++row) {
        StopWhenInterrupted();
        if (image.ReadRow(index, row, 1, line.data(), 0) == 0) {
            json["error"] = fmt::format("row {} of {} cannot be read", row, image.Rows());
            return json;
        }
        summary.Add(line);
    }
    AddSummary(json, summary);
    return json;
}

Json InspectPage(AImage& image) {
    Json page = {{"width", image.Width()}, {"rows", image.Rows()}};
    AObList<AColorant> separations;
    image.GetSeparations(separations);
    PrintedShape shape = {image.Width(), 1, 0, 0};
    for (const AColorant* const separation : separations)
        shape.Bits = std::max<int32_t>(shape.Bits, separation->Depth);
    const auto lineBytes = static_cast<std::size_t>(shape.PaddedWidth() / 8 * shape.Bits);
    Json list = Json::array();
    for (uint32_t i = 0; i < separations.size(); ++i)
        list.push_back(InspectSeparation(image, i, *separations[i], lineBytes));
    page["separations"] = std::move(list);
    return page;
}

Json InspectPages(const fs::path& container) {
    const std::vector<ContainerPage> sizes = ReadContainerPages(container);
    ZEJob job(0);
    job.Load(AFilePath(container.string()));
    job.OpenData(1);
    Json pages = Json::array();
    for (int32_t number = 0; number < job.PageCount; ++number) {
        Json page = {{"page", number + 1}};
        const auto index = static_cast<std::size_t>(number);
        if (index < sizes.size()) {
            page["xResolution"] = KnownResolution(sizes[index].XResolution);
            page["yResolution"] = KnownResolution(sizes[index].YResolution);
        }
        AImage* const image = job.GetImage(static_cast<uint32_t>(number));
        if (image != nullptr)
            page.update(InspectPage(*image));
        else
            page["error"] = "the driver finds no page here: its data is missing or damaged";
        job.Flush();
        pages.push_back(std::move(page));
    }
    return pages;
}

/// The container of a job, by the names under which the driver looks for it; empty when there is
/// none.
fs::path FindContainer(const fs::path& job) {
    std::error_code error;
    for (const eHardCodePrefix kind : {kPreferredContainer, kFallbackContainer}) {
        fs::path path = ZEJob::GetFileName(kind, AFilePath(job.string())).fullPath();
        if (!path.empty() && path != job && fs::is_regular_file(path, error)) return path;
    }
    return {};
}

Json InspectJob(const fs::path& file, const fs::path& container) {
    const JobSettings job = ReadJob(file);
    Json json = {{"kind", "job"},
                 {"model", job.Model},
                 {"source", job.SourceName},
                 {"xResolution", KnownResolution(job.XResolution)},
                 {"yResolution", KnownResolution(job.YResolution)},
                 {"colorMode", job.Choice.ColorMode},
                 {"media", job.HasChoice ? Json(job.Choice.Media) : Json()},
                 {"printMode", job.HasChoice ? Json(job.Choice.PrintMode) : Json()},
                 {"resolution", job.HasChoice ? Json(job.Choice.Resolution) : Json()},
                 {"container", container.string()},
                 {"pages", InspectPages(container)}};
    return json;
}

Json InspectLines(ChannelFile& channel, int64_t pageWidth) {
    const ChannelShape& shape = channel.Shape();
    Json json = {{"width", shape.WidthPixels}, {"lines", shape.Lines}, {"bits", shape.Bits}};
    LineSummary summary(std::clamp<int64_t>(pageWidth, 1, shape.WidthPixels), shape.Bits);
    try {
        for (int64_t line = 0; line < shape.Lines; ++line) {
            StopWhenInterrupted();
            summary.Add(channel.Line(line));
        }
    } catch (const HostError& fault) {
        if (fault.Status() == kAborted) throw;
        json["error"] = fmt::format("line {} of {} cannot be read", summary.Lines(), shape.Lines);
        return json;
    }
    AddSummary(json, summary);
    return json;
}

Json InspectTiffChannel(const fs::path& file, const std::optional<PrintedShape>& known) {
    const std::unique_ptr<ChannelFile> channel = OpenTiffChannel(file);
    const ChannelShape& shape = channel->Shape();
    Json json = {{"kind", "channel"},
                 {"format", "TIFF"},
                 {"xResolution", KnownResolution(shape.XResolution)},
                 {"yResolution", KnownResolution(shape.YResolution)}};
    json.update(InspectLines(*channel, known ? known->WidthPixels : shape.WidthPixels));
    return json;
}

Json InspectRawChannel(const fs::path& file, uint64_t bytes,
                       const std::optional<PrintedShape>& known) {
    Json json = {{"kind", "channel"},
                 {"format", "raw"},
                 {"bytes", bytes},
                 {"xResolution", known ? KnownResolution(known->XResolution) : Json()},
                 {"yResolution", known ? KnownResolution(known->YResolution) : Json()}};
    std::string fault;
    if (known) {
        try {
            const std::unique_ptr<ChannelFile> channel =
                OpenRawChannel(file, known->PaddedWidth(), known->Bits);
            json.update(InspectLines(*channel, known->WidthPixels));
            return json;
        } catch (const HostError& error) {
            if (error.Status() == kAborted) throw;
            fault = error.what();
        }
    }
    json.update({{"width", Json()},
                 {"lines", Json()},
                 {"bits", Json()},
                 {"coverage", Json()},
                 {"sha256", Sha256OfFile(file)}});
    if (!fault.empty()) json["error"] = fault;
    return json;
}

bool IsTiff(const RandomAccessFile& file) {
    std::array<char, 4> magic = {};
    if (file.ReadAt(0, magic.data(), magic.size()) != magic.size()) return false;
    // "II" or "MM", then 42 (classic) or 43 (BigTIFF) in that byte order.
    const std::string_view start(magic.data(), magic.size());
    using namespace std::string_view_literals;
    return start == "II*\0"sv || start == "II+\0"sv || start == "MM\0*"sv || start == "MM\0+"sv;
}

}  // namespace

void AddRawShapeOptions(CLI::App& command, RawShapeOptions& options) {
    command
        .add_option("--width", options.WidthPixels,
                    "Pixels of the page's width, for raw channels that no record of run lists")
        ->check(CLI::Range(int64_t{1}, int64_t{INT32_MAX}));
    command.add_option("--bits", options.Bits, "Bits of a pixel of such channels: 1, 2, 4 or 8")
        ->check(CLI::IsMember({1, 2, 4, 8}));
}

std::optional<PrintedShape> ShapeOf(const fs::path& file, const RawShapeOptions& options,
                                    PrintedShapes& printed) {
    if (options.WidthPixels == 0 && options.Bits == 0) return printed.Find(file);
    PrintedShape shape = printed.Find(file).value_or(PrintedShape{});
    if (options.WidthPixels != 0) shape.WidthPixels = options.WidthPixels;
    if (options.Bits != 0) shape.Bits = options.Bits;
    return shape.IsPossible() ? std::optional(shape) : std::nullopt;
}

Json Inspect(const fs::path& file, const RawShapeOptions& options, PrintedShapes& printed) {
    RandomAccessFile opened;
    if (!opened.Open(file.string().c_str()))
        throw HostError(kFailed,
                        fmt::format("{} cannot be read: it is missing or no file", file.string()));
    Json json = {{"file", file.string()}};
    if (IsTiff(opened)) {
        if (IsContainer(file))
            json.update({{"kind", "container"}, {"pages", InspectPages(file)}});
        else
            json.update(InspectTiffChannel(file, ShapeOf(file, options, printed)));
        return json;
    }
    const fs::path container = FindContainer(file);
    if (!container.empty())
        json.update(InspectJob(file, container));
    else
        json.update(InspectRawChannel(file, opened.Size(), ShapeOf(file, options, printed)));
    return json;
}

bool HasError(const Json& inspected) {
    if (inspected.contains("error")) return true;
    for (const char* const part : {"pages", "separations"})
        if (inspected.contains(part) &&
            std::any_of(inspected[part].begin(), inspected[part].end(), HasError))
            return true;
    return false;
}
