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
#include "driverhost/DryRun.h"
#include "driverhost/HalftoneAnswers.h"
#include "driverhost/HostError.h"
#include "driverhost/JobFile.h"
#include "driverhost/JobScreens.h"
#include "driverhost/JobSpace.h"
#include "driverhost/ManufacturerList.h"
#include "driverhost/ModelList.h"
#include "driverhost/Overwriting.h"
#include "driverhost/PageSeparator.h"
#include "driverhost/Warnings.h"
#include "driverhost/WhiteChoice.h"
#include "driverhost/WorkFolder.h"

namespace fs = std::filesystem;

namespace {

constexpr char kContainerName[] = "pages.tif";
constexpr char kClusteredName[] = "am";
constexpr char kDispersedName[] = "fm";

/// What the driver answers: what is to be printed, and how its inks are screened.
struct PrintAnswers {
    ChosenPrint Chosen;
    JobScreens Screens;
};

void CheckChoice(const ChosenPrint& chosen) {
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
}

PrintAnswers AskDriver(const MakeJobOptions& options) {
    RequireModel(options.Model);
    const DriverLibrary library;
    const std::unique_ptr<DriverInterface> driver = library.CreateDriver();
    PrintAnswers answers;
    answers.Chosen = Choose(Capabilities(*driver, options.Model), options.Choice);
    CheckChoice(answers.Chosen);
    const std::string manufacturer =
        options.Manufacturer.empty() ? ManufacturerOf(options.Model) : options.Manufacturer;
    const OneBitScreens kind = options.Screen == kDispersedName   ? OneBitScreens::kDispersed
                               : options.Screen == kClusteredName ? OneBitScreens::kClustered
                                                                  : OneBitScreens::kEither;
    answers.Screens = MakeJobScreens(
        *driver, HalftoneSettings(options.Model, manufacturer, answers.Chosen.Choice),
        answers.Chosen, kind);
    return answers;
}

void CheckJobPath(const fs::path& job, const fs::path& input, bool force) {
    std::error_code error;
    for (const fs::path& file : {job, ContainerOf(job), SettingsOf(job)}) {
        if (fs::equivalent(file, input, error))
            throw HostError(kUsage, fmt::format("{} is the artwork itself", file.string()));
        const fs::file_status status = fs::status(file, error);
        if (error == std::errc::filename_too_long)
            throw HostError(kUsage, fmt::format("the job's name is too long: its settings would be "
                                                "called {}, which the file system does not take",
                                                SettingsOf(job).filename().string()));
        if (fs::exists(status) && !fs::is_regular_file(status) && !fs::is_directory(status))
            throw HostError(kUsage, fmt::format("{} is no file", file.string()));
    }
    RefuseToReplaceOther(job, IsJobFile, "a job that make-job made", force);
    if (!IsJobFile(job))
        RefuseToReplaceOther(ContainerOf(job), IsContainer, "a job's pages", force);
    RefuseToReplaceOther(SettingsOf(job), IsSettingsFile, "a job's settings", force);
    if (!fs::is_directory(job.parent_path(), error))
        throw HostError(kFailed, fmt::format("there is no folder {}", job.parent_path().string()));
    if (job.string().size() >= sizeof JobStatusRecord::JobFilePath)
        throw HostError(kUsage, fmt::format("a job's path has at most {} bytes",
                                            sizeof JobStatusRecord::JobFilePath - 1));
}

void MoveIntoPlace(const fs::path& from, const fs::path& to) {
    std::error_code error;
    fs::rename(from, to, error);
    if (error)
        throw HostError(kFailed, fmt::format("cannot write {}: {}", to.string(), error.message()));
}

/// What prints the spot inks of the artwork that the colour mode has no channel for.
SpotInks FindSpotInks(Rasterizer& rasterizer, const fs::path& workFolder, const Artwork& artwork,
                      const ChosenPrint& chosen) {
    std::set<std::string> names;
    for (const PdfPage& page : artwork.Pages()) {
        const InkPlan plan = PlanInks(chosen.Mode.Colorants, page.Spots, {});
        names.insert(plan.MixedSpots.begin(), plan.MixedSpots.end());
    }
    return ReadSpotInks(rasterizer, workFolder, names, IsGrayMode(chosen.Mode.Colorants));
}

/// What is known to come out other than ordered before anything is rasterised.
void WarnOfArtwork(const Rasterizer& rasterizer, const Artwork& artwork,
                   const PrintAnswers& answers, Warnings& warnings) {
    for (const std::string& fault : answers.Screens.Faults)
        warnings.Add(fault);
    for (const std::string& complaint : rasterizer.DocumentComplaints())
        warnings.Add(complaint);
    const ColorMode& mode = answers.Chosen.Mode;
    for (std::size_t page = 0; page < artwork.Pages().size(); ++page) {
        warnings.AddPlan(PlanInks(mode.Colorants, artwork.Pages()[page].Spots, {}), mode.Name);
        warnings.AddPage(page, artwork.Pages()[page].Faults);
    }
    warnings.EndIfStrict();
}

/// Rasterises, separates and screens all pages.
void WriteContainer(const fs::path& workFolder, Rasterizer& rasterizer, const Artwork& artwork,
                    const SpotInks& spotInks, const PrintAnswers& answers,
                    const std::vector<DocumentPage>& pages, int64_t bandPixels,
                    Warnings& warnings) {
    const ChosenPrint& chosen = answers.Chosen;
    const std::vector<ColorantInfo>& colorants = chosen.Mode.Colorants;
    ContainerWriter writer(workFolder / kContainerName, ContainerBytes(pages, chosen.Mode));
    PageSeparator separator(rasterizer, writer, workFolder, chosen, answers.Screens.Screens,
                            bandPixels, pages.size() * pages.front().Tiles.size());
    for (const DocumentPage& page : pages) {
        const InkPlan plan = PlanInks(colorants, artwork.Pages()[page.Index].Spots, spotInks);
        warnings.AddPage(page.Index, separator.WritePage(page, plan));
        warnings.EndIfStrict();
        const std::string tiles =
            page.Tiles.size() == 1 ? "" : fmt::format(", {} tiles", page.Tiles.size());
        fmt::print("page {} of {}: {} x {} pixels, {} separations{}\n", page.Index + 1,
                   pages.size(), page.Size.Width, page.Size.Rows, colorants.size(), tiles);
        std::fflush(stdout);
    }
    writer.Close();
}

}  // namespace

