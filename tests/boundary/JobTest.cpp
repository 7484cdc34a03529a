// Whole jobs: that exactly the bytes of the separations arrive, under every output rule.

#include <strings.h>

#include <algorithm>

#include "JobRunner.h"

namespace {

struct OutputRules {
    bool IsLineByLine;
    bool IsReversed;
    const char* Extension;
};

Model SixColourModel(const OutputRules& rules) {
    Model model;
    model.OutputRules = std::string("CreateFolder=\"No\" TypeRead=\"") +
                        (rules.IsLineByLine ? "Line_By_Line" : "PAGE") + "\" PrinterDirection=\"" +
                        (rules.IsReversed ? "yes" : "no") + "\"";
    for (const char* name : {"Cyan", "Magenta", "Yellow", "Black", "Orange", "Varnish"}) {
        model.Colours.push_back({name, std::string("filename_") + name + "." + rules.Extension});
    }
    model.ColorModes = {{{3, 0, 1, 2, 5, 4}}};
    return model;
}

/// Pages of odd widths; separations in another order than the colour mode's, in other letter
/// case, of mixed depths, missing, and without a colorant.
std::vector<Page> MixedPages() {
    return {
        RandomPage(1, 3, {{"Cyan"}, {"Magenta"}, {"Yellow"}, {"Black"}, {"Orange"}, {"Varnish"}},
                   1),
        RandomPage(
            31, 12,
            {{"VARNISH", 1}, {"black", 8}, {"Gold", 2}, {"Cyan", 2}, {"Magenta", 4}, {"Yellow", 1}},
            2),
        RandomPage(32, 1, {{"Orange", 2}, {"Cyan", 1}, {"Gold", 4}}, 3),
        RandomPage(33, 23, {{"Cyan", 1}, {"Cyan", 2}, {"Black", 1}}, 4),
        RandomPage(1001, 600, {{"Magenta", 8}, {"Yellow", 8}}, 5),
        RandomPage(65, 6, {{"Gold", 1}, {"Silver", 8}}, 6),
    };
}

/// Index of the separation that feeds the colorant: the last of its name; -1: none.
int SeparationOf(const Page& page, const std::string& colorant) {
    int found = -1;
    for (std::size_t i = 0; i < page.Separations.size(); ++i) {
        const char* const name = page.Separations[i].Name.c_str();
        if (strcasecmp(name, colorant.c_str()) == 0) found = static_cast<int>(i);
    }
    return found;
}

class JobTest : public BoundaryTest {
  protected:
    void ExpectChannel(const std::filesystem::path& path, const Page& page,
                       const std::string& expected) {
        if (path.extension() == ".raw") {
            EXPECT_TRUE(ReadText(path) == expected) << path;
            return;
        }
        const auto tiff = ReadTiff(path);
        ASSERT_TRUE(tiff) << path;
        const uint32_t paddedWidth = (page.Width + 31) / 32 * 32;
        const auto bits = static_cast<uint16_t>(LineBytes(page) * 8 / paddedWidth);
        EXPECT_EQ(tiff->Width, paddedWidth);
        EXPECT_EQ(tiff->Height, page.Height);
        EXPECT_EQ(tiff->Bits, bits);
        EXPECT_EQ(tiff->Samples, 1);
        EXPECT_EQ(tiff->Photometric, PHOTOMETRIC_MINISWHITE);
        EXPECT_EQ(tiff->Compression, COMPRESSION_NONE);
        EXPECT_EQ(tiff->ResolutionUnit, RESUNIT_INCH);
        EXPECT_EQ(tiff->XResolution, 300.0F);
        EXPECT_EQ(tiff->YResolution, 600.0F);
        EXPECT_TRUE(tiff->Data == expected) << path;
    }
};

class JobBytesTest : public JobTest, public ::testing::WithParamInterface<OutputRules> {};

TEST_P(JobBytesTest, EveryChannelHoldsItsSeparation) {
    const Model model = SixColourModel(GetParam());
    folder.InstallModel(kModelName, Describe(model));
    const std::vector<Page> pages = MixedPages();
    Job job = MakeJob(pages);
    // A tile folder a page keeps the pages apart: their channel files have the same names.
    job.Status.RecordVersion = JobStatusRecord::kTileRecordVersion;
    job.Status.TileCount = static_cast<int32_t>(pages.size());
    ASSERT_TRUE(job.Print(folder.Out(), "Proof.ps"));

    for (std::size_t p = 0; p < pages.size(); ++p) {
        const std::filesystem::path tile = folder.Out() / ("Proof-tile" + std::to_string(p + 1));
        EXPECT_EQ(Listing(tile).size(), model.Colours.size());
        for (const Colour& colour : model.Colours) {
            const int separation = SeparationOf(pages[p], colour.InternalName);
            const std::string expected =
                separation < 0 ? BlankBytes(pages[p])
                               : ChannelBytes(pages[p], static_cast<std::size_t>(separation),
                                              GetParam().IsReversed);
            ExpectChannel(tile / Replaced(colour.ChannelName, "filename", "Proof"), pages[p],
                          expected);
        }
    }
    EXPECT_TRUE(Listing(folder.Temp()).empty());
    EXPECT_TRUE(folder.Messages().empty());
    EXPECT_TRUE(folder.Log().empty());
    EXPECT_EQ(job.Output.BytesTaken, 0);
}

INSTANTIATE_TEST_SUITE_P(
    Rules, JobBytesTest,
    ::testing::Values(OutputRules{false, false, "raw"}, OutputRules{false, false, "tif"},
                      OutputRules{false, true, "raw"}, OutputRules{false, true, "TIFF"},
                      OutputRules{true, false, "raw"}, OutputRules{true, false, "tif"},
                      OutputRules{true, true, "raw"}, OutputRules{true, true, "tiff"}),
    [](const auto& tested) {
        return std::string(tested.param.IsLineByLine ? "Interleaved" : "Planes") +
               (tested.param.IsReversed ? "Reversed" : "Forward") + tested.param.Extension;
    });

TEST_F(JobTest, MoreChannelsThanThePageFlagsOnce) {
    for (const char* rules : {"TypeRead=\"LINE_BY_LINE\"", "TypeRead=\"\""}) {
        Page page = NumberedPage(50, 7, 40, 8);
        page.Separations.erase(page.Separations.begin() + 16, page.Separations.begin() + 19);
        const std::string output = std::string("CreateFolder=\"NO\" ") + rules;
        folder.InstallModel(kModelName, Describe(NumberedModel(40, output, "raw")));
        const Driver fresh;
        MakeJob({page});
        Job job(fresh, JobFile());
        ASSERT_TRUE(job.Print(folder.Out(), "Proof.ps"));
        EXPECT_EQ(Listing(folder.Out()).size(), 40u);
        for (int i = 1; i <= 40; ++i) {
            const int separation = SeparationOf(page, "C" + std::to_string(i));
            EXPECT_EQ(Output("Proof_C" + std::to_string(i) + ".raw"),
                      separation < 0 ? BlankBytes(page)
                                     : ChannelBytes(page, static_cast<std::size_t>(separation)))
                << i;
        }
    }
}

// A custom colour mode maps separations by position, whatever their names; what has no colorant
// is left out.
TEST_F(JobTest, CustomColorMode) {
    struct Row {
        const char* Xml;
        bool IsCustom;
    };
    const Row rows[] = {
        {"<?xml version=\"1.0\"?><RootElement><CustomColorMode/></RootElement>", true},
        {"<?xml version=\"1.0\"?><RootElement><Other/></RootElement>", false},
        {" <?xml version=\"1.0\"?><RootElement><CustomColorMode/></RootElement>", false},
        {"<RootElement><CustomColorMode/></RootElement>", false},
        {"<?xml version=\"1.0\"?><RootElement><CustomColorMode>", false},
        {"<?xm", false},
        {"", false},
        {nullptr, false},
    };
    folder.InstallModel(kModelName, Describe(NumberedModel(3, "CreateFolder=\"No\"", "raw")));
    const Page page = RandomPage(24, 5, {{"Gold"}, {"C3"}, {"C1"}, {"Silver", 2}}, 1);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.Xml == nullptr ? "none" : row.Xml);
        Job job = MakeJob({page, page});
        job.Status.CustomColorModeXml = row.Xml;
        ASSERT_TRUE(job.Print(folder.Out(), "Proof.ps"));
        EXPECT_EQ(Output("Proof_C1.raw"), ChannelBytes(page, row.IsCustom ? 0 : 2));
        EXPECT_EQ(Output("Proof_C2.raw"), row.IsCustom ? ChannelBytes(page, 1) : BlankBytes(page));
        EXPECT_EQ(Output("Proof_C3.raw"), ChannelBytes(page, row.IsCustom ? 2 : 1));
        EXPECT_EQ(Listing(folder.Out()).size(), 3u);
    }
}

