// Output folders that are missing, full or no folders, writes that fail, temporary files that
// cannot be made, and calls out of order.

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>

#include "FileSizeLimit.h"
#include "JobRunner.h"
#include "SystemStandIns.h"

namespace {

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
    void Install(const std::string& rules, const std::string& extension = "raw") {
        folder.InstallModel(kModelName, Describe(NumberedModel(2, rules, extension)));
    }
    Job OpenedJob(const std::filesystem::path& out) {
        Job job = MakeJob({page});
        EXPECT_EQ(job.Open(), 1);
        EXPECT_EQ(job.Port(out, "Proof.ps"), 1);
        return job;
    }
    void ExpectStepFails(Job& job, const std::vector<int32_t>& answers) {
        EXPECT_EQ(job.Run(), answers);
        EXPECT_TRUE(job.HasEnded());
        EXPECT_EQ(job.Step(), 0);
        EXPECT_TRUE(Listing(folder.Temp()).empty());
    }

    // A line is 400 bytes, a channel 40,000.
    Page page = NumberedPage(3200, 100, 2, 1);
    const std::size_t lineBytes = LineBytes(page);
    const std::size_t channelBytes = 100 * lineBytes;
};

TEST_F(OutputFaultsTest, OutputFoldersThatAreNone) {
    WriteText(folder.Root() / "file", "kept");
    const std::filesystem::path places[] = {folder.Root() / "missing", folder.Root() / "file"};
    for (const std::filesystem::path& place : places) {
        Install("");
        Job job = OpenedJob(place);
        EXPECT_TRUE(job.HasEnded()) << "no job folder can be made";
    }
    EXPECT_TRUE(folder.Log().empty());
    Install("CreateFolder=\"No\"");
    const Driver fresh;
    for (const std::filesystem::path& place : places) {
        MakeJob({page});
        Job job(fresh, JobFile());
        ASSERT_EQ(job.Open(), 1);
        EXPECT_EQ(job.Port(place, "Proof.ps"), 1);
        EXPECT_FALSE(job.HasEnded());
        EXPECT_EQ(job.Run(), (std::vector<int32_t>{1, 0}));
    }
    EXPECT_EQ(folder.Log(), std::vector<std::string>(2, kStepLogLine));
    EXPECT_EQ(ReadText(folder.Root() / "file"), "kept");
    EXPECT_FALSE(std::filesystem::exists(folder.Root() / "missing"));
}

TEST_F(OutputFaultsTest, ReadOnlyOutputFolder) {
    std::filesystem::permissions(folder.Out(), std::filesystem::perms(0555));
    for (const char* rules : {"CreateFolder=\"YES\"", "CreateFolder=\"No\""}) {
        Install(rules);
        const Driver fresh;
        MakeJob({page});
        Job job(fresh, JobFile());
        ASSERT_EQ(job.Open(), 1);
        {
            const OrdinaryUser user;
            EXPECT_EQ(job.Port(folder.Out(), "Proof.ps"), 1);
            EXPECT_EQ(job.HasEnded(), std::string(rules).find("YES") != std::string::npos);
            job.Run();
        }
        EXPECT_TRUE(job.HasEnded());
        EXPECT_TRUE(Listing(folder.Out()).empty());
    }
    std::filesystem::permissions(folder.Out(), std::filesystem::perms(0755));
}

// A folder where a channel file should be.
TEST_F(OutputFaultsTest, ChannelNameTakenByAFolder) {
    Install("CreateFolder=\"No\"");
    std::filesystem::create_directory(folder.Out() / "Proof_C2.raw");
    Job job = OpenedJob(folder.Out());
    ExpectStepFails(job, {1, 0});
    EXPECT_EQ(Output("Proof_C1.raw"), ChannelBytes(page, 0));
    EXPECT_EQ(folder.Log(), std::vector<std::string>{kStepLogLine});
}

struct WriteFault {
    const char* Rules;
    const char* Extension;
    std::size_t Limit;  ///< bytes that a file can hold
};
constexpr WriteFault kWriteFaults[] = {
    {"", "raw", 0},
    {"", "raw", 1},
    {"", "raw", 20000},
    {"", "raw", 39600},
    {"", "raw", 39999},
    {"", "tif", 0},
    {"", "tif", 20000},
    {"", "tif", 39999},
    {"", "tif", 40008},
    {"TypeRead=\"LINE_BY_LINE\"", "raw", 39999},
    {"TypeRead=\"LINE_BY_LINE\"", "tif", 40008},
};

class WriteFaultTest : public OutputFaultsTest, public ::testing::WithParamInterface<WriteFault> {};

// The step that meets the fault fails, with the last line at the latest.
TEST_P(WriteFaultTest, EndsTheJob) {
    Install(std::string("CreateFolder=\"No\" ") + GetParam().Rules, GetParam().Extension);
    Job job = OpenedJob(folder.Out());
    {
        const FileSizeLimit limit(GetParam().Limit);
        ExpectStepFails(job, {1, 0});
    }
    const std::vector<std::string> log = folder.Log();
    if (GetParam().Limit > 1000) {  // else the log has no room either
        ASSERT_FALSE(log.empty());
        EXPECT_EQ(log.back(), kStepLogLine);
    }
}

