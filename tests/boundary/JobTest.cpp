// Whole jobs: that exactly the bytes of the separations arrive, under every output rule.

#include <cmath>

#include "JobRunner.h"

namespace {

class JobTest : public BoundaryTest {};

// Pages of odd widths; separations in another order than the colour mode's, in other letter case,
// of mixed depths, missing, and without a colorant. A tile folder a page keeps them apart.
TEST_F(JobTest, EveryChannelHoldsItsSeparation) {
    const std::vector<Page> pages = {
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
    const char* const names[] = {"Cyan", "Magenta", "Yellow", "Black", "Orange", "Varnish"};
    for (const int rules : {0, 1, 2, 3, 4, 5, 6, 7}) {
        const char* const order = (rules & 1) != 0 ? "Line_By_Line" : "PAGE";
        const bool isReversed = (rules & 2) != 0;
        const bool isTiff = (rules & 4) != 0;
        SCOPED_TRACE(fmt::format("{} reversed {} TIFF {}", order, isReversed, isTiff));
        Model model{{}, {{3, 0, 1, 2, 5, 4}}};
        model.OutputRules = fmt::format(R"(CreateFolder="No" TypeRead="{}" PrinterDirection="{}")",
                                        order, isReversed ? "yes" : "no");
        for (const char* name : names)
            model.Colours.push_back(
                {name, fmt::format("filename_{}{}", name, isTiff ? ".tif" : "")});
        Install(Describe(model));
        EmptyOutputFolder();
        Job job = StartJob(pages);
        job.Status.RecordVersion = JobStatusRecord::kTileRecordVersion;
        job.Status.TileCount = static_cast<int32_t>(pages.size());
        EXPECT_EQ(job.Run(), std::string(3 * pages.size() + 1, '1'));
        int number = 0;
        for (const Page& page : pages) {
            const auto tile = folder.Out() / fmt::format("Proof-tile{}", ++number);
            EXPECT_EQ(Listing(tile).size(), model.Colours.size());
            for (const char* name : names) {
                const auto path = tile / fmt::format("Proof_{}{}", name, isTiff ? ".tif" : "");
                const std::string data = isTiff ? ReadTiff(path).Data : ReadText(path);
                EXPECT_TRUE(data == ChannelBytes(page, name, isReversed)) << path;
            }
        }
        EXPECT_TRUE(Listing(folder.Temp()).empty());
    }
    EXPECT_TRUE(folder.Messages().empty());
    EXPECT_TRUE(folder.Log().empty());
}

TEST_F(JobTest, MoreChannelsThanThePageFlagsOnce) {
    Page page = NumberedPage(50, 7, 40, 8);
    page.Separations.erase(page.Separations.begin() + 16, page.Separations.begin() + 19);
    for (const char* order : {"", "TypeRead=\"LINE_BY_LINE\""}) {
        Install(40, fmt::format("CreateFolder=\"NO\" {}", order));
        ASSERT_TRUE(Print({page}));
        EXPECT_EQ(Listing(folder.Out()).size(), 40U);
        for (int i = 1; i <= 40; ++i) {
            EXPECT_EQ(Output(fmt::format("Proof_C{}.raw", i)),
                      ChannelBytes(page, fmt::format("C{}", i)))
                << order << i;
        }
    }
}

// A custom colour mode maps separations by position, whatever their names; what has no colorant
// is left out.
TEST_F(JobTest, CustomColorMode) {
    constexpr std::pair<const char*, bool> kTexts[] = {
        {"<?xml version=\"1.0\"?><RootElement><CustomColorMode/></RootElement>", true},
        {"<?xml version=\"1.0\"?><RootElement><Other/></RootElement>", false},
        {" <?xml version=\"1.0\"?><RootElement><CustomColorMode/></RootElement>", false},
        {"<RootElement><CustomColorMode/></RootElement>", false},
        {"<?xml version=\"1.0\"?><RootElement><CustomColorMode>", false},
        {"<?xm", false},
        {"", false},
    };
    Install(3, "CreateFolder=\"No\"");
    const Page page = RandomPage(24, 5, {{"Gold"}, {"C3"}, {"C1"}, {"Silver", 2}}, 1);
    for (const auto& [xml, isCustom] : kTexts) {
        SCOPED_TRACE(xml);
        Job job = StartJob({page, page});
        job.Status.CustomColorModeXml = xml;
        EXPECT_TRUE(IsPrinted(job.Run()));
        EXPECT_EQ(Output("Proof_C1.raw"), ChannelBytes(page, isCustom ? "Gold" : "C1"));
        EXPECT_EQ(Output("Proof_C2.raw"), ChannelBytes(page, isCustom ? "C3" : "none"));
        EXPECT_EQ(Output("Proof_C3.raw"), ChannelBytes(page, isCustom ? "C1" : "C3"));
        EXPECT_EQ(Listing(folder.Out()).size(), 3U);
    }
}

TEST_F(JobTest, Resolutions) {
    constexpr std::pair<float, float> kResolutions[] = {
        {300, 600}, {0, 0}, {-5, 300}, {0.4F, 0.5F}, {0.6F, 1.4F}, {359.7F, 1e6F}, {1440, 0.0001F}};
    Install(2, "CreateFolder=\"No\"", "tif");
    const Page page = NumberedPage(40, 3, 2, 1);
    for (const auto& [x, y] : kResolutions) {
        SCOPED_TRACE(fmt::format("{} x {}", x, y));
        ASSERT_TRUE(Print({page}, "Proof.ps", {.XResolution = x, .YResolution = y}));
        const TiffChannel tiff = ReadTiff(folder.Out() / "Proof_C1.tif");
        EXPECT_EQ(tiff.Data, ChannelBytes(page, "C1"));
        EXPECT_EQ(tiff.Width, 64U);
        EXPECT_EQ(tiff.Height, 3U);
        EXPECT_TRUE(x < 0.1F || std::abs(tiff.XResolution - x) < x * 1e-5F) << tiff.XResolution;
        EXPECT_TRUE(y < 0.1F || std::abs(tiff.YResolution - y) < y * 1e-5F) << tiff.YResolution;
    }
}

TEST_F(JobTest, JobsOneAfterAnotherOnOneDriver) {
    Model model = NumberedModel(5, "CreateFolder=\"No\"");
    model.ColorModes = {{0, 1}, {4, 2, 0, 3}, {1}};
    Install(Describe(model));
    const std::pair<int16_t, Texts> modes[] = {{1, {"C5", "C3", "C1", "C4"}},
                                               {0, {"C1", "C2"}},
                                               {2, {"C2"}},
                                               {1, {"C5", "C3", "C1", "C4"}}};
    uint32_t seed = 0;
    for (const auto& [mode, colorants] : modes) {
        SCOPED_TRACE(++seed);
        EmptyOutputFolder();
        const Page page = NumberedPage(100, 9, 4, seed);
        ASSERT_TRUE(Print({page}, "Proof.ps", {.ColorMode = mode}));
        EXPECT_EQ(Listing(folder.Out()).size(), colorants.size());
        for (const std::string& colorant : colorants) {
            // The only colorant of a mode has a file of the job's name.
            const bool isOnly = colorants.size() == 1;
            EXPECT_EQ(Output(isOnly ? "Proof" : fmt::format("Proof_{}.raw", colorant)),
                      ChannelBytes(page, colorant))
                << colorant;
        }
    }
}

// Pages beyond the tiles belong to the last one, whose folder they cannot make a second time; a
// host that takes the folder away between the pages gets them all.
TEST_F(JobTest, TileFolders) {
    struct Row {
        int32_t RecordVersion, TileCount;
        Texts FolderOfPage;
    };
    const Texts none(4, "");
    const Row rows[] = {
        {2, 4, none},
        {3, 1, none},
        {3, -1, none},
        {3, 4, {"Proof-tile1/", "Proof-tile2/", "Proof-tile3/", "Proof-tile4/"}},
        {4, 9, {"Proof-tile1/", "Proof-tile2/", "Proof-tile3/", "Proof-tile4/"}},
        {3, 2, {"Proof-tile1/", "Proof-tile2/", "Proof-tile2/", "Proof-tile2/"}},
    };
    Install(2, "CreateFolder=\"No\"");
    const Page page = NumberedPage(10, 3, 2, 1);
    for (const Row& row : rows) {
        for (const bool isFolderTaken : {false, true}) {
            SCOPED_TRACE(fmt::format("{} {} {}", row.RecordVersion, row.TileCount, isFolderTaken));
            EmptyOutputFolder();
            Job job = StartJob(std::vector<Page>(4, page));
            job.Status.RecordVersion = row.RecordVersion;
            job.Status.TileCount = row.TileCount;
            std::string last;
            for (const std::string& tile : row.FolderOfPage) {
                const bool isMadeTwice = !isFolderTaken && !tile.empty() && tile == last;
                ASSERT_EQ(job.Step(), isMadeTwice ? 0 : 1);
                if (isMadeTwice) break;
                ASSERT_EQ(job.Step() + job.Step(), 2) << "its bands and its end";
                EXPECT_EQ(Output(tile + "Proof_C2.raw"), ChannelBytes(page, "C2"));
                if (isFolderTaken) EmptyOutputFolder();
                last = tile;
            }
            EXPECT_TRUE(job.HasEnded() || job.Run() == "1");
        }
    }
    EXPECT_EQ(folder.Log(), Texts{kStepLogLine});
}

// A job opened while another is in the middle of a page replaces it.
TEST_F(JobTest, SecondJobInTheMiddleOfTheFirst) {
    Install(2, "PrinterDirection=\"YES\"");
    Job first = StartJob({NumberedPage(10, 3, 2, 1), NumberedPage(10, 3, 2, 2)}, "First.ps");
    ASSERT_EQ(first.Step() + first.Step(), 2);
    const Page page = NumberedPage(20, 5, 2, 3);
    ASSERT_TRUE(Print({page}, "Second.ps"));
    EXPECT_EQ(Output("Second/Second_C2.raw"), ChannelBytes(page, "C2", true));
    EXPECT_FALSE(first.HasEnded()) << "the first job's record is not touched any more";
    EXPECT_TRUE(Listing(folder.Temp()).empty());
}

}  // namespace
