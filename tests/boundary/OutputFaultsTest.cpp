// Output folders that are missing, full or no folders, writes that fail, temporary files that
// cannot be made, and calls out of order.

#include <unistd.h>

#include <algorithm>

#include "FileSizeLimit.h"
#include "JobRunner.h"
#include "SystemStandIns.h"

namespace {

constexpr const char* kForward = "CreateFolder=\"No\"";
constexpr const char* kForwardLines = "CreateFolder=\"No\" TypeRead=\"LINE_BY_LINE\"";
constexpr const char* kReversed = "CreateFolder=\"No\" PrinterDirection=\"YES\"";
constexpr const char* kReversedLines =
    "CreateFolder=\"No\" PrinterDirection=\"YES\" TypeRead=\"LINE_BY_LINE\"";

/// While this lives, a test that runs as root has the rights of nobody.
class OrdinaryUser {
  public:
    OrdinaryUser() : user_(geteuid()) {
        if (user_ == 0 && seteuid(kNobody) != 0) ADD_FAILURE() << "cannot change the user";
    }
    ~OrdinaryUser() {
        if (seteuid(user_) != 0) ADD_FAILURE() << "cannot change the user back";
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

  private:
    static constexpr uid_t kNobody = 65534;

    uid_t user_;
};

class OutputFaultsTest : public BoundaryTest {
  protected:
    /// The job ends with a step that fails and leaves nothing temporary; later steps are silent.
    void ExpectFails(Job& job, const std::string& answers) {
        EXPECT_EQ(job.Run(), answers);
        EXPECT_TRUE(Listing(folder.Temp()).empty());
        const Texts log = folder.Log();
        EXPECT_EQ(job.Step(), 0);
        EXPECT_EQ(folder.Log(), log);
    }