INSTANTIATE_TEST_SUITE_P(Limits, WriteFaultTest, ::testing::ValuesIn(kWriteFaults),
                         [](const auto& tested) { return "Case" + std::to_string(tested.index); });

// With exactly the room it needs a job succeeds: the limit is no fault of its own.
TEST_F(OutputFaultsTest, ExactlyEnoughRoom) {
    Install("CreateFolder=\"No\" PrinterDirection=\"YES\"");
    Job job = OpenedJob(folder.Out());
    {
        const FileSizeLimit limit(channelBytes);
        EXPECT_EQ(job.Run(), (std::vector<int32_t>{1, 1, 1, 1}));
    }
    EXPECT_EQ(Output("Proof_C2.raw"), ChannelBytes(page, 1, true));
}

TEST_F(OutputFaultsTest, BlankPlaneThatDoesNotFit) {
    Install("CreateFolder=\"No\"");
    page = RandomPage(3200, 100, {{"Gold"}}, 1);
    for (const rlim_t room : {channelBytes - 1, channelBytes / 2}) {
        Job job = OpenedJob(folder.Out());
        {
            const FileSizeLimit limit(room);
            EXPECT_EQ(job.Run(), (std::vector<int32_t>{1, 1, 0}));
        }
        EXPECT_STREQ(job.Status.StatusText, "Write Data Error");
        EXPECT_EQ(job.Status.StatusKind, 1);
        EXPECT_EQ(folder.Log().back(), kStepLogLine);
    }
}

// The temporary file is as large as the channel: it is full in the middle, or at its close.
TEST_F(OutputFaultsTest, ReversedDataThatDoesNotFit) {
    for (const char* order : {"", " TypeRead=\"LINE_BY_LINE\""}) {
        for (const rlim_t room : {channelBytes - 1, channelBytes / 2, lineBytes - 1}) {
            SCOPED_TRACE(std::string(order) + std::to_string(room));
            Install(std::string("CreateFolder=\"No\" PrinterDirection=\"YES\"") + order);
            const Driver fresh;
            MakeJob({page});
            Job job(fresh, JobFile());
            ASSERT_EQ(job.Open(), 1);
            ASSERT_EQ(job.Port(folder.Out(), "Proof.ps"), 1);
            std::vector<int32_t> answers;
            {
                const FileSizeLimit limit(room);
                answers = job.Run();
            }
            EXPECT_EQ(answers.back(), 0);
            EXPECT_STREQ(job.Status.StatusText, "Write Data Error");
            EXPECT_EQ(job.Status.StatusKind, 1);
            EXPECT_EQ(folder.Log().back(), kStepLogLine);
            EXPECT_TRUE(Listing(folder.Temp()).empty());
        }
    }
}

// The lines fit into the temporary file, the TIFF around them does not: the page goes on, and
// the log names the short file.
TEST_F(OutputFaultsTest, ReversedCopyThatDoesNotFit) {
    Install("CreateFolder=\"No\" PrinterDirection=\"YES\"", "tif");
    Job job = OpenedJob(folder.Out());
    {
        const FileSizeLimit limit(channelBytes);
        EXPECT_EQ(job.Run(), (std::vector<int32_t>{1, 1, 1, 1}));
    }
    const std::vector<std::string> log = folder.Log();
    for (const char* name : {"Proof_C1.tif", "Proof_C2.tif"}) {
        const std::string path = (folder.Out() / name).string();
        EXPECT_TRUE(std::any_of(log.begin(), log.end(), [&](const std::string& line) {
            return line.substr(0, 2) == "E " && line.find(path) != std::string::npos;
        })) << name;
    }
    EXPECT_TRUE(Listing(folder.Temp()).empty());
}

// Without a usable temporary file reversed channels are written top line first.
TEST_F(OutputFaultsTest, TemporaryFolders) {
    struct Row {
        const char* Name;
        std::function<void(const std::filesystem::path&)> Prepare;
        bool IsReversed;
    };
    const Row rows[] = {
        {"missing", [](const auto& temp) { std::filesystem::remove_all(temp); }, false},
        {"a file",
         [](const auto& temp) {
             std::filesystem::remove_all(temp);
             WriteText(temp, "kept");
         },
         false},
        {"channel_data is a folder",
         [](const auto& temp) {
             std::filesystem::create_directories(temp / "channel_data");
             WriteText(temp / "channel_data/kept", "kept");
         },
         false},
        {"left-over channel_data",
         [](const auto& temp) { WriteText(temp / "channel_data", std::string(99999, 'x')); }, true},
    };
    for (const char* order : {"", " TypeRead=\"LINE_BY_LINE\""}) {
        Install(std::string("CreateFolder=\"No\" PrinterDirection=\"YES\"") + order);
        const Driver fresh;
        for (const Row& row : rows) {
            SCOPED_TRACE(std::string(row.Name) + order);
            std::filesystem::remove_all(folder.Temp());
            std::filesystem::create_directory(folder.Temp());
            row.Prepare(folder.Temp());
            const bool existed = std::filesystem::exists(folder.Temp());
            const std::vector<std::string> before = std::filesystem::is_directory(folder.Temp())
                                                        ? Listing(folder.Temp())
                                                        : std::vector<std::string>{};
            MakeJob({page});
            ASSERT_TRUE(Job(fresh, JobFile()).Print(folder.Out(), "Proof.ps"));
            EXPECT_EQ(Output("Proof_C1.raw"), ChannelBytes(page, 0, row.IsReversed));
            EXPECT_EQ(Output("Proof_C2.raw"), ChannelBytes(page, 1, row.IsReversed));
            EXPECT_EQ(std::filesystem::exists(folder.Temp()), existed);
            if (row.IsReversed) {
                EXPECT_TRUE(Listing(folder.Temp()).empty());
            } else if (std::filesystem::is_directory(folder.Temp())) {
                EXPECT_EQ(Listing(folder.Temp()), before);
            }
        }
    }
    EXPECT_TRUE(folder.Messages().empty());
}

