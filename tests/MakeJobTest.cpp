// What jobs are made from and how their pages are cut.

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <tuple>

#include "DriverHostFixture.h"
#include "Rasters.h"

namespace {

/// An inch by half an inch: black in the lower left quarter, half grey in the upper right one.
constexpr char kProgram[] =
    "%!PS\n<< /PageSize [72 36] >> setpagedevice\n"
    "0 setgray 0 0 36 18 rectfill 0.5 setgray 36 18 36 18 rectfill showpage\n";

class MakeJobInputs : public DriverHost {
  protected:
    void SetUp() override { Write("program.ps", kProgram); }

    /// A job in shades of grey, 8 bits a pixel.
    Outcome MakeGrayJob(const std::string& input, Arguments more = {}) const {
        more.insert(more.end(), {"--color-mode", "4"});
        return MakeJob(input, more);
    }

    /// Prints the program to a device of Ghostscript, at 100 dpi.
    void Draw(const std::string& device, const std::string& file) const {
        ASSERT_EQ(Shell("gs -q -dBATCH -dNOPAUSE -r100 -sDEVICE=" + device +
                        " -sOutputFile=" + file + " program.ps")
                      .Status,
                  0);
    }

    /// The job has one page of this size with these amounts near its corners: upper left, upper
    /// right, lower left, lower right.
    void ExpectPicture(std::size_t width, std::size_t rows, std::array<int, 4> corners) const {
        const std::vector<Raster> rasters = ReadTiff(Path("job.pages.tif"));
        ASSERT_EQ(rasters.size(), 1U);
        const std::vector<std::string>& lines = rasters[0].Lines;
        ASSERT_EQ(lines.size(), rows);
        ASSERT_EQ(lines[0].size(), width);
        for (std::size_t i = 0; i < corners.size(); ++i) {
            const char amount = lines[i < 2 ? rows / 8 : rows - rows / 8].at(
                i % 2 == 0 ? width / 8 : width - width / 8);
            EXPECT_NEAR(static_cast<uint8_t>(amount), corners[i], 5) << "corner " << i;
        }
    }
};

constexpr std::array<int, 4> kUpright = {0, 128, 255, 0};

TEST_F(MakeJobInputs, PrintsEveryKindOfPictureAtItsSize) {
    struct Case {
        const char* Device;
        const char* Change;  ///< what else a program does to the file a.pic
        Arguments Options;
        std::size_t Width;  ///< at 360 dpi
    };
    const char* const kCopy = "tiffcp $how a.pic b.pic && mv b.pic a.pic";
    const Case cases[] = {
        {"png16m", "", {}, 360},
        {"png48", "", {}, 360},
        {"pngalpha", "", {}, 360},
        {"pnggray", "", {"--picture-dpi", "50"}, 720},
        {"jpeg", "", {}, 360},
        {"jpeggray", "", {}, 360},
        {"jpegcmyk", "", {}, 120},  // says no resolution
        {"tiff24nc", "", {}, 360},
        {"tiff48nc", "how='-c zip'", {}, 360},
        {"tiff32nc", "how='-p separate -c lzw'", {}, 360},
        {"tiff24nc", "how='-t -w 32 -l 16'", {}, 360},
        {"tiff24nc", "how='-p separate -t -w 32 -l 16 -c packbits'", {}, 360},
        {"tiff24nc", "how='-r 16 -c jpeg:100'", {}, 360},
        {"tiffgray", "tiffset -s 296 1 a.pic", {}, 120},
        {"tiffgray", "tiffset -s 296 3 a.pic", {}, 142},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(fmt::format("{} {}", row.Device, row.Change));
        Draw(row.Device, "a.pic");
        const std::string change = row.Change;
        const std::string script = change.starts_with("how") ? change + "; " + kCopy : change;
        ASSERT_EQ(Shell(script).Status, 0);
        const Outcome made = MakeGrayJob("a.pic", row.Options);
        ASSERT_EQ(made.Status, 0) << made.Output;
        ExpectPicture(row.Width, row.Width / 2, kUpright);
    }
}

/// An EXIF block that says only the orientation, as the first marker of a JPEG.
std::string WithOrientation(const std::string& jpeg, char orientation) {
    const std::string block =
        std::string("Exif\0\0II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0", 24) + orientation +
        std::string(7, '\0');
    return jpeg.substr(0, 2) + "\xFF\xE1" + '\0' + static_cast<char>(block.size() + 2) + block +
           jpeg.substr(2);
}

TEST_F(MakeJobInputs, TurnsPicturesUpright) {
    const std::array<int, 4> kCorners[] = {
        kUpright, {128, 0, 0, 255}, {0, 255, 128, 0}, {255, 0, 0, 128}};
    // Stored rows run along the page's columns from orientation 5 on.
    const std::array<int, 4> kTurned[] = {kCorners[2], kCorners[3], kUpright, kCorners[1]};
    Draw("tiffgray", "a.tif");
    Draw("jpeggray", "plain.jpg");
    const std::string jpeg = ReadText(Path("plain.jpg"));
    for (int orientation = 1; orientation <= 8; ++orientation) {
        ASSERT_EQ(Shell(fmt::format("tiffset -s 274 {} a.tif", orientation)).Status, 0);
        Write("a.jpg", WithOrientation(jpeg, static_cast<char>(orientation)));
        for (const char* const name : {"a.tif", "a.jpg"}) {
            SCOPED_TRACE(fmt::format("{} {}", name, orientation));
            const Outcome made = MakeGrayJob(name);
            ASSERT_EQ(made.Status, 0) << made.Output;
            const auto index = static_cast<std::size_t>(orientation);
            if (orientation < 5)
                ExpectPicture(360, 180, kCorners[index - 1]);
            else
                ExpectPicture(180, 360, kTurned[index - 5]);
        }
    }
}

TEST_F(MakeJobInputs, LaysTransparencyOnWhiteAndReadsAllPicturesOfATiff) {
    // Nothing is drawn on the right: it stays transparent.
    Write("program.ps",
          "%!PS\n<< /PageSize [72 36] >> setpagedevice 0 0 36 36 rectfill showpage\n");
    Draw("pngalpha", "a.png");
    ASSERT_EQ(MakeGrayJob("a.png").Status, 0);
    ExpectPicture(360, 180, {255, 0, 255, 0});

    Draw("tiffg4", "a.tif");
    ASSERT_EQ(Shell("tiffcp a.tif a.tif b.tif && tiffset -d 1 -s 254 1 b.tif && tiffcp b.tif a.tif "
                    "c.tif")
                  .Status,
              0);
    const Outcome made = MakeGrayJob("c.tif");
    // The second of three is a small view of another.
    EXPECT_TRUE(Contains(made.Output, "page 2 of 2")) << made.Output;
}

TEST_F(MakeJobInputs, PassesColourProfilesOn) {
    Write("program.ps",
          "%!PS\n<< /PageSize [72 36] >> setpagedevice 0.2 0.6 0.3 setrgbcolor 0 0 72 36 rectfill "
          "showpage\n");
    Draw("tiff24nc", "a.tif");
    const auto inks = [this] {
        EXPECT_EQ(MakeJob("a.tif", {"--color-mode", "2"}).Status, 0);
        std::string amounts;
        for (const Raster& raster : ReadTiff(Path("job.pages.tif")))
            amounts += raster.Lines.at(9).at(9);
        return amounts;
    };
    const std::string profiles = "/usr/share/color/icc/ghostscript/";
    const auto tag = [this, &profiles](const char* profile) {
        const std::string bytes = ReadText(profiles + profile);
        const TiffFile tiff = OpenTiff(Path("a.tif"), "r+");
        TIFFSetField(tiff.get(), TIFFTAG_ICCPROFILE, static_cast<uint32_t>(bytes.size()),
                     bytes.data());
        EXPECT_EQ(TIFFRewriteDirectory(tiff.get()), 1);
    };
    const std::string plain = inks();
    tag("a98.icc");
    EXPECT_NE(inks(), plain);
    tag("default_cmyk.icc");  // of other samples: a mistake
    EXPECT_EQ(inks(), plain);
}

TEST_F(MakeJobInputs, SpotInksWithoutAChannelHideOnlyWhatTheyKnockOut) {
    // On a tint white and half orange: at the left they knock it out, at the right they overprint.
    Write("a.pdf", Pdf({{"0 0 72 72",
                         "0.6 0.2 0 0 k 0 0 72 72 re f "
                         "/S0 cs 1 scn 0 0 36 24 re f /S1 cs 0.5 scn 0 24 36 24 re f /Over gs "
                         "/S0 cs 1 scn 36 0 36 24 re f /S1 cs 0.5 scn 36 24 36 24 re f"}}));
    const struct {
        const char* Model;
        Arguments Choice;
        const char* Ink;
        std::array<int, 5> Amounts;  ///< tint, white, orange, then the two over the tint
    } kRows[] = {
        {"Fenland R4", {"--color-mode", "2"}, "Cyan", {153, 26, 0, 179, 153}},
        {"Fenland R4", {"--color-mode", "2"}, "Magenta", {51, 0, 64, 51, 115}},
        {"Fenland R4", {"--color-mode", "2"}, "Yellow", {0, 0, 128, 0, 128}},
        {"Fenland R4", {"--color-mode", "4"}, "Black", {76, 8, 52, 84, 128}},
        // The sum is what is split into a dark and a light ink.
        {"Fenland F8", {"--color-mode", "1"}, "Light Magenta", {102, 0, 128, 102, 230}},
        {"Fenland F8", {"--color-mode", "1"}, "Cyan", {52, 0, 0, 102, 52}},
        {"Fenland F8",
         {"--color-mode", "5", "--media", "Glass", "--print-mode", "Fine"},
         "Cyan",
         {153, 0, 0, 153, 153}},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(fmt::format("{} {} {}", row.Model, row.Choice[1], row.Ink));
        Arguments arguments = {"make-job", "a.pdf", "-o", "job", "--model", row.Model};
        arguments.insert(arguments.end(), row.Choice.begin(), row.Choice.end());
        const Outcome made = Host(arguments);
        ASSERT_EQ(made.Status, 0) << made.Output;
        const std::vector<Raster> rasters = ReadTiff(Path("job.pages.tif"));
        const auto found = std::find_if(rasters.begin(), rasters.end(), [&](const Raster& raster) {
            return raster.Name == row.Ink;
        });
        ASSERT_NE(found, rasters.end());
        const auto at = [&found](std::size_t column, std::size_t sixth) {
            const std::string& line = found->Lines.at(found->Lines.size() * sixth / 6);
            return static_cast<uint8_t>(line.at(line.size() * column / 4));
        };
        const std::array<int, 5> amounts = {at(1, 1), at(1, 5), at(1, 3), at(3, 5), at(3, 3)};
        for (std::size_t i = 0; i < amounts.size(); ++i)
            EXPECT_NEAR(amounts.at(i), row.Amounts.at(i), 3) << i;
    }
}

TEST_F(MakeJobInputs, RunsPostScriptAndCutsEps) {
    const std::string eps =
        "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 100 200 172 236\n"
        "0 setgray 100 200 36 18 rectfill 0.5 setgray 136 218 36 18 rectfill 300 300 9 9 "
        "rectfill\n";
    Write("a.eps", eps);
    ASSERT_EQ(MakeGrayJob("a.eps").Status, 0);
    ExpectPicture(360, 180, kUpright);
    // With a preview before its program: signature, then the program's place and length.
    std::string head("\xC5\xD0\xD3\xC6\x20\0\0\0", 8);
    head += static_cast<char>(eps.size() % 256);
    head += static_cast<char>(eps.size() / 256);
    head.resize(28, '\0');
    Write("b", head + std::string("\xFF\xFF\0\0", 4) + eps);
    ASSERT_EQ(MakeGrayJob("b").Status, 0);
    ExpectPicture(360, 180, kUpright);

    Write("two.ps",
          "%!PS\n<< /PageSize [72 36] >> setpagedevice showpage << /PageSize [36 72] >> "
          "setpagedevice\n[/Separation (white) /DeviceCMYK {0 0 0}] setcolorspace 1 setcolor "
          "0 0 36 72 rectfill showpage\n");
    const Outcome made =
        Host({"make-job", "two.ps", "-o", "job", "--model", "Fenland F8", "--media", "Glass",
              "--print-mode", "Fine", "--resolution", "1200x600", "--color-mode", "5"});
    ASSERT_EQ(made.Status, 0) << made.Output;
    const std::vector<Raster> rasters = ReadTiff(Path("job.pages.tif"));
    ASSERT_EQ(rasters.size(), 12U);
    EXPECT_EQ(rasters[10].Name, "White");
    EXPECT_EQ(rasters[10].Lines.size(), 600U);
    EXPECT_EQ(rasters[10].Lines[300], std::string(600, '\xFF'));
}

TEST_F(MakeJobInputs, RefusesDamagedArtwork) {
    Draw("png16m", "a.png");
    Draw("jpeg", "a.jpg");
    Draw("tiff24nc", "a.tif");
    Draw("tiffgray", "wide.tif");
    const std::string png = ReadText(Path("a.png"));
    std::string wide = png;
    wide.replace(16, 4, "\x7F\xFF\xFF\xFF");
    const auto half = [this](const std::string& name) {
        const std::string bytes = ReadText(Path(name));
        return bytes.substr(0, bytes.size() / 2);
    };
    ASSERT_EQ(Shell("tiffset -s 256 2000000 wide.tif; tiffcp a.tif a.tif two.tif").Status, 0);
    std::string jpeg = ReadText(Path("a.jpg"));
    jpeg.replace(jpeg.size() - 300, 100, std::string(100, '\xFF'));
    const std::tuple<const char*, std::string, const char*> cases[] = {
        {"half.png", half("a.png"), "damaged PNG"},
        {"head.png", png.substr(0, 20), "damaged PNG"},
        {"wide.png", wide, "is a damaged PNG"},
        {"half.jpg", half("a.jpg"), "damaged JPEG"},
        {"holes.jpg", jpeg, "damaged JPEG"},
        {"head.jpg", "\xFF\xD8\xFF", "damaged JPEG"},
        {"half.tif", half("two.tif"), "damaged"},
        {"head.tif", std::string("II*\0\x08\0\0\0", 8), "damaged TIFF"},
        {"wide2.tif", ReadText(Path("wide.tif")), "has 2000000 x 50 pixels"},
        {"error.ps", "%!PS\nnonsense showpage\n", "undefined in nonsense"},
        {"file.ps", "%!PS\n(/etc/passwd) (r) file showpage\n", "invalidfileaccess"},
        {"forever.ps", "%!PS\n{} loop\n", "no progress"},
        {"flood.ps", "%!PS\n{showpage} loop\n", "limitcheck"},
        {"text.pdf", "plain text", "is no PDF, PostScript, TIFF, PNG or JPEG"},
    };
    for (const auto& [name, bytes, message] : cases) {
        Write(name, bytes);
        const Listing before = Files();
        const bool hangs = name == std::string("forever.ps");
        ExpectRefused(MakeGrayJob(name, hangs ? Arguments{"--timeout", "2"} : Arguments()), message,
                      before);
    }
}

TEST_F(MakeJobInputs, TilesMeetWithoutASeam) {
    // A slope through everything, in a size that no grid divides.
    Write("slope.ps",
          "%!PS\n<< /PageSize [40.1 30.1] >> setpagedevice 0 0.1 41 { dup 41 div setgray 0 1 31 "
          "rectfill } for 30 rotate 0 1 0 0 setcmykcolor 5 0 20 3 rectfill showpage\n");
    const auto make = [this](const std::string& mode, Arguments more) {
        more.insert(more.begin(),
                    {"make-job", "slope.ps", "-o", "job", "--model", "Fenland T4", "--media", "0",
                     "--print-mode", "1", "--resolution", "300x300", "--color-mode", mode});
        const Outcome made = Host(more);
        EXPECT_EQ(made.Status, 0) << made.Output;
        return ReadTiff(Path("job.pages.tif"));
    };
    constexpr std::size_t kWidth = 167;  // tiles of 56 and 55
    constexpr std::size_t kRows = 125;   // tiles of 63 and 62
    for (const int bits : {1, 2, 4, 8}) {
        const std::string mode = std::to_string(std::countr_zero(static_cast<unsigned>(bits)));
        const std::vector<Raster> whole = make(mode, {});
        const std::vector<Raster> tiles = make(mode, {"--tiles", "3x2", "--band-pixels", "1"});
        ASSERT_EQ(tiles.size(), 24U);
        for (std::size_t ink = 0; ink < 4; ++ink)
            for (std::size_t y = 0; y < kRows; ++y) {
                std::string row;
                for (std::size_t column = 0; column < 3; ++column) {
                    const Raster& tile = tiles[(y / 63 * 3 + column) * 4 + ink];
                    row += Pixels(tile.Lines.at(y % 63), column == 2 ? 55 : 56, bits);
                }
                ASSERT_EQ(row, Pixels(whole[ink].Lines.at(y), kWidth, bits)) << ink << ' ' << y;
            }
    }
    const Outcome run = Host({"run", "job", "--out", "printed"});
    ASSERT_EQ(run.Status, 0) << run.Output;
    for (int tile = 0; tile < 6; ++tile) {
        std::string ticket;
        const std::string folder = fmt::format("slope-tile{}/", tile + 1);
        for (const auto& [file, state] : Files())
            if (Contains(file, folder) && ReadText(Path(file)).starts_with("<?xml"))
                ticket = ReadText(Path(file));
        EXPECT_TRUE(Contains(ticket, fmt::format("<Page>1</Page>\r\n\t<Row>{}</Row>\r\n\t<COLUMN>{}"
                                                 "</COLUMN>",
                                                 tile / 3 + 1, tile % 3 + 1)))
            << folder << ticket;
    }
    EXPECT_EQ(Host({"run", "job", "--out", "o", "--one-folder"}).Status, 2);
    Write("job.settings.json", R"({"media": 0, "printMode": 1, "resolution": 2,
                                   "tiles": {"columns": 4, "rows": 1}})");
    EXPECT_TRUE(Contains(Host({"run", "job", "--out", "o"}).Output, "no whole number of 4 x 1"));
    for (const char* const grid : {"3", "0x2", "3x", "3x2x1", "-1x2", "99999x1"})
        EXPECT_EQ(MakeJob("slope.ps", {"--tiles", grid}).Status, 2) << grid;
    EXPECT_TRUE(Contains(MakeJob("slope.ps", {"--tiles", "150x1"}).Output, "cannot be cut"));
}

