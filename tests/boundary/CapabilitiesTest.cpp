// What a model offers, as a host learns it: each query, and the copies that it works on.

#include <array>

#include "GoodDescription.h"
#include "JobRunner.h"

namespace {

class CapabilitiesTest : public BoundaryTest {
  protected:
    void SetUp() override { folder.InstallModel("Roll", kGoodDescription); }
    CapabilityList Media() {
        CapabilityList list;
        EXPECT_EQ(driver.Call(kGetMediaList, &settings, &list, &out), 1);
        return list;
    }

    PrintSettings settings = Settings("Roll 64");
    int32_t out = -77;
};

/// Identifiers and names of the items; nothing else may stand in a record.
template <class Record>
std::string Summary(const std::vector<Record>& list) {
    std::string text;
    for (const Record& item : list) {
        Record plain{};
        plain.ID = item.ID;
        SetText(plain.DisplayName, item.DisplayName);
        if constexpr (requires { item.InternalName; }) {
            SetText(plain.InternalName, item.InternalName);
            text += std::string(item.InternalName) + "=";
        } else {
            plain.XResolution = item.XResolution;
            plain.YResolution = item.YResolution;
        }
        EXPECT_EQ(std::memcmp(&plain, &item, sizeof plain), 0) << item.DisplayName;
        text += std::to_string(item.ID) + " " + item.DisplayName + ";";
    }
    return text;
}

TEST_F(CapabilitiesTest, Lists) {
    EXPECT_EQ(Summary(Media()), "paper=0 Paper;film=1 Film;vinyl=2 Vinyl;");
    EXPECT_EQ(out, 2);

    CapabilityList modes;
    CapabilityItem paper{0, {}, {}};
    EXPECT_EQ(driver.Call(kGetPrintModeList, &settings, &paper, &modes, &out), 1);
    CapabilityItem* const noItem = nullptr;  // counts as the identifier -1, which a child has
    EXPECT_EQ(driver.Call(kGetPrintModeList, &settings, noItem, &modes, &out), 1);
    EXPECT_EQ(Summary(modes), "normal=1 Normal;best=2 Best;normal=1 Normal;") << "appended";
    EXPECT_EQ(out, 1) << "a position, not an identifier";
    CapabilityItem film{1, {}, {}};
    EXPECT_EQ(driver.Call(kGetPrintModeList, &settings, &film, &modes, &out), 0);

    ResolutionList resolutions;
    EXPECT_EQ(driver.Call(kGetResolutionList, &settings, &paper, &modes[0], &resolutions, nullptr),
              1);
    EXPECT_EQ(Summary(resolutions), "0 360 x 720;1 1440 x 1440;");
    EXPECT_EQ(resolutions[0].XResolution, 360.0);
    EXPECT_EQ(resolutions[0].YResolution, 720.0);
    EXPECT_EQ(driver.Call(kGetResolutionList, &settings, &paper, noItem, &resolutions, nullptr), 0);
}

TEST_F(CapabilitiesTest, Combinations) {
    struct Row {
        int32_t Media, PrintMode, Resolution, ColorMode;
        int32_t Answer, Allowed;
        const char* Name;
        int32_t DefaultMode;
    };
    constexpr Row kRows[] = {
        {0, 1, 0, 0, 1, 1, "Four Inks", 1}, {0, 1, 0, 1, 1, 1, "One Ink", 1},
        {0, 1, 0, 2, 1, 0, "No Ink", 1},    {0, 1, 1, 2, 1, 1, "No Ink", 0},
        {0, 2, 0, 1, 1, 1, "One Ink", 0},  // a single item accepts any identifier
        {0, 1, 2, 0, 0, -5, "before", 0},   {0, 0, 0, 0, 0, -5, "before", 0},
        {1, 1, 0, 0, 0, -5, "before", 0},   {0, 1, 0, 3, 0, -5, "before", 1},
        {0, 1, 0, -1, 0, -5, "before", 1},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(::testing::Message()
                     << row.Media << row.PrintMode << row.Resolution << " mode " << row.ColorMode);
        settings = Settings("Roll", row.Media, row.PrintMode, row.Resolution);
        std::array<char, 256> name = {"before"};
        out = -5;
        EXPECT_EQ(driver.Call(kIsColorModeAllowed, row.ColorMode, &out, name.data(), &settings),
                  row.Answer);
        EXPECT_EQ(out, row.Allowed);
        EXPECT_STREQ(name.data(), row.Name);
        EXPECT_EQ(driver.Call(kGetDefaultColorMode, name.data(), &settings), row.DefaultMode);
    }
}

TEST_F(CapabilitiesTest, ColorModesAndColorants) {
    std::array<ColorantInfo, 8> items;
    ColorantInfoList list{-7, {}, items.data(), 8};
    EXPECT_EQ(driver.Call(kFindColorModeID, "One Ink"), -1) << "loads nothing";
    EXPECT_EQ(driver.Call(kGetColorantList, 0, &list), 0) << "loads nothing";
    Media();
    EXPECT_EQ(driver.Call(kFindColorModeID, "one INK"), 1);
    EXPECT_EQ(driver.Call(kFindColorModeID, "gray"), -1);
    constexpr std::pair<const char*, uint32_t> kColorants[] = {
        {"Cyan", 0xFFFF00}, {"Magenta", 0xFF00FF}, {"Yellow", 0x00FFFF}, {"Black", 0x000000}};
    for (const Operation operation : {kGetColorantList, kGetColorantListAgain}) {
        EXPECT_EQ(driver.Call(operation, 0, &list), 1);
        ASSERT_EQ(list.Count, 4);
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_STREQ(items.at(i).InternalName, kColorants[i].first);
            EXPECT_EQ(items.at(i).ColorValue, kColorants[i].second);
        }
        EXPECT_EQ(driver.Call(operation, 1, &list), 1);
        EXPECT_EQ(list.Count, 1);
        EXPECT_EQ(items[0].IsSpot, 1u);
        EXPECT_EQ(items[0].ColorDepth, 8u);
        EXPECT_EQ(driver.Call(operation, 3, &list), 0);
    }
    list.Capacity = 2;  // a short list is filled as far as it goes
    std::memset(static_cast<void*>(&items[2]), 0x5a, sizeof items[2]);
    EXPECT_EQ(driver.Call(kGetColorantList, 0, &list), 1);
    EXPECT_EQ(list.Count, 2);
    EXPECT_EQ(items[2].ColorDepth, 0x5a5a5a5au);
}

