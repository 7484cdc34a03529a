// The built program, run as a user runs it.

#include <gtest/gtest.h>
#include <tiffio.h>
#include <zlib.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

#include "driverhost/Container.h"
#include "driverhost/JobFile.h"
#include "driverhost/OutputFiles.h"
#include "driverhost/WorkFolder.h"
#include "platform/ChildProcess.h"

namespace fs = std::filesystem;

namespace {

std::string ReadText(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void WriteText(const fs::path& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

struct Page {
    std::string MediaBox;
    std::string Content;
};

/// A PDF without compression; its inks /S0 and /S1 are the separations WHITE and Orange.
std::string Pdf(const std::vector<Page>& pages) {
    std::string kids;
    std::string objects;
    int number = 3;
    for (const Page& page : pages) {
        kids += std::to_string(number) + " 0 R ";
        objects += std::to_string(number) + " 0 obj << /Type /Page /Parent 2 0 R /MediaBox [" +
                   page.MediaBox + "] /Contents " + std::to_string(number + 1) +
                   " 0 R /Resources << /ColorSpace << /S0 [/Separation /WHITE /DeviceCMYK 100 0 R] "
                   "/S1 [/Separation /Orange /DeviceCMYK 101 0 R] >> >> >> endobj\n" +
                   std::to_string(number + 1) + " 0 obj << /Length " +
                   std::to_string(page.Content.size()) + " >>\nstream\n" + page.Content +
                   "\nendstream endobj\n";
        number += 2;
    }
    const char* const functions =
        "100 0 obj << /FunctionType 2 /Domain [0 1] /N 1 /C0 [0 0 0 0] /C1 [0.1 0 0 0] >> endobj\n"
        "101 0 obj << /FunctionType 2 /Domain [0 1] /N 1 /C0 [0 0 0 0] /C1 [0 0.5 1 0] >> endobj\n";
    return "%PDF-1.4\n1 0 obj << /Type /Catalog /Pages 2 0 R >> endobj\n"
           "2 0 obj << /Type /Pages /Kids [" +
           kids + "] /Count " + std::to_string(pages.size()) + " >> endobj\n" + objects +
           functions + "trailer << /Root 1 0 R >>\n";
}

/// Cyan, full, on the lower left quarter and magenta, half, on the upper right one of an inch.
const Page kQuarters = {"0 0 72 72", "1 0 0 0 k 0 0 36 36 re f 0 0.5 0 0 k 36 36 36 36 re f"};
/// The spot inks side by side, black below.
const Page kSpots = {"0 0 72 72",
                     "/S0 cs 1 scn 0 36 36 36 re f /S1 cs 1 scn 36 36 36 36 re f "
                     "0 0 0 1 k 0 0 72 36 re f"};

/// One separation of a container or one channel file, a byte per row byte.
struct Raster {
    uint32_t Width = 0;
    uint32_t Rows = 0;
    uint16_t Bits = 0;
    std::string Name;
    std::vector<std::string> Lines;

    unsigned At(uint32_t x, uint32_t y) const {
        const auto byte = static_cast<unsigned char>(Lines.at(y).at(x * Bits / 8));
        return byte >> (8 - Bits - x * Bits % 8) & ((1U << Bits) - 1);
    }
};

std::vector<Raster> ReadTiff(const fs::path& path) {
    std::vector<Raster> rasters;
    const TiffFile tiff = OpenTiff(path, "r");
    if (!tiff) return rasters;
    do {
        Raster raster;
        TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &raster.Width);
        TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &raster.Rows);
        TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_BITSPERSAMPLE, &raster.Bits);
        if (char* name = nullptr; TIFFGetField(tiff.get(), TIFFTAG_PAGENAME, &name) == 1)
            raster.Name = name;
        for (uint32_t row = 0; row < raster.Rows; ++row) {
            std::string line(static_cast<std::size_t>(TIFFScanlineSize(tiff.get())), '\0');
            EXPECT_EQ(TIFFReadScanline(tiff.get(), line.data(), row), 1);
            raster.Lines.push_back(line);
        }
        rasters.push_back(raster);
    } while (TIFFReadDirectory(tiff.get()) == 1);
    return rasters;
}

