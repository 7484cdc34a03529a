#include "driverhost/ProofCommand.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>

#include "driverhost/CommandTree.h"
#include "driverhost/HostError.h"
#include "driverhost/Interrupt.h"
#include "driverhost/Overwriting.h"
#include "driverhost/PageChannels.h"
#include "driverhost/PngFile.h"
#include "driverhost/PrintRecord.h"
#include "driverhost/ProofInks.h"
#include "driverhost/ProofPicture.h"

namespace fs = std::filesystem;

namespace {

/// Sides that a picture of a page can sensibly have.
constexpr int64_t kMostPictureSide = 1'000'000;
constexpr uint32_t kWhitePaper = 0xFFFFFF;
constexpr uint32_t kGreyPaper = 0xB4B4B4;  ///< on which white ink shows

PrintRecord FindRecord(const ProofOptions& options) {
    const std::vector<fs::path> paths = FindPrintRecords(options.Folder);
    if (paths.empty())
        throw HostError(kFailed, fmt::format("{} holds no job that was run: there is no file "
                                             "NAME.print.json",
                                             options.Folder));
    std::string names;
    for (const fs::path& path : paths) {
        const std::string name = path.stem().stem().string();
        if (options.Job.empty() ? paths.size() == 1 : name == options.Job)
            return ReadPrintRecord(path);
        names += (names.empty() ? "" : ", ") + name;
    }
    throw HostError(kUsage, fmt::format("say which job with --job: there is {}", names));
}

uint32_t PaperColor(const ProofOptions& options, bool hasWhite) {
    if (options.Paper.empty()) return hasWhite ? kGreyPaper : kWhitePaper;
    uint32_t value = 0;
    const char* const end = options.Paper.data() + options.Paper.size();
    const auto result = std::from_chars(options.Paper.data(), end, value, 16);
    if (options.Paper.size() != 6 || result.ec != std::errc() || result.ptr != end)
        throw HostError(kUsage, fmt::format("a paper's colour is six hexadecimal digits, RRGGBB; "
                                            "not \"{}\"",
                                            options.Paper));
    return (value & 0xFF) << 16 | (value & 0xFF00) | value >> 16;
}

struct PictureSize {
    int64_t Width = 0;
    int64_t Height = 0;
};

/// Keeps the page's shape on paper, whose pixels need not be square.
PictureSize SizeOf(const ProofOptions& options, const PrintRecord& record,
                   const PrintRecord::Page& page) {
    const bool known = record.XResolution > 0 && record.YResolution > 0;
    const double stretch = known ? record.YResolution / record.XResolution : 1.0;
    const double width = static_cast<double>(page.WidthPixels) * stretch;
    const auto height = static_cast<double>(page.Lines);
    const double scale = options.Scale > 0
                             ? options.Scale
                             : static_cast<double>(options.LongSide) / std::max(width, height);
    const double most = static_cast<double>(kMostPictureSide);
    if (!(std::max(width, height) * scale <= most))
        throw HostError(
            kUsage, fmt::format("the picture would be larger than {} pixels", kMostPictureSide));
    return {std::max<int64_t>(std::llround(width * scale), 1),
            std::max<int64_t>(std::llround(height * scale), 1)};
}

/// Draws the picture's rows from the top, reading each channel's lines in step.
void Draw(PageChannels& channels, const std::vector<ProofInk>& inks, const PrintRecord::Page& page,
          const PictureSize& size, uint32_t paper, PngFile& picture) {
    PagePainter painter(inks, paper, page.WidthPixels, size.Width, page.Bits);
    std::vector<std::span<const uint8_t>> lines(inks.size());
    std::vector<uint8_t> rgb(3 * static_cast<std::size_t>(size.Width));
    for (int64_t row = 0; row < size.Height; ++row) {
        StopWhenInterrupted();
        const int64_t first = row * page.Lines / size.Height;
        const int64_t end = std::max((row + 1) * page.Lines / size.Height, first + 1);
        for (int64_t line = first; line < end; ++line) {
            const int64_t stored = channels.BottomLineFirst ? page.Lines - 1 - line : line;
            for (std::size_t ink = 0; ink < inks.size(); ++ink)
                lines[ink] = channels.Channels[ink].File->Line(stored);
            painter.AddLine(lines);
        }
        painter.TakeRow(rgb);
        picture.WriteRow(rgb);
    }
}

}  // namespace