// Height × channels × line bytes and one MiB more, for channels without separations too.
TEST_F(OutputFaultsTest, DiskSpace) {
    folder.InstallModel(kModelName, Describe(NumberedModel(5, "CreateFolder=\"No\"", "raw")));
    const uint64_t needed = uint64_t{100} * 5 * lineBytes + 0x100000;
    {
        const FreeSpace space(needed);
        Job job = OpenedJob(folder.Out());
        EXPECT_EQ(job.Run(), (std::vector<int32_t>{1, 1, 1, 1}));
    }
    EXPECT_TRUE(folder.Messages().empty());
    for (const auto& entry : std::filesystem::directory_iterator(folder.Out())) {
        std::filesystem::remove(entry);
    }
    const FreeSpace space(needed - 1);
    Job job = OpenedJob(folder.Out());
    job.Status.OwnerWindow = reinterpret_cast<void*>(uintptr_t{0x1234});
    ExpectStepFails(job, {0});
    EXPECT_EQ(folder.Messages(),
              std::vector<std::string>{"{\"caption\":\"\",\"owner\":4660,\"text\":\"There is not "
                                       "enough disk space.\",\"type\":65536}"});
    EXPECT_EQ(folder.Log(), std::vector<std::string>{kStepLogLine});
    EXPECT_TRUE(Listing(folder.Out()).empty());
}

TEST_F(OutputFaultsTest, StepBeforeThePort) {
    Install("CreateFolder=\"No\"");
    for (const bool withPrinted : {false, true}) {
        if (withPrinted) {
            ASSERT_TRUE(MakeJob({page}).Print(folder.Out(), "Proof.ps"));
        }
        const std::vector<std::string> before = Listing(folder.Root());
        Job job = MakeJob({page});
        ASSERT_EQ(job.Open(), 1);
        const std::size_t logged = folder.Log().size();
        ExpectStepFails(job, {0});
        EXPECT_EQ(folder.Log().size(), logged + 1);
        EXPECT_EQ(folder.Log().back(), kStepLogLine);
        const std::vector<std::string> channels = Listing(folder.Out());
        EXPECT_EQ(channels.size(), withPrinted ? 2u : 0u);
        EXPECT_TRUE(Listing(folder.Base() / "temp").empty());
    }
}

// An open that fails releases the job before it and leaves that job's record alone.
TEST_F(OutputFaultsTest, FailedOpenInTheMiddleOfAJob) {
    Install("CreateFolder=\"No\" PrinterDirection=\"YES\"");
    Job first = OpenedJob(folder.Out());
    ASSERT_EQ(first.Step(), 1);
    {
        const SteppingClock clock(201);
        ASSERT_EQ(first.Step(), 1);
    }
    Job second(driver, folder.Jobs() / "none");
    EXPECT_EQ(second.Open(), 0);
    EXPECT_TRUE(second.HasEnded());
    EXPECT_FALSE(first.HasEnded());
    EXPECT_EQ(first.Step(), 0);
    EXPECT_EQ(driver.Call(kAbortJob), 0);
    EXPECT_FALSE(first.HasEnded());
    EXPECT_TRUE(Listing(folder.Temp()).empty());
    EXPECT_TRUE(folder.Log().empty());
    EXPECT_TRUE(MakeJob({page}).Print(folder.Out(), "Proof.ps"));
}

// A host may let go of the driver at any time.
TEST_F(OutputFaultsTest, DriverDeletedInTheMiddleOfAPage) {
    Install("CreateFolder=\"No\" PrinterDirection=\"YES\"");
    MakeJob({page});
    {
        const Driver shortLived;
        Job job(shortLived, JobFile());
        ASSERT_EQ(job.Open(), 1);
        ASSERT_EQ(job.Port(folder.Out(), "Proof.ps"), 1);
        ASSERT_EQ(job.Step(), 1);
        const SteppingClock clock(201);
        ASSERT_EQ(job.Step(), 1);
        EXPECT_FALSE(Listing(folder.Temp()).empty());
    }
    EXPECT_TRUE(Listing(folder.Temp()).empty());
}

}  // namespace