    // A line is 400 bytes, a channel 40,000.
    Page page = NumberedPage(3200, 100, 2, 1);
};

// No folder, a file, and one that may not be written to.
TEST_F(OutputFaultsTest, OutputFoldersThatAreNone) {
    WriteText(folder.Root() / "file", "kept");
    std::filesystem::permissions(folder.Out(), std::filesystem::perms(0555));
    const std::filesystem::path places[] = {folder.Root() / "missing", folder.Root() / "file",
                                            folder.Out()};
    for (const char* rules : {"", kForward}) {
        Install(2, rules);
        for (const std::filesystem::path& place : places) {
            SCOPED_TRACE(rules + place.string());
            Job job = MakeJob({page});
            EXPECT_EQ(job.Open(), 1);
            const OrdinaryUser user;
            EXPECT_EQ(job.Port(place), 1);
            EXPECT_EQ(job.Run(), *rules == '\0' ? "" : "10");
        }
    }
    std::filesystem::permissions(folder.Out(), std::filesystem::perms(0755));
    EXPECT_TRUE(Listing(folder.Out()).empty());
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
    EXPECT_EQ(folder.Log(), Texts{kStepLogLine});
}

// The step that meets the fault fails, with the last line at the latest.
TEST_F(OutputFaultsTest, WritesThatFail) {
    struct Row {
        const char* Rules;
        const char* Extension;
        rlim_t Room;  ///< bytes that a file can hold
        const char* Answers;
        const char* Text;
    };
    const char* const error = "Write Data Error";
    const Row rows[] = {
        {kForward, "raw", 40000, "1111", ""},
        {kForward, "raw", 0, "10", ""},
        {kForward, "raw", 20000, "10", ""},
        {kForward, "raw", 39999, "10", ""},
        {kForward, "tif", 20000, "10", ""},
        {kForward, "tif", 40008, "10", ""},
        {kForwardLines, "raw", 39999, "10", ""},
        {kForwardLines, "tif", 40008, "10", ""},
        // The temporary file is as large as the channel, or as both: it is full in the middle or
        // at its close.
        {kReversed, "raw", 40000, "1111", ""},
        {kReversed, "raw", 39999, "10", error},
        {kReversed, "raw", 399, "10", error},
        {kReversedLines, "raw", 80000, "1111", ""},
        {kReversedLines, "raw", 79999, "110", error},
        {kReversedLines, "raw", 399, "110", error},
        // The lines fit into it, the TIFF around them does not: the page goes on.
        {kReversed, "tif", 40000, "1111", ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(fmt::format("{} {} {}", row.Rules, row.Extension, row.Room));
        EmptyOutputFolder();
        std::filesystem::remove(folder.Root() / "log");
        Install(2, row.Rules, row.Extension);
        Job job = StartJob({page});
        std::string answers;
        {
            const FileSizeLimit limit(row.Room);
            answers = job.Run();
        }
        EXPECT_EQ(answers, row.Answers);
        EXPECT_STREQ(job.Status.StatusText, row.Text);
        EXPECT_EQ(job.Status.StatusKind, *row.Text == '\0' ? 0 : 1);
        EXPECT_TRUE(Listing(folder.Temp()).empty());
        const Texts log = folder.Log();
        if (!IsPrinted(answers) && row.Room > 0) {  // else the log has no room either
            ASSERT_FALSE(log.empty());
            EXPECT_EQ(log.back(), kStepLogLine);
        } else if (std::string(row.Extension) == "tif") {
            ASSERT_EQ(log.size(), 2U) << "the short files are named";
            EXPECT_NE(log[0].find((folder.Out() / "Proof_C1.tif").string()), std::string::npos);
            EXPECT_NE(log[1].find((folder.Out() / "Proof_C2.tif").string()), std::string::npos);
        } else {
            EXPECT_TRUE(log.empty());
        }
    }
}

TEST_F(OutputFaultsTest, BlankPlaneThatDoesNotFit) {
    Install(2, kForward);
    for (const rlim_t room : {39999, 20000}) {
        Job job = StartJob({RandomPage(3200, 100, {{"Gold"}}, 1)});
        {
            const FileSizeLimit limit(room);
            ExpectFails(job, "110");
        }
        EXPECT_STREQ(job.Status.StatusText, "Write Data Error");
        EXPECT_EQ(job.Status.StatusKind, 1);
        EXPECT_EQ(folder.Log().back(), kStepLogLine);
    }
}

// Without a usable temporary file reversed channels are written top line first.
TEST_F(OutputFaultsTest, TemporaryFolders) {
    const std::filesystem::path data = folder.Temp() / "channel_data";
    const auto expectPrinted = [&](const char* what, bool isReversed) {
        for (const char* rules : {kReversed, kReversedLines}) {
            Install(2, rules);
            ASSERT_TRUE(Print({page})) << what;
            EXPECT_EQ(Output("Proof_C1.raw"), ChannelBytes(page, "C1", isReversed)) << what;
            EXPECT_EQ(Output("Proof_C2.raw"), ChannelBytes(page, "C2", isReversed)) << what;
        }
    };
    WriteText(data, std::string(99999, 'x'));
    expectPrinted("left-over data", true);
    EXPECT_TRUE(Listing(folder.Temp()).empty());
    std::filesystem::create_directory(data);
    WriteText(data / "kept", "kept");
    expectPrinted("a folder of that name", false);
    EXPECT_EQ(ReadText(data / "kept"), "kept");
    std::filesystem::remove_all(folder.Temp());
    expectPrinted("no folder", false);
    EXPECT_FALSE(std::filesystem::exists(folder.Temp()));
    EXPECT_TRUE(folder.Messages().empty());
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
    EXPECT_EQ(folder.Log(), Texts{kStepLogLine});
    EXPECT_TRUE(Listing(folder.Out()).empty());
}

// The port of an earlier job does not count.
TEST_F(OutputFaultsTest, StepBeforeThePort) {
    Install(2, kForward);
    for (const std::size_t files : {0U, 2U}) {
        Job job = MakeJob({page});
        ASSERT_EQ(job.Open(), 1);
        ExpectFails(job, "0");
        EXPECT_EQ(folder.Log().back(), kStepLogLine);
        EXPECT_EQ(Listing(folder.Out()).size(), files);
        EXPECT_TRUE(Listing(folder.Base() / "temp").empty());
        ASSERT_TRUE(Print({page}));
    }
    EXPECT_EQ(folder.Log().size(), 2U);
}

// An open that fails releases the job before it and leaves that job's record alone; a host may
// let go of the driver at any time.
TEST_F(OutputFaultsTest, JobsLeftInTheMiddleOfAPage) {
    Install(2, kReversed);
    for (const bool isDriverDeleted : {false, true}) {
        Job first = StartJob({page});
        ASSERT_EQ(first.Step(), 1);
        {
            const StandIn clock(clockStepMs, 201);
            ASSERT_EQ(first.Step(), 1);
        }
        EXPECT_EQ(Listing(folder.Temp()), Texts{"channel_data"});
        if (isDriverDeleted) {
            driver.reset();
        } else {
            Job second(*driver, folder.Jobs() / "none");
            EXPECT_EQ(second.Open(), 0);
            EXPECT_TRUE(second.HasEnded());
            EXPECT_EQ(first.Step(), 0);
            EXPECT_EQ(driver->Call(kAbortJob), 0);
        }
        EXPECT_FALSE(first.HasEnded());
        EXPECT_TRUE(Listing(folder.Temp()).empty());
        EXPECT_TRUE(folder.Log().empty());
    }
}

}  // namespace
