// Job names, job folders, and names that try to leave the output folder.

#include "JobRunner.h"

namespace {

constexpr const char* kNoFolder = "CreateFolder=\"No\"";

class NamesTest : public BoundaryTest {
  protected:
    Page page = NumberedPage(16, 2, 2, 1);
};

TEST_F(NamesTest, JobNames) {
    constexpr std::pair<const char*, const char*> kNames[] = {
        {"Proof.ps", "Proof"},
        {"report.final.pdf", "report.final"},
        {"a.b,c.ps", "a_c"},
        {"a.b.c,d.e,f.ps", "a_d_f"},
        {"a,b.c.ps", "a,b.c"},
        {"ab:cd:e.ps", "cd:e"},
        {"my file (copy).ps", "myfile"},
        {"a(b)c(d)e.ps", "ace"},
        {"a(b(c)d)e.ps", "ad)e"},
        {"a(b.ps", "a(b"},
        {"a(b.c)d", "ad"},
        {" s p a c e d .ps", "spaced"},
        {"title:", "Job"},
        {"", "Job"},
        {".ps", "Job"},
        {"..", "Job"},
        {"x: . .", "Job"},
        {"C:\\.ps", "Job"},
        {"..\\../..ps", "Job"},
        {"\xC3\xA4\xE2\x82\xAC.ps", "\xC3\xA4\xE2\x82\xAC"}};
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
    const std::pair<const char*, const char*> cases[] = {
        {"C:\\jobs\\my file (copy).ps", "jobs/myfile/"},
        {"C:\\jobs\\my file (copy).ps", "jobs/myfile_001/"},
        {"C:\\jobs\\z\\/.ps", "jobs/z/"},
        {"C:\\jobs\\z\\/.ps", "jobs/z_001/"},
    };
    for (const auto& [source, created] : cases) {
        const Job job = StartJob({page}, source);
        EXPECT_FALSE(job.HasEnded());
        EXPECT_EQ(Listing(folder.Out()).back(), created);
        EXPECT_EQ(driver->Call(kAbortJob), 1);
    }
}

// With every number taken the last folder is used.
TEST_F(NamesTest, NumberedFolders) {
    Install(2, "CreateFolder=\"YES\"");
    const auto expectPrintedInto = [this](const std::string& name) {
        ASSERT_TRUE(Print({page}, "Job.ps"));
        EXPECT_EQ(Output(name + "/Job_C1.raw"), ChannelBytes(page, "C1")) << name;
    };
    for (const char* name : {"Job", "Job_001", "Job_002"})
        expectPrintedInto(name);
    for (int k = 3; k <= 1000; ++k)
        std::filesystem::create_directory(folder.Out() / fmt::format("Job_{:03}", k));
    expectPrintedInto("Job_1000");
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

// Names that point out of the output folder or at a drive, and ones too long, make nothing; leading
// separators of a channel's name are dropped.
TEST_F(NamesTest, NamesThatLeaveTheFolder) {
    struct Row {
        const char* Rules;
        std::string ChannelName, SourceName;
        const char* Answers;
    };
    const std::string good = "filename.raw";
    const std::string longName(100000, 'n');
    const Row rows[] = {
        {kNoFolder, "..\\..\\evil.raw", "Proof.ps", "10"},
        {kNoFolder, "C:x.raw", "Proof.ps", "10"},
        {kNoFolder, "sub\\C:x.raw", "Proof.ps", "10"},
        {kNoFolder, "sub\\../..\\evil.raw", "Proof.ps", "10"},
        {kNoFolder, "/rooted.raw", "Proof.ps", "1111"},
        {kNoFolder, "sub\\..\\rooted.raw", "Proof.ps", "1111"},
        {kNoFolder, good, "..\\..\\evil.ps", "10"},
        {kNoFolder, good, "t:C:evil.ps", "10"},
        {kNoFolder, good, longName, "10"},
        {"", good, "..\\..\\evil.ps", ""},
        {"", good, "x:../evil.ps", ""},
        {"", good, "t:C:evil.ps", ""},
        {"", good, longName, ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(fmt::format("{:.20} {:.20} {}", row.ChannelName, row.SourceName, row.Rules));
        Model model = NumberedModel(2, row.Rules);
        model.Colours[0].ChannelName = row.ChannelName;
        Install(Describe(model));
        EmptyOutputFolder();
        std::filesystem::create_directory(folder.Out() / "sub");
        MakeJob({page});
        const Texts before = Listing(folder.Root());
        EXPECT_EQ(StartJob({page}, row.SourceName).Run(), row.Answers);
        const bool fails = *row.Answers != '\0' && !IsPrinted(row.Answers);
        EXPECT_EQ(FailedSteps(), fails ? 1U : 0U);
        std::filesystem::remove(folder.Root() / "log");
        if (IsPrinted(row.Answers)) {
            EXPECT_EQ(Output("rooted.raw"), ChannelBytes(page, "C1"));
            EXPECT_EQ(Listing(folder.Out()), (Texts{"Proof_C2.raw", "rooted.raw", "sub/"}));
        } else {
            EXPECT_EQ(Listing(folder.Root()), before);
        }
    }
    EXPECT_FALSE(std::filesystem::exists("/rooted.raw"));
}

// Bytes inside characters that look like separators and letters. The description is in UTF-8: these
// are the texts "ソ", "デilename_filename.raw" and "表" of the code page.
TEST_F(NamesTest, InADoubleByteCodePage) {
    setenv("QL_CODE_PAGE", "CP932", 1);
    Model model = NumberedModel(2, "");
    model.Colours[0].ChannelName = "\xE3\x83\x87ilename_filename.raw";
    model.Colours[1].ChannelName = "\xE8\xA1\xA8";
    Install(Describe(model));
    WriteText(folder.Base() / "OutputDrivers/ZeComFile.xml",
              "<Models><M Name='ABC' XMLFile='none.xml'/><M XMLFile='model.xml'/></Models>");
    std::filesystem::create_directory(folder.Out() / "\x95\\");
    Job job = MakeJob({page});
    SetText(job.Status.JobFilePath, JobFile());
    EXPECT_EQ(job.Open(), 1);
    EXPECT_EQ(job.Port(folder.Out().string() + "\\\x95\\", "C:\x83\\.ps"), 1);
    EXPECT_TRUE(IsPrinted(job.Run()));
    EXPECT_EQ(Listing(folder.Out()), (Texts{"\x95\\/", "\x95\\/\x83\\/",
                                            "\x95\\/\x83\\/\x83"
                                            "filename_\x83\\.raw",
                                            "\x95\\/\x83\\/\x95\\"}));
    char name[256];
    int32_t allowed = 0;
    PrintSettings settings = Settings(
        "\x83"
        "ABC");  // holds no "ABC"
    driver->Call(kIsColorModeAllowed, 0, &allowed, name, &settings);
    EXPECT_TRUE(folder.Messages().empty());
    unsetenv("QL_CODE_PAGE");
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
