// Job files and containers that are missing, short, damaged or absurd: each ends the job with an
// answer, and none prints as blank paper.

#include <algorithm>
#include <functional>

#include "JobRunner.h"

namespace {

class ContainerFaultsTest : public BoundaryTest {
  protected:
    void SetUp() override {
        folder.InstallModel(kModelName, Describe(NumberedModel(2, "CreateFolder=\"No\"", "raw")));
    }
    /// Opens the port and steps until the job ends.
    std::vector<int32_t> Steps(Job& job) {
        EXPECT_EQ(job.Port(folder.Out(), "Proof.ps"), 1);
        std::vector<int32_t> answers = job.Run();
        EXPECT_TRUE(job.HasEnded());
        if (answers.back() == 0) {
            EXPECT_EQ(job.Step(), 0) << "and says nothing, as the log shows";
        }
        return answers;
    }
    void ExpectOpenFails(const char* what) {
        Job job(driver, JobFile());
        EXPECT_EQ(job.Open(), 0) << what;
        EXPECT_TRUE(job.HasEnded()) << what;
        EXPECT_EQ(job.Step(), 0) << what;
        EXPECT_EQ(driver.Call(kAbortJob), 0) << what;
        EXPECT_EQ(job.Port(folder.Out(), "Proof.ps"), 1) << what;
        EXPECT_TRUE(Listing(folder.Out()).empty()) << what;
    }

    Page page = NumberedPage(70, 23, 2, 1);
};

TEST_F(ContainerFaultsTest, JobFiles) {
    WriteContainer(Container(), {page});
    ExpectOpenFails("missing");
    EXPECT_TRUE(std::filesystem::exists(JobFile())) << "opening for reading makes an empty file";
    EXPECT_EQ(std::filesystem::file_size(JobFile()), 0u);
    const std::string good = JobFileBytes({});
    for (const std::size_t size : {0u, 1u, 2000u, 3939u}) {
        WriteText(JobFile(), good.substr(0, size));
        ExpectOpenFails("short");
    }
    EXPECT_TRUE(folder.Messages().empty());
    WriteText(JobFile(), std::string(3940, '\xff'));  // no text has its NUL
    ExpectOpenFails("garbage");
    EXPECT_EQ(folder.Messages(), std::vector<std::string>{"Cannot get XML "});
    std::filesystem::remove(JobFile());
    std::filesystem::create_directory(JobFile());
    ExpectOpenFails("a folder");
    std::filesystem::remove(JobFile());
    EXPECT_TRUE(folder.Log().empty());

    WriteText(JobFile(), good + std::string(100000, 'x'));  // only its beginning counts
    EXPECT_TRUE(Job(driver, JobFile()).Print(folder.Out(), "Proof.ps"));
    EXPECT_EQ(Output("Proof_C2.raw"), ChannelBytes(page, 1));
}

TEST_F(ContainerFaultsTest, ColorModesThatDoNotExist) {
    for (const int16_t mode : {int16_t{1}, int16_t{-1}, int16_t{32767}}) {
        JobChoices choices;
        choices.ColorMode = mode;
        Job job = MakeJob({page}, choices);
        const int32_t opened = job.Open();  // whatever it answers, nothing is printed
        if (opened == 1) Steps(job);
        EXPECT_TRUE(job.HasEnded());
        EXPECT_TRUE(Listing(folder.Out()).empty()) << mode;
    }
}

TEST_F(ContainerFaultsTest, FilesThatAreNoContainer) {
    WriteText(JobFile(), JobFileBytes({}));
    ExpectOpenFails("no container");
    const std::string texts[] = {"",
                                 "no TIFF at all",
                                 "II*",
                                 std::string("II*\0\0\0\0\0", 8),
                                 std::string("II*\0\x08\0\0\0", 8),
                                 std::string("MM\0*\xff\xff\xff\xff", 8) + std::string(500, '\xee'),
                                 std::string("II+\0\x08\0\0\0", 8) + std::string(64, '\xff')};
    std::vector<std::string> log;
    for (const std::string& text : texts) {
        WriteText(Container(), text);
        Job job(driver, JobFile());
        EXPECT_EQ(job.Open(), 1);
        EXPECT_EQ(Steps(job), std::vector<int32_t>{0});
        log.emplace_back(kStepLogLine);
        EXPECT_EQ(folder.Log(), log);
    }
    EXPECT_TRUE(Listing(folder.Out()).empty());
}

// Wherever the file ends: the job fails, or what it printed is right to the last byte.
TEST_F(ContainerFaultsTest, CutAnywhere) {
    page.Separations[0].DisplayName = "a display name that stands out of line";
    MakeJob({page, page});
    const std::string whole = ReadText(Container());
    int failed = 0;
    const std::size_t stride = 7;
    for (std::size_t size = 8; size < whole.size(); size += stride) {
        std::filesystem::remove_all(folder.Out());
        std::filesystem::create_directory(folder.Out());
        WriteText(Container(), whole.substr(0, size));
        Job job(driver, JobFile());
        if (job.Print(folder.Out(), "Proof.ps")) {
            EXPECT_EQ(Output("Proof_C1.raw"), ChannelBytes(page, 0)) << size;
            EXPECT_EQ(Output("Proof_C2.raw"), ChannelBytes(page, 1)) << size;
        } else {
            ++failed;
            EXPECT_TRUE(job.HasEnded()) << size;
        }
    }
    EXPECT_GT(failed * stride, whole.size() * 9 / 10) << "nearly every cut loses something";
}

constexpr uint32_t kMost = 0x7fffffff;

struct BadPage {
    const char* Name;
    std::function<void(TIFF*)> Alter;
    /// Whether both separations are so, and the fault shows at a row; else the page has no image.
    bool IsWholePage = false;
};

/// Gives a tag of the second page's second separation a value.
std::function<void(TIFF*)> Tag(uint32_t tag, uint32_t value) {
    return [=](TIFF* tiff) { TIFFSetField(tiff, tag, value); };
}

const BadPage kBadPages[] = {
    {"BlackIsZero", Tag(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK)},
    {"Depth16", Tag(TIFFTAG_BITSPERSAMPLE, 16)},
    {"TwoSamples", Tag(TIFFTAG_SAMPLESPERPIXEL, 2)},
    {"OtherWidth", Tag(TIFFTAG_IMAGEWIDTH, 69)},
    {"OtherHeight", Tag(TIFFTAG_IMAGELENGTH, 22)},
    {"Tiles",
     [](TIFF* tiff) {
         TIFFSetField(tiff, TIFFTAG_TILEWIDTH, 16);
         TIFFSetField(tiff, TIFFTAG_TILELENGTH, 16);
         std::string tile(32, '\0');
         for (uint32_t i = 0; i < 10; ++i)
             TIFFWriteEncodedTile(tiff, i, tile.data(), 32);
     }},
    {"AbsurdHeight",
     [](TIFF* tiff) {
         TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
         TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, kMost);
         TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, kMost);
     },
     true},
};