TEST_F(MakeJobInputs, ADryRunSaysWhatAJobNeedsAndMakesNothing) {
    Write("a.pdf", Pdf({{"0 0 72 144", "0 1 0 0 k 0 0 36 72 re f /S1 cs 1 scn 0 100 9 9 re f"}}));
    const Listing before = Files();
    const Outcome outcome = Host({"make-job", "a.pdf", "--model", "Fenland R4", "--color-mode", "2",
                                  "--dry-run", "--tiles", "2x2"});
    EXPECT_EQ(outcome.Status, 0) << outcome.Output;
    // 360 x 720 pixels of four inks and a byte each, packed; six plates and a composite beside.
    for (const char* const part :
         {"page 1 of 1: 360 x 720 pixels, 25.4 x 50.8 mm, 4 tiles of 180 x 360 pixels",
          "Magenta 25.3", "Yellow 0.7", "no channel for the spot ink \"Orange\"",
          "at most 1.0 MB for the job, 3.7 MB while it is made; 1.1 MB for its channel files"})
        EXPECT_TRUE(Contains(outcome.Output, part)) << part << '\n' << outcome.Output;
    EXPECT_FALSE(Contains(outcome.Output, "Cyan")) << outcome.Output;
    EXPECT_TRUE(Files() == before);
    EXPECT_EQ(Host({"make-job", "a.pdf", "--model", "Fenland R4"}).Status, 2);

    // A picture of 100 x 50 pixels counts twice: decoded for the rasteriser, and laid aside by it.
    Draw("png16m", "a.png");
    const Outcome picture =
        Host({"make-job", "a.png", "--model", "Fenland R4", "--color-mode", "2", "--dry-run"});
    EXPECT_TRUE(Contains(picture.Output, "at most 261.2 kB for the job, 813.7 kB while it is made"))
        << picture.Output;
}

