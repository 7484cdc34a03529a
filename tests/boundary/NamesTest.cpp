// Job names, job folders, and names that try to leave the output folder.

#include "JobRunner.h"

namespace {

constexpr const char* kNoFolder = "CreateFolder=\"No\"";

class NamesTest : public BoundaryTest {
  protected:
    void InstallChannel(const std::string& pattern) {
        Model model = NumberedModel(2, kNoFolder);
        model.Colours[0].ChannelName = pattern;
        Install(Describe(model));
    }

    Page page = NumberedPage(16, 2, 2, 1);
};

TEST_F(NamesTest, JobNames) {
    constexpr std::pair<const char*, const char*> kNames[] = {
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
        {"..", "Job"},
        {"....ps", "Job"},
        {"(all)", "Job"},
        {"x: . .", "Job"},
        {"\xC3\xA4\xE2\x82\xAC.ps", "\xC3\xA4\xE2\x82\xAC"},
    };
    Install(2, "");
    for (const auto& [source, job] : kNames) {
        EmptyOutputFolder();
        ASSERT_TRUE(Print({page}, source)) << source;
        EXPECT_EQ(Listing(folder.Out()),
                  (Texts{fmt::format("{}/", job), fmt::format("{0}/{0}_C1.raw", job),
                         fmt::format("{0}/{0}_C2.raw", job)}));
    }
}

// A path in the source name stays in the job name: its last component is made, its parents not.
TEST_F(NamesTest, JobNamesWithSeparators) {
    Install(2, "");
    EXPECT_TRUE(StartJob({page}, "C:\\jobs\\my file (copy).ps").HasEnded()) << "no parent folder";
    EXPECT_TRUE(Listing(folder.Out()).empty());
    std::filesystem::create_directory(folder.Out() / "jobs");
    for (const char* created : {"jobs/myfile/", "jobs/myfile_001/"}) {
        EXPECT_FALSE(StartJob({page}, "C:\\jobs\\my file (copy).ps").HasEnded());
        EXPECT_EQ(Listing(folder.Out()).back(), created);
        EXPECT_EQ(driver->Call(kAbortJob), 1);
    }
}

TEST_F(NamesTest, NumberedFolders) {
    Install(2, "CreateFolder=\"YES\"");
    for (int k = 0; k <= 1000; ++k) {
        const std::string name = k == 0 ? "Job" : fmt::format("Job_{:03}", k);
        if (k == 0 || k == 1 || k == 2 || k == 1000) {
            ASSERT_TRUE(Print({page}, "Job.ps"));
            EXPECT_EQ(Output(name + "/Job_C1.raw"), ChannelBytes(page, "C1")) << name;
        } else {
            std::filesystem::create_directory(folder.Out() / name);
        }
    }
    // With every number taken the last folder is used; one that was removed is made again.
    for (const char* name : {"Job_1000", "Job_002"}) {
        std::filesystem::remove(folder.Out() / "Job_1000/Job_C1.raw");
        if (name != std::string("Job_1000")) std::filesystem::remove_all(folder.Out() / name);
        ASSERT_TRUE(Print({page}, "Job.ps"));
        EXPECT_EQ(Output(fmt::format("{}/Job_C1.raw", name)), ChannelBytes(page, "C1")) << name;
    }
}

TEST_F(NamesTest, EmptyFolderTextMeansTheBaseFoldersTemp) {
    for (const char* rules : {"", "CreateFolder=\"nO\""}) {
        Install(2, rules);
        Job job = MakeJob({page});
        EXPECT_EQ(job.Open() + job.Port(""), 2);
        EXPECT_TRUE(IsPrinted(job.Run()));
        const char* const name = *rules == '\0' ? "Proof/Proof_C2.raw" : "Proof_C2.raw";
        EXPECT_EQ(ReadText(folder.Base() / "temp" / name), ChannelBytes(page, "C2"));
    }
}

// Names that point out of the output folder or at a drive make nothing; leading separators are
// dropped.
TEST_F(NamesTest, ChannelNamesThatLeaveTheFolder) {
    constexpr std::pair<const char*, bool> kNames[] = {
        {"..\\..\\evil.raw", false},
        {"../../evil.raw", false},
        {"..\\filename.raw", false},
        {"..", false},
        {"C:\\x.raw", false},
        {"C:x.raw", false},
        {"sub\\C:x.raw", false},
        {"..\\sub\\evil.raw", false},
        {"sub\\../..\\evil.raw", false},
        {"/rooted.raw", true},
        {"\\\\rooted.raw", true},
        {"./rooted.raw", true},
        {"sub\\..\\rooted.raw", true},
    };
    for (const auto& [name, isInside] : kNames) {
        SCOPED_TRACE(name);
        InstallChannel(name);
        EmptyOutputFolder();
        std::filesystem::create_directory(folder.Out() / "sub");
        Job job = StartJob({page});
        std::filesystem::remove(folder.Root() / "log");
        const Texts before = Listing(folder.Root());
        EXPECT_EQ(job.Run(), isInside ? "1111" : "10");
        if (isInside) {
            EXPECT_EQ(Output("rooted.raw"), ChannelBytes(page, "C1"));
            EXPECT_EQ(Listing(folder.Out()), (Texts{"Proof_C2.raw", "rooted.raw", "sub/"}));
        } else {
            EXPECT_EQ(folder.Log(), Texts{kStepLogLine});
            std::filesystem::remove(folder.Root() / "log");
            EXPECT_EQ(Listing(folder.Root()), before);
        }
    }
    EXPECT_FALSE(std::filesystem::exists("/rooted.raw"));
}

TEST_F(NamesTest, JobNamesThatLeaveTheFolder) {
    std::filesystem::create_directory(folder.Out() / "a");
    for (const char* rules : {"", kNoFolder}) {
        Install(2, rules);
        MakeJob({page});
        std::filesystem::remove(folder.Root() / "log");
        const Texts before = Listing(folder.Root());
        for (const std::string& name :
             {std::string("..\\..\\evil.ps"), std::string("../../evil.ps"),
              std::string("..\\evil.x.ps"), std::string("x:..\\evil.ps"),
              std::string("t:C:\\evil.ps"), std::string("t:C:evil.ps"),
              std::string("a\\..\\..\\evil.ps"), std::string(100000, 'n')}) {
            SCOPED_TRACE(rules + name.substr(0, 20));
            Job job = StartJob({page}, name);
            EXPECT_EQ(job.Run(), *rules == '\0' ? "" : "10");
            std::filesystem::remove(folder.Root() / "log");
            EXPECT_EQ(Listing(folder.Root()), before);
        }
    }
}

TEST_F(NamesTest, PortsThatAreNotServed) {
    Install(2, "");
    for (const int32_t port : {0, 255, 257, -1}) {
        Job job = MakeJob({page});
        job.Status.JobState = port;
        job.Status.OwnerWindow = &job;  // this message has no owner
        EXPECT_EQ(job.Open(), 1);
        EXPECT_EQ(job.Status.JobState, port);
        EXPECT_EQ(job.Port(folder.Out()), 1);
        EXPECT_TRUE(job.HasEnded());
    }
    EXPECT_EQ(folder.Messages(),
              Texts(4, "The driver doesn't support the current port, please select another port."));
    const char* const none = nullptr;
    const std::string out = folder.Out();
    for (const auto& [folderText, source] :
         {std::pair{none, none}, {none, "Proof.ps"}, {out.c_str(), none}}) {
        Job job = MakeJob({page});
        ASSERT_EQ(job.Open(), 1);
        EXPECT_EQ(driver->Call(kOpenPort, folderText, source), 1);
        EXPECT_TRUE(job.HasEnded());
    }
    EXPECT_TRUE(Listing(folder.Out()).empty());
    EXPECT_TRUE(Listing(folder.Base() / "temp").empty());
}

}  // namespace