struct Outcome {
    int Status = -1;
    std::string Output;  ///< standard output and standard error
};

class DriverHost : public testing::Test {
  protected:
    fs::path Path(const std::string& name) const { return folder_.Path() / name; }

    /// Runs a program in the test's folder; one that does not end within a minute is killed.
    Outcome RunProgram(const std::vector<std::string>& arguments) const {
        const fs::path log = logFolder_.Path() / "log";
        ChildProcess process;
        std::vector<std::pair<std::string, std::string>> environment = {{"QL_BASE_FOLDER", ""},
                                                                        {"QL_MESSAGE_FILE", ""}};
        if (!searchPath_.empty()) environment.emplace_back("PATH", searchPath_);
        if (!process.Launch({arguments, folder_.Path().string(), log.string(), environment}))
            return {};
        for (int i = 0; i < 6000 && !process.HasEnded(); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        process.Kill();
        return {process.Result(), ReadText(log)};
    }

    Outcome Host(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), DRIVERHOST);
        return RunProgram(arguments);
    }

    Outcome MakeJob(const std::string& pdf, const std::string& model,
                    const std::vector<std::string>& more = {}) const {
        std::vector<std::string> arguments = {"make-job", pdf, "--model", model, "-o", "job"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return Host(arguments);
    }

    /// Puts a program named gs before the real one: it reports one page of an inch, then does
    /// what `script` says.
    void ReplaceRasterizer(const std::string& script) {
        fs::create_directory(toolFolder_.Path() / "bin");
        const fs::path gs = toolFolder_.Path() / "bin/gs";
        WriteText(gs,
                  "#!/bin/sh\ncase \"$*\" in *-dPDFINFO*)\n"
                  "  printf 'File has 1 page.\\nPage 1 MediaBox: [0 0 72 72]\\n'; exit 0;;\n"
                  "esac\n" +
                      script + '\n');
        fs::permissions(gs, fs::perms::owner_all);
        searchPath_ = gs.parent_path().string() + ":/usr/local/bin:/usr/bin:/bin";
    }

    std::vector<std::string> Files() const {
        std::vector<std::string> names;
        for (const auto& [name, state] : ListFiles(folder_.Path()))
            names.push_back(name);
        return names;
    }

    WorkFolder folder_{fs::temp_directory_path() / "driverhost-test"};
    WorkFolder logFolder_{fs::temp_directory_path() / "driverhost-log"};
    WorkFolder toolFolder_{fs::temp_directory_path() / "driverhost-tools"};
    std::string searchPath_;
};

bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST_F(DriverHost, SeparatesAPageAndPrintsItUnchanged) {
    WriteText(Path("My page (final).pdf"), Pdf({kQuarters}));
    const Outcome made = MakeJob("My page (final).pdf", "Fenland R4",
                                 {"--color-mode", "CMYK, contone", "--media", "vinyl"});
    ASSERT_EQ(made.Status, 0) << made.Output;
    EXPECT_EQ(fs::file_size(Path("job")), 3940U);
    const std::vector<Raster> pages = ReadTiff(Path("job.pages.tif"));
    ASSERT_EQ(pages.size(), 4U);
    EXPECT_EQ(pages[0].Name, "Cyan");
    EXPECT_EQ(pages[0].Width, 360U);
    EXPECT_EQ(pages[0].Rows, 360U);
    EXPECT_EQ(pages[0].At(10, 350), 255U);
    EXPECT_EQ(pages[0].At(10, 10), 0U);
    EXPECT_EQ(pages[0].At(350, 350), 0U);
    EXPECT_NEAR(pages[1].At(350, 10), 128, 1);
    EXPECT_EQ(pages[3].Lines, std::vector<std::string>(360, std::string(360, '\0')));

    const Outcome run = Host({"run", "job", "--out", "printed"});
    ASSERT_EQ(run.Status, 0) << run.Output;
    EXPECT_TRUE(Contains(run.Output, "page 1 of 1 written"));
    EXPECT_TRUE(Contains(run.Output, "Mypage/Mypage_C.tif"));
    const char* const channels[] = {"C", "M", "Y", "K"};
    for (std::size_t i = 0; i < 4; ++i) {
        const std::vector<Raster> channel =
            ReadTiff(Path(std::string("printed/Mypage/Mypage_") + channels[i] + ".tif"));
        ASSERT_EQ(channel.size(), 1U) << channels[i];
        ASSERT_EQ(channel[0].Lines.size(), pages[i].Lines.size());
        for (std::size_t row = 0; row < pages[i].Lines.size(); ++row)
            ASSERT_EQ(channel[0].Lines[row].substr(0, 360), pages[i].Lines[row]) << row;
    }
}

