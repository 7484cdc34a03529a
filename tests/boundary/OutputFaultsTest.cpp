// Output folders that are missing, full or no folders, writes that fail, temporary files that
// cannot be made, and calls out of order.

#include <algorithm>

#include "FileSizeLimit.h"
#include "JobRunner.h"

namespace {

constexpr const char* kForward = "CreateFolder=\"No\"";
constexpr const char* kForwardLines = "CreateFolder=\"No\" TypeRead=\"LINE_BY_LINE\"";
constexpr const char* kReversed = "CreateFolder=\"No\" PrinterDirection=\"YES\"";
constexpr const char* kReversedLines =
    "CreateFolder=\"No\" PrinterDirection=\"YES\" TypeRead=\"LINE_BY_LINE\"";

class OutputFaultsTest : public BoundaryTest {
  protected:
    /// The job ends with a step that fails and leaves nothing temporary; later steps are silent.
    void ExpectFails(Job& job, const std::string& answers) {
        EXPECT_EQ(job.Run(), answers);
        EXPECT_TRUE(Listing(folder.Temp()).empty());
        const Texts log = folder.Errors();
        EXPECT_EQ(job.Step(), 0);
        EXPECT_EQ(folder.Errors(), log);
    }

    // A line is 400 bytes, a channel 40,000.
    Page page = NumberedPage(3200, 100, 2, 1);
};

TEST_F(OutputFaultsTest, OutputFoldersThatAreNone) {
    WriteText(folder.Root() / "file", "kept");
    for (const char* rules : {"", kForward}) {
        Install(2, rules);
        for (const char* name : {"missing", "file"}) {
            Job job = MakeJob({page});
            EXPECT_EQ(job.Open() + job.Port(folder.Root() / name), 2);
            EXPECT_EQ(job.Run(), *rules == '\0' ? "" : "10") << rules << name;
        }
    }
    EXPECT_EQ(FailedSteps(), 2U);
    EXPECT_EQ(ReadText(folder.Root() / "file"), "kept");
    EXPECT_FALSE(std::filesystem::exists(folder.Root() / "missing"));
}

// A folder where a channel file should be.
TEST_F(OutputFaultsTest, ChannelNameTakenByAFolder) {
    Install(2, kForward);
    std::filesystem::create_directory(folder.Out() / "Proof_C2.raw");
    Job job = StartJob({page});
    ExpectFails(job, "10");
    EXPECT_EQ(Output("Proof_C1.raw"), ChannelBytes(page, "C1"));
    EXPECT_EQ(FailedSteps(), 1U);
}

// The step that meets the fault fails, with the last line at the latest.
TEST_F(OutputFaultsTest, WritesThatFail) {
    struct Row {
        const char* Rules;
        const char* Extension;
        rlim_t Room;  ///< bytes that a file can hold
        const char* Answers;
        const char* Text;
        Page Printed;
    };
    const Page blank = RandomPage(3200, 100, {{"Gold"}}, 1);
    const Page large = NumberedPage(32'000, 200, 2, 1);
    const char* const error = "Write Data Error";
    const Row rows[] = {
        {kForward, "raw", 40000, "1111", "", page},
        {kForward, "raw", 20000, "10", "", page},
        {kForward, "raw", 39999, "10", "", page},
        {kForward, "tif", 20000, "10", "", page},
        {kForward, "tif", 40008, "10", "", page},
        {kForwardLines, "raw", 39999, "10", "", page},
        {kForwardLines, "tif", 40008, "10", "", page},
        {kForward, "raw", 39999, "110", error, blank},
        {kForward, "raw", 20000, "110", error, blank},
        // The temporary file is as large as the channel, or as both: it is full in the middle or
        // at its close.
        {kReversed, "raw", 40000, "1111", "", page},
        {kReversed, "raw", 39999, "10", error, page},
        {kReversed, "raw", 399, "10", error, page},
        {kReversed, "raw", 300'000, "10", error, large},
        {kReversedLines, "raw", 80000, "1111", "", page},
        {kReversedLines, "raw", 79999, "110", error, page},
        {kReversedLines, "raw", 399, "110", error, page},
        {kReversedLines, "raw", 300'000, "10", error, large},
        // The lines fit into it, the TIFF around them does not: the page goes on.
        {kReversed, "tif", 40000, "1111", "", page},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(fmt::format("{} {} {}", row.Rules, row.Extension, row.Room));
        EmptyOutputFolder();
        std::filesystem::remove(folder.Root() / "log");
        Install(2, row.Rules, row.Extension);
        Job job = StartJob({row.Printed});
        std::string answers;
        {
            const FileSizeLimit limit(row.Room);
            answers = job.Run();
        }
        EXPECT_EQ(answers, row.Answers);
        EXPECT_STREQ(job.Status.StatusText, row.Text);
        EXPECT_EQ(job.Status.StatusKind, *row.Text == '\0' ? 0 : 1);
        EXPECT_TRUE(Listing(folder.Temp()).empty());
        const Texts log = folder.Errors();
        if (!IsPrinted(answers)) {
            EXPECT_EQ(log.empty() ? "" : log.back(), kStepLogLine);
        } else if (row.Extension == std::string("tif")) {
            ASSERT_EQ(log.size(), 2U) << "the short files are named";
            EXPECT_NE(log[0].find((folder.Out() / "Proof_C1.tif").string()), std::string::npos);
            EXPECT_NE(log[1].find((folder.Out() / "Proof_C2.tif").string()), std::string::npos);
        } else {
            EXPECT_TRUE(log.empty());
        }
    }
}

// Height × channels × line bytes and one MiB more, for channels without separations too.
TEST_F(OutputFaultsTest, DiskSpace) {
    Install(5, kForward);
    constexpr int64_t kNeeded = int64_t{100} * 5 * 400 + 0x100000;
    {
        const StandIn space(freeSpaceBytes, kNeeded);
        EXPECT_TRUE(Print({page}));
    }
    EXPECT_TRUE(folder.Messages().empty());
    EmptyOutputFolder();
    const StandIn space(freeSpaceBytes, kNeeded - 1);
    Job job = StartJob({page});
    job.Status.OwnerWindow = reinterpret_cast<void*>(uintptr_t{0x1234});
    ExpectFails(job, "0");
    EXPECT_EQ(folder.Messages(), Texts{"{\"caption\":\"\",\"owner\":4660,\"text\":\"There is not "
                                       "enough disk space.\",\"type\":65536}"});
    EXPECT_EQ(FailedSteps(), 1U);
    EXPECT_TRUE(Listing(folder.Out()).empty());
}

// The port of an earlier job does not count.
TEST_F(OutputFaultsTest, StepBeforeThePort) {
    Install(2, kForward);
    for (const std::size_t files : {0U, 2U}) {
        Job job = MakeJob({page});
        ASSERT_EQ(job.Open(), 1);
        ExpectFails(job, "0");
        EXPECT_EQ(folder.Errors().back(), kStepLogLine);
        EXPECT_EQ(Listing(folder.Out()).size(), files);
        EXPECT_TRUE(Listing(folder.Base() / "temp").empty());
        ASSERT_TRUE(Print({page}));
    }
    EXPECT_EQ(FailedSteps(), 2U);
}

}  // namespace
