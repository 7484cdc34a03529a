// What a model offers, as a host learns it: each query, and the copies that it works on.

#include <array>
#include <span>

#include "GoodDescription.h"
#include "JobRunner.h"

namespace {

class CapabilitiesTest : public BoundaryTest {
  protected:
    void SetUp() override { folder.InstallModel("Roll", kGoodDescription); }
    CapabilityList Media() {
        CapabilityList list;
        EXPECT_EQ(driver->Call(kGetMediaList, &settings, &list, &out), 1);
        return list;
    }

    PrintSettings settings = Settings("Roll 64");
    int32_t out = -77;
};

/// Identifiers and names of the items; nothing else may stand in a record. Numbers are copied: in
/// a packed record they need not be aligned.
template <class Record>
std::string Summary(const std::vector<Record>& list) {
    std::string text;
    for (const Record& item : list) {
        Record plain{};
        plain.ID = item.ID;
        SetText(plain.DisplayName, item.DisplayName);
        if constexpr (requires { item.InternalName; }) {
            SetText(plain.InternalName, item.InternalName);
            text += fmt::format("{}=", item.InternalName);
        } else {
            plain.XResolution = item.XResolution;
            plain.YResolution = item.YResolution;
            text += fmt::format("{} {}=", double{item.XResolution}, double{item.YResolution});
        }
        const auto bytes = [](const Record& record) {
            return std::string(reinterpret_cast<const char*>(&record), sizeof record);
        };
        EXPECT_TRUE(bytes(plain) == bytes(item)) << item.DisplayName;
        text += fmt::format("{} {};", int32_t{item.ID}, item.DisplayName);
    }
    return text;
}

TEST_F(CapabilitiesTest, Lists) {
    EXPECT_EQ(Summary(Media()), "paper=0 Paper;film=1 Film;vinyl=2 Vinyl;");
    EXPECT_EQ(out, 2);

    CapabilityList modes;
    CapabilityItem paper{0, {}, {}};
    CapabilityItem film{1, {}, {}};
    CapabilityItem* const noItem = nullptr;  // counts as the identifier -1, which a child has
    EXPECT_EQ(driver->Call(kGetPrintModeList, &settings, &paper, &modes, &out), 1);
    EXPECT_EQ(driver->Call(kGetPrintModeList, &settings, noItem, &modes, &out), 1);
    EXPECT_EQ(Summary(modes), "normal=1 Normal;best=2 Best;normal=1 Normal;") << "appended";
    EXPECT_EQ(out, 1) << "a position, not an identifier";
    EXPECT_EQ(driver->Call(kGetPrintModeList, &settings, &film, &modes, &out), 0);

    ResolutionList list;
    EXPECT_EQ(driver->Call(kGetResolutionList, &settings, &paper, &modes[0], &list, nullptr), 1);
    EXPECT_EQ(driver->Call(kGetResolutionList, &settings, &paper, noItem, &list, nullptr), 0);
    EXPECT_EQ(Summary(list), "360 720=0 360 x 720;1440 1440=1 1440 x 1440;");
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
        SCOPED_TRACE(fmt::format("{} {} {} mode {}", row.Media, row.PrintMode, row.Resolution,
                                 row.ColorMode));
        settings = Settings("Roll", row.Media, row.PrintMode, row.Resolution);
        std::array<char, 256> name = {"before"};
        out = -5;
        EXPECT_EQ(driver->Call(kIsColorModeAllowed, row.ColorMode, &out, name.data(), &settings),
                  row.Answer);
        EXPECT_EQ(out, row.Allowed);
        EXPECT_STREQ(name.data(), row.Name);
        EXPECT_EQ(driver->Call(kGetDefaultColorMode, name.data(), &settings), row.DefaultMode);
    }
}

TEST_F(CapabilitiesTest, ColorModesAndColorants) {
    std::array<ColorantInfo, 8> items;
    ColorantInfoList list{-7, {}, items.data(), 8};
    EXPECT_EQ(driver->Call(kFindColorModeID, "One Ink"), -1) << "loads nothing";
    EXPECT_EQ(driver->Call(kGetColorantList, 0, &list), 0) << "loads nothing";
    Media();
    EXPECT_EQ(driver->Call(kFindColorModeID, "one INK"), 1);
    EXPECT_EQ(driver->Call(kFindColorModeID, "gray"), -1);
    for (const Operation operation : {kGetColorantList, kGetColorantListAgain}) {
        EXPECT_EQ(driver->Call(operation, 0, &list), 1);
        std::string colorants;
        for (const ColorantInfo& item : std::span(items.data(), 4))
            colorants += fmt::format("{} {:06X} {};", item.InternalName, uint32_t{item.ColorValue},
                                     uint32_t{item.ColorDepth});
        EXPECT_EQ(colorants, "Cyan FFFF00 1;Magenta FF00FF 1;Yellow 00FFFF 2;Black 000000 1;");
        EXPECT_EQ(list.Count, 4);
        EXPECT_EQ(driver->Call(operation, 1, &list), 1);
        EXPECT_EQ(list.Count, 1);
        EXPECT_EQ(items[0].IsSpot, 1U);
        EXPECT_EQ(items[0].ColorDepth, 8U);
        EXPECT_EQ(driver->Call(operation, 3, &list), 0);
    }
    list.Capacity = 2;  // a short list is filled as far as it goes
    items[2].ColorDepth = 77;
    EXPECT_EQ(driver->Call(kGetColorantList, 0, &list), 1);
    EXPECT_EQ(list.Count, 2);
    EXPECT_EQ(items[2].ColorDepth, 77U);
}

}  // namespace
