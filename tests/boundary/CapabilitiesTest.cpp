// What a model offers, as a host learns it.

#include <zlib.h>

#include <array>

#include "JobRunner.h"
#include "WideModel.h"

namespace {

class CapabilitiesTest : public BoundaryTest {
  protected:
    void SetUp() override { folder.InstallModel(kWideModel, WideModelDescription()); }

    CapabilityList Media() {
        CapabilityList list;
        EXPECT_EQ(driver.Call(kGetMediaList, &settings, &list, &defaultOut), 1);
        return list;
    }

    PrintSettings settings = Settings(kWideModel);
    int32_t defaultOut = -77;
};

CapabilityItem Item(int32_t id, const std::string& display, const std::string& internal) {
    CapabilityItem item{id, {}, {}};
    SetText(item.DisplayName, display);
    SetText(item.InternalName, internal);
    return item;
}

/// Compares every byte of the records, the rest of each text field included.
template <class Record>
void ExpectRecords(const std::vector<Record>& list, const std::vector<Record>& expected) {
    ASSERT_EQ(list.size(), expected.size());
    for (std::size_t i = 0; i < list.size(); ++i) {
        EXPECT_EQ(std::memcmp(&list[i], &expected[i], sizeof(Record)), 0)
            << i << ": " << list[i].DisplayName;
    }
}

TEST_F(CapabilitiesTest, MediaAreAppendedToTheCallersList) {
    CapabilityList list = {Item(99, "mine", "mine")};
    EXPECT_EQ(driver.Call(kGetMediaList, &settings, &list, &defaultOut), 1);
    ExpectRecords(list, {Item(99, "mine", "mine"), Item(0, "Paper", "paper"),
                         Item(1, "Film", "film"), Item(2, "Vinyl", "vinyl")});
    EXPECT_EQ(defaultOut, 2);
}

TEST_F(CapabilitiesTest, PrintModesOfAMedium) {
    const CapabilityItem draft = Item(0, "Draft", "draft");
    const CapabilityItem fine = Item(1, "Fine", "fine");
    struct Row {
        int32_t Media;
        int32_t Answer;
        CapabilityList List;
        int32_t DefaultPosition;
    };
    const Row rows[] = {
        {0, 1, {fine, draft}, 1},  // the default is a position, not an identifier
        {1, 1, {fine}, 0},         // a default that is not in the list
        {2, 0, {}, 0},             // no combination
        {-1, 0, {}, 0},
    };
    for (const Row& row : rows) {
        CapabilityItem media = Item(row.Media, "", "");
        CapabilityList list;
        defaultOut = -77;
        EXPECT_EQ(driver.Call(kGetPrintModeList, &settings, &media, &list, &defaultOut),
                  row.Answer);
        ExpectRecords(list, row.List);
        EXPECT_EQ(defaultOut, row.DefaultPosition) << row.Media;
    }
    CapabilityList list;
    CapabilityItem* const noItem = nullptr;  // counts as the identifier -1
    EXPECT_EQ(driver.Call(kGetPrintModeList, &settings, noItem, &list, &defaultOut), 0);
}

TEST_F(CapabilitiesTest, ResolutionsAreNotFilteredByThePrintMode) {
    ResolutionList expected(3);
    expected[0] = {300, 301, 0, {}};
    expected[1] = {600, 300, 1, {}};
    expected[2] = {720, 1440, 2, {}};
    SetText(expected[0].DisplayName, "300 x 301");
    SetText(expected[1].DisplayName, "600 x 300");
    struct Row {
        int32_t Media;
        int32_t PrintMode;
        int32_t Answer;
    };
    // A level with a single item accepts any identifier.
    constexpr Row kRows[] = {{0, 0, 1}, {0, 1, 1}, {0, 5, 0}, {1, 5, 1}, {2, 0, 0}};
    for (const Row& row : kRows) {
        CapabilityItem media = Item(row.Media, "", "");
        CapabilityItem mode = Item(row.PrintMode, "", "");
        ResolutionList list;
        EXPECT_EQ(driver.Call(kGetResolutionList, &settings, &media, &mode, &list, nullptr),
                  row.Answer);
        ExpectRecords(list, row.Answer == 1 ? expected : ResolutionList{});
    }
}

TEST_F(CapabilitiesTest, AllowedCombinations) {
    struct Row {
        int32_t Media, PrintMode, Resolution, ColorMode;
        int32_t Answer, Allowed;
        const char* Name;
    };
    constexpr Row kRows[] = {
        {0, 0, 0, 0, 1, 1, "KC"},
        {0, 0, 0, 1, 1, 1, "KC + White"},
        {0, 0, 0, 2, 1, 0, "Gray"},
        {0, 0, 1, 3, 1, 1, "gray"},
        {0, 0, 2, 0, 0, -5, "before"},  // no such resolution here
        {0, 1, 2, 0, 1, 0, "KC"},
        {0, 1, 2, 2, 1, 1, "Gray"},
        {0, 2, 0, 0, 0, -5, "before"},
        {1, 9, 9, 2, 1, 1, "Gray"},  // single items accept any identifier
        {1, 9, 9, 1, 1, 0, "KC + White"},
        {2, 0, 0, 0, 0, -5, "before"},
        {0, 0, 0, 4, 0, -5, "before"},  // no such colour mode
        {0, 0, 0, -1, 0, -5, "before"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(::testing::Message()
                     << row.Media << row.PrintMode << row.Resolution << " mode " << row.ColorMode);
        settings = Settings(kWideModel, row.Media, row.PrintMode, row.Resolution);
        int32_t allowed = -5;
        std::array<char, 256> name = {"before"};
        EXPECT_EQ(driver.Call(kIsColorModeAllowed, row.ColorMode, &allowed, name.data(), &settings),
                  row.Answer);
        EXPECT_EQ(allowed, row.Allowed);
        EXPECT_STREQ(name.data(), row.Name);
        void* const none = nullptr;
        EXPECT_EQ(driver.Call(kIsColorModeAllowed, row.ColorMode, none, none, &settings),
                  row.Answer);
    }
}

TEST_F(CapabilitiesTest, DefaultColorModes) {
    struct Row {
        int32_t Media, PrintMode, Resolution;
        int32_t Default;
        const char* Name;
    };
    constexpr Row kRows[] = {
        {0, 0, 0, 1, "KC + White"}, {0, 1, 2, 2, "Gray"},
        {0, 1, 1, 0, "KC"},         {0, 0, 1, 0, "before"},  // not a position
        {1, 0, 0, 2, "Gray"},       {2, 0, 0, 0, "before"},
    };
    for (const Row& row : kRows) {
        settings = Settings(kWideModel, row.Media, row.PrintMode, row.Resolution);
        std::array<char, 256> name = {"before"};
        EXPECT_EQ(driver.Call(kGetDefaultColorMode, name.data(), &settings), row.Default);
        EXPECT_STREQ(name.data(), row.Name);
    }
}

TEST_F(CapabilitiesTest, ColorModesByName) {
    EXPECT_EQ(driver.Call(kFindColorModeID, "KC"), -1) << "nothing is loaded yet";
    Media();
    struct Row {
        const char* Name;
        int32_t ID;
    };
    for (const Row& row : {Row{"KC", 0}, Row{"kc + wHITE", 1}, Row{"gray", 2}, Row{"kcw", -1},
                           Row{"", -1}, Row{"KC ", -1}}) {
        EXPECT_EQ(driver.Call(kFindColorModeID, row.Name), row.ID) << row.Name;
    }
}

TEST_F(CapabilitiesTest, Colorants) {
    std::vector<ColorantInfo> items(8);
    ColorantInfoList list{-7, {}, items.data(), 8};
    EXPECT_EQ(driver.Call(kGetColorantList, 0, &list), 0) << "nothing is loaded yet";
    Media();
    struct Row {
        const char* Internal;
        const char* Display;
        uint32_t Spot, Depth, Value;
    };
    const Row black2 = {"Black", "Process Black", 0, 2, 0x000000};
    const std::vector<Row> modes[] = {
        {black2, {"Cyan", "Process Cyan", 0, 2, 0xFFFF00}},  // a colorant without ID is colour 0
        {{"Black", "Process Black", 0, 8, 0x000000},
         {"Cyan", "Process Cyan", 0, 4, 0xFFFF00},
         {"White", "Spot White", 1, 1, 0xFFFFFF}},
        {{"Black", "Process Black", 0, 1, 0x000000}},
        {},
    };
    for (const Operation operation : {kGetColorantList, kGetColorantListAgain}) {
        for (int32_t mode = 0; mode < 4; ++mode) {
            const std::vector<Row>& rows = modes[mode];
            EXPECT_EQ(driver.Call(operation, mode, &list), 1);
            ASSERT_EQ(static_cast<std::size_t>(list.Count), rows.size());
            for (std::size_t i = 0; i < rows.size(); ++i) {
                ColorantInfo expected;
                SetText(expected.InternalName, rows[i].Internal);
                SetText(expected.DisplayName, rows[i].Display);
                expected.IsSpot = rows[i].Spot;
                expected.ColorDepth = rows[i].Depth;
                expected.ColorValue = rows[i].Value;
                EXPECT_EQ(std::memcmp(&items[i], &expected, sizeof expected), 0) << mode << i;
            }
        }
    }
    list.Count = -7;
    for (const int32_t mode : {4, -1}) {
        EXPECT_EQ(driver.Call(kGetColorantList, mode, &list), 0) << mode;
    }
    EXPECT_EQ(list.Count, -7);

    list.Capacity = 2;  // a short list is filled as far as it goes
    std::memset(static_cast<void*>(&items[2]), 0x5a, sizeof items[2]);
    EXPECT_EQ(driver.Call(kGetColorantList, 1, &list), 1);
    EXPECT_EQ(list.Count, 2);
    EXPECT_STREQ(items[1].InternalName, "Cyan");
    EXPECT_EQ(items[2].ColorDepth, 0x5a5a5a5au);
}

// Resource 9002 names the item at position 0 behind the base 9001, 9003 the next one; the item
// behind them has no resource. Names keep 63 characters.
TEST_F(CapabilitiesTest, NamesFromStringResources) {
    const std::string long70(70, 'n');
    std::string text = Replaced(WideModelDescription(), "<BaseMedia>-1<", "<BaseMedia>9001<");
    folder.InstallModel(kWideModel, Replaced(text, ">vinyl<", ">" + long70 + "<"));
    ExpectRecords(
        Media(),
        {Item(0, "The driver doesn't support the current port, please select anot", "paper"),
         Item(1, "There is not enough disk space.", "film"),
         Item(2, "Vinyl", long70.substr(0, 63))});
}

TEST_F(CapabilitiesTest, TheFirstModelStays) {
    Media();
    folder.InstallModel("Other", Describe(NumberedModel(2, "", "raw")));
    settings = Settings("Other");
    EXPECT_EQ(Media().size(), 3u);
    EXPECT_EQ(driver.Call(kFindColorModeID, "KC"), 0);
    EXPECT_TRUE(folder.Messages().empty());
}

TEST_F(CapabilitiesTest, ModelsAreFoundByContainment) {
    struct Row {
        std::vector<std::pair<const char*, const char*>> Entries;  // name and file
        const char* Model;
        std::size_t MediaCount;
    };
    const Row rows[] = {
        {{{"ABC", "wide"}, {"ABC-2", "one"}}, "ABC-2", 3},
        {{{"ABC-2", "wide"}, {"ABC", "one"}}, "ABC-3", 1},
        {{{"abc", "wide"}, {"C", "one"}}, "ABC", 1},
        {{{"", "wide"}, {"ABC", "one"}}, "ABC", 3},
        {{{"ABC", "one"}, {"", "wide"}}, "", 3},
        {{{"ABC", "wide"}}, "xABCx", 3},
    };
    WriteText(folder.Base() / "OutputDrivers/wide", WideModelDescription());
    WriteText(folder.Base() / "OutputDrivers/one", Describe(NumberedModel(2, "", "raw")));
    for (const Row& row : rows) {
        std::string list = "<L>";
        for (const auto& [name, file] : row.Entries) {
            list += std::string("<M Name=\"") + name + "\" XMLFile=\"" + file + "\"/>";
        }
        WriteText(folder.Base() / "OutputDrivers/ZeComFile.xml", list + "</L>");
        const Driver fresh;
        CapabilityList media;
        settings = Settings(row.Model);
        EXPECT_EQ(fresh.Call(kGetMediaList, &settings, &media, &defaultOut), 1) << list;
        EXPECT_EQ(media.size(), row.MediaCount) << list << row.Model;
    }
}

std::string Gzip(const std::filesystem::path& path, const std::string& text) {
    const gzFile file = gzopen(path.c_str(), "wb");
    EXPECT_EQ(gzwrite(file, text.data(), static_cast<unsigned>(text.size())),
              static_cast<int>(text.size()));
    gzclose(file);
    return ReadText(path);
}

TEST_F(CapabilitiesTest, EncodedFilesAndDamagedOnes) {
    const std::filesystem::path list = folder.Base() / "OutputDrivers/ZeComFile.xml";
    const std::filesystem::path model = folder.Base() / "OutputDrivers/model.xml";
    Gzip(list, ReadText(list));
    const std::string encoded = Gzip(model, WideModelDescription());
    std::string checksum = encoded;
    checksum[checksum.size() - 8] ^= 1;
    std::string length = encoded;
    length[length.size() - 4] ^= 1;
    const std::string damaged[] = {checksum, length, encoded.substr(0, encoded.size() - 1),
                                   encoded.substr(0, encoded.size() / 2), encoded.substr(0, 11)};
    std::vector<std::string> messages;
    CapabilityList media;
    for (const std::string& bytes : damaged) {
        WriteText(model, bytes);
        EXPECT_EQ(driver.Call(kGetMediaList, &settings, &media, &defaultOut), 0);
        messages.emplace_back("Loading description file fails");
        EXPECT_EQ(folder.Messages(), messages);
    }
    // The next call tries again, from empty lists.
    WriteText(model, encoded);
    EXPECT_EQ(driver.Call(kGetMediaList, &settings, &media, &defaultOut), 1);
    EXPECT_EQ(media.size(), 3u);
    EXPECT_EQ(folder.Messages(), messages);
}

}  // namespace
