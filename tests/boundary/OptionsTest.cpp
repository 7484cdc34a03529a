// The driver's option block and its file.

#include "JobRunner.h"

namespace {

constexpr int32_t kShowNew = 1;    // a new file, then the dialog
constexpr int32_t kCreateNew = 2;  // a new file, no dialog
constexpr int32_t kShow = 3;

DriverOptionBlock Block(uint8_t kind, const std::string& fileName) {
    DriverOptionBlock block{};
    block.Kind = kind;
    SetText(block.FileName, fileName);
    return block;
}

bool Same(const DriverOptionBlock& a, const DriverOptionBlock& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

class OptionsTest : public BoundaryTest {
  protected:
    void SetUp() override {
        folder.InstallModel(kModelName, Describe(NumberedModel(4, "", "raw")));
    }
    int32_t Show(DriverOptionBlock& block, int32_t mode) {
        return driver.Call(kShowDriverOptions, &block, mode, &settings, nullptr);
    }
    /// The block names a file that stands in the options folder with no choice stored.
    void ExpectNewFile(const DriverOptionBlock& block) {
        EXPECT_EQ(block.Kind, 3);
        const std::string name = block.FileName;
        EXPECT_EQ(name.substr(0, 8), "QL_DROP_");
        EXPECT_EQ(name.substr(name.size() - 4), ".xml");
        const std::string text = ReadText(folder.Options() / name);
        EXPECT_NE(text.find("<RootElement>"), std::string::npos) << text;
        EXPECT_NE(text.find("<DriverOptions SupportWhiteType=\"-1\""), std::string::npos) << text;
    }

    PrintSettings settings = Settings(kModelName);
};

// Without a window system and a script the dialog ends as cancelled.
TEST_F(OptionsTest, ModesOfTheOptionsCall) {
    struct Row {
        int32_t Mode;
        int32_t KindBefore;
        int32_t Answer;
        bool IsReplaced;
    };
    constexpr Row kRows[] = {
        {kShowNew, 0, 1, true},   {kShowNew, 3, 1, true}, {kCreateNew, 0, 1, true},
        {kCreateNew, 3, 1, true}, {kShow, 0, 1, true},    {kShow, 3, 1, false},
        {kShow, 2, 1, true},      {4, 0, 0, false},       {0, 0, 0, false},
        {-1, 3, 0, false},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(::testing::Message() << "mode " << row.Mode << " kind " << row.KindBefore);
        WriteText(folder.Options() / "QL_DROP_old.xml", "<RootElement/>");
        WriteText(folder.Options() / "other.xml", "kept");
        DriverOptionBlock block = Block(static_cast<uint8_t>(row.KindBefore), "QL_DROP_old.xml");
        EXPECT_EQ(Show(block, row.Mode), row.Answer);
        EXPECT_EQ(std::filesystem::exists(folder.Options() / "QL_DROP_old.xml"), !row.IsReplaced);
        if (row.IsReplaced) {
            ExpectNewFile(block);
        } else {
            EXPECT_TRUE(
                Same(block, Block(static_cast<uint8_t>(row.KindBefore), "QL_DROP_old.xml")));
        }
        EXPECT_EQ(ReadText(folder.Options() / "other.xml"), "kept");
    }
    EXPECT_TRUE(folder.Messages().empty());
}

TEST_F(OptionsTest, ManufacturerOfTheStoredSettings) {
    DriverOptionBlock block = Block(3, "QL_DROP_x.xml");
    SetText(settings.ManufacturerName, "Maker A");
    EXPECT_EQ(driver.Call(kSetPrintSettings, &settings), 1);
    EXPECT_EQ(driver.Call(kSetPrintSettings, static_cast<PrintSettings*>(nullptr)), 1);

    PrintSettings named = Settings(kModelName);
    SetText(named.ManufacturerName, "Maker B");
    EXPECT_EQ(driver.Call(kShowDriverOptions, &block, 4, &named, nullptr), 0);
    EXPECT_STREQ(named.ManufacturerName, "Maker B");
    // Mode 4 ends before the name is looked at; its settings are stored all the same.
    PrintSettings unnamed = Settings(kModelName);
    EXPECT_EQ(driver.Call(kShowDriverOptions, &block, 4, &unnamed, nullptr), 0);
    EXPECT_STREQ(unnamed.ManufacturerName, "");
    EXPECT_EQ(driver.Call(kSetPrintSettings, &named), 1);
    EXPECT_EQ(driver.Call(kShowDriverOptions, &block, kShow, &unnamed, nullptr), 1);
    EXPECT_STREQ(unnamed.ManufacturerName, "Maker B");
}

TEST_F(OptionsTest, BlocksDifferByTheirFirstByte) {
    DriverOptionBlock a = Block(3, "QL_DROP_a.xml");
    DriverOptionBlock b = Block(3, "QL_DROP_b.xml");
    EXPECT_EQ(driver.Call(kAreOptionsDifferent, &a, &b), 0);
    b = a;
    b.Kind = 0;
    EXPECT_EQ(driver.Call(kAreOptionsDifferent, &a, &b), 1);
}

TEST_F(OptionsTest, AJobReplacesAFileThatIsGone) {
    JobChoices choices;
    choices.Options = Block(3, "QL_DROP_gone.xml");
    ASSERT_TRUE(MakeJob({NumberedPage(8, 2, 4, 1)}, choices).Print(folder.Out(), "Proof.ps"));
    const std::vector<std::string> files = Listing(folder.Options());
    ASSERT_EQ(files.size(), 1u);
    EXPECT_NE(files.front(), "QL_DROP_gone.xml");
    ExpectNewFile(Block(3, files.front()));
}

// Names that would leave the options folder name no file.
TEST_F(OptionsTest, NamesWithSeparators) {
    const std::string names[] = {
        "..\\QL_DROP_a.xml",         "../QL_DROP_a.xml",
        "..\\..\\..\\QL_DROP_a.xml", (folder.Root() / "QL_DROP_a.xml").string(),
        "QL_DROP_\\..\\..\\a.xml",   "sub/QL_DROP_a.xml",
    };
    WriteText(folder.Root() / "QL_DROP_a.xml", "kept");
    WriteText(folder.Base() / "QL_DROP_a.xml", "kept");
    WriteText(folder.Options().parent_path() / "QL_DROP_a.xml", "kept");
    std::filesystem::create_directories(folder.Options() / "sub");
    WriteText(folder.Options() / "sub/QL_DROP_a.xml", "kept");
    const std::vector<std::string> before = Listing(folder.Root());
    for (const std::string& name : names) {
        JobChoices choices;
        choices.Options = Block(3, name);
        ASSERT_TRUE(MakeJob({NumberedPage(8, 2, 4, 1)}, choices).Print(folder.Out(), "Proof.ps"));
        std::filesystem::remove_all(folder.Out() / "Proof");
        std::filesystem::remove(JobFile());
        std::filesystem::remove(Container());
        EXPECT_EQ(Listing(folder.Root()), before) << name;

        DriverOptionBlock block = choices.Options;
        EXPECT_EQ(Show(block, kCreateNew), 1);
        ExpectNewFile(block);
        std::filesystem::remove(folder.Options() / block.FileName);
        EXPECT_EQ(Listing(folder.Root()), before) << name;
    }
}

TEST_F(OptionsTest, ANameThatFillsTheBlock) {
    DriverOptionBlock block{};
    std::memset(static_cast<void*>(&block), 'Q', sizeof block);
    std::memcpy(block.FileName, "QL_DROP_", 8);
    JobChoices choices;
    choices.Options = block;
    EXPECT_TRUE(MakeJob({NumberedPage(8, 2, 4, 1)}, choices).Print(folder.Out(), "Proof.ps"));
    EXPECT_EQ(Show(block, kCreateNew), 1);
    ExpectNewFile(block);
}

}  // namespace