void MakeProof(const ProofOptions& options) {
    RefuseToReplaceOther(options.Output, IsPngFile, "a PNG picture", options.Force);
    const PrintRecord record = FindRecord(options);
    const auto pageCount = static_cast<int64_t>(record.Pages.size());
    if (options.Page < 1 || options.Page > pageCount)
        throw HostError(kUsage, fmt::format("the job has {} pages, and none with the number {}",
                                            pageCount, options.Page));
    const auto index = static_cast<std::size_t>(options.Page - 1);
    const PrintRecord::Page& page = record.Pages[index];
    if (page.WidthPixels <= 0 || page.Lines <= 0)
        throw HostError(kFailed, fmt::format("page {} has no size", options.Page));
    PageChannels channels = OpenPageChannels(options.Folder, record, index);
    KeepInks(channels.Channels, options.Inks);
    std::vector<ProofInk> inks;
    for (const PageChannel& channel : channels.Channels)
        inks.push_back(InkOf(channel));
    const bool hasWhite = std::any_of(inks.begin(), inks.end(), [](const ProofInk& ink) {
        return ink.Effect == InkEffect::kWhite;
    });
    const PictureSize size = SizeOf(options, record, page);
    const uint32_t paper = PaperColor(options, hasWhite);

    PngFile picture(options.Output, size.Width, size.Height);
    Draw(channels, inks, page, size, paper, picture);
    picture.Close();
    std::string names;
    for (const PageChannel& channel : channels.Channels)
        names += (names.empty() ? "" : ", ") + channel.Ink;
    fmt::print("{}: page {} of {}, {} x {} pixels, from {}\n", options.Output, options.Page,
               pageCount, size.Width, size.Height, names);
}

void AddProofCommand(CommandTree& tree) {
    auto [command, options] = tree.Add(
        "proof", "Draw a printed page as a picture, from the channel files themselves", MakeProof);
    command.add_option("OUTDIR", options.Folder, "The folder that run wrote to")
        ->required()
        ->type_name(kFolderArgument);
    command.add_option("-o,--output", options.Output, "The PNG file to write")
        ->required()
        ->type_name(kFileArgument);
    command.add_option("--page", options.Page, "Page of the job, from 1")->capture_default_str();
    command.add_option("--job", options.Job, "Name of the job, where the folder holds several");
    command
        .add_option("--scale", options.Scale,
                    "Picture rows for each printed line, for example 0.1 (default: as --long-side "
                    "says)")
        ->check(CLI::PositiveNumber);
    command.add_option("--long-side", options.LongSide, "Pixels of the picture's longer side")
        ->check(CLI::Range(int64_t{1}, int64_t{1'000'000}))
        ->capture_default_str();
    command.add_option("--paper", options.Paper,
                       "Colour of the paper, RRGGBB (default: white; grey under white ink)");
    command.add_flag("--force", options.Force, "Replace a file that is no PNG picture");
    command
        .add_option("--inks", options.Inks,
                    "Draw these inks alone, by their names, with commas between them")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->type_name("INK,INK");
    AddHelp(
        command,
        "The picture shows what will be seen: the paper, white ink over it, and the other inks\n"
        "on top in their display colours, which multiply. On dark paper colours show where\n"
        "white lies under them. Varnish is a sheen.",
        {"driverhost proof printed -o proof.png",
         "driverhost proof printed -o detail.png --scale 1",
         "driverhost proof --inks Cyan,Black printed -o plates.png --paper 303030"});
}