TEST_F(MakeJobInputs, BeginsNothingThatTheDiskHasNoRoomFor) {
    // 70 m a side: 500 GB, and 16 times that while it is made.
    Write("huge.pdf", Pdf({{"0 0 200000 200000", "0 1 0 0 k 0 0 100000 100000 re f"}}));
    const Listing before = Files();
    const std::string refusal = "making the job takes up to ";
    ExpectRefused(MakeJob("huge.pdf"), refusal, before);
    const Outcome dry = MakeJob("huge.pdf", {"--dry-run"});
    EXPECT_EQ(dry.Status, 1);
    for (const char* const part :
         {"1000000 x 1000000 pixels", "Magenta 25.", "at most 503.9 GB for", refusal.c_str()})
        EXPECT_TRUE(Contains(dry.Output, part)) << part << '\n' << dry.Output;
    EXPECT_EQ(MakeJob("huge.pdf", {"--dry-run", "--no-space-check"}).Status, 0);
    EXPECT_TRUE(Files() == before);
    if (Shell("unshare -m true").Status != 0) return;  // who may not mount has no small disk
    fs::create_directory(Path("small"));
    const Outcome full = Shell(
        "unshare -m sh -c 'mount -t tmpfs -o size=100k none small && \"$0\" make-job "
        "program.ps --model \"Fenland R4\" -o small/job --no-space-check; ls small' "
        "\"$host\"");
    EXPECT_TRUE(Contains(full.Output, "driverhost: the disk is full: ")) << full.Output;
    EXPECT_EQ(std::count(full.Output.begin(), full.Output.end(), '\n'), 1) << full.Output;
}