TEST_F(JobTest, Resolutions) {
    struct Row {
        float X, Y;
    };
    constexpr Row kRows[] = {{300, 600},   {0, 0},         {-5, 300},      {0.4F, 0.5F},
                             {0.6F, 1.4F}, {359.7F, 1e6F}, {1440, 0.0001F}};
    folder.InstallModel(kModelName, Describe(NumberedModel(2, "CreateFolder=\"No\"", "tif")));
    const Page page = NumberedPage(40, 3, 2, 1);
    for (const Row& row : kRows) {
        SCOPED_TRACE(::testing::Message() << row.X << " x " << row.Y);
        JobChoices choices;
        choices.XResolution = row.X;
        choices.YResolution = row.Y;
        ASSERT_TRUE(MakeJob({page}, choices).Print(folder.Out(), "Proof.ps"));
        const auto tiff = ReadTiff(folder.Out() / "Proof_C1.tif");
        ASSERT_TRUE(tiff);
        EXPECT_EQ(tiff->Data, ChannelBytes(page, 0));
        EXPECT_EQ(tiff->Width, 64u);
        EXPECT_EQ(tiff->Height, 3u);
        if (row.X > 0.1F) {
            EXPECT_NEAR(tiff->XResolution, row.X, row.X * 1e-5F);
        }
        if (row.Y > 0.1F) {
            EXPECT_NEAR(tiff->YResolution, row.Y, row.Y * 1e-5F);
        }
    }
}

