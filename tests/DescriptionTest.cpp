#include <fmt/format.h>
#include <gtest/gtest.h>

#include "GoodDescription.h"
#include "boundary/BaseFolder.h"
#include "description/CDynamic.h"

using Texts = std::vector<std::string>;

namespace {

/// A description file alone in its folder.
struct Description : CDynamic {
    explicit Description(const std::vector<Edit>& edits = {}) {
        folder.InstallModel("", Edited(kGoodDescription, edits));
    }
    BaseFolder folder;
};

/// "ID internal/display" of each item.
Texts Summary(const CapabilityList& list) {
    Texts texts;
    for (const CapabilityItem& item : list) {
        texts.push_back(fmt::format("{} {}/{}", item.ID, item.InternalName, item.DisplayName));
    }
    return texts;
}

TEST(DescriptionTest, IsRefusedWithTheMessageOfItsFirstFault) {
    struct Case {
        std::vector<Edit> edits;
        int32_t answer;
        Texts messages;
    };
    const std::string noBases = "Getting BASERESOURCENODE node fails";
    const Edit withoutBases = {"BaseResourceNumber", "Other"};
    const Case cases[] = {
        {{{"<ID>2</ID><Int", "<ID> +2nd</ID><Int"}}, 1, {}},
        {{{"<ID>2</ID><Int", "<ID>-2</ID><Int"}}, 0, {"Wrong media index."}},
        {{{"<ID>0</ID><InternalName>d", "<InternalName>d"}}, 0, {"Wrong PrintMode index."}},
        {{{"<ID>0</ID><X", "<ID>4294967296</ID><X"}}, 0, {"Wrong Resolution index."}},
        {{{">360<", ">-1<"}, {">720<", ">-1<"}}, 0, {"Wrong xResolution."}},
        {{{">720<", "><"}}, 0, {"Wrong yResolution."}},
        {{{"<ColorList>", "<ColorList/><O>"}, {"/ColorList", "/O"}}, 0, {"Wrong nClrDefCount"}},
        {{{"<ID>4</ID>", "<ID/>"}, {"<K ID=\"2\"", "<K ID=\"9\""}}, 0, {"Wrong Color index."}},
        {{{"<ID>1</ID><InternalName>g", "<InternalName>g"}}, 0, {"Wrong color mode index."}},
        {{{"<K ID=\"2\"", "<K ID=\"5\""}}, 0, {"Wrong color ID."}},
        {{{"<K ID=\"2\"", "<K ID=\"Y\""}}, 0, {"Wrong color ID."}},
        {{{"<ColorDepth>8", "<ColorDepth>eight"}}, 0, {"Wrong color depth."}},
        {{{"IsSpotColor=\"1\"", "IsSpotColor=\"yes\""}}, 0, {"Wrong color spot."}},
        // An absent list counts as an empty one, but for those of the colours.
        {{{"<BaseMedia/>", ""}}, 1, {"Getting szNode node fails"}},
        {{withoutBases, {"MediaList", "M"}, {"PrintModeList", "P"}}, 1, Texts(5, noBases)},
        {{withoutBases, {"ResolutionList", "R"}, {"ColorModeList", "M"}}, 0, Texts(4, noBases)},
        {{{"ColorList", "C"}}, 0, {"Loading COLORLISTNODE fails."}},
    };
    for (const auto& [edits, answer, messages] : cases) {
        SCOPED_TRACE(edits.back().to);
        Description description(edits);
        EXPECT_EQ(description.LoadDescription("Roll"), answer);
        EXPECT_EQ(description.folder.Messages(), messages);
        if (answer == 1) continue;
        // A failed load leaves nothing behind, and the next one starts afresh.
        EXPECT_EQ(description.GetMediaCount(), -1);
        EXPECT_EQ(description.GetBaseResourceNumber("BaseMedia"), -1);
        EXPECT_EQ(description.folder.Messages().back(), noBases);
        description.folder.InstallModel("", kGoodDescription);
        EXPECT_EQ(description.LoadDescription("Roll"), 1);
    }
}

TEST(DescriptionTest, MessagesAreNotLostWithTheirFile) {
    const Description description;
    setenv("QL_MESSAGE_FILE", (description.folder.Root() / "none/messages").c_str(), 1);
    testing::internal::CaptureStderr();
    EXPECT_EQ(CDynamic().GetBaseResourceNumber("BaseMedia"), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Getting BASERESOURCENODE node fails\n");
}

TEST(DescriptionTest, IsTheFirstEntryWhoseNameTheModelContains) {
    const std::string none = "Cannot get XML ";
    const std::string unreadable = "Loading description file fails";
    const std::string longName = std::string(251, 'n') + ".xml";
    const std::string cases[][3] = {
        // entries, model, message
        {"<A Name='ABC' XMLFile='model.xml'/><A Name='ABC-2' XMLFile='no'/>", "ABC-2", ""},
        {"<A Name='ABC' XMLFile='no'/><A Name='ABC-2' XMLFile='model.xml'/>", "ABC-2", unreadable},
        {"<A Name='abc' XMLFile='model.xml'/>", "ABC", none},
        {"<A Name='ABC' XMLFile='model.xml'/>", "", none},
        {"<A XMLFile='model.xml'/>", "anything", ""},
        {"<A Name='' XMLFile='model.xml'/>", "", ""},
        {"<A Name='ABC' XMLFile='../outside.xml'/>", "ABC", unreadable},
        {"<A Name='ABC'/>", "ABC", unreadable},
        {"<A Name='ABC' XMLFile='" + longName + "more'/>", "ABC", ""},
        {"<A", "ABC", none},
    };
    for (const auto& [entries, model, message] : cases) {
        Description description;
        const std::filesystem::path drivers = description.folder.Base() / "OutputDrivers";
        WriteText(drivers / "ZeComFile.xml", "<M>" + entries + "</M>");
        WriteText(drivers / longName, kGoodDescription);
        WriteText(drivers / "../outside.xml", kGoodDescription);
        EXPECT_EQ(description.LoadDescription(model.c_str()), message.empty()) << entries;
        EXPECT_EQ(description.folder.Messages(), Texts(message.empty() ? 0 : 1, message))
            << entries;
    }
}

TEST(DescriptionTest, ListsThePrintModesThatTheMediumAllows) {
    struct Case {
        std::vector<Edit> edits;
        int32_t defaultMedia;
        int32_t media;
        Texts modes;
        int32_t defaultPosition;
    };
    const Case cases[] = {
        // The others are no print modes, nor is the default.
        {{{"DefaultMedia=\"2\"", "DefaultMedia=\"-3\""}}, -3, 2, {"0 draft/Draft"}, 0},
        // The first child is not listed and still counts.
        {{{"DefaultMedia=\"2\"", "DefaultMedia=\"x\""}}, 0, -1, {"1 normal/Normal"}, 1},
        // A default beyond the list is none.
        {{{"\"1\"><Mode ID=\"9\"", "\"3\"><M/><M ID=\"3\""}}, 2, -1, {"1 normal/Normal"}, 0},
        {{{"PrintModeList", "P"}, {"Control_", "C"}}, 2, 0, {}, 0},
    };
    for (const auto& [edits, defaultMedia, media, modes, defaultPosition] : cases) {
        Description description(edits);
        CapabilityList list;
        int32_t answer = -7;
        EXPECT_EQ(description.GetMediaList("Roll", &list, &answer), 1);
        EXPECT_EQ(answer, defaultMedia);
        list.clear();
        EXPECT_EQ(description.GetPrintModeList("Roll", &media, &list, &answer), 1);
        EXPECT_EQ(answer, defaultPosition);
        EXPECT_EQ(Summary(list), modes);
    }
}

TEST(DescriptionTest, FindsColorModesByNameAndPosition) {
    const std::string longName(300, 'n');
    // The identifier that a name answers is not the position that everything else goes by.
    Description description({{"<ID>1</ID><Int", "<ID>77</ID><Int"}, {"Four Inks", longName}});
    PrintSettings settings;
    settings.PrintModeIndex = 2;
    int32_t allowed = -7;
    EXPECT_EQ(description.IsColorModeAllowed(0, &allowed, nullptr, &settings), 1);
    EXPECT_EQ(allowed, 0);  // and still the default
    char name[256] = {};
    EXPECT_EQ(description.GetDefaultColorMode(name, &settings), 0);
    EXPECT_EQ(name, longName.substr(0, 255));
    EXPECT_EQ(description.FindColorModeID("one ink"), 77);
}

// Colour mode 0 has the colours 0 to 3, mode 1 has colour 3, mode 2 none.
TEST(DescriptionTest, TellsWhereIdentifiersLeadToOtherPositions) {
    const struct {
        std::vector<Edit> edits;
        const char* modes;  ///< of positions 0 to 3
    } cases[] = {
        {{}, "yyyy"},
        {{{"<ID>0</ID><InternalName>cmyk", "<ID>7</ID><InternalName>cmyk"}}, "nyyy"},
        {{{"<ID>1</ID><InternalName>gray", "<ID>2</ID><InternalName>gray"}}, "ynny"},
        {{{"<ID>3</ID><InternalName>Black", "<ID>8</ID><InternalName>Black"}}, "nnyy"},
        {{{"<ID>4</ID><InternalName>White", "<ID>1</ID><InternalName>White"}}, "yyyy"},
        {{{"<ID>0</ID><InternalName>Cyan", "<ID>3</ID><InternalName>Cyan"}}, "nnyy"},
    };
    for (const auto& [edits, modes] : cases) {
        Description description(edits);
        EXPECT_EQ(description.LoadedModelName(), "");
        EXPECT_EQ(description.LoadDescription("Roll"), 1);
        EXPECT_EQ(description.LoadDescription("Other"), 1);
        EXPECT_EQ(description.LoadedModelName(), "Roll");
        std::string found;
        for (int32_t mode = 0; mode < 4; ++mode)
            found += description.LeadIdentifiersToPositions(mode) ? 'y' : 'n';
        EXPECT_EQ(found, modes) << (edits.empty() ? "" : edits[0].to);
    }
}

TEST(DescriptionTest, ListsColorantsAndNamesFromResources) {
    // The media are numbered from 7999, 8000 and 8001 on: the first resource is the third medium's.
    Description description(
        {{"<BaseMedia/>", "<BaseMedia>7998</BaseMedia>"}, {"<BaseColor>", "<BaseColor>9001"}});
    CapabilityList media;
    ASSERT_EQ(description.GetMediaList("Roll", &media, nullptr), 1);
    EXPECT_EQ(Summary(media),
              (Texts{"0 paper/Paper", "1 film/Film",
                     "2 vinyl/Cyan,Magenta,Yellow,Black,Light Cyan,Light Magenta,Light Yellow"}));
    ColorantInfo items[4];
    ColorantInfoList list = {-7, {}, items, 4};
    ASSERT_EQ(description.GetColorantList(0, &list), 1);
    EXPECT_STREQ(items[1].DisplayName, "There is not enough disk space.");
    EXPECT_STREQ(items[2].DisplayName, "Sun");
    EXPECT_EQ(items[3].IsSpot, 0U);  // the description says 2
    for (ColorantInfoList none : {ColorantInfoList{-7, {}, items, -5}, {-7, {}, nullptr, 4}}) {
        EXPECT_EQ(description.GetColorantList(0, &none), 1);
        EXPECT_EQ(none.Count, 0);  // there is no room
    }
    EXPECT_EQ(description.GetBaseResourceNumber("BaseResolution"), -1);  // holds no number
    EXPECT_TRUE(description.folder.Messages().empty());
}

}  // namespace
