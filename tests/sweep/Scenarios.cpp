#include "sweep/Scenarios.h"

#include <fmt/format.h>
#include <zlib.h>

#include <stdexcept>

#include "boundary/JobRunner.h"

namespace {

constexpr const char* kPlane = R"(CreateFolder="No")";
constexpr const char* kInterleaved = R"(CreateFolder="No" TypeRead="LINE_BY_LINE")";
constexpr const char* kBottomFirst = R"(CreateFolder="No" PrinterDirection="YES")";
constexpr const char* kBottomFirstInterleaved =
    R"(CreateFolder="No" PrinterDirection="YES" TypeRead="LINE_BY_LINE")";

std::string Numbered(int count, const std::string& rules, const std::string& extension = "raw") {
    return Describe(NumberedModel(count, rules, extension));
}

/// A model that offers white of types 1 and 2, `treatment` by default.
std::string White(int treatment, const std::string& rules) {
    Model model = NumberedModel(
        2, fmt::format(R"(SupportWhite="{}|Spot,Overprint;1,2;0,1" {})", treatment, rules));
    model.Colours.push_back({"White", "filename_W.raw"});
    return Describe(model);
}

/// A model with the given elements beside its channels.
std::string WithSides(const std::string& rules, const std::string& elements) {
    Model model = NumberedModel(2, rules);
    model.Colours[0].InternalName = "Cyan";
    model.Colours[1].InternalName = "Black";
    model.OutputElements = elements;
    return Describe(model);
}

std::vector<Scenario> MakeScenarios() {
    // A channel is 350,080 bytes in lines of 8,752: every block on its way is passed more than
    // once.
    const Page large = NumberedPage(70'001, 40, 2, 1);
    const std::vector<Page> sides = {RandomPage(400, 300, {{"Cyan"}, {"Black"}}, 2),
                                     RandomPage(300, 200, {{"Cyan"}, {"Black"}}, 3)};
    const std::vector<Page> pages = {NumberedPage(500, 30, 2, 4), NumberedPage(500, 30, 1, 5),
                                     NumberedPage(500, 30, 2, 6)};
    const Files templates = {
        {"HeaderTemplates/h.txt", "char,[4]HDR\r\nint32,QL_WIDTH\r\nint16,QL_NCOLORS\r\n"},
        {"JobTicketTemplates/t.xml", "<Job>QL_PRINTERNAME QL_ORIGINALFILE QL_TILES</Job>\r\n"}};
    return {
        {"plane order", Numbered(3, kPlane), {large}},
        {"plane order, TIFF, job folder", Numbered(2, "", "tif"), {large}},
        {"line-interleaved", Numbered(2, kInterleaved), {large}},
        {"bottom first", Numbered(2, kBottomFirst), {large}},
        {"bottom first, interleaved, TIFF", Numbered(2, kBottomFirstInterleaved, "tif"), {large}},
        {.Name = "bottom first, over older files",
         .Description = Numbered(2, kBottomFirst),
         .Pages = {large},
         .Before = {{"Proof_C1.raw", "older"}, {"Proof_C2.raw", "older"}}},
        {"white 1", White(1, kPlane), {large}},
        {"white 2, bottom first", White(2, kBottomFirst), {large}},
        {"white 2, interleaved", White(2, kInterleaved), {large}},
        {.Name = "header, ticket, BMP preview, thumbnail",
         .Description = WithSides(kPlane, R"(<HeaderParam name="h.txt" output="filename.hdr"/>
             <JobTicketParam name="t.xml"/>
             <PreviewParam type="BMP" sizeV="60" sizeH="80" bestFit="0" name="small.bmp"/>)"),
         .Pages = {sides[0]},
         .CodePage = "CP1252",
         .Templates = templates,
         .SideOutputs = {"small.bmp"},
         .HasThumbnail = true},
        {.Name = "tiles, thumbnail, PNG preview, header at the end",
         .Description = WithSides("", R"(<HeaderParam name="h.txt" output="h" EndRip="YES"/>
             <JobTicketParam name="t.xml"/>
             <PreviewParam type="PNG" sizeV="40" name="small.png"/>)"),
         .Pages = sides,
         .TileCount = 2,
         .Templates = templates,
         .SideOutputs = {"Proof/small.png", "Proof/Proof-tile1/small.png",
                         "Proof/Proof-tile2/small.png"},
         .HasThumbnail = true},
        {.Name = "several pages, encoded description",
         .Description = Numbered(2, kPlane, "tif"),
         .Pages = pages,
         .IsEncoded = true},
        {.Name = "options and dialog",
         .Description = White(2, kPlane),
         .Pages = {pages[0]},
         .EditsOptions = true},
    };
}

void EncodeFile(const std::filesystem::path& path, const std::string& bytes) {
    gzFile file = gzopen(path.c_str(), "wb");
    const bool isWritten =
        file != nullptr && gzwrite(file, bytes.data(), static_cast<unsigned>(bytes.size())) > 0;
    if (file == nullptr || gzclose(file) != Z_OK || !isWritten)
        throw std::runtime_error("cannot write " + path.string());
}

}  // namespace

const std::vector<Scenario>& Scenarios() {
    static const std::vector<Scenario> scenarios = MakeScenarios();
    return scenarios;
}

void Install(const Scenario& scenario, BaseFolder& folder) {
    folder.InstallModel(kModelName, scenario.Description);
    const std::filesystem::path models = folder.Base() / "OutputDrivers";
    if (scenario.IsEncoded) EncodeFile(models / "model.xml", scenario.Description);
    for (const auto& [name, text] : scenario.Templates)
        WriteText(models / name, text);
    WriteText(folder.Root() / "thumbnail", "the host's thumbnail");
    WriteText(folder.Jobs() / "job", JobFileBytes());
    WriteContainer(folder.Jobs() / "job.pages.tif", scenario.Pages);
}
