// The built program, run as a user runs it.

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <tiffio.h>

#include <algorithm>
#include <bit>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "driverhost/Container.h"
#include "driverhost/OutputFiles.h"
#include "driverhost/WorkFolder.h"
#include "platform/ChildProcess.h"

namespace fs = std::filesystem;

namespace {

std::string ReadText(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

struct Page {
    std::string MediaBox;
    std::string Content;
};

/// A PDF without compression; its inks /S0 and /S1 are the separations WHITE and Orange.
std::string Pdf(const std::vector<Page>& pages) {
    std::string kids;
    std::string objects;
    for (std::size_t i = 0; i < pages.size(); ++i) {
        kids += fmt::format("1{} 0 R ", i);
        objects += fmt::format(
            "1{} 0 obj << /Type /Page /Parent 2 0 R /MediaBox [{}] /Contents 2{} 0 R >> endobj\n"
            "2{} 0 obj << /Length {} >>\nstream\n{}\nendstream endobj\n",
            i, pages[i].MediaBox, i, i, pages[i].Content.size(), pages[i].Content);
    }
    return fmt::format(
        "%PDF-1.4\n1 0 obj << /Type /Catalog /Pages 2 0 R >> endobj\n"
        "2 0 obj << /Type /Pages /Kids [{}] /Count {} /Resources 3 0 R >> endobj\n"
        "3 0 obj << /ColorSpace << /S0 [/Separation /WHITE /DeviceCMYK 4 0 R]\n"
        "/S1 [/Separation /Orange /DeviceCMYK 5 0 R] >> >> endobj\n"
        "4 0 obj << /FunctionType 2 /Domain [0 1] /N 1 /C0 [0 0 0 0] /C1 [0.1 0 0 0] >> endobj\n"
        "5 0 obj << /FunctionType 2 /Domain [0 1] /N 1 /C0 [0 0 0 0] /C1 [0 0.5 1 0] >> endobj\n"
        "{}trailer << /Root 1 0 R >>\n",
        kids, pages.size(), objects);
}

/// Cyan, full, on the lower left quarter and magenta, half, on the upper right one of an inch.
const Page kQuarters = {"0 0 72 72", "1 0 0 0 k 0 0 36 36 re f 0 0.5 0 0 k 36 36 36 36 re f"};
/// The spot inks side by side, black below.
const Page kSpots = {"0 0 72 72",
                     "/S0 cs 1 scn 0 36 36 36 re f /S1 cs 1 scn 36 36 36 36 re f "
                     "0 0 0 1 k 0 0 72 36 re f"};

/// One separation of a container or one channel file.
struct Raster {
    std::string Name;
    std::vector<std::string> Lines;
};

std::vector<Raster> ReadTiff(const fs::path& path) {
    std::vector<Raster> rasters;
    const TiffFile tiff = OpenTiff(path, "r");
    for (bool more = tiff != nullptr; more; more = TIFFReadDirectory(tiff.get()) == 1) {
        char* name = nullptr;
        uint32_t rows = 0;
        TIFFGetField(tiff.get(), TIFFTAG_PAGENAME, &name);
        TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &rows);
        const auto rowBytes = static_cast<std::size_t>(TIFFScanlineSize(tiff.get()));
        rasters.push_back({name == nullptr ? "" : name, {rows, std::string(rowBytes, '\0')}});
        for (uint32_t row = 0; row < rows; ++row)
            EXPECT_EQ(TIFFReadScanline(tiff.get(), rasters.back().Lines[row].data(), row), 1);
    }
    return rasters;
}

/// The rows of a channel of 8 bits a pixel from top to bottom: a TIFF, or bottom line first without
/// any header. Every line ends in a whole 32-pixel word.
std::vector<std::string> ReadChannel(const fs::path& path, std::size_t width) {
    std::vector<std::string> lines;
    if (const std::vector<Raster> tiff = ReadTiff(path); !tiff.empty()) lines = tiff[0].Lines;
    const std::size_t lineBytes = (width + 31) / 32 * 32;
    const std::string raw = lines.empty() ? ReadText(path) : "";
    for (std::size_t end = raw.size(); end >= lineBytes; end -= lineBytes)
        lines.push_back(raw.substr(end - lineBytes, lineBytes));
    for (std::string& line : lines)
        line.resize(width);
    return lines;
}

/// A blank separation of 8 bits a pixel, of which only so many rows are there.
void WriteSeparation(const fs::path& path, const SeparationHeader& header, int64_t rows) {
    ContainerWriter writer(path, 0);
    std::vector<uint8_t> row(static_cast<std::size_t>(header.WidthPixels));
    writer.BeginSeparation(header);
    for (int64_t y = 0; y < rows; ++y)
        writer.WriteRow(row);
    writer.EndSeparation();
    writer.Close();
}

using Arguments = std::vector<std::string>;

struct Outcome {
    int Status = -1;
    std::string Output;  ///< standard output and standard error
};

class DriverHost : public testing::Test {
  protected:
    fs::path Path(const std::string& name) const { return folder_.Path() / name; }
    Listing Files() const { return ListFiles(folder_.Path()); }
    void Write(const std::string& name, const std::string& bytes) const {
        std::ofstream(Path(name), std::ios::binary) << bytes;
    }