TEST_F(JobTest, JobsOneAfterAnotherOnOneDriver) {
    Model model = NumberedModel(5, "CreateFolder=\"No\"", "raw");
    model.ColorModes = {{{0, 1}}, {{4, 2, 0, 3}}, {{1}}};
    folder.InstallModel(kModelName, Describe(model));
    struct Row {
        int16_t ColorMode;
        std::vector<std::pair<const char*, int>> Files;  // with the separation, -1: blank
    };
    const Row rows[] = {
        {1, {{"_C5.raw", -1}, {"_C3.raw", 2}, {"_C1.raw", 0}, {"_C4.raw", 3}}},
        {0, {{"_C1.raw", 0}, {"_C2.raw", 1}}},
        {2, {{"", 1}}},  // one colorant: the job's name is the file's
        {1, {{"_C5.raw", -1}, {"_C3.raw", 2}, {"_C1.raw", 0}, {"_C4.raw", 3}}},
    };
    int number = 0;
    for (const Row& row : rows) {
        const std::string name = "Job" + std::to_string(++number);
        const Page page = NumberedPage(100, 9, 4, static_cast<uint32_t>(number));
        JobChoices choices;
        choices.ColorMode = row.ColorMode;
        const std::filesystem::path out = folder.Out() / name;
        std::filesystem::create_directory(out);
        ASSERT_TRUE(MakeJob({page}, choices).Print(out, name + ".pdf")) << number;
        EXPECT_EQ(Listing(out).size(), row.Files.size());
        for (const auto& [suffix, separation] : row.Files) {
            EXPECT_EQ(ReadText(out / (name + suffix)),
                      separation < 0 ? BlankBytes(page)
                                     : ChannelBytes(page, static_cast<std::size_t>(separation)))
                << name << suffix;
        }
    }
}