TEST_F(DriverHost, ScreensOneBitModesAndMakesTheSameBytesTwice) {
    WriteText(Path("a.pdf"), Pdf({kQuarters}));
    ASSERT_EQ(MakeJob("a.pdf", "Fenland R4").Status, 0);
    const std::string first = ReadText(Path("job.pages.tif"));
    const Raster magenta = ReadTiff(Path("job.pages.tif")).at(1);
    EXPECT_EQ(magenta.Bits, 1);
    unsigned dots = 0;
    for (uint32_t y = 0; y < 180; ++y)
        for (uint32_t x = 180; x < 360; ++x)
            dots += magenta.At(x, y);
    EXPECT_NEAR(dots, 180 * 180 / 2, 250);
    // In bands of one screen's height: the seams do not show.
    ASSERT_EQ(MakeJob("a.pdf", "Fenland R4", {"--band-pixels", "1"}).Status, 0);
    EXPECT_TRUE(ReadText(Path("job.pages.tif")) == first);
}

TEST_F(DriverHost, GivesSpotInksTheirChannelsAndSaysWhichHaveNone) {
    WriteText(Path("a.pdf"), Pdf({kSpots, kQuarters}));
    const Outcome made = MakeJob("a.pdf", "Fenland F8",
                                 {"--media", "Glass", "--print-mode", "Standard", "--resolution",
                                  "300x300", "--color-mode", "CMYK, White, Varnish, contone"});
    ASSERT_EQ(made.Status, 0) << made.Output;
    EXPECT_TRUE(Contains(made.Output, "no channel for the spot ink \"Orange\"")) << made.Output;
    EXPECT_FALSE(Contains(made.Output, "ink \"WHITE\"")) << made.Output;
    const std::vector<Raster> rasters = ReadTiff(Path("job.pages.tif"));
    ASSERT_EQ(rasters.size(), 12U);
    EXPECT_EQ(rasters[4].Name, "White");
    EXPECT_EQ(rasters[4].At(10, 10), 255U);
    EXPECT_EQ(rasters[4].At(290, 10), 0U);
    EXPECT_EQ(rasters[0].At(10, 10), 0U);     // white is not mixed
    EXPECT_EQ(rasters[2].At(290, 10), 255U);  // orange is
    EXPECT_EQ(rasters[3].At(10, 290), 255U);
    EXPECT_EQ(rasters[5].At(10, 10), 0U);  // varnish: blank

    // Bottom line first, and a folder for each of several pages.
    const Outcome run = Host({"run", "job", "--out", "deep/er", "--name", "v1.2"});
    ASSERT_EQ(run.Status, 0) << run.Output;
    const std::string white = ReadText(Path("deep/er/v1.2-tile1/v1.2_W.raw"));
    ASSERT_EQ(white.size(), 320U * 300U);
    EXPECT_EQ(white[0], '\0');
    EXPECT_EQ(white[320 * 299], '\xFF');
    EXPECT_TRUE(fs::exists(Path("deep/er/v1.2-tile2/v1.2_1C.raw")));
}