TEST_F(MakeJobInputs, WarnsOfWhatIsNotDrawnAsOrdered) {
    // Without spot inks, of which there is something to be said, too.
    const auto page = [](const std::string& content) {
        std::string pdf = Pdf({{"0 0 72 72", "0 1 0 0 k 0 0 9 9 re f " + content}});
        return pdf.replace(pdf.find("/ColorSpace"), 11, "/NoInks    ");
    };
    const std::string whole = page("");
    const std::tuple<const char*, std::string, std::vector<const char*>> cases[] = {
        {"whole.pdf", whole, {}},
        {"font.pdf",
         page("BT /Sans 9 Tf (x) Tj ET"),
         {"page 1: the font Fenland-Sans is not embedded; "}},
        {"cut.pdf", whole.substr(0, whole.find("xref")), {"Ghostscript: PDF file was repaired"}},
        {"word.pdf",
         page("BX skipped EX 9 9 9 9 ref"),
         {"page 1: \"ref\" is no operator of a page; what it stands for is not drawn"}},
        {"stack.pdf", page("Q"), {"page 1: Ghostscript: encountered more Q than q"}},
        {"font.ps",
         "%!PS\n/Fenland-Sans findfont setfont 9 9 moveto (x) show showpage\n",
         {"Ghostscript: Substituting font ", "the program brings no font of its own where "}},
    };
    for (const auto& [name, bytes, messages] : cases) {
        SCOPED_TRACE(name);
        Write(name, bytes);
        const Outcome dry = MakeJob(name, {"--dry-run"});
        EXPECT_EQ(dry.Status, 0) << dry.Output;
        for (const char* const message : messages)
            EXPECT_TRUE(Contains(dry.Output, std::string("warning: ") + message)) << dry.Output;
        const Listing before = Files();
        const Outcome strict = MakeJob(name, {"--strict"});
        EXPECT_EQ(strict.Status, messages.empty() ? 0 : 1) << strict.Output;
        EXPECT_EQ(Files() == before, !messages.empty());
        for (const char* const message : messages)
            EXPECT_TRUE(Contains(strict.Output, message)) << strict.Output;
    }
}

}  // namespace