// What a user sees of faulty descriptions, and that a mended one is read from its beginning.
TEST_F(CapabilitiesTest, FaultyDescriptions) {
    std::string deep;
    for (int i = 0; i < 200000; ++i)
        deep += "<a>";
    const std::pair<std::string, std::vector<std::string>> faults[] = {
        {"no description", {"Loading description file fails"}},
        {deep, {"Loading description file fails"}},
        {"<Any/>", {"Getting DEFINITIONNODE node fails"}},
        {Edited(kGoodDescription, {{"<ID>4</ID>", "<ID>-4</ID>"}}), {"Wrong Color index."}},
        {Edited(kGoodDescription, {{"ColorModeList", "None"}}), {}},
    };
    std::vector<std::string> messages;
    CapabilityList list;
    for (const auto& [text, shown] : faults) {
        folder.InstallModel("Roll", text);
        EXPECT_EQ(driver.Call(kGetMediaList, &settings, &list, &out), 0);
        messages.insert(messages.end(), shown.begin(), shown.end());
        EXPECT_EQ(folder.Messages(), messages);
    }
    folder.InstallModel("Other", kGoodDescription);
    EXPECT_EQ(driver.Call(kGetMediaList, &settings, &list, &out), 0);
    messages.emplace_back("Cannot get XML ");
    folder.InstallModel("Roll", kGoodDescription);
    EXPECT_EQ(Media().size(), 3u);
    EXPECT_EQ(folder.Messages(), messages);
}

// Texts come in the host's code page, which is looked up at each conversion.
TEST_F(CapabilitiesTest, CodePages) {
    folder.InstallModel("Roll", Edited(kGoodDescription, {{">Vinyl<", ">\xC3\x84\xE2\x82\xAC<"}}));
    constexpr std::pair<const char*, const char*> kNames[] = {
        {"CP1252", "\xC4\x80"}, {"ISO-8859-1", "\xC4?"}, {"UTF-8", "\xC3\x84\xE2\x82\xAC"}};
    for (const auto& [codePage, name] : kNames) {
        setenv("QL_CODE_PAGE", codePage, 1);
        const Driver fresh;
        CapabilityList list;
        EXPECT_EQ(fresh.Call(kGetMediaList, &settings, &list, &out), 1);
        ASSERT_EQ(list.size(), 3u);
        EXPECT_STREQ(list[2].DisplayName, name) << codePage;
    }
}

}  // namespace
