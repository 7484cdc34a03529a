// Job names, job folders, and names that try to leave the output folder.

#include "JobRunner.h"

namespace {

class NamesTest : public BoundaryTest {
  protected:
    void Install(const std::string& rules, const std::string& pattern = "filename_C1.raw") {
        Model model = NumberedModel(2, rules, "raw");
        model.Colours[0].ChannelName = pattern;
        folder.InstallModel(kModelName, Describe(model));
    }
    Page page = NumberedPage(16, 2, 2, 1);
};

TEST_F(NamesTest, JobNames) {
    struct Row {
        const char* SourceName;
        const char* JobName;
    };
    constexpr Row kRows[] = {
        {"Proof.ps", "Proof"},
        {"plain", "plain"},
        {"report.final.pdf", "report.final"},
        {"a.b,c.ps", "a_c"},
        {"a.b.c,d.e,f.ps", "a_d_f"},
        {"a,b.c.ps", "a,b.c"},
        {"ab:cd:e.ps", "cd:e"},
        {"my file (copy).ps", "myfile"},
        {"a(b)c(d)e.ps", "ace"},
        {"a(b(c)d)e.ps", "ad)e"},
        {"a)b(c.ps", "a)b(c"},
        {"a(b.ps", "a(b"},
        {"a(b.c)d", "ad"},
        {" s p a c e d .ps", "spaced"},
        {"title:", "Job"},
        {"", "Job"},
        {"   ", "Job"},
        {".ps", "Job"},
        {"...", "Job"},
        {"..", "Job"},
        {"....ps", "Job"},
        {"(all)", "Job"},
        {"x: . .", "Job"},
        {"\xC3\xA4\xE2\x82\xAC.ps", "\xC3\xA4\xE2\x82\xAC"},
    };
    Install("");
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.SourceName);
        std::filesystem::remove_all(folder.Out());
        std::filesystem::create_directory(folder.Out());
        ASSERT_TRUE(MakeJob({page}).Print(folder.Out(), row.SourceName));
        const std::string job = row.JobName;
        std::string file = job + "/";
        file += job;
        EXPECT_EQ(Listing(folder.Out()),
                  (std::vector<std::string>{job + "/", file + "_C1.raw", file + "_C2.raw"}));
    }
}

// A path in the source name stays in the job name: its last component is made, its parents not.
TEST_F(NamesTest, JobNamesWithSeparators) {
    Install("");
    Job without = MakeJob({page});
    EXPECT_EQ(without.Open(), 1);
    EXPECT_EQ(without.Port(folder.Out(), "C:\\jobs\\my file (copy).ps"), 1);
    EXPECT_TRUE(without.HasEnded()) << "no parent folder";
    EXPECT_TRUE(Listing(folder.Out()).empty());

    std::filesystem::create_directory(folder.Out() / "jobs");
    for (const char* created : {"jobs/myfile/", "jobs/myfile_001/"}) {
        Job job = MakeJob({page});
        EXPECT_EQ(job.Open(), 1);
        EXPECT_EQ(job.Port(folder.Out(), "C:\\jobs\\my file (copy).ps"), 1);
        EXPECT_FALSE(job.HasEnded());
        EXPECT_EQ(Listing(folder.Out()).back(), created);
        EXPECT_EQ(driver.Call(kAbortJob), 1);
    }
}

TEST_F(NamesTest, NumberedFolders) {
    Install("CreateFolder=\"YES\"");
    for (const char* name : {"Job", "Job_001", "Job_002", "Job_003"}) {
        ASSERT_TRUE(MakeJob({page}).Print(folder.Out(), "Job.ps"));
        EXPECT_EQ(Output(std::string(name) + "/Job_C1.raw"), ChannelBytes(page, 0)) << name;
    }
    std::filesystem::remove_all(folder.Out() / "Job_002");
    ASSERT_TRUE(MakeJob({page}).Print(folder.Out(), "Job.ps"));
    EXPECT_EQ(Output("Job_002/Job_C1.raw"), ChannelBytes(page, 0));
}

TEST_F(NamesTest, WithEveryNumberTakenTheLastFolderIsUsed) {
    Install("");
    std::filesystem::create_directory(folder.Out() / "Job");
    for (int k = 1; k <= 1000; ++k) {
        std::string number = std::to_string(k);
        if (number.size() < 3) number.insert(0, 3 - number.size(), '0');
        std::filesystem::create_directory(folder.Out() / ("Job_" + number));
    }
    ASSERT_TRUE(MakeJob({page}).Print(folder.Out(), "Job.ps"));
    EXPECT_EQ(Output("Job_1000/Job_C1.raw"), ChannelBytes(page, 0));
    EXPECT_EQ(Listing(folder.Out()).size(), 1001u + 2u);
}

TEST_F(NamesTest, EmptyFolderTextMeansTheBaseFoldersTemp) {
    Install("");
    ASSERT_TRUE(MakeJob({page}).Print("", "Proof.ps"));
    EXPECT_EQ(ReadText(folder.Base() / "temp/Proof/Proof_C2.raw"), ChannelBytes(page, 1));
    Install("CreateFolder=\"nO\"");
    const Driver fresh;
    MakeJob({page});
    ASSERT_TRUE(Job(fresh, JobFile()).Print("", "Proof.ps"));
    EXPECT_EQ(ReadText(folder.Base() / "temp/Proof_C2.raw"), ChannelBytes(page, 1));
}

