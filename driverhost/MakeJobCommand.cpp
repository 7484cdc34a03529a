#include "driverhost/MakeJobCommand.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <set>
#include <system_error>

#include "driverhost/Artwork.h"
#include "driverhost/CommandTree.h"
#include "driverhost/Container.h"
#include "driverhost/DriverLibrary.h"
#include "driverhost/HostError.h"
#include "driverhost/JobFile.h"
#include "driverhost/PageSeparator.h"
#include "driverhost/Rasterizer.h"
#include "driverhost/WorkFolder.h"

namespace fs = std::filesystem;

namespace {

ChosenPrint AskDriver(const MakeJobOptions& options) {
    const DriverLibrary library;
    const std::unique_ptr<DriverInterface> driver = library.CreateDriver();
    ChosenPrint chosen = Choose(Capabilities(*driver, options.Model), options.Choice);
    if (chosen.Mode.Colorants.empty())
        throw HostError(kFailed,
                        fmt::format("colour mode \"{}\" has no colorants", chosen.Mode.Name));
    for (const ColorantInfo& colorant : chosen.Mode.Colorants)
        if (const uint32_t bits = colorant.ColorDepth;
            bits != 1 && bits != 2 && bits != 4 && bits != 8)
            throw HostError(kFailed, fmt::format("colorant {} has {} bits, which no job can hold",
                                                 colorant.InternalName, bits));
    if (!(chosen.Resolution.XResolution >= 1 && chosen.Resolution.YResolution >= 1))
        throw HostError(kFailed,
                        fmt::format("resolution {} is no resolution", chosen.Resolution.ID));
    return chosen;
}

void CheckJobPath(const fs::path& job) {
    std::error_code error;
    if (fs::is_directory(job, error))
        throw HostError(kUsage, fmt::format("{} is a folder", job.string()));
    if (!fs::is_directory(job.parent_path(), error))
        throw HostError(kFailed, fmt::format("there is no folder {}", job.parent_path().string()));
    if (job.string().size() >= sizeof JobStatusRecord::JobFilePath)
        throw HostError(kUsage, fmt::format("a job's path has at most {} bytes",
                                            sizeof JobStatusRecord::JobFilePath - 1));
}

PageSize SizeOf(const PdfPage& page, std::size_t index, const ResolutionItem& resolution) {
    const PageSize size = {PixelsOf(page.WidthPoints, resolution.XResolution),
                           PixelsOf(page.HeightPoints, resolution.YResolution)};
    if (size.Width < 1 || size.Rows < 1 || size.Width > kMostPageSide || size.Rows > kMostPageSide)
        throw HostError(kFailed,
                        fmt::format("page {} measures {} x {} points, {} x {} pixels; a page has "
                                    "1 to {} pixels a side",
                                    index + 1, page.WidthPoints, page.HeightPoints, size.Width,
                                    size.Rows, kMostPageSide));
    return size;
}

std::vector<DocumentPage> LayOut(const std::vector<PdfPage>& pages,
                                 const ResolutionItem& resolution, const TileGrid& grid) {
    const int64_t jobPages = static_cast<int64_t>(pages.size()) * grid.Count();
    if (jobPages > static_cast<int64_t>(kMostDocumentPages))
        throw HostError(kFailed, fmt::format("{} pages and tiles; a job holds {}", jobPages,
                                             kMostDocumentPages));
    std::vector<DocumentPage> layout;
    for (std::size_t i = 0; i < pages.size(); ++i) {
        const PageSize size = SizeOf(pages[i], i, resolution);
        layout.push_back({i, size, TilesOf(size, grid)});
    }
    return layout;
}

int64_t ContainerBytes(const std::vector<DocumentPage>& pages, const ColorMode& mode) {
    int64_t bytes = 0;
    for (const DocumentPage& page : pages)
        for (const PageArea& tile : page.Tiles)
            for (const ColorantInfo& colorant : mode.Colorants)
                bytes += tile.Rows *
                         PackedRowBytes(tile.Width, static_cast<int32_t>(colorant.ColorDepth));
    return bytes;
}

/// Says each thing once however many pages it concerns.
class Warnings {
  public:
    void Add(const std::string& text) {
        if (said_.insert(text).second) fmt::print(stderr, "driverhost: warning: {}\n", text);
    }
    void AddPlan(const InkPlan& plan, const std::string& mode) {
        for (const std::string& ink : plan.MixedSpots)
            Add(
                fmt::format("colour mode \"{}\" has no channel for the spot ink \"{}\"; it is "
                            "printed with process inks",
                            mode, ink));
        for (const std::string& ink : plan.LostInks)
            Add(fmt::format("colour mode \"{}\" has no channel for {}; it is left out", mode, ink));
    }

  private:
    std::set<std::string> said_;
};

void MoveIntoPlace(const fs::path& from, const fs::path& to) {
    std::error_code error;
    fs::rename(from, to, error);
    if (error)
        throw HostError(kFailed, fmt::format("cannot write {}: {}", to.string(), error.message()));
}

}  // namespace

