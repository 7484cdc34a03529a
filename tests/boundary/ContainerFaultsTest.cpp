// Job files and containers that are missing, short, damaged or absurd: each ends the job with an
// answer, and none prints as blank paper.

#include <sys/stat.h>

#include "JobRunner.h"

namespace {

class ContainerFaultsTest : public BoundaryTest {
  protected:
    void SetUp() override { Install(2, "CreateFolder=\"No\""); }
    void ExpectOpenFails(const char* what) {
        Job job(*driver, JobFile());
        EXPECT_EQ(job.Open(), 0) << what;
        EXPECT_TRUE(job.HasEnded()) << what;
        EXPECT_EQ(job.Step(), 0) << what;
        EXPECT_EQ(driver->Call(kAbortJob), 0) << what;
        EXPECT_EQ(job.Port(folder.Out()), 1) << what;
        EXPECT_TRUE(Listing(folder.Out()).empty()) << what;
    }

    /// The answers of a job on the files that stand; "" when it does not open.
    std::string Answers() {
        Job job(*driver, JobFile());
        const bool isOpen = job.Open() == 1 && job.Port(folder.Out()) == 1;
        std::string answers = isOpen ? job.Run() : "";
        EXPECT_TRUE(job.HasEnded());
        return answers;
    }

    Page page = NumberedPage(70, 23, 2, 1);
};

TEST_F(ContainerFaultsTest, JobFiles) {
    WriteContainer(Container(), {page});
    ExpectOpenFails("missing");
    EXPECT_EQ(std::filesystem::file_size(JobFile()), 0U) << "opening for reading makes a file";
    const std::string good = JobFileBytes();
    for (const std::size_t size : {0U, 1U, 2000U, 3939U}) {
        WriteText(JobFile(), good.substr(0, size));
        ExpectOpenFails("short");
    }
    EXPECT_TRUE(folder.Messages().empty());
    WriteText(JobFile(), std::string(3940, '\xff'));  // no text has its NUL
    ExpectOpenFails("garbage");
    EXPECT_EQ(folder.Messages(), Texts{"Cannot get XML "});
    std::filesystem::remove(JobFile());
    std::filesystem::create_directory(JobFile());
    ExpectOpenFails("a folder");
    std::filesystem::remove(JobFile());
    ASSERT_EQ(mkfifo(JobFile().c_str(), 0600), 0);
    ExpectOpenFails("a pipe");
    std::filesystem::remove(JobFile());
    EXPECT_EQ(FailedSteps(), 0U);

    WriteText(JobFile(), good + std::string(100000, 'x'));  // only its beginning counts
    EXPECT_EQ(Answers(), "1111");
    EXPECT_EQ(Output("Proof_C2.raw"), ChannelBytes(page, "C2"));
}

// A container of the older name serves where the newer one is missing.
TEST_F(ContainerFaultsTest, NamesOfTheContainer) {
    const Page other = NumberedPage(70, 23, 2, 2);
    MakeJob({other});
    std::filesystem::rename(Container(), folder.Jobs() / "job.tif");
    EXPECT_EQ(Answers(), "1111");
    EXPECT_EQ(Output("Proof_C2.raw"), ChannelBytes(other, "C2"));
    WriteContainer(Container(), {page});
    EXPECT_EQ(Answers(), "1111");
    EXPECT_EQ(Output("Proof_C2.raw"), ChannelBytes(page, "C2"));
}

TEST_F(ContainerFaultsTest, FilesThatAreNoContainer) {
    WriteText(JobFile(), JobFileBytes());
    ExpectOpenFails("no container");
    std::size_t failedSteps = 0;
    for (const std::string& text : {std::string(), std::string("no TIFF at all"),
                                    std::string("II+\0\x08\0\0\0", 8) + std::string(64, '\xff')}) {
        WriteText(Container(), text);
        EXPECT_EQ(Answers(), "0");
        EXPECT_EQ(FailedSteps(), ++failedSteps);
    }
    EXPECT_TRUE(Listing(folder.Out()).empty());
}

// Pages before a damaged one are complete, the job ends with it, and of it there is nothing but the
// rows before the damage.
TEST_F(ContainerFaultsTest, DamagedPages) {
    const auto noImage = [](TIFF* tiff, std::size_t p, std::size_t separation) {
        if (p == 1 && separation == 1) TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, 1);
    };
    const auto tooManyRows = [](TIFF* tiff, std::size_t p, std::size_t /*separation*/) {
        if (p != 1) return;
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 100'000);
    };
    struct Row {
        const char* Name;
        AlterDirectory Alter;
        bool HasFirstRows;  ///< of the second page's first channel
        const char* Answers;
    };
    const Row rows[] = {
        {"no image", noImage, false, "1110"},
        {"rows that are not there", tooManyRows, true, "11110"},
    };
    std::size_t failedSteps = 0;
    for (const uint32_t width : {64U, 70U}) {  // rows that are whole lines, and rows that are not
        for (const Row& row : rows) {
            SCOPED_TRACE(fmt::format("{} pixels, {}", width, row.Name));
            EmptyOutputFolder();
            const Page good = NumberedPage(width, 23, 2, 1);
            Job job = MakeJob({good, good, good}, {}, row.Alter);
            job.Status.RecordVersion = JobStatusRecord::kTileRecordVersion;
            job.Status.TileCount = 9;
            EXPECT_EQ(job.Open() + job.Port(folder.Out()), 2);
            EXPECT_EQ(job.Run(), row.Answers);
            EXPECT_EQ(Output("Proof-tile2/Proof_C1.raw"),
                      row.HasFirstRows ? ChannelBytes(good, "C1") : "");
            for (int number = 1; number <= 9; ++number) {
                const std::string tile = fmt::format("Proof-tile{}/Proof_", number);
                EXPECT_EQ(Output(tile + "C2.raw"), number == 1 ? ChannelBytes(good, "C2") : "");
            }
            ++failedSteps;
        }
    }
    EXPECT_EQ(FailedSteps(), failedSteps);
}

}  // namespace
