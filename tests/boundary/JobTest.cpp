// Whole jobs: that exactly the bytes of the separations arrive, under every output rule.

#include <algorithm>

#include "JobRunner.h"

namespace {

class JobTest : public BoundaryTest {};

// Pages of odd widths; separations in another order than the colour mode's, in other letter case,
// of mixed depths, missing, and without a colorant; more channels than a page's flags once held;
// lines that are larger than the blocks in which data moves, and lines that are so only together.
// A tile folder a page keeps them apart.
TEST_F(JobTest, EveryChannelHoldsItsSeparation) {
    constexpr int kChannelCount = 20;
    std::vector<Page> pages = {
        NumberedPage(1, 3, 6, 1),
        RandomPage(31, 12, {{"c6", 1}, {"c4", 8}, {"Gold", 2}, {"C1", 2}, {"C2", 4}, {"C3", 1}}, 2),
        RandomPage(32, 1, {{"C5", 2}, {"C1", 1}, {"Gold", 4}}, 3),
        RandomPage(33, 23, {{"C1", 1}, {"C1", 2}, {"C4", 1}}, 4),
        RandomPage(1001, 600, {{"C2", 8}, {"C3", 8}}, 5),
        RandomPage(65, 6, {{"Gold", 1}, {"Silver", 8}}, 6),
        RandomPage(60'000, 3, {{"C1", 8}, {"C2", 8}, {"C3", 8}, {"C4", 8}, {"C5", 8}}, 8),
        RandomPage(270'000, 2, {{"C2", 8}, {"C7", 8}}, 9),
        NumberedPage(50, 7, kChannelCount, 7),
    };
    pages.back().Separations.erase(pages.back().Separations.begin() + 16);
    for (const unsigned rules : {0U, 1U, 2U, 3U, 4U, 5U, 6U, 7U}) {
        const char* const order = (rules & 1U) != 0 ? "Line_By_Line" : "PAGE";
        const bool isReversed = (rules & 2U) != 0;
        const bool isTiff = (rules & 4U) != 0;
        SCOPED_TRACE(fmt::format("{} reversed {} TIFF {}", order, isReversed, isTiff));
        const char* const direction = isReversed ? "yes" : "no";
        Model model =
            NumberedModel(kChannelCount,
                          fmt::format(R"(CreateFolder="No" TypeRead="{}" PrinterDirection="{}")",
                                      order, direction),
                          isTiff ? "TIFF" : "raw");
        std::rotate(model.ColorModes[0].begin(), model.ColorModes[0].begin() + 3,
                    model.ColorModes[0].begin() + 6);
        Install(Describe(model));
        EmptyOutputFolder();
        Job job = StartJob(pages);
        job.Status.RecordVersion = JobStatusRecord::kTileRecordVersion;
        job.Status.TileCount = static_cast<int32_t>(pages.size());
        EXPECT_EQ(job.Run(), std::string(3 * pages.size() + 1, '1'));
        for (std::size_t p = 0; p < pages.size(); ++p) {
            const auto tile = folder.Out() / fmt::format("Proof-tile{}", p + 1);
            EXPECT_EQ(Listing(tile).size(), kChannelCount);
            for (const Colour& colour : model.Colours) {
                const auto path = tile / Replaced(colour.ChannelName, "filename", "Proof");
                const std::string data = isTiff ? TiffRows(path) : ReadText(path);
                EXPECT_TRUE(data == ChannelBytes(pages[p], colour.InternalName, isReversed))
                    << path;
            }
        }
        EXPECT_TRUE(Listing(folder.Temp()).empty());
    }
    EXPECT_TRUE(folder.Messages().empty());
    EXPECT_EQ(FailedSteps(), 0U);
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

// Pages beyond the tiles belong to the last one: its folder cannot be made a second time, unless
// the host has taken it away.
TEST_F(JobTest, TileFolders) {
    struct Row {
        int32_t RecordVersion, TileCount;
        const char* FolderOfPage[3];
    };
    constexpr Row kRows[] = {{2, 3, {"", "", ""}},
                             {3, 1, {"", "", ""}},
                             {3, -1, {"", "", ""}},
                             {3, 3, {"Proof-tile1/", "Proof-tile2/", "Proof-tile3/"}},
                             {4, 9, {"Proof-tile1/", "Proof-tile2/", "Proof-tile3/"}},
                             {3, 2, {"Proof-tile1/", "Proof-tile2/", "Proof-tile2/"}}};
    Install(2, "CreateFolder=\"No\"");
    const Page page = NumberedPage(10, 3, 2, 1);
    const auto start = [&](int32_t recordVersion, int32_t tileCount) {
        Job job = StartJob({page, page, page});
        job.Status.RecordVersion = recordVersion;
        job.Status.TileCount = tileCount;
        return job;
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(fmt::format("{} {}", row.RecordVersion, row.TileCount));
        Job job = start(row.RecordVersion, row.TileCount);
        for (const std::string tile : row.FolderOfPage) {
            EXPECT_EQ(job.Step() + job.Step() + job.Step(), 3) << "set-up, bands and end";
            EXPECT_EQ(Output(tile + "Proof_C2.raw"), ChannelBytes(page, "C2"));
            EmptyOutputFolder();
        }
        EXPECT_EQ(job.Run(), "1");
    }
    EXPECT_EQ(start(3, 2).Run(), "1111110");
    EXPECT_EQ(FailedSteps(), 1U);
}

// By another job, by an open that fails, by a host that lets go of the driver: nothing temporary
// stays, and the job's record is not touched any more.
TEST_F(JobTest, LeftInTheMiddleOfAPage) {
    Install(2, "PrinterDirection=\"YES\"");
    const Page page = NumberedPage(20, 5, 2, 3);
    for (const int way : {0, 1, 2}) {
        Job first = StartJob({NumberedPage(10, 3, 2, 1)}, "First.ps");
        ASSERT_EQ(first.Step(), 1);
        {
            const StandIn clock(clockStepMs, 201);
            ASSERT_EQ(first.Step(), 1);
        }
        EXPECT_EQ(Listing(folder.Temp()), Texts{"channel_data"});
        if (way == 0) {
            ASSERT_TRUE(Print({page}, "Second.ps"));
            EXPECT_EQ(Output("Second/Second_C2.raw"), ChannelBytes(page, "C2", true));
        } else if (way == 1) {
            Job second(*driver, folder.Jobs() / "none");
            EXPECT_EQ(second.Open(), 0);
            EXPECT_TRUE(second.HasEnded());
            EXPECT_EQ(first.Step() + driver->Call(kAbortJob), 0);
        } else {
            driver.reset();
        }
        EXPECT_FALSE(first.HasEnded());
        EXPECT_TRUE(Listing(folder.Temp()).empty());
    }
    EXPECT_EQ(FailedSteps(), 0U);
}

}  // namespace