void MakeJob(const MakeJobOptions& options) {
    const fs::path input = fs::absolute(options.Input);
    const fs::path job = fs::absolute(options.Job);
    const TileGrid tiles = ParseTileGrid(options.Tiles);
    CheckJobPath(job);
    const ChosenPrint chosen = AskDriver(options);

    const WorkFolder work(job);
    Rasterizer rasterizer(work.Path(), std::chrono::seconds(options.TimeoutSeconds));
    Artwork artwork(input, rasterizer, options.PictureDpi);
    const std::vector<DocumentPage> pages = LayOut(artwork.Pages(), chosen.Resolution, tiles);
    artwork.Prepare();

    const fs::path container = work.Path() / "pages.tif";
    ContainerWriter writer(container, ContainerBytes(pages, chosen.Mode));
    InkScreens screens;
    for (std::size_t i = 0; i < chosen.Mode.Colorants.size(); ++i)
        screens.push_back(
            MakeDispersedScreen(i, static_cast<int32_t>(chosen.Mode.Colorants[i].ColorDepth)));
    PageSeparator separator(rasterizer, writer, work.Path(), chosen, screens, options.BandPixels,
                            pages.size() * pages.front().Tiles.size());
    Warnings warnings;
    for (const DocumentPage& page : pages) {
        const InkPlan plan = PlanInks(chosen.Mode.Colorants, artwork.Pages()[page.Index].Spots);
        warnings.AddPlan(plan, chosen.Mode.Name);
        for (const std::string& complaint : separator.WritePage(page, plan))
            warnings.Add(fmt::format("page {}: Ghostscript: {}", page.Index + 1, complaint));
        fmt::print("page {} of {}: {} x {} pixels, {} separations{}\n", page.Index + 1,
                   pages.size(), page.Size.Width, page.Size.Rows, chosen.Mode.Colorants.size(),
                   tiles.IsWhole() ? "" : fmt::format(", {} tiles", page.Tiles.size()));
        std::fflush(stdout);
    }
    writer.Close();

    JobSettings settings;
    settings.Model = options.Model;
    settings.SourceName = input.filename().string();
    settings.XResolution = chosen.Resolution.XResolution;
    settings.YResolution = chosen.Resolution.YResolution;
    settings.Choice = chosen.Choice;
    settings.Tiles = tiles;
    WriteJobHeader(work.Path() / "job", settings);
    WriteJobSettings(work.Path() / "settings.json", settings);
    MoveIntoPlace(work.Path() / "settings.json", SettingsOf(job));
    MoveIntoPlace(container, ContainerOf(job));
    MoveIntoPlace(work.Path() / "job", job);  // last: a job file has its other files beside it
    fmt::print("{}: {} page{} for {}, {} x {} dpi, {}\n", options.Job, pages.size(),
               pages.size() == 1 ? "" : "s", options.Model, settings.XResolution,
               settings.YResolution, chosen.Mode.Name);
}

void AddMakeJobCommand(CommandTree& tree) {
    auto [command, options] =
        tree.Add("make-job", "Rasterise and separate artwork with Ghostscript into a job", MakeJob);
    command.add_option("INPUT", options.Input, "A PDF, PostScript, EPS, TIFF, PNG or JPEG file")
        ->required()
        ->type_name(kFileArgument);
    command.add_option("--model", options.Model, "The model's name")
        ->required()
        ->type_name(kModelArgument);
    AddChoiceOptions(command, options.Choice);
    command.add_option("--color-mode", options.Choice.ColorMode,
                       "Colour mode, by name or position");
    command
        .add_option("-o,--output", options.Job,
                    "The job file; JOB.pages.tif and JOB.settings.json appear beside it")
        ->required()
        ->type_name(kFileArgument);
    command
        .add_option("--tiles", options.Tiles,
                    "Cut every page into so many columns and rows of tiles")
        ->type_name("COLUMNSxROWS");
    command
        .add_option("--picture-dpi", options.PictureDpi,
                    "Pixels per inch that a picture has, whatever it says itself")
        ->check(CLI::Range(1.0, 100'000.0));
    command
        .add_option("--timeout", options.TimeoutSeconds,
                    "Seconds that Ghostscript may go on without writing anything")
        ->check(CLI::Range(int64_t{1}, int64_t{1'000'000}))
        ->capture_default_str();
    command
        .add_option("--band-pixels", options.BandPixels,
                    "Pixels of a page that are rasterised at once")
        ->check(CLI::Range(int64_t{1}, MakeJobOptions().BandPixels))
        ->capture_default_str();
    AddHelp(
        command,
        "What is not given is the driver's default; the resolution is then the first that allows\n"
        "the colour mode. Light inks print the highlights of their ink: amounts up to a half, at\n"
        "twice the amount, fading out above. A mode of one black or grey ink prints shades of "
        "grey.\n"
        "A spot ink goes to the channel of its name; without one it is printed with process inks.\n"
        "An EPS is cut to its bounding box. A TIFF, PNG or JPEG picture fills a page of its own\n"
        "size; one that does not say its resolution has 300 dpi.",
        {"driverhost make-job poster.pdf --model \"Fenland R4\" -o poster.job",
         "driverhost make-job poster.pdf --model \"Fenland F8\" --media Glass --print-mode Fine "
         "\\\n"
         "      --resolution 1200x600 --color-mode \"CMYK, White, Varnish, contone\" -o "
         "glass.job"});
}