TEST_F(JobTest, TileFolders) {
    struct Row {
        int32_t RecordVersion, TileCount;
        std::vector<std::string> Folders;  // after the three pages
        bool Succeeds;
    };
    const std::vector<std::string> none = {"Proof_C1.raw", "Proof_C2.raw"};
    const auto tiles = [](int count) {
        std::vector<std::string> names;
        for (int i = 1; i <= count; ++i) {
            const std::string tile = "Proof-tile" + std::to_string(i) + "/";
            names.insert(names.end(), {tile, tile + "Proof_C1.raw", tile + "Proof_C2.raw"});
        }
        return names;
    };
    const Row rows[] = {
        {2, 3, none, true},      {3, 1, none, true},     {3, 0, none, true},
        {3, -1, none, true},     {3, 3, tiles(3), true}, {4, 9, tiles(3), true},
        {3, 2, tiles(2), false},  // the third page meets the last tile's folder
    };
    folder.InstallModel(kModelName, Describe(NumberedModel(2, "CreateFolder=\"No\"", "raw")));
    const Page page = NumberedPage(10, 3, 2, 1);
    for (const Row& row : rows) {
        SCOPED_TRACE(::testing::Message() << row.RecordVersion << " " << row.TileCount);
        std::filesystem::remove_all(folder.Out());
        std::filesystem::create_directory(folder.Out());
        Job job = MakeJob({page, page, page});
        job.Status.RecordVersion = row.RecordVersion;
        job.Status.TileCount = row.TileCount;
        EXPECT_EQ(job.Print(folder.Out(), "Proof.ps"), row.Succeeds);
        EXPECT_TRUE(job.HasEnded());
        EXPECT_EQ(Listing(folder.Out()), row.Folders);
    }
    EXPECT_EQ(folder.Log(), std::vector<std::string>{kStepLogLine});
}

// Pages beyond the tiles belong to the last one.
TEST_F(JobTest, LastTileTakesTheRest) {
    folder.InstallModel(kModelName, Describe(NumberedModel(2, "CreateFolder=\"No\"", "raw")));
    Page page = NumberedPage(10, 3, 2, 1);
    Job job = MakeJob(std::vector<Page>(4, page));
    job.Status.RecordVersion = 3;
    job.Status.TileCount = 2;
    ASSERT_EQ(job.Open(), 1);
    ASSERT_EQ(job.Port(folder.Out(), "Proof.ps"), 1);
    for (int p = 1; p <= 4; ++p) {
        // Three steps a page: set up, bands, end.
        for (int step = 0; step < 3; ++step)
            ASSERT_EQ(job.Step(), 1) << p;
        const std::string tile = "Proof-tile" + std::to_string(std::min(p, 2));
        EXPECT_EQ(Output(tile + "/Proof_C2.raw"), ChannelBytes(page, 1)) << p;
        std::filesystem::remove_all(folder.Out() / tile);
        EXPECT_TRUE(Listing(folder.Out()).empty()) << p;
    }
    EXPECT_EQ(job.Step(), 1);
    EXPECT_TRUE(job.HasEnded());
}

// A job opened while another is in the middle of a page replaces it.
TEST_F(JobTest, SecondJobInTheMiddleOfTheFirst) {
    folder.InstallModel(kModelName, Describe(NumberedModel(2, "PrinterDirection=\"YES\"", "raw")));
    Job first = MakeJob({NumberedPage(10, 3, 2, 1), NumberedPage(10, 3, 2, 2)});
    ASSERT_EQ(first.Open(), 1);
    ASSERT_EQ(first.Port(folder.Out(), "First.ps"), 1);
    ASSERT_EQ(first.Step(), 1);
    ASSERT_EQ(first.Step(), 1);
    const Page page = NumberedPage(20, 5, 2, 3);
    WriteContainer(Container(), {page});
    Job second(driver, JobFile());
    ASSERT_TRUE(second.Print(folder.Out(), "Second.ps"));
    EXPECT_EQ(Output("Second/Second_C2.raw"), ChannelBytes(page, 1, true));
    EXPECT_FALSE(first.HasEnded()) << "the first job's record is not touched any more";
    EXPECT_TRUE(Listing(folder.Temp()).empty());
}

}  // namespace
