#include "driverhost/Rasterizer.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <system_error>
#include <thread>

#include "driverhost/FreeSpace.h"
#include "driverhost/HostError.h"
#include "driverhost/RasterizerLog.h"
#include "driverhost/WorkFolder.h"
#include "host/Numbers.h"
#include "platform/Program.h"

namespace fs = std::filesystem;

namespace {

constexpr char kPageCountLabel[] = "PagesShown: ";

/// More than any document's page report or any run's complaints; a run that writes more is
/// stopped.
constexpr std::uintmax_t kMostLogBytes = 64 << 20;

std::string ReadLog(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// What a PostScript program may become: one that draws for ever ends there.
std::uintmax_t MostConvertedBytes(const fs::path& program) {
    constexpr std::uintmax_t kAlways = std::uintmax_t{4} << 30;
    constexpr std::uintmax_t kTimesItsSize = 100;
    std::error_code error;
    const std::uintmax_t bytes = fs::file_size(program, error);
    return error ? kAlways : std::max(kAlways, bytes * kTimesItsSize);
}

std::string HexName(const std::string& name) {
    std::string hex;
    for (const char character : name)
        hex += fmt::format("{:02X}", static_cast<unsigned char>(character));
    return '<' + hex + "> cvn";
}

/// Resolution of the device that draws at `dotsPerInch`: where the device has no screens for so
/// little, the page is drawn smaller instead.
double DeviceResolution(double dotsPerInch) {
    constexpr double kLeast = 10;
    return std::max(dotsPerInch, kLeast);
}

/// Set-up that the page device keeps: the spot inks that get plates, and the band's place and size.
std::string SetUp(const BandRequest& band, const InkPlan& plan) {
    std::string names;
    for (const std::string& spot : plan.PlateSpots)
        names += HexName(spot) + ' ';
    // The page's foot stands at the last row of the picture, which a band moves by whole pixels: a
    // distance in points would round, and edges would fall elsewhere than in the whole page.
    const int64_t rowsBelow = band.PageRows - band.FirstRow - band.RowCount;
    return fmt::format(
        "<< /SeparationColorNames [ {}]\n"
        "   /Install {{ matrix currentmatrix dup 5 2 copy get {} add put setmatrix\n"
        "               {:.9f} {:.9f} scale }} bind\n"
        ">> setpagedevice\n",
        names, rowsBelow, band.XResolution / DeviceResolution(band.XResolution),
        band.YResolution / DeviceResolution(band.YResolution));
}

}  // namespace

Rasterizer::Rasterizer(const fs::path& workFolder, std::chrono::seconds timeout)
    : workFolder_(workFolder), document_(workFolder / BandRequest().Document), timeout_(timeout) {
    std::error_code error;
    fs::create_directory(workFolder / "tmp", error);
    if (error)
        throw HostError(
            kFailed, fmt::format("cannot write to {}: {}", workFolder.string(), error.message()));
}

void Rasterizer::TakePdf(const fs::path& pdf) const {
    Link(pdf, document_);
}

void Rasterizer::Link(const fs::path& from, const fs::path& to) const {
    std::error_code error;
    const fs::path target = fs::canonical(from, error);
    if (!error) fs::create_symlink(target, to, error);
    if (error)
        throw HostError(
            kFailed, fmt::format("cannot write to {}: {}", workFolder_.string(), error.message()));
}

void Rasterizer::ConvertPostScript(const fs::path& program) {
    const fs::path link = workFolder_ / "document.ps";
    Link(program, link);
    std::vector<std::string> arguments = CommonArguments();
    // An EPS is cut to its bounding box. Pictures keep their pixels, pages their direction.
    arguments.insert(
        arguments.end(),
        {"-dEPSCrop", "-sDEVICE=pdfwrite", "-dAutoRotatePages=/None",
         "-dAutoFilterColorImages=false", "-dAutoFilterGrayImages=false",
         "-dColorImageFilter=/FlateEncode", "-dGrayImageFilter=/FlateEncode",
         "-dDownsampleColorImages=false", "-dDownsampleGrayImages=false",
         "-dDownsampleMonoImages=false", "-sOutputFile=" + document_.filename().string(), "-c",
         // The fonts that it brings go along, those too that every reader is said to have.
         "<< /NeverEmbed [] >> setdistillerparams",
         // A program that shows pages for ever ends here.
         fmt::format("<< /EndPage {{ 1 index {} ge {{ /showpage /limitcheck signalerror }} if exch "
                     "pop 2 ne }} >> setpagedevice",
                     kMostDocumentPages),
         "-f", link.filename().string(), "-c",
         fmt::format("({}) print currentpagedevice /PageCount get = flush", kPageCountLabel)});
    mostBytes_ = MostConvertedBytes(program);
    const std::string log = RunToEnd(arguments, workFolder_, "running the PostScript");
    mostBytes_ = UINTMAX_MAX;
    NoteDocument(ComplaintsIn(log, RasterizerRun::kProgram));
    // A program that shows nothing leaves a blank page.
    const std::size_t label = log.rfind(kPageCountLabel);
    if (label != std::string::npos &&
        Atoi(std::string_view(log).substr(label + std::string_view(kPageCountLabel).size())) == 0)
        throw HostError(kFailed, "the PostScript shows no page");
}

std::vector<std::string> Rasterizer::CommonArguments() const {
    // Not quiet: only so does it say which fonts it replaces and what it repairs.
    return {"gs", "-dSAFER", "-dBATCH", "-dNOPAUSE", "-dPDFSTOPONERROR"};
}

std::vector<PdfPage> Rasterizer::ReadPages() {
    std::vector<std::string> arguments = CommonArguments();
    arguments.insert(arguments.end(), {"-dNODISPLAY", "-dPDFINFO", document_.filename().string()});
    const std::string report = RunToEnd(arguments, workFolder_, "reading the pages");
    NoteDocument(ComplaintsIn(report, RasterizerRun::kPageReport));
    return ParsePageReport(report);
}

void Rasterizer::NoteDocument(const std::vector<std::string>& complaints) {
    documentComplaints_.insert(documentComplaints_.end(), complaints.begin(), complaints.end());
}

std::vector<std::string> Rasterizer::MakePlates(const BandRequest& band, const InkPlan& plan,
                                                const fs::path& folder) {
    complaints_.clear();
    if (plan.NeedsSeparations) Separate(band, plan, folder, "tiffsep");
    if (plan.NeedsGray) Separate(band, plan, folder, "tiffgray");
    return complaints_;
}

void Rasterizer::Separate(const BandRequest& band, const InkPlan& plan, const fs::path& folder,
                          const char* device) {
    const bool gray = std::string_view(device) == "tiffgray";
    {
        std::ofstream setUp(folder / "setup.ps", std::ios::binary);
        setUp << SetUp(band, plan);
        setUp.close();
        if (!setUp) throw HostError(kFailed, fmt::format("cannot write to {}", folder.string()));
    }
    std::vector<std::string> arguments = CommonArguments();
    // Media fixed to the band's pixels: the page keeps its place and nothing is scaled. Spot inks
    // without a plate are converted to process inks.
    arguments.insert(
        arguments.end(),
        {fmt::format("-sDEVICE={}", device), "-dTIFFDateTime=false", "-sCompression=pack",
         fmt::format("-r{}x{}", DeviceResolution(band.XResolution),
                     DeviceResolution(band.YResolution)),
         fmt::format("-g{}x{}", band.WidthPixels, band.RowCount), "-dFIXEDMEDIA", "-dUseCropBox",
         fmt::format("-dFirstPage={}", band.PageNumber),
         fmt::format("-dLastPage={}", band.PageNumber),
         fmt::format("-sOutputFile={}", gray ? "plate(Gray).tif" : "plate.tif")});
    if (!gray) arguments.push_back(fmt::format("-dMaxSpots={}", plan.PlateSpots.size()));
    // By the profiles, full black ink is a dark grey: type would be screened.
    if (gray || plan.UsesFastColor) arguments.emplace_back("-dUseFastColor");
    arguments.insert(arguments.end(), {"setup.ps", "../" + band.Document});
    const std::string log = RunToEnd(arguments, folder, fmt::format("page {}", band.PageNumber));
    // Each run reads the document anew.
    for (const std::string& complaint : ComplaintsIn(log, RasterizerRun::kPages))
        if (std::find(documentComplaints_.begin(), documentComplaints_.end(), complaint) ==
            documentComplaints_.end())
            complaints_.push_back(complaint);
    // The composite picture is as large as all process plates together, and nobody reads it.
    std::error_code ignored;
    fs::remove(folder / "plate.tif", ignored);
}

std::string Rasterizer::RunToEnd(const std::vector<std::string>& arguments, const fs::path& folder,
                                 const std::string& what) {
    const fs::path log = workFolder_ / "log.txt";
    ChildProcess process;
    const fs::path temporary = fs::relative(workFolder_ / "tmp", folder);
    if (!process.Launch({arguments,
                         folder.string(),
                         log.string(),
                         // Options of the user's own would change what comes out.
                         {{"TMPDIR", temporary.string()}, {"GS_OPTIONS", ""}, {"GS_DEVICE", ""}}}))
        throw HostError(kFailed, "cannot start Ghostscript (gs); is it installed?");
    WaitFor(process, what);
    StopWhenFull(what);
    std::string text = ReadLog(log);
    if (text.find("No space left on device") != std::string::npos) ThrowDiskFull(what);
    if (process.Result() != 0) {
        if (text.find("requires a password") != std::string::npos) ParsePageReport(text);
        throw HostError(kFailed, fmt::format("Ghostscript failed at {} (exit status {}): {}", what,
                                             process.Result(), FailureIn(text)));
    }
    return text;
}

/// A run ends well on a full disk too, with plates that nobody can read; and what it removes at its
/// end hides what was wrong.
void Rasterizer::StopWhenFull(const std::string& what) const {
    if (IsDiskFull(workFolder_)) ThrowDiskFull(what);
}

void Rasterizer::ThrowDiskFull(const std::string& what) const {
    throw HostError(kFailed, fmt::format("the disk is full: there is no more room in {} for {}",
                                         workFolder_.parent_path().string(), what));
}

void Rasterizer::WaitFor(ChildProcess& process, const std::string& what) {
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::milliseconds kPoll(5);
    constexpr std::chrono::milliseconds kMeasure(250);
    Clock::time_point progress = Clock::now();
    Clock::time_point measured = progress;
    std::uintmax_t bytes = 0;
    while (!process.HasEnded()) {
        if (InterruptNoted()) {
            process.Kill();
            throw HostError(kAborted, "interrupted");
        }
        StopWhenFull(what);
        std::this_thread::sleep_for(kPoll);
        const Clock::time_point now = Clock::now();
        if (now - measured < kMeasure) continue;
        measured = now;
        const std::uintmax_t current = FolderBytes(workFolder_);
        if (current != bytes) progress = now;
        bytes = current;
        std::error_code absent;
        const std::uintmax_t logBytes = fs::file_size(workFolder_ / "log.txt", absent);
        const bool floods = (!absent && logBytes > kMostLogBytes) || bytes > mostBytes_;
        if (now - progress <= timeout_ && !floods) continue;
        process.Kill();
        throw HostError(kFailed, floods ? fmt::format("Ghostscript writes without end at {}", what)
                                        : fmt::format("Ghostscript made no progress for {} s at "
                                                      "{} and was stopped",
                                                      timeout_.count(), what));
    }
}
