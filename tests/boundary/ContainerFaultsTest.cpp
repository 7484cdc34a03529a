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

// A row that cannot be decoded ends the step; the other pages' directories do not matter.
TEST_F(ContainerFaultsTest, DamagedRows) {
    MakeJob({page});
    std::string bytes = ReadText(Container());
    std::fill(bytes.begin() + 100, bytes.begin() + 140, '\x81');  // runs that end too early
    WriteText(Container(), bytes);
    Job job(driver, JobFile());
    ASSERT_EQ(job.Open(), 1);
    EXPECT_EQ(Steps(job), (std::vector<int32_t>{1, 0}));
    EXPECT_EQ(folder.Log(), std::vector<std::string>{kStepLogLine});
}

/// Little-endian number of `count` bytes in a file's text.
uint32_t Number(const std::string& bytes, std::size_t at, std::size_t count) {
    uint32_t number = 0;
    for (std::size_t i = count; i-- > 0;) {
        number = number << 8 | static_cast<uint8_t>(bytes.at(at + i));
    }
    return number;
}

void SetNumber(std::string& bytes, std::size_t at, std::size_t count, uint32_t number) {
    for (std::size_t i = 0; i < count; ++i)
        bytes.at(at + i) = static_cast<char>(number >> 8 * i);
}

constexpr std::size_t kEntryBytes = 12;  // of a classic TIFF directory: tag, type, count, value

/// Place of the link that leads to the directory.
std::size_t LinkTo(const std::string& bytes, int directory) {
    std::size_t at = 4;
    for (int i = 0; i < directory; ++i) {
        const std::size_t begin = Number(bytes, at, 4);
        at = begin + 2 + kEntryBytes * Number(bytes, begin, 2);
    }
    return at;
}

void SetTag(std::string& bytes, int directory, uint32_t tag, uint32_t value) {
    const std::size_t begin = Number(bytes, LinkTo(bytes, directory), 4);
    for (uint32_t i = 0; i < Number(bytes, begin, 2); ++i) {
        const std::size_t entry = begin + 2 + i * kEntryBytes;
        if (Number(bytes, entry, 2) != tag) continue;
        SetNumber(bytes, entry + 2, 2, TIFF_LONG);
        SetNumber(bytes, entry + 4, 4, 1);
        SetNumber(bytes, entry + 8, 4, value);
        return;
    }
    FAIL() << "no tag " << tag;
}

struct BadPage {
    const char* Name;
    std::function<void(std::string&)> Damage;
    /// Whether the page counts as one without an image; else a row of it cannot be read.
    bool HasNoImage = true;
};

/// Gives one tag of the second page's second separation a value.
std::function<void(std::string&)> Tag(uint32_t tag, uint32_t value) {
    return [=](std::string& bytes) { SetTag(bytes, 3, tag, value); };
}
/// The same in both separations of the second page.
std::function<void(std::string&)> Tags(std::vector<std::pair<uint32_t, uint32_t>> tags) {
    return [=](std::string& bytes) {
        for (const auto& [tag, value] : tags) {
            SetTag(bytes, 2, tag, value);
            SetTag(bytes, 3, tag, value);
        }
    };
}
/// Leads the link to a directory elsewhere.
std::function<void(std::string&)> Link(int directory, uint32_t target) {
    return [=](std::string& bytes) { SetNumber(bytes, LinkTo(bytes, directory), 4, target); };
}

constexpr uint32_t kMost = 0x7fffffff;

const BadPage kBadPages[] = {
    {"BlackIsZero", Tag(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK)},
    {"Rgb", Tag(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB)},
    {"Depth3", Tag(TIFFTAG_BITSPERSAMPLE, 3)},
    {"Depth16", Tag(TIFFTAG_BITSPERSAMPLE, 16)},
    {"Depth0", Tag(TIFFTAG_BITSPERSAMPLE, 0)},
    {"TwoSamples", Tag(TIFFTAG_SAMPLESPERPIXEL, 2)},
    {"OtherWidth", Tag(TIFFTAG_IMAGEWIDTH, 69)},
    {"OtherHeight", Tag(TIFFTAG_IMAGELENGTH, 22)},
    {"NoWidth", Tags({{TIFFTAG_IMAGEWIDTH, 0}})},
    {"NoHeight", Tags({{TIFFTAG_IMAGELENGTH, 0}})},
    {"WidthBeyond31Bits", Tags({{TIFFTAG_IMAGEWIDTH, 0x80000000}})},
    {"HeightBeyond31Bits", Tags({{TIFFTAG_IMAGELENGTH, 0xffffffff}})},
    {"UnknownCompression", Tags({{TIFFTAG_COMPRESSION, 4711}}), false},
    {"AbsurdWidth", Tags({{TIFFTAG_IMAGEWIDTH, 100000000}}), false},
    {"AbsurdHeight", Tags({{TIFFTAG_IMAGELENGTH, kMost}}), false},
    {"AbsurdStrip", Tags({{TIFFTAG_IMAGELENGTH, kMost}, {TIFFTAG_ROWSPERSTRIP, kMost}}), false},
    {"LinkOutOfTheFile", Link(3, 0xfffffff0)},
    {"LinkToNoDirectory", Link(3, 6)},
    {"LinkToAnEarlierDirectory",
     [](std::string& bytes) {
         SetNumber(bytes, LinkTo(bytes, 3), 4, Number(bytes, LinkTo(bytes, 1), 4));
     }},
};