TEST_F(DriverHost, PrintsAGreyModeInShadesOfItsInk) {
    WriteText(Path("a.pdf"), Pdf({{"0 0 72 72", "0.25 g 0 0 72 72 re f"}}));
    ASSERT_EQ(MakeJob("a.pdf", "Fenland R4", {"--color-mode", "4"}).Status, 0);
    const std::vector<Raster> rasters = ReadTiff(Path("job.pages.tif"));
    ASSERT_EQ(rasters.size(), 1U);
    EXPECT_NEAR(rasters[0].At(100, 100), 191, 1);
    const Outcome run = Host({"run", "job", "--out", "."});
    EXPECT_EQ(run.Status, 0) << run.Output;
    EXPECT_TRUE(fs::exists(Path("a/a")));
}

TEST_F(DriverHost, TakesPathsThatMeanSomethingElsewhere) {
    fs::create_directory(Path("100%d *$(x)"));
    WriteText(Path("100%d *$(x)/-a;'b%s.pdf"), Pdf({kQuarters}));
    const Outcome made = Host(
        {"make-job", "100%d *$(x)/-a;'b%s.pdf", "--model", "Fenland R4", "-o", "100%d *$(x)/job"});
    EXPECT_EQ(made.Status, 0) << made.Output;
    EXPECT_EQ(Host({"run", "100%d *$(x)/job", "--out", "out%n"}).Status, 0);
}

struct BadInput {
    const char* Name;
    const char* Bytes;  ///< null: no such file
    const char* Message;
};

TEST_F(DriverHost, RefusesDocumentsThatCannotBePrinted) {
    const std::string noPages = Pdf({});
    const std::string noBox = Pdf({{"", ""}});
    const std::string huge = Pdf({{"0 0 900000000 900000000", ""}});
    const std::string tiny = Pdf({{"0 0 0.01 72", ""}});
    const BadInput cases[] = {
        {"missing.pdf", nullptr, "does not exist"},
        {"empty.pdf", "", "is empty"},
        {"program.pdf", "%!PS\n(x) print\n", "is no PDF"},
        {"garbage.pdf", "%PDF-1.4\nnothing of a PDF follows", "driverhost: "},
        {"nopages.pdf", noPages.c_str(), "no pages"},
        {"nobox.pdf", noBox.c_str(), "driverhost: "},
        {"huge.pdf", huge.c_str(), "page 1 measures"},
        {"tiny.pdf", tiny.c_str(), "page 1 measures"},
    };
    for (const BadInput& row : cases) {
        if (row.Bytes != nullptr) WriteText(Path(row.Name), row.Bytes);
        const std::vector<std::string> before = Files();
        const Outcome made = MakeJob(row.Name, "Fenland R4");
        EXPECT_EQ(made.Status, 1) << row.Name << ": " << made.Output;
        EXPECT_TRUE(Contains(made.Output, row.Message)) << row.Name << ": " << made.Output;
        EXPECT_EQ(std::count(made.Output.begin(), made.Output.end(), '\n'), 1) << made.Output;
        EXPECT_EQ(Files(), before) << row.Name;
    }
    fs::create_directory(Path("folder.pdf"));
    EXPECT_TRUE(Contains(MakeJob("folder.pdf", "Fenland R4").Output, "is no file"));
}

TEST_F(DriverHost, RefusesAnEncryptedDocument) {
    WriteText(Path("a.pdf"), Pdf({kQuarters}));
    ASSERT_EQ(RunProgram({"gs", "-q", "-dBATCH", "-dNOPAUSE", "-sDEVICE=pdfwrite",
                          "-sOwnerPassword=a", "-sUserPassword=b", "-dEncryptionR=3",
                          "-dKeyLength=128", "-sOutputFile=locked.pdf", "a.pdf"})
                  .Status,
              0);
    const Outcome made = MakeJob("locked.pdf", "Fenland R4");
    EXPECT_EQ(made.Status, 1);
    EXPECT_TRUE(Contains(made.Output, "password")) << made.Output;
}