    /// Runs a program in the test's folder; one that does not end within a minute is killed.
    Outcome RunProgram(const Arguments& arguments) const {
        const fs::path log = tools_.Path() / "log";
        ChildProcess process;
        if (!process.Launch({arguments,
                             folder_.Path().string(),
                             log.string(),
                             {{"QL_BASE_FOLDER", ""},
                              {"QL_MESSAGE_FILE", ""},
                              {"PATH", tools_.Path().string() + ":/usr/local/bin:/usr/bin:/bin"}}}))
            return {};
        for (int i = 0; i < 6000 && !process.HasEnded(); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        process.Kill();
        return {process.Result(), ReadText(log)};
    }

    Outcome Host(Arguments arguments) const {
        arguments.insert(arguments.begin(), DRIVERHOST);
        return RunProgram(arguments);
    }

    /// In a shell, where $host is the program.
    Outcome Shell(const std::string& script) const {
        return RunProgram({"/bin/sh", "-c", "host='" DRIVERHOST "'; " + script});
    }

    Outcome MakeJob(const std::string& pdf, Arguments more = {}) const {
        more.insert(more.begin(), {"make-job", pdf, "-o", "job", "--model", "Fenland R4"});
        return Host(more);
    }

    /// A job of a small page in the mode of 8 bits a pixel.
    void MakeSmallJob() const {
        Write("a.pdf", Pdf({kQuarters}));
        ASSERT_EQ(MakeJob("a.pdf", {"--color-mode", "2"}).Status, 0);
    }

    /// Puts a program named gs before the real one: it reports one page of an inch, then does
    /// what `script` says.
    void ReplaceRasterizer(const std::string& script) {
        const fs::path gs = tools_.Path() / "gs";
        std::ofstream(gs) << "#!/bin/sh\ncase \"$*\" in *-dPDFINFO*)\n"
                             "  printf 'File has 1 page.\\nPage 1 MediaBox: [0 0 72 72]\\n'\n"
                             "  exit 0;;\nesac\n"
                          << script << '\n';
        fs::permissions(gs, fs::perms::owner_all);
    }

    /// A failure that says why in one line and leaves the folder as it was.
    void ExpectRefused(const Outcome& made, const std::string& message,
                       const Listing& before) const {
        EXPECT_EQ(made.Status, 1) << made.Output;
        EXPECT_TRUE(Contains(made.Output, message)) << message << ": " << made.Output;
        EXPECT_EQ(std::count(made.Output.begin(), made.Output.end(), '\n'), 1) << made.Output;
        EXPECT_TRUE(Files() == before) << message;
    }

    WorkFolder folder_{fs::temp_directory_path() / "driverhost-test"};
    WorkFolder tools_{fs::temp_directory_path() / "driverhost-tools"};
};

/// The amount of an ink at a pixel.
struct Sample {
    std::size_t Ink;
    std::size_t X;
    std::size_t Y;
    int Amount;
};

struct WholeJob {
    std::string Document;
    std::vector<Page> Pages;
    Arguments MakeOptions;
    std::string Warning;
    std::string Inks;
    std::vector<Sample> Samples;
    Arguments RunOptions;
    std::vector<std::string> Channels;  ///< files of the first inks of the first page
};

TEST_F(DriverHost, PrintsWhatTheDocumentShows) {
    const std::string folder = "100%d *$(x)/";
    fs::create_directory(Path(folder));
    const WholeJob cases[] = {
        {"My page (final).pdf",
         {kQuarters},
         {"--model", "Fenland R4", "--color-mode", "CMYK, contone", "--media", "vinyl"},
         "",
         "Cyan Magenta Yellow Black ",
         {{0, 10, 350, 255}, {0, 10, 10, 0}, {0, 350, 350, 0}, {1, 350, 10, 128}, {3, 10, 350, 0}},
         {},
         {"Mypage/Mypage_C.tif", "Mypage/Mypage_M.tif", "Mypage/Mypage_Y.tif"}},
        // White is kept apart, orange is mixed, varnish stays blank; the bottom line comes first.
        {"spots.pdf",
         {kSpots, kQuarters},
         {"--model", "Fenland F8", "--media", "Glass", "--print-mode", "Standard", "--color-mode",
          "CMYK, White, Varnish, contone"},
         "no channel for the spot ink \"Orange\"",
         "Cyan Magenta Yellow Black White Varnish Cyan Magenta Yellow Black White Varnish ",
         {{4, 10, 10, 255}, {4, 290, 10, 0}, {0, 10, 10, 0}, {2, 290, 10, 255}, {5, 10, 10, 0}},
         {"--name", "v1.2"},
         {"v1.2-tile1/v1.2_1C.raw", "v1.2-tile1/v1.2_2M.raw", "v1.2-tile1/v1.2_3Y.raw",
          "v1.2-tile1/v1.2_4K.raw", "v1.2-tile1/v1.2_W.raw"}},
        {"-a;'b%s.pdf",
         {{"0 0 72 72", "0.25 g 0 0 72 72 re f"}},
         {"--model", "Fenland R4", "--color-mode", "4"},
         "",
         "Black ",
         {{0, 100, 100, 191}},
         {},
         {}},
    };
    for (const WholeJob& job : cases) {
        SCOPED_TRACE(job.Document);
        Write(folder + job.Document, Pdf(job.Pages));
        Arguments arguments = {"make-job", folder + job.Document, "-o", folder + "job"};
        arguments.insert(arguments.end(), job.MakeOptions.begin(), job.MakeOptions.end());
        const Outcome made = Host(arguments);
        ASSERT_EQ(made.Status, 0) << made.Output;
        EXPECT_TRUE(Contains(made.Output, job.Warning)) << made.Output;
        EXPECT_NE(Contains(made.Output, "WHITE"), Contains(job.Inks, "White")) << made.Output;
        EXPECT_EQ(fs::file_size(Path(folder + "job")), 3940U);
        const std::vector<Raster> rasters = ReadTiff(Path(folder + "job.pages.tif"));
        std::string inks;
        for (const Raster& raster : rasters)
            inks += raster.Name + ' ';
        ASSERT_EQ(inks, job.Inks);
        for (const auto& [ink, x, y, amount] : job.Samples)
            EXPECT_NEAR(static_cast<uint8_t>(rasters[ink].Lines.at(y).at(x)), amount, 1) << ink;

        arguments = {"run", folder + "job", "--out", "deep/out%n"};
        arguments.insert(arguments.end(), job.RunOptions.begin(), job.RunOptions.end());
        const Outcome run = Host(arguments);
        ASSERT_EQ(run.Status, 0) << run.Output;
        for (std::size_t i = 0; i < job.Channels.size(); ++i) {
            const std::vector<std::string>& lines = rasters[i].Lines;
            const fs::path channel = Path("deep/out%n/" + job.Channels[i]);
            EXPECT_TRUE(ReadChannel(channel, lines[0].size()) == lines) << channel;
        }
    }
    EXPECT_TRUE(fs::exists(Path("deep/out%n/-a;'b%s/-a;'b%s")));
}

TEST_F(DriverHost, ScreensOneBitModesAndMakesTheSameBytesTwice) {
    Write("a.pdf", Pdf({kQuarters}));
    ASSERT_EQ(MakeJob("a.pdf").Status, 0);
    const std::string first = ReadText(Path("job.pages.tif"));
    int dots = 0;  // half of the upper right quarter, which has half the magenta
    const std::vector<Raster> rasters = ReadTiff(Path("job.pages.tif"));
    for (const std::string& line : rasters.at(1).Lines)
        for (const char byte : line)
            dots += std::popcount(static_cast<unsigned char>(byte));
    EXPECT_NEAR(dots, 90 * 180, 250);
    // In bands of one screen's height: the seams do not show.
    ASSERT_EQ(MakeJob("a.pdf", {"--band-pixels", "1"}).Status, 0);
    EXPECT_TRUE(ReadText(Path("job.pages.tif")) == first);
}

TEST_F(DriverHost, ChannelsCarryTheChosenResolution) {
    Write("a.pdf", Pdf({kQuarters}));
    ASSERT_EQ(MakeJob("a.pdf", {"--resolution", "720x360"}).Status, 0);
    ASSERT_EQ(Host({"run", "job", "--out", "printed"}).Status, 0);
    const TiffFile channel = OpenTiff(Path("printed/a/a_C.tif"), "r");
    ASSERT_NE(channel, nullptr);
    float x = 0;
    float y = 0;
    uint32_t rows = 0;
    TIFFGetField(channel.get(), TIFFTAG_XRESOLUTION, &x);
    TIFFGetField(channel.get(), TIFFTAG_YRESOLUTION, &y);
    TIFFGetField(channel.get(), TIFFTAG_IMAGELENGTH, &rows);
    EXPECT_EQ(std::tuple(x, y, rows), std::tuple(720.0F, 360.0F, 360U));
}

TEST_F(DriverHost, RefusesDocumentsThatCannotBePrinted) {
    Write("a.pdf", Pdf({kQuarters}));
    ASSERT_EQ(Shell("gs -q -dBATCH -dNOPAUSE -sDEVICE=pdfwrite -sOwnerPassword=a -sUserPassword=b "
                    "-dEncryptionR=3 -dKeyLength=128 -sOutputFile=locked.pdf a.pdf")
                  .Status,
              0);
    fs::create_directory(Path("folder.pdf"));
    struct Case {
        const char* Name;
        std::optional<std::string> Bytes;
        const char* Message;
    };
    const Case cases[] = {
        {"missing.pdf", {}, "does not exist"},
        {"folder.pdf", {}, "is no file"},
        {"locked.pdf", {}, "password"},
        {"empty.pdf", "", "is empty"},
        {"program.pdf", "%!PS\n(x) print\n", "is no PDF"},
        {"garbage.pdf", "%PDF-1.4\nnothing of a PDF follows", "driverhost: "},
        {"nopages.pdf", Pdf({}), "no pages"},
        {"nobox.pdf", Pdf({{"", ""}}), "driverhost: "},
        {"huge.pdf", Pdf({{"0 0 900000000 900000000", ""}}), "page 1 measures"},
        {"tiny.pdf", Pdf({{"0 0 0.01 72", ""}}), "page 1 measures"},
    };
    for (const Case& row : cases) {
        if (row.Bytes) Write(row.Name, *row.Bytes);
        const Listing before = Files();
        ExpectRefused(MakeJob(row.Name), row.Message, before);
    }
}

TEST_F(DriverHost, DoesNotBelieveTheRasterizer) {
    Write("a.pdf", "%PDF-1.4\n");
    Write("garbage.tif", "no TIFF at all");
    // A plate of the right size whose rows end early, as a full disk leaves it.
    WriteSeparation(Path("short.tif"), {360, 360, 8, 360, 360, 0, 1, "Cyan", "Cyan"}, 320);
    const std::string copy = "cp '" + folder_.Path().string() + "'/";
    const std::pair<std::string, const char*> cases[] = {
        {"exit 0", "made no plate of Cyan"},
        {copy + "garbage.tif 'plate(Cyan).tif'", "unreadable"},
        {copy + "short.tif 'plate(Cyan).tif'", "ends early, at row 320 of 360"},
        {"echo 'Error: /ioerror in --showpage--'; exit 1", "ioerror"},
        {"kill -9 $$", "exit status 137"},
        {"sleep 60", "no progress for 1 s"},
    };
    for (const auto& [script, message] : cases) {
        ReplaceRasterizer(script);
        const Listing before = Files();
        ExpectRefused(MakeJob("a.pdf", {"--timeout", "1"}), message, before);
    }
}

TEST_F(DriverHost, AnswersAWrongCommandLineWithItsOwnStatus) {
    MakeSmallJob();
    const std::pair<Arguments, int> cases[] = {
        {{}, 2},
        {{"--help"}, 0},
        {{"capabilities", "Nobody's printer"}, 1},
        {{"capabilities", std::string(64, 'm')}, 2},
        {{"--base", "nowhere", "capabilities", "Fenland R4"}, 2},
        {{"make-job", "a.pdf", "--model", "Fenland R4", "-o", "x", "--media", "Silk"}, 2},
        {{"make-job", "a.pdf", "--model", "Fenland R4", "-o", "x", "--resolution", "3"}, 2},
        {{"make-job", "a.pdf", "--model", "Fenland R4", "-o", "x", "--timeout", "0"}, 2},
        {{"make-job", "a.pdf", "--model", "Fenland R4", "-o", "nowhere/x"}, 1},
        {{"make-job", "a.pdf", "--model", "Fenland R4", "-o", "."}, 2},
        {{"run", "nothing", "--out", "o"}, 1},
        {{"run", "a.pdf", "--out", "o"}, 1},
        {{"run", "job", "--out", "a.pdf"}, 1},
        {{"run", "job", "--out", "o", "--name", "../x"}, 2},
        {{"run", "job", "--out", "o", "--name", "c:x"}, 2},
    };
    const Listing before = Files();
    for (const auto& [arguments, status] : cases) {
        const Outcome outcome = Host(arguments);
        EXPECT_EQ(outcome.Status, status) << testing::PrintToString(arguments) << outcome.Output;
    }
    EXPECT_TRUE(Files() == before);
}

TEST_F(DriverHost, LeavesNothingBehindOnAFullDisk) {
    MakeSmallJob();
    const Listing before = Files();
    // No file may pass 4 KiB; a block counts 512 bytes.
    const Outcome made =
        Shell("ulimit -f 8; \"$host\" make-job a.pdf --model 'Fenland R4' --color-mode 2 -o job");
    EXPECT_EQ(made.Status, 1) << made.Output;
    EXPECT_TRUE(Files() == before);  // the earlier job stands

    const Outcome run = Shell("ulimit -f 8; \"$host\" run job --out printed");
    EXPECT_EQ(run.Status, 1) << run.Output;
    EXPECT_TRUE(Contains(run.Output, "a_C.tif is incomplete")) << run.Output;
    EXPECT_TRUE(Contains(run.Output, "3 channels are not written")) << run.Output;
}

TEST_F(DriverHost, TellsAnIncompleteChannelByItsOwnStatus) {
    // A bottom-line-first page goes on when a channel file takes no lines: only the file tells.
    Write("a.pdf", Pdf({kQuarters}));
    ASSERT_EQ(Host({"make-job", "a.pdf", "-o", "job", "--model", "Fenland F8"}).Status, 0);
    fs::create_directory(Path("printed"));
    fs::create_symlink("/dev/full", Path("printed/a_1C.raw"));
    const Outcome run = Host({"run", "job", "--out", "printed"});
    EXPECT_EQ(run.Status, 3) << run.Output;
    EXPECT_TRUE(Contains(run.Output, "1 channels are not written")) << run.Output;
}

TEST_F(DriverHost, StopsOnAnInterrupt) {
    Write("a.pdf", "%PDF-1.4\n");
    ReplaceRasterizer("kill -INT $PPID; sleep 60");
    const Listing before = Files();
    EXPECT_EQ(MakeJob("a.pdf").Status, 130);
    EXPECT_TRUE(Files() == before);
}

TEST_F(DriverHost, AbortsARunningJobOnAnInterrupt) {
    MakeSmallJob();
    WriteSeparation(Path("job.pages.tif"), {20000, 60000, 8, 360, 360, 0, 1, "Cyan", "Cyan"},
                    60000);
    const Outcome run = Shell(
        "\"$host\" run job --out printed & until [ -s printed/a/a_C.tif ]; do sleep 0.01; done; "
        "kill -TERM $!; wait $!");
    EXPECT_EQ(run.Status, 130) << run.Output;
    EXPECT_TRUE(Contains(run.Output, "interrupted; the job is aborted")) << run.Output;
    EXPECT_TRUE(Contains(run.Output, "a_C.tif is incomplete")) << run.Output;
}

TEST_F(DriverHost, FailsOnDamagedJobs) {
    MakeSmallJob();
    const std::string job = ReadText(Path("job"));
    const std::string pages = ReadText(Path("job.pages.tif"));
    const std::string settings = ReadText(Path("job.settings.json"));
    struct Case {
        const char* File;
        std::string Bytes;
        const char* Message;
    };
    const Case cases[] = {
        {"job", job.substr(0, 3939), "is no job file"},
        {"job", std::string(3940, '\0'), "a model's name"},
        {"job.pages.tif", "", "no job container"},
        {"job.pages.tif", pages.substr(0, pages.size() / 2), "page"},
        {"job.settings.json", "{ \"media\": 0, ", "settings.json is damaged"},
        {"job.settings.json", R"({"media": 7, "printMode": 0, "resolution": 0})", "no medium"},
    };
    for (const Case& row : cases) {
        Write("job", job);
        Write("job.pages.tif", pages);
        Write("job.settings.json", settings);
        Write(row.File, row.Bytes);
        const Outcome run = Host({"run", "job", "--out", "printed"});
        EXPECT_TRUE(run.Status == 1 || run.Status == 2) << row.Message << run.Output;
        EXPECT_TRUE(Contains(run.Output, row.Message)) << row.Message << run.Output;
    }
}

TEST_F(DriverHost, ShowsWhatAModelAllows) {
    const auto model = nlohmann::json::parse(Host({"capabilities", "Fenland F8", "--json"}).Output);
    const nlohmann::json varnish = model.at("/colorModes/4/colorants/5"_json_pointer);
    EXPECT_EQ(varnish.at("name"), "Varnish");
    EXPECT_EQ(varnish.at("spot"), true);
    const nlohmann::json glass = model.at("/combinations/3/printModes"_json_pointer);
    EXPECT_EQ(glass.at(1).at("default"), true);
    EXPECT_EQ(glass[0]["resolutions"][0]["colorModes"], (std::vector<int>{0, 4, 5}));
    EXPECT_EQ(glass[0]["resolutions"][0]["defaultColorMode"], 4);
    EXPECT_TRUE(glass[0]["resolutions"][1]["colorModes"].empty());
    EXPECT_EQ(model["defaults"]["printMode"], 1);

    const std::string text = Host({"capabilities", "Fenland R4"}).Output;
    EXPECT_TRUE(Contains(text, "Backlit film")) << text;
    EXPECT_TRUE(Contains(text, "    3  1440 x 720 dpi     refused")) << text;
}

TEST_F(DriverHost, ShipsADescriptionThatIsItsSource) {
    const std::string source = ReadText(MODELS_FOLDER "/sources/FenlandF8.xml");
    const Outcome decoded = Shell("gzip -dc < '" MODELS_FOLDER "/OutputDrivers/FenlandF8.xml'");
    EXPECT_TRUE(decoded.Status == 0 && decoded.Output == source);
}

}  // namespace