/// Names that point out of the output folder, or at a drive.
const char* const kEvilNames[] = {
    "..\\..\\evil.raw",
    "../../evil.raw",
    "a\\..\\..\\evil.raw",
    "..\\filename.raw",
    "..",
    "C:\\x.raw",
    "C:x.raw",
    "sub\\C:x.raw",
    "..\\sub\\evil.raw",
    "sub/../../evil.raw",
    "sub\\..\\..\\evil.raw",
};

TEST_F(NamesTest, ChannelNamesThatLeaveTheFolder) {
    for (const char* name : kEvilNames) {
        SCOPED_TRACE(name);
        Install("CreateFolder=\"No\"", name);
        std::filesystem::remove_all(folder.Out());
        std::filesystem::create_directories(folder.Out() / "sub");
        const Driver fresh;
        MakeJob({page});
        const std::vector<std::string> before = Listing(folder.Root());
        Job job(fresh, JobFile());
        ASSERT_EQ(job.Open(), 1);
        EXPECT_EQ(job.Port(folder.Out(), "Proof.ps"), 1);
        EXPECT_EQ(job.Run(), (std::vector<int32_t>{1, 0}));
        EXPECT_EQ(folder.Log(), std::vector<std::string>{kStepLogLine});
        std::filesystem::remove(folder.Root() / "log");
        EXPECT_EQ(Listing(folder.Root()), before);
    }
}

// Leading separators are dropped: the name stays below the output folder.
TEST_F(NamesTest, AbsoluteChannelNamesStayInTheFolder) {
    for (const std::string& name :
         {std::string("/rooted.raw"), std::string("\\\\rooted.raw"), std::string("./rooted.raw"),
          std::string("sub\\..\\rooted.raw")}) {
        SCOPED_TRACE(name);
        Install("CreateFolder=\"No\"", name);
        std::filesystem::remove_all(folder.Out());
        std::filesystem::create_directories(folder.Out() / "sub");
        const Driver fresh;
        MakeJob({page});
        ASSERT_TRUE(Job(fresh, JobFile()).Print(folder.Out(), "Proof.ps"));
        EXPECT_EQ(Output("rooted.raw"), ChannelBytes(page, 0));
        EXPECT_EQ(Listing(folder.Out()).size(), 3u);
    }
    EXPECT_FALSE(std::filesystem::exists("/rooted.raw"));
}

TEST_F(NamesTest, JobNamesThatLeaveTheFolder) {
    const char* const names[] = {
        "..\\..\\evil.ps", "../../evil.ps", "..\\evil.x.ps",      "x:..\\evil.ps",
        "t:C:\\evil.ps",   "t:C:evil.ps",   "a\\..\\..\\evil.ps",
    };
    std::filesystem::create_directory(folder.Out() / "a");
    for (const char* rules : {"CreateFolder=\"YES\"", "CreateFolder=\"No\""}) {
        Install(rules);
        const bool makesFolder = std::string(rules).find("YES") != std::string::npos;
        const Driver fresh;
        MakeJob({page});
        const std::vector<std::string> before = Listing(folder.Root());
        for (const char* name : names) {
            SCOPED_TRACE(std::string(rules) + name);
            Job job(fresh, JobFile());
            ASSERT_EQ(job.Open(), 1);
            EXPECT_EQ(job.Port(folder.Out(), name), 1);
            EXPECT_EQ(job.HasEnded(), makesFolder);
            if (!makesFolder) {
                EXPECT_EQ(job.Run(), (std::vector<int32_t>{1, 0}));
            }
            std::filesystem::remove(folder.Root() / "log");
            EXPECT_EQ(Listing(folder.Root()), before);
        }
    }
}

TEST_F(NamesTest, LongNames) {
    Install("CreateFolder=\"No\"");
    Job job = MakeJob({page});
    ASSERT_EQ(job.Open(), 1);
    EXPECT_EQ(job.Port(folder.Out(), std::string(100000, 'n')), 1);
    EXPECT_EQ(job.Run().back(), 0);
    EXPECT_TRUE(job.HasEnded());
    EXPECT_TRUE(Listing(folder.Out()).empty());
}

TEST_F(NamesTest, PortsThatAreNotServed) {
    Install("");
    for (const int32_t port : {0, 255, 257, -1}) {
        Job job = MakeJob({page});
        job.Status.JobState = port;
        job.Status.OwnerWindow = &job;  // this message has no owner
        EXPECT_EQ(job.Open(), 1);
        EXPECT_EQ(job.Status.JobState, port);
        EXPECT_EQ(job.Port(folder.Out(), "Proof.ps"), 1);
        EXPECT_TRUE(job.HasEnded());
    }
    EXPECT_EQ(folder.Messages(),
              std::vector<std::string>(4,
                                       "The driver doesn't support the current port, please "
                                       "select another port."));
    EXPECT_TRUE(Listing(folder.Out()).empty());
}

TEST_F(NamesTest, NullTexts) {
    Install("");
    const char* const none = nullptr;
    for (int missing = 0; missing < 3; ++missing) {
        Job job = MakeJob({page});
        ASSERT_EQ(job.Open(), 1);
        EXPECT_EQ(driver.Call(kOpenPort, missing == 1 ? folder.Out().c_str() : none,
                              missing == 0 ? "Proof.ps" : none),
                  1);
        EXPECT_TRUE(job.HasEnded());
    }
    EXPECT_TRUE(Listing(folder.Out()).empty());
    EXPECT_TRUE(Listing(folder.Base() / "temp").empty());
}

}  // namespace