TEST_F(DriverHost, AnswersAWrongCommandLineWithItsOwnStatus) {
    WriteText(Path("a.pdf"), Pdf({kQuarters}));
    ASSERT_EQ(MakeJob("a.pdf", "Fenland R4").Status, 0);
    const std::pair<std::vector<std::string>, int> cases[] = {
        {{}, 2},
        {{"print"}, 2},
        {{"--help"}, 0},
        {{"run", "--help"}, 0},
        {{"capabilities"}, 2},
        {{"capabilities", "Nobody's printer"}, 1},
        {{"capabilities", std::string(64, 'm')}, 2},
        {{"--base", "nowhere", "capabilities", "Fenland R4"}, 2},
        {{"make-job", "a.pdf", "--model", "Fenland R4", "-o", "x", "--media", "Silk"}, 2},
        {{"make-job", "a.pdf", "--model", "Fenland R4", "-o", "x", "--resolution", "3"}, 2},
        {{"make-job", "a.pdf", "--model", "Fenland R4", "-o", "x", "--color-mode", "9"}, 2},
        {{"make-job", "a.pdf", "--model", "Fenland R4", "-o", "x", "--timeout", "0"}, 2},
        {{"make-job", "a.pdf", "--model", "Fenland R4", "-o", "nowhere/x"}, 1},
        {{"make-job", "a.pdf", "--model", "Fenland R4", "-o", "."}, 2},
        {{"run", "nothing", "--out", "o"}, 1},
        {{"run", "a.pdf", "--out", "o"}, 1},
        {{"run", "job", "--out", "a.pdf"}, 1},
        {{"run", "job", "--out", "o", "--name", "../x"}, 2},
        {{"run", "job", "--out", "o", "--name", "c:x"}, 2},
        {{"run", "job", "--out", "o", "--print-mode", "Draft"}, 0},
    };
    for (const auto& [arguments, status] : cases) {
        const Outcome outcome = Host(arguments);
        EXPECT_EQ(outcome.Status, status) << testing::PrintToString(arguments) << outcome.Output;
    }
    EXPECT_FALSE(fs::exists(Path("x")));
}

