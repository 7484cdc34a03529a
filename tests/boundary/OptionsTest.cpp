// The driver's option block and its file, as the options call and a job treat them.

#include "JobRunner.h"

namespace {

constexpr int32_t kShowNew = 1;    // a new file, then the dialog
constexpr int32_t kCreateNew = 2;  // a new file, no dialog
constexpr int32_t kShow = 3;
constexpr int32_t kNothing = 4;

DriverOptionBlock Block(uint8_t kind, const std::string& fileName) {
    DriverOptionBlock block{};
    block.Kind = kind;
    SetText(block.FileName, fileName);
    return block;
}

class OptionsTest : public BoundaryTest {
  protected:
    void SetUp() override { Install(4, "CreateFolder=\"No\""); }
    int32_t Show(DriverOptionBlock& block, int32_t mode) {
        return driver->Call(kShowDriverOptions, &block, mode, &settings, nullptr);
    }
    /// The block names a file that stands in the options folder with no choice stored.
    void ExpectNewFile(const DriverOptionBlock& block) {
        EXPECT_EQ(block.Kind, 3);
        EXPECT_EQ(std::string(block.FileName).substr(0, 8), "QL_DROP_");
        const std::string text = ReadText(folder.Options() / block.FileName);
        EXPECT_NE(text.find("<RootElement>"), std::string::npos) << text;
        EXPECT_NE(text.find("<DriverOptions SupportWhiteType=\"-1\""), std::string::npos) << text;
    }

    PrintSettings settings = Settings(kModelName);
};

// Without a window system and a script the dialog ends as cancelled.
TEST_F(OptionsTest, ModesOfTheOptionsCall) {
    struct Row {
        int32_t Mode;
        int32_t Answer;
        uint8_t KindBefore;
        bool IsReplaced;
    };
    constexpr Row kRows[] = {
        {kShowNew, 1, 0, true},   {kShowNew, 1, 3, true},  {kCreateNew, 1, 0, true},
        {kCreateNew, 1, 3, true}, {kShow, 1, 0, true},     {kShow, 1, 3, false},
        {kShow, 1, 2, true},      {kNothing, 0, 0, false}, {0, 0, 0, false},
        {-1, 0, 3, false},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(fmt::format("mode {}, kind {}", row.Mode, row.KindBefore));
        WriteText(folder.Options() / "QL_DROP_old.xml", "<RootElement/>");
        const DriverOptionBlock before = Block(row.KindBefore, "QL_DROP_old.xml");
        DriverOptionBlock block = before;
        EXPECT_EQ(Show(block, row.Mode), row.Answer);
        EXPECT_EQ(std::filesystem::exists(folder.Options() / "QL_DROP_old.xml"), !row.IsReplaced);
        if (row.IsReplaced) {
            ExpectNewFile(block);
        } else {
            EXPECT_EQ(std::memcmp(&block, &before, sizeof block), 0);
        }
    }
    EXPECT_TRUE(folder.Messages().empty());
}

// An empty name is filled from the settings that were stored before the call's own.
TEST_F(OptionsTest, ManufacturerOfTheStoredSettings) {
    DriverOptionBlock block = Block(3, "QL_DROP_x.xml");
    PrintSettings maker = Settings(kModelName);
    SetText(maker.ManufacturerName, "Maker");
    EXPECT_EQ(driver->Call(kSetPrintSettings, &maker), 1);
    EXPECT_EQ(driver->Call(kSetPrintSettings, static_cast<PrintSettings*>(nullptr)), 1);
    EXPECT_EQ(Show(block, kShow), 1);
    EXPECT_STREQ(settings.ManufacturerName, "Maker");
    SetText(settings.ManufacturerName, "Other");
    EXPECT_EQ(Show(block, kNothing), 0);
    EXPECT_STREQ(settings.ManufacturerName, "Other");
    SetText(settings.ManufacturerName, "");
    EXPECT_EQ(Show(block, kNothing), 0) << "ends before the name is looked at";
    EXPECT_STREQ(settings.ManufacturerName, "");
}

TEST_F(OptionsTest, BlocksDifferByTheirFirstByte) {
    DriverOptionBlock a = Block(3, "QL_DROP_a.xml");
    DriverOptionBlock b = Block(3, "QL_DROP_b.xml");
    EXPECT_EQ(driver->Call(kAreOptionsDifferent, &a, &b), 0);
    b = Block(0, "QL_DROP_a.xml");
    EXPECT_EQ(driver->Call(kAreOptionsDifferent, &a, &b), 1);
}

}  // namespace