void MakeJob(const MakeJobOptions& options) {
    const fs::path input = fs::absolute(options.Input);
    const fs::path job = options.Job.empty() ? fs::path() : fs::absolute(options.Job);
    const TileGrid tiles = ParseTileGrid(options.Tiles);
    if (!job.empty())
        CheckJobPath(job, input, options.Force);
    else if (!options.DryRun)
        throw HostError(kUsage, "--output is required");
    const PrintAnswers answers = AskDriver(options);
    const ChosenPrint& chosen = answers.Chosen;

    const WorkFolder work(options.DryRun ? fs::temp_directory_path() / "driverhost" : job);
    Rasterizer rasterizer(work.Path(), std::chrono::seconds(options.TimeoutSeconds));
    Artwork artwork(input, rasterizer, options.PictureDpi);
    const std::vector<DocumentPage> pages = LayOut(artwork.Pages(), chosen.Resolution, tiles);
    const JobSpace space = SpaceOf(artwork, pages, chosen.Mode, options.BandPixels);
    // What a PostScript program has become lies in the work folder by now.
    const auto present = static_cast<int64_t>(FolderBytes(work.Path()));
    if (!options.NoSpaceCheck && options.DryRun)
        ExpectRoom(work.Path(), artwork.MostDocumentBytes() - present, "the dry run");
    else if (!options.NoSpaceCheck)
        ExpectRoom(job.parent_path(), space.Making - present, "making the job");
    Warnings warnings(options.Strict);
    WarnOfArtwork(rasterizer, artwork, answers, warnings);
    artwork.Prepare();
    const SpotInks spotInks = FindSpotInks(rasterizer, work.Path(), artwork, chosen);
    if (options.DryRun) {
        ReportDryRun({rasterizer, artwork, spotInks, chosen, answers.Screens, pages, work.Path(),
                      job.parent_path(), space},
                     warnings);
        warnings.EndIfStrict();
        if (!options.NoSpaceCheck && !job.empty())
            ExpectRoom(job.parent_path(), space.Making, "making the job");
        return;
    }
    WhiteOrder white(options.White, job, options.Model, chosen.Choice);
    WriteContainer(work.Path(), rasterizer, artwork, spotInks, answers, pages, options.BandPixels,
                   warnings);

    JobSettings settings;
    settings.Model = options.Model;
    settings.SourceName = input.filename().string();
    settings.XResolution = chosen.Resolution.XResolution;
    settings.YResolution = chosen.Resolution.YResolution;
    settings.Choice = chosen.Choice;
    settings.Tiles = tiles;
    settings.Options = white.Block();
    settings.White = white.Type();
    WriteJobHeader(work.Path() / "job", settings);
    WriteJobSettings(work.Path() / "settings.json", settings);
    MoveIntoPlace(work.Path() / "settings.json", SettingsOf(job));
    MoveIntoPlace(work.Path() / kContainerName, ContainerOf(job));
    MoveIntoPlace(work.Path() / "job", job);  // last: a job file has its other files beside it
    white.Keep();
    PrintScreens(answers.Screens);
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
    command.add_option("--manufacturer", options.Manufacturer,
                       "The manufacturer whose dither and screening parameters serve; without it "
                       "the one that the model's name begins with");
    command
        .add_option("--screen", options.Screen,
                    "How inks of one bit are screened: am, the clustered dots of the screening "
                    "parameters; fm, dispersed dots; without it fm only where am cannot be made")
        ->check(CLI::IsMember({kClusteredName, kDispersedName}));
    command
        .add_option("-o,--output", options.Job,
                    "The job file; JOB.pages.tif and JOB.settings.json appear beside it")
        ->type_name(kFileArgument);
    command
        .add_option("--tiles", options.Tiles,
                    "Cut every page into so many columns and rows of tiles")
        ->type_name("COLUMNSxROWS");
    command.add_option("--white", options.White,
                       "White treatment, by name or number, where the model offers a choice; "
                       "without it that of the job in whose place this one comes, else the "
                       "model's default");
    command.add_flag("--force", options.Force, "Replace files that are no job's");
    command.add_flag("--dry-run", options.DryRun,
                     "Make nothing: say the pages' sizes, their inks and the disk space needed");
    command.add_flag("--strict", options.Strict,
                     "Make no job that comes out other than the artwork and the model say: "
                     "warnings fail");
    command.add_flag("--no-space-check", options.NoSpaceCheck,
                     "Begin even where the disk may not have room for the most that the job and "
                     "its making can take");
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
        "size; one that does not say its resolution has 300 dpi. Fonts that the artwork does not\n"
        "bring along, damage that is repaired and operators that are passed over are warnings.",
        {"driverhost make-job poster.pdf --model \"Fenland R4\" -o poster.job",
         ("driverhost make-job poster.pdf --model \"Fenland F8\" --media Glass --print-mode Fine "
          "\\\n"
          "      --resolution 1200x600 --color-mode \"CMYK, White, Varnish, contone\" -o "
          "glass.job"),
         "driverhost make-job photo.png --model \"Fenland T4\" --tiles 3x2 -o wall.job",
         "driverhost make-job poster.pdf --model \"Fenland S1\" --screen fm -o film.job",
         "driverhost make-job photo.png --model \"Fenland R4\" --picture-dpi 150 --dry-run",
         "driverhost make-job photo.png --model \"Fenland R4\" --strict -o photo.job"});
}