TEST_F(DriverHost, DoesNotBelieveTheRasterizer) {
    const std::string plate = "for ink in Cyan Magenta Yellow Black; do cp " +
                              Path("plate.tif").string() + " \"plate($ink).tif\"; done; exit 0";
    // A plate of the right size whose strips end early, as a full disk leaves it.
    {
        const TiffFile tiff = OpenTiff(Path("whole.tif"), "w");
        TIFFSetField(tiff.get(), TIFFTAG_IMAGEWIDTH, 360);
        TIFFSetField(tiff.get(), TIFFTAG_IMAGELENGTH, 360);
        TIFFSetField(tiff.get(), TIFFTAG_BITSPERSAMPLE, 8);
        TIFFSetField(tiff.get(), TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
        TIFFSetField(tiff.get(), TIFFTAG_ROWSPERSTRIP, 40);
        std::vector<uint8_t> row(360, 0x80);
        for (uint32_t y = 0; y < 320; ++y)
            TIFFWriteScanline(tiff.get(), row.data(), y);
    }
    const std::string whole = ReadText(Path("whole.tif"));
    struct Fault {
        std::string Plate;
        std::string Script;
        const char* Message;
    };
    const Fault cases[] = {
        {"", "exit 0", "made no plate of Cyan"},
        {"", plate, "unreadable"},
        {"no TIFF at all", plate, "unreadable"},
        {whole, plate, "ends early, at row 320 of 360"},
        {"", "echo 'Error: /ioerror in --showpage--'; exit 1", "ioerror"},
        {"", "kill -9 $$", "exit status 137"},
        {"", "sleep 60", "no progress for 1 s"},
    };
    for (const Fault& fault : cases) {
        WriteText(Path("a.pdf"), "%PDF-1.4\n");
        WriteText(Path("plate.tif"), fault.Plate);
        ReplaceRasterizer(fault.Script);
        const std::vector<std::string> before = Files();
        const Outcome made = MakeJob("a.pdf", "Fenland R4", {"--timeout", "1"});
        EXPECT_EQ(made.Status, 1) << made.Output;
        EXPECT_TRUE(Contains(made.Output, fault.Message)) << made.Output;
        EXPECT_EQ(Files(), before) << fault.Script;
    }
}

TEST_F(DriverHost, LeavesNothingBehindOnAFullDisk) {
    WriteText(Path("a.pdf"), Pdf({kQuarters}));
    ASSERT_EQ(MakeJob("a.pdf", "Fenland R4", {"--color-mode", "2"}).Status, 0);
    const std::vector<std::string> before = Files();
    const std::string job = ReadText(Path("job.pages.tif"));
    // No file may pass 4 KiB; a block counts 512 bytes.
    const std::string program = std::string("ulimit -f 8; exec '") + DRIVERHOST + "' ";
    const Outcome made = RunProgram(
        {"/bin/sh", "-c", program + "make-job a.pdf --model 'Fenland R4' --color-mode 2 -o job"});
    EXPECT_EQ(made.Status, 1) << made.Output;
    EXPECT_EQ(Files(), before);
    EXPECT_TRUE(ReadText(Path("job.pages.tif")) == job);  // the earlier job stands

    const Outcome run = RunProgram({"/bin/sh", "-c", program + "run job --out printed"});
    EXPECT_EQ(run.Status, 1) << run.Output;
    EXPECT_TRUE(Contains(run.Output, "a_C.tif is incomplete")) << run.Output;
    EXPECT_TRUE(Contains(run.Output, "3 channels are not written")) << run.Output;
}

TEST_F(DriverHost, StopsOnAnInterrupt) {
    WriteText(Path("a.pdf"), "%PDF-1.4\n");
    ReplaceRasterizer("sleep 60");
    const Outcome made = RunProgram({"timeout", "--preserve-status", "-s", "INT", "1", DRIVERHOST,
                                     "make-job", "a.pdf", "--model", "Fenland R4", "-o", "job"});
    EXPECT_EQ(made.Status, 130) << made.Output;
    EXPECT_EQ(Files(), std::vector<std::string>{"a.pdf"});
}

TEST_F(DriverHost, AbortsARunningJobOnAnInterrupt) {
    JobSettings settings;
    settings.Model = "Fenland R4";
    settings.SourceName = "long.pdf";
    settings.XResolution = 360;
    settings.YResolution = 360;
    settings.Choice = {0, 1, 0, 2};
    WriteJobHeader(Path("job"), settings);
    WriteJobSettings(SettingsOf(Path("job")), settings);
    {
        ContainerWriter writer(ContainerOf(Path("job")), 0);
        SeparationHeader header = {20000, 60000, 8, 360, 360, 0, 1, "Cyan", "Cyan"};
        std::vector<uint8_t> row(20000);
        writer.BeginSeparation(header);
        for (int64_t y = 0; y < header.Rows; ++y)
            writer.WriteRow(row);
        writer.EndSeparation();
        writer.Close();
    }
    const Outcome run = RunProgram({"timeout", "--preserve-status", "-s", "TERM", "0.3", DRIVERHOST,
                                    "run", "job", "--out", "printed"});
    EXPECT_EQ(run.Status, 130) << run.Output;
    EXPECT_TRUE(Contains(run.Output, "interrupted; the job is aborted")) << run.Output;
    EXPECT_TRUE(Contains(run.Output, "long_C.tif is incomplete")) << run.Output;
    EXPECT_TRUE(Contains(run.Output, "3 channels are not written")) << run.Output;
}

TEST_F(DriverHost, FailsOnDamagedJobs) {
    WriteText(Path("a.pdf"), Pdf({kQuarters, kQuarters}));
    ASSERT_EQ(MakeJob("a.pdf", "Fenland R4", {"--color-mode", "2"}).Status, 0);
    const std::string job = ReadText(Path("job"));
    const std::string container = ReadText(Path("job.pages.tif"));
    struct Damage {
        std::string Job;
        std::string Container;
        std::string Settings;
        const char* Message;
    };
    const Damage cases[] = {
        {job.substr(0, 3939), container, "{}", "is no job file"},
        {std::string(3940, '\0'), container, "", "a model's name"},
        {job, "", "", "no job container"},
        {job, container.substr(0, container.size() / 2), "", "page"},
        {job, container, "{ \"media\": 0, ", "settings.json is damaged"},
        {job, container, "{ \"media\": 7, \"printMode\": 0, \"resolution\": 0 }", "no medium"},
    };
    for (const Damage& damage : cases) {
        WriteText(Path("job"), damage.Job);
        WriteText(Path("job.pages.tif"), damage.Container);
        fs::remove(Path("job.settings.json"));
        if (!damage.Settings.empty()) WriteText(Path("job.settings.json"), damage.Settings);
        const Outcome run = Host({"run", "job", "--out", "printed"});
        EXPECT_TRUE(run.Status == 1 || run.Status == 2) << damage.Message << run.Output;
        EXPECT_TRUE(Contains(run.Output, damage.Message)) << damage.Message << run.Output;
    }
}

TEST_F(DriverHost, ShowsWhatAModelAllows) {
    const Outcome shown = Host({"capabilities", "Fenland F8", "--json"});
    ASSERT_EQ(shown.Status, 0) << shown.Output;
    const nlohmann::json model = nlohmann::json::parse(shown.Output);
    EXPECT_EQ(model["media"].size(), 4U);
    EXPECT_EQ(model["colorModes"].size(), 8U);
    EXPECT_EQ(model["colorModes"][4]["colorants"][5]["name"], "Varnish");
    EXPECT_EQ(model["colorModes"][4]["colorants"][5]["spot"], true);
    const nlohmann::json& glass = model["combinations"][3]["printModes"];
    ASSERT_EQ(glass.size(), 2U);
    EXPECT_EQ(glass[1]["default"], true);
    EXPECT_TRUE(glass[0]["resolutions"][1]["colorModes"].empty());
    EXPECT_EQ(glass[0]["resolutions"][0]["colorModes"], (std::vector<int>{0, 4, 5}));
    EXPECT_EQ(glass[0]["resolutions"][0]["defaultColorMode"], 4);
    EXPECT_EQ(model["defaults"]["printMode"], 1);

    const Outcome text = Host({"capabilities", "Fenland R4"});
    EXPECT_EQ(text.Status, 0);
    EXPECT_TRUE(Contains(text.Output, "Backlit film")) << text.Output;
    EXPECT_TRUE(Contains(text.Output, "refused")) << text.Output;
}

TEST(Models, EncodedDescriptionIsItsSource) {
    const std::string source = ReadText(fs::path(MODELS_FOLDER) / "sources/FenlandF8.xml");
    const std::string encoded = (fs::path(MODELS_FOLDER) / "OutputDrivers/FenlandF8.xml").string();
    ASSERT_TRUE(ReadText(encoded).starts_with("\x1F\x8B"));
    const gzFile file = gzopen(encoded.c_str(), "rb");
    ASSERT_NE(file, nullptr);
    std::string decoded(source.size() + 1, '\0');
    const int count = gzread(file, decoded.data(), static_cast<unsigned>(decoded.size()));
    gzclose(file);
    ASSERT_EQ(count, static_cast<int>(source.size()));
    decoded.pop_back();
    EXPECT_TRUE(decoded == source);
}

}  // namespace
