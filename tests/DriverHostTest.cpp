// Jobs and answers of the built program.

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <bit>

#include "DriverHostFixture.h"
#include "Rasters.h"

namespace {

/// The spot inks side by side, black below.
const Page kSpots = {"0 0 72 72",
                     "/S0 cs 1 scn 0 36 36 36 re f /S1 cs 1 scn 36 36 36 36 re f "
                     "0 0 0 1 k 0 0 72 36 re f"};

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

}  // namespace