class BadPageTest : public ContainerFaultsTest, public ::testing::WithParamInterface<BadPage> {};

// The page before it is complete, the job ends with it, and nothing of it looks like a page.
TEST_P(BadPageTest, EndsTheJobAtThatPage) {
    Job job = MakeJob({page, NumberedPage(70, 23, 2, 2), page}, {},
                      [](TIFF* tiff, std::size_t p, std::size_t separation) {
                          if (p != 1 || (separation == 0 && !GetParam().IsWholePage)) return;
                          GetParam().Alter(tiff);
                      });
    job.Status.RecordVersion = JobStatusRecord::kTileRecordVersion;
    job.Status.TileCount = 3;
    ASSERT_EQ(job.Open(), 1);
    const std::vector<int32_t> answers = Steps(job);
    ASSERT_GE(answers.size(), 4u);
    EXPECT_EQ(std::count(answers.begin(), answers.end(), 0), 1);
    EXPECT_EQ(answers.back(), 0);
    if (!GetParam().IsWholePage) {
        EXPECT_EQ(answers.size(), 4u);
    }
    EXPECT_EQ(Output("Proof-tile1/Proof_C1.raw"), ChannelBytes(page, 0));
    EXPECT_EQ(Output("Proof-tile1/Proof_C2.raw"), ChannelBytes(page, 1));
    EXPECT_FALSE(std::filesystem::exists(folder.Out() / "Proof-tile2/Proof_C2.raw"));
    EXPECT_FALSE(std::filesystem::exists(folder.Out() / "Proof-tile3"));
    const std::vector<std::string> log = folder.Log();
    ASSERT_FALSE(log.empty());
    EXPECT_EQ(log.back(), kStepLogLine);
}

INSTANTIATE_TEST_SUITE_P(Damages, BadPageTest, ::testing::ValuesIn(kBadPages),
                         [](const auto& tested) { return tested.param.Name; });

TEST_F(ContainerFaultsTest, PageNumbers) {
    struct Row {
        std::vector<int> Numbers;  // of three pages; -1: no such tag
        int Count;
        int PrintedPages;
        bool Succeeds;
    };
    const Row rows[] = {
        {{0, 1, 2}, 3, 3, true},  {{0, 1, 2}, 0, 3, true},  // as many as there are
        {{0, 1, 2}, 2, 2, true},                            // what is beyond the count is no page
        {{0, 1, 2}, 5, 3, false},                           // the fourth is missing
        {{0, 2, 3}, 4, 1, false},                           // no page in the middle
        {{1, 2, 3}, 3, 0, false}, {{-1, -1, -1}, 0, 1, true},  // all directories are one page
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(::testing::Message() << row.Numbers[1] << " of " << row.Count);
        std::filesystem::remove_all(folder.Out());
        std::filesystem::create_directory(folder.Out());
        Job job = MakeJob({page, page, page}, {}, [&](TIFF* tiff, std::size_t p, std::size_t) {
            TIFFUnsetField(tiff, TIFFTAG_PAGENUMBER);
            if (row.Numbers[p] >= 0) {
                TIFFSetField(tiff, TIFFTAG_PAGENUMBER, row.Numbers[p], row.Count);
            }
        });
        job.Status.RecordVersion = JobStatusRecord::kTileRecordVersion;
        job.Status.TileCount = 9;
        EXPECT_EQ(job.Print(folder.Out(), "Proof.ps"), row.Succeeds);
        EXPECT_TRUE(job.HasEnded());
        EXPECT_EQ(Listing(folder.Out()).size(), 3u * static_cast<unsigned>(row.PrintedPages));
    }
}

}  // namespace