class BadPageTest : public ContainerFaultsTest, public ::testing::WithParamInterface<BadPage> {};

// The page before it is complete, the job ends with it, and nothing of it looks like a page.
TEST_P(BadPageTest, EndsTheJobAtThatPage) {
    MakeJob({page, NumberedPage(70, 23, 2, 2), page});
    std::string bytes = ReadText(Container());
    GetParam().Damage(bytes);
    WriteText(Container(), bytes);
    Job job(driver, JobFile());
    job.Status.RecordVersion = JobStatusRecord::kTileRecordVersion;
    job.Status.TileCount = 3;
    ASSERT_EQ(job.Open(), 1);
    const std::vector<int32_t> answers = Steps(job);
    ASSERT_GE(answers.size(), 4u);
    EXPECT_EQ(std::count(answers.begin(), answers.end(), 0), 1);
    EXPECT_EQ(answers.back(), 0);
    if (GetParam().HasNoImage) {
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

TEST_F(ContainerFaultsTest, TiledPagesHaveNoImage) {
    Job job = MakeJob({page}, {}, [](TIFF* tiff, std::size_t, std::size_t separation) {
        if (separation == 0) return;
        TIFFSetField(tiff, TIFFTAG_TILEWIDTH, 16);
        TIFFSetField(tiff, TIFFTAG_TILELENGTH, 16);
        std::string tile(32, '\0');
        for (uint32_t i = 0; i < 10; ++i)
            TIFFWriteEncodedTile(tiff, i, tile.data(), 32);
    });
    ASSERT_EQ(job.Open(), 1);
    EXPECT_EQ(Steps(job), std::vector<int32_t>{0});
}

TEST_F(ContainerFaultsTest, PageNumbers) {
    struct Row {
        std::vector<int> Numbers;  // of three pages; -1: no such tag
        int Count;
        std::size_t PrintedPages;
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
        EXPECT_EQ(Listing(folder.Out()).size(), 3 * row.PrintedPages);
    }
}

// Compressed, in strips of any height, as BigTIFF or in the other byte order: a container is
// whatever an imaging tool writes.
TEST_F(ContainerFaultsTest, ContainersOfOtherTools) {
    page = NumberedPage(72, 23, 2, 3);  // what a fax coder makes of spare bits is its own affair
    struct Row {
        const char* Mode;
        int Compression;
        uint32_t RowsPerStrip;
    };
    for (const Row& row :
         {Row{"w8", COMPRESSION_NONE, 1}, Row{"wb", COMPRESSION_LZW, 23},
          Row{"wb8", COMPRESSION_ADOBE_DEFLATE, 1000}, Row{"wl", COMPRESSION_CCITTFAX4, 4},
          Row{"w", COMPRESSION_PACKBITS, 0xffffffff}}) {
        WriteText(JobFile(), JobFileBytes({}));
        WriteContainer(
            Container(), {page},
            [&](TIFF* tiff, std::size_t, std::size_t) {
                TIFFSetField(tiff, TIFFTAG_COMPRESSION, row.Compression);
                TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, row.RowsPerStrip);
            },
            row.Mode);
        Job job(driver, JobFile());
        ASSERT_TRUE(job.Print(folder.Out(), "Proof.ps")) << row.Mode;
        EXPECT_EQ(Output("Proof_C1.raw"), ChannelBytes(page, 0)) << row.Mode;
        EXPECT_EQ(Output("Proof_C2.raw"), ChannelBytes(page, 1)) << row.Mode;
    }
}

}  // namespace
