#include <fmt/format.h>
#include <gtest/gtest.h>
#include <zlib.h>

#include <cstring>
#include <map>

#include "DescriptionFolder.h"
#include "description/CDynamic.h"
#include "host/GetZeColorValue.h"
#include "host/Text.h"

using Texts = std::vector<std::string>;

namespace {

std::string Gzipped(const std::string& text) {
    z_stream stream = {};
    EXPECT_EQ(deflateInit2(&stream, 9, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY), Z_OK);
    std::string packed(deflateBound(&stream, text.size()), '\0');
    std::string source = text;
    stream.next_in = reinterpret_cast<Bytef*>(source.data());
    stream.avail_in = static_cast<uInt>(source.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

PrintSettings Settings(int32_t media, int32_t printMode, int32_t resolution) {
    PrintSettings settings;
    settings.MediaIndex = media;
    settings.PrintModeIndex = printMode;
    settings.ResolutionIndex = resolution;
    return settings;
}

/// "ID internal/display" of each item.
Texts Summary(const CapabilityList& list) {
    Texts texts;
    for (const CapabilityItem& item : list) {
        texts.push_back(std::to_string(item.ID) + ' ' + item.InternalName + '/' + item.DisplayName);
    }
    return texts;
}

class Description : public testing::Test {
  protected:
    void SetUp() override { folder_.Describe(kGoodDescription); }

    /// The description of `text` loaded afresh.
    int32_t Load(std::string_view text) {
        folder_.Describe(text);
        return description_.LoadDescription("Roll");
    }

    DescriptionFolder folder_;
    CDynamic description_;
};

struct Change {
    const char* name;
    std::vector<Edit> edits;
    int32_t answer;
    Texts messages;
};

void PrintTo(const Change& change, std::ostream* out) {
    *out << change.name;
}

std::string NameOf(const testing::TestParamInfo<Change>& info) {
    return info.param.name;
}

const char* const kNoBases = "Getting BASERESOURCENODE node fails";
const char* const kNoBase = "Getting szNode node fails";
const Edit kWithoutBases = {"BaseResourceNumber", "Other"};

const Change kChanges[] = {
    {"None", {}, 1, {}},
    {"NotXml", {{"</Printer>", ""}}, 0, {"Loading description file fails"}},
    {"NoDefinition", {{"Definition", "D"}}, 0, {"Getting DEFINITIONNODE node fails"}},
    {"NoDefinitionNoBases",
     {{"Definition", "D"}, kWithoutBases},
     0,
     {"Getting DEFINITIONNODE node fails"}},
    {"NoMedia", {{"MediaList", "M"}}, 1, {}},
    {"NoBases", {kWithoutBases}, 1, {kNoBases, kNoBases, kNoBases, kNoBases, kNoBases}},
    {"NoBasesNoMedia",
     {kWithoutBases, {"MediaList", "M"}},
     1,
     {kNoBases, kNoBases, kNoBases, kNoBases, kNoBases}},
    {"NoBasesNoPrintModes",
     {kWithoutBases, {"PrintModeList", "P"}, {"ResolutionList", "R"}},
     1,
     {kNoBases, kNoBases, kNoBases, kNoBases, kNoBases}},
    {"NoBasesNoColors",
     {kWithoutBases, {"ColorList", "C"}},
     0,
     {kNoBases, kNoBases, kNoBases, "Loading COLORLISTNODE fails."}},
    {"NoBasesEmptyColors",
     {kWithoutBases, {"<ColorList>", "<ColorList><!--"}, {"</ColorList>", "--></ColorList>"}},
     0,
     {kNoBases, kNoBases, kNoBases, "Wrong nClrDefCount"}},
    {"NoBasesNoColorModes",
     {kWithoutBases, {"ColorModeList", "M"}},
     0,
     {kNoBases, kNoBases, kNoBases, kNoBases}},
    {"NoBasesEmptyColorModes",
     {kWithoutBases,
      {"<ColorModeList>", "<ColorModeList><!--"},
      {"</ColorModeList>", "--></ColorModeList>"}},
     1,
     {kNoBases, kNoBases, kNoBases, kNoBases, kNoBases}},
    {"NoBaseMedia", {{"<BaseMedia/>", ""}}, 1, {kNoBase}},
    {"MediaNegative",
     {{"<ID>2</ID><InternalName>v", "<ID>-2</ID><InternalName>v"}},
     0,
     {"Wrong media index."}},
    {"MediaWithoutId",
     {{"<ID>1</ID><InternalName>f", "<InternalName>f"}},
     0,
     {"Wrong media index."}},
    {"MediaLeadingNumber", {{"<ID>2</ID><InternalName>v", "<ID> +2nd</ID><InternalName>v"}}, 1, {}},
    {"PrintModeNoNumber",
     {{"<ID>0</ID><InternalName>d", "<ID>x1</ID><InternalName>d"}},
     0,
     {"Wrong PrintMode index."}},
    {"ResolutionBeyond32Bits",
     {{"<ID>0</ID><XRes", "<ID>4294967296</ID><XRes"}},
     0,
     {"Wrong Resolution index."}},
    {"ResolutionBothNegative",
     {{"<XResValue>360", "<XResValue>-1"}, {"<YResValue>720", "<YResValue>-1"}},
     0,
     {"Wrong xResolution."}},
    {"YResolutionNegative", {{"<YResValue>720", "<YResValue>-720"}}, 0, {"Wrong yResolution."}},
    {"YResolutionEmpty", {{"<YResValue>720", "<YResValue>"}}, 0, {"Wrong yResolution."}},
    {"ColorNegative", {{"<ID>4</ID>", "<ID>-4</ID>"}}, 0, {"Wrong Color index."}},
    {"ColorModeEmptyId",
     {{"<ID>1</ID><InternalName>g", "<ID/><InternalName>g"}},
     0,
     {"Wrong color mode index."}},
    {"ColorantBeyondColors", {{"<K ID=\"2\">", "<K ID=\"5\">"}}, 0, {"Wrong color ID."}},
    {"ColorantNegative", {{"<K ID=\"2\">", "<K ID=\"-1\">"}}, 0, {"Wrong color ID."}},
    {"ColorantNoNumber", {{"<K ID=\"2\">", "<K ID=\"Y\">"}}, 0, {"Wrong color ID."}},
    {"DepthNegative", {{"<ColorDepth>8", "<ColorDepth>-8"}}, 0, {"Wrong color depth."}},
    {"DepthNoNumber", {{"<ColorDepth>8", "<ColorDepth>eight"}}, 0, {"Wrong color depth."}},
    {"SpotNegative", {{"IsSpotColor=\"1\"", "IsSpotColor=\"-1\""}}, 0, {"Wrong color spot."}},
    {"SpotNoNumber", {{"IsSpotColor=\"1\"", "IsSpotColor=\"yes\""}}, 0, {"Wrong color spot."}},
    {"FirstFaultOnly",
     {{"<ID>4</ID>", "<ID/>"}, {"<K ID=\"2\">", "<K ID=\"9\">"}},
     0,
     {"Wrong Color index."}},
};

class DescriptionChange : public Description, public testing::WithParamInterface<Change> {};

TEST_P(DescriptionChange, AnswersAndShowsItsMessages) {
    const Change& change = GetParam();
    EXPECT_EQ(Load(Edited(kGoodDescription, change.edits)), change.answer);
    EXPECT_EQ(folder_.TakeMessages(), change.messages);
    // A failed load leaves nothing behind, and the next one starts afresh.
    if (change.answer == 0) {
        EXPECT_EQ(description_.GetMediaCount(), -1);
        EXPECT_EQ(description_.FindColorModeID("Four Inks"), -1);
        EXPECT_EQ(description_.GetBaseResourceNumber("BaseMedia"), -1);
        EXPECT_EQ(folder_.TakeMessages(), Texts{kNoBases});
        EXPECT_EQ(Load(kGoodDescription), 1);
        EXPECT_EQ(description_.GetMediaCount(), 3);
    }
}

INSTANTIATE_TEST_SUITE_P(Changes, DescriptionChange, testing::ValuesIn(kChanges), NameOf);

// ---------------------------------------------------------------- which file is read

struct ModelListCase {
    const char* models;
    const char* model;
    Texts messages;
};

TEST_F(Description, IsTheFirstEntryWhoseNameTheModelContains) {
    const Texts none = {"Cannot get XML "};
    const Texts unreadable = {"Loading description file fails"};
    const std::string longName = std::string(251, 'n') + ".xml";
    const std::string cutName = "<M><A Name='ABC' XMLFile='" + longName + "more'/></M>";
    folder_.Write("OutputDrivers/" + longName, kGoodDescription);
    folder_.Write("OutputDrivers/models/one.xml", kGoodDescription);
    folder_.Write("outside.xml", kGoodDescription);
    const ModelListCase cases[] = {
        {"<M><A Name='ABC' XMLFile='model.xml'/><A Name='ABC-2' XMLFile='no.xml'/></M>",
         "ABC-2",
         {}},
        {"<M><A Name='ABC' XMLFile='no.xml'/><A Name='ABC-2' XMLFile='model.xml'/></M>", "ABC-2",
         unreadable},
        {"<M><A Name='abc' XMLFile='model.xml'/></M>", "ABC", none},
        {"<M><A Name='ABC' XMLFile='model.xml'/></M>", "AB", none},
        {"<M><A XMLFile='model.xml'/></M>", "anything", {}},
        {"<M><A Name='' XMLFile='model.xml'/></M>", "", {}},
        {"<M><A Name='ABC' XMLFile='model.xml'/></M>", "", none},
        {"<M><A Name='ABC' XMLFile='models\\one.xml'/></M>", "ABC", {}},
        {"<M><A Name='ABC' XMLFile='../outside.xml'/></M>", "ABC", unreadable},
        {"<M><A Name='ABC'/></M>", "ABC", unreadable},
        {cutName.c_str(), "ABC", {}},
        {"<M/>", "ABC", none},
        {"no xml", "ABC", none},
        {"", "ABC", none},
    };
    for (const ModelListCase& each : cases) {
        folder_.Write("OutputDrivers/ZeComFile.xml", each.models);
        CDynamic description;
        EXPECT_EQ(description.LoadDescription(each.model), each.messages.empty()) << each.models;
        EXPECT_EQ(folder_.TakeMessages(), each.messages) << each.models;
    }
}

TEST_F(Description, WithoutModelListOrModelIsNone) {
    std::filesystem::remove(folder_.Path("OutputDrivers/ZeComFile.xml"));
    EXPECT_EQ(description_.LoadDescription(nullptr), 0);
    EXPECT_EQ(folder_.TakeMessages(), Texts{});
    EXPECT_EQ(description_.LoadDescription("Roll"), 0);
    EXPECT_EQ(folder_.TakeMessages(), Texts{"Cannot get XML "});
}

TEST_F(Description, IsReadInEncodedForm) {
    std::string packed = Gzipped(kGoodDescription);
    folder_.Write("OutputDrivers/ZeComFile.xml", Gzipped("<M><A XMLFile='model.xml'/></M>"));
    folder_.Write("OutputDrivers/model.xml", packed.substr(0, packed.size() - 1));
    EXPECT_EQ(description_.LoadDescription("Roll"), 0);
    packed[packed.size() - 6] ^= 1;  // the checksum
    folder_.Write("OutputDrivers/model.xml", packed);
    EXPECT_EQ(description_.LoadDescription("Roll"), 0);
    const std::string fault = "Loading description file fails";
    EXPECT_EQ(folder_.TakeMessages(), (Texts{fault, fault}));
    packed[packed.size() - 6] ^= 1;
    folder_.Write("OutputDrivers/model.xml", packed);
    EXPECT_EQ(description_.LoadDescription("Roll"), 1);
    EXPECT_EQ(description_.GetColorModeCount(), 3);
}

TEST_F(Description, FirstOneLoadedStays) {
    ASSERT_EQ(description_.LoadDescription("Roll"), 1);
    std::filesystem::remove_all(folder_.Path("OutputDrivers"));
    EXPECT_EQ(description_.LoadDescription("Another"), 1);
    EXPECT_EQ(description_.GetResolutionCount(), 2);
    EXPECT_EQ(folder_.TakeMessages(), Texts{});
}

// ---------------------------------------------------------------- lists

TEST_F(Description, ListsMediaBehindWhatTheCallerHas) {
    CapabilityList list(1, CapabilityItem{9, "kept", "kept"});
    int32_t defaultMedia = -7;
    EXPECT_EQ(description_.GetMediaList("Roll", &list, &defaultMedia), 1);
    EXPECT_EQ(Summary(list),
              (Texts{"9 kept/kept", "0 paper/Paper", "1 film/Film", "2 vinyl/Vinyl"}));
    EXPECT_EQ(defaultMedia, 2);
    EXPECT_EQ(description_.GetMediaList("Roll", &list, nullptr), 1);
    EXPECT_EQ(description_.GetMediaList("Roll", nullptr, &defaultMedia), 0);
}

TEST_F(Description, DefaultMediaIsItsValueOrZero) {
    const std::map<std::string_view, int32_t> cases = {
        {"DefaultMedia=\"17\"", 17}, {"DefaultMedia=\"-3\"", -3}, {"DefaultMedia=\"\"", 0},
        {"DefaultMedia=\"x\"", 0},   {"Default=\"1\"", 0},
    };
    for (const auto& [attribute, expected] : cases) {
        folder_.Describe(Edited(kGoodDescription, {{"DefaultMedia=\"2\"", attribute}}));
        CDynamic description;
        CapabilityList list;
        int32_t defaultMedia = -7;
        EXPECT_EQ(description.GetMediaList("Roll", &list, &defaultMedia), 1);
        EXPECT_EQ(defaultMedia, expected) << attribute;
    }
}

TEST_F(Description, CutsTextsToTheFieldsOfTheHost) {
    const std::string name(300, 'n');
    ASSERT_EQ(
        Load(Edited(
            kGoodDescription,
            {{"Paper", name}, {"360 x 720", name}, {"Blue-green", name}, {"Four Inks", name}})),
        1);
    CapabilityList media;
    ResolutionList resolutions;
    const int32_t zero = 0;
    ASSERT_EQ(description_.GetMediaList("Roll", &media, nullptr), 1);
    ASSERT_EQ(description_.GetResolutionList("Roll", &zero, &(const int32_t&)1, &resolutions), 1);
    char expected[256] = {};
    std::memset(expected, 'n', 63);
    EXPECT_EQ(std::memcmp(media[0].DisplayName, expected, 256), 0);
    EXPECT_EQ(std::memcmp(resolutions[0].DisplayName, expected, 256), 0);
    ColorantInfo colorants[4];
    ColorantInfoList list = {-1, {}, colorants, 4};
    ASSERT_EQ(description_.GetColorantList(0, &list), 1);
    EXPECT_EQ(std::memcmp(colorants[0].DisplayName, expected, 64), 0);
    char answer[256];
    ASSERT_EQ(description_.GetColorModeName(0, answer), 1);
    EXPECT_EQ(std::string(answer), name.substr(0, 255));
}

TEST_F(Description, ListsThePrintModesThatTheMediumAllows) {
    struct Case {
        int32_t media;
        int32_t answer;
        Texts modes;
        int32_t defaultPosition;
    };
    const Case cases[] = {
        {0, 1, {"1 normal/Normal", "2 best/Best"}, 1},  // a position, not the identifier
        {2, 1, {"0 draft/Draft"}, 0},     // the others are no print modes, nor is the default
        {-1, 1, {"1 normal/Normal"}, 1},  // the first child is not listed and still counts
        {1, 0, {}, 0},
    };
    for (const Case& each : cases) {
        CapabilityList list;
        int32_t position = -7;
        EXPECT_EQ(description_.GetPrintModeList("Roll", &each.media, &list, &position),
                  each.answer);
        EXPECT_EQ(Summary(list), each.modes) << each.media;
        EXPECT_EQ(position, each.defaultPosition) << each.media;
        EXPECT_EQ(description_.GetPrintModeList("Roll", &each.media, &list, nullptr), each.answer);
    }
    EXPECT_EQ(description_.GetPrintModeList("Roll", nullptr, nullptr, nullptr), 0);
}

TEST_F(Description, WithoutPrintModesAllowsNone) {
    ASSERT_EQ(Load(Edited(kGoodDescription, {{"PrintModeList", "P"}, {"Control_", "C"}})), 1);
    const int32_t media = 0;
    CapabilityList list;
    int32_t position = -7;
    EXPECT_EQ(description_.GetPrintModeList("Roll", &media, &list, &position), 1);
    EXPECT_EQ(position, 0);
    EXPECT_TRUE(list.empty());
}

TEST_F(Description, DefaultPrintModeBeyondTheListIsNone) {
    ASSERT_EQ(Load(Edited(kGoodDescription, {{"DefaultPrintMode=\"1\"", "DefaultPrintMode=\"3\""},
                                             {"<Mode ID=\"9\"/>", "<Mode/><Mode ID=\"3\"/>"}})),
              1);
    const int32_t media = -1;
    CapabilityList list;
    int32_t position = -7;
    EXPECT_EQ(description_.GetPrintModeList("Roll", &media, &list, &position), 1);
    EXPECT_EQ(position, 0);
    EXPECT_EQ(Summary(list), Texts{"1 normal/Normal"});
}

TEST_F(Description, ListsEveryResolutionOfAnAllowedPrintMode) {
    struct Case {
        int32_t media;
        int32_t printMode;
        int32_t answer;
    };
    const Case cases[] = {{0, 1, 1}, {2, 3, 1}, {0, 0, 0}, {1, 1, 0}, {-1, 9, 1}};
    for (const auto& [media, printMode, answer] : cases) {
        ResolutionList list;
        EXPECT_EQ(description_.GetResolutionList("Roll", &media, &printMode, &list), answer);
        ASSERT_EQ(list.size(), answer == 1 ? 2U : 0U) << media << ' ' << printMode;
        if (answer == 0) continue;
        EXPECT_EQ(double{list[0].XResolution}, 360.0);
        EXPECT_EQ(double{list[0].YResolution}, 720.0);
        EXPECT_EQ(list[1].ID, 1);
        EXPECT_STREQ(list[1].DisplayName, "1440 x 1440");
    }
}

// ---------------------------------------------------------------- colour modes

TEST_F(Description, AllowsTheColorModesOfACombination) {
    struct Case {
        int32_t media, printMode, resolution, position;
        int32_t answer, allowed;
        const char* name;
    };
    const Case cases[] = {
        {0, 1, 0, 0, 1, 1, "Four Inks"},  {0, 1, 0, 1, 1, 1, "One Ink"},
        {0, 1, 0, 2, 1, 0, "No Ink"},     {0, 1, 1, 2, 1, 1, "No Ink"},
        {0, 2, 55, 1, 1, 1, "One Ink"},  // an only resolution serves for every identifier
        {0, 2, 55, 0, 1, 0, "Four Inks"}, {0, 1, 2, 0, 0, -7, "as it was"},
        {0, 3, 0, 0, 0, -7, "as it was"}, {1, 1, 0, 0, 0, -7, "as it was"},
        {0, 1, 0, 3, 0, -7, "as it was"}, {0, 1, 0, -1, 0, -7, "as it was"},
    };
    for (const Case& each : cases) {
        const PrintSettings settings = Settings(each.media, each.printMode, each.resolution);
        int32_t allowed = -7;
        char name[256] = "as it was";
        EXPECT_EQ(description_.IsColorModeAllowed(each.position, &allowed, name, &settings),
                  each.answer);
        EXPECT_EQ(allowed, each.allowed);
        EXPECT_STREQ(name, each.name);
        EXPECT_EQ(description_.IsColorModeAllowed(each.position, nullptr, nullptr, &settings),
                  each.answer);
    }
    EXPECT_EQ(description_.IsColorModeAllowed(0, nullptr, nullptr, nullptr), 0);
}

TEST_F(Description, HasADefaultColorMode) {
    struct Case {
        int32_t printMode, resolution, answer;
        const char* name;
    };
    const Case cases[] = {
        {1, 0, 1, "One Ink"},
        {2, 0, 0, "Four Inks"},
        {1, 1, 0, "as it was"},  // beyond the list
        {1, 9, 0, "as it was"},
    };
    for (const Case& each : cases) {
        const PrintSettings settings = Settings(0, each.printMode, each.resolution);
        char name[256] = "as it was";
        EXPECT_EQ(description_.GetDefaultColorMode(name, &settings), each.answer);
        EXPECT_STREQ(name, each.name);
        EXPECT_EQ(description_.GetDefaultColorMode(nullptr, &settings), each.answer);
    }
    EXPECT_EQ(description_.GetDefaultColorMode(nullptr, nullptr), 0);
}

TEST_F(Description, FindsColorModesByNameAndPosition) {
    char name[256] = "as it was";
    EXPECT_EQ(description_.FindColorModeID("Four Inks"), -1);  // loads nothing
    EXPECT_EQ(description_.GetColorModeName(0, name), 0);
    ColorantInfoList list = {-7, {}, nullptr, 0};
    EXPECT_EQ(description_.GetColorantList(0, &list), 0);
    ASSERT_EQ(Load(Edited(kGoodDescription,
                          {{"<ID>1</ID><InternalName>gray", "<ID>77</ID><InternalName>gray"}})),
              1);
    EXPECT_EQ(description_.FindColorModeID("fOUR iNKS"), 0);
    EXPECT_EQ(description_.FindColorModeID("one ink"), 77);
    EXPECT_EQ(description_.FindColorModeID("gray"), -1);
    EXPECT_EQ(description_.FindColorModeID(nullptr), -1);
    EXPECT_EQ(description_.GetColorModeName(3, name), 0);
    EXPECT_EQ(description_.GetColorModeName(-1, name), 0);
    EXPECT_STREQ(name, "as it was");
    EXPECT_EQ(description_.GetColorModeName(2, name), 1);
    EXPECT_STREQ(name, "No Ink");
}

TEST_F(Description, ListsTheColorantsOfAColorMode) {
    ASSERT_EQ(description_.LoadDescription("Roll"), 1);
    ColorantInfo items[5];
    ColorantInfoList list = {-7, {}, items, 5};
    EXPECT_EQ(description_.GetColorantList(3, &list), 0);
    EXPECT_EQ(description_.GetColorantList(-1, &list), 0);
    EXPECT_EQ(list.Count, -7);
    EXPECT_EQ(description_.GetColorantList(0, nullptr), 0);

    EXPECT_EQ(description_.GetColorantList(0, &list), 1);
    ASSERT_EQ(list.Count, 4);
    const char* const names[] = {"Cyan", "Magenta", "Yellow", "Black"};
    for (int index = 0; index < 4; ++index) {
        EXPECT_STREQ(items[index].InternalName, names[index]);
        EXPECT_EQ(items[index].IsSpot, 0U);
        EXPECT_EQ(items[index].IsPresent, 1U);
        EXPECT_EQ(items[index].ColorDepth, 1U);
        EXPECT_EQ(items[index].ColorValue, GetZeColorValue(names[index]));
    }
    EXPECT_STREQ(items[3].DisplayName, "Night");
    EXPECT_EQ(description_.GetColorantList(1, &list), 1);
    EXPECT_EQ(list.Count, 1);
    EXPECT_EQ(items[0].IsSpot, 1U);
    EXPECT_EQ(items[0].ColorDepth, 8U);
    EXPECT_EQ(description_.GetColorantList(2, &list), 1);
    EXPECT_EQ(list.Count, 0);
}

TEST_F(Description, FillsNoMoreColorantsThanThereIsRoomFor) {
    ASSERT_EQ(description_.LoadDescription("Roll"), 1);
    ColorantInfo items[4];
    const std::map<int32_t, int32_t> countByCapacity = {{3, 3}, {1, 1}, {0, 0}, {-5, 0}};
    for (const auto& [capacity, count] : countByCapacity) {
        for (ColorantInfo& item : items)
            item = ColorantInfo();
        ColorantInfoList list = {-7, {}, items, capacity};
        EXPECT_EQ(description_.GetColorantList(0, &list), 1);
        EXPECT_EQ(list.Count, count);
        EXPECT_STREQ(items[count].InternalName, "");
    }
    ColorantInfoList nowhere = {-7, {}, nullptr, 4};
    EXPECT_EQ(description_.GetColorantList(0, &nowhere), 1);
    EXPECT_EQ(nowhere.Count, 0);
}

// ---------------------------------------------------------------- resources, walks, sizes

TEST_F(Description, TakesDisplayNamesFromResourcesThatExist) {
    // The media are numbered from 7999, 8000 and 8001 on: the first resource is the third medium's.
    ASSERT_EQ(Load(Edited(kGoodDescription, {{"<BaseMedia/>", "<BaseMedia>7998</BaseMedia>"},
                                             {"<BaseColor>", "<BaseColor>9001"}})),
              1);
    CapabilityList media;
    ASSERT_EQ(description_.GetMediaList("Roll", &media, nullptr), 1);
    EXPECT_EQ(Summary({media.begin(), media.begin() + 2}), (Texts{"0 paper/Paper", "1 film/Film"}));
    EXPECT_STREQ(media[2].DisplayName,
                 "Cyan,Magenta,Yellow,Black,Light Cyan,Light Magenta,Light Yellow");
    ColorantInfo items[4];
    ColorantInfoList list = {-7, {}, items, 4};
    ASSERT_EQ(description_.GetColorantList(0, &list), 1);
    EXPECT_EQ(std::string(items[0].DisplayName),
              "The driver doesn't support the current port, please select anot");
    EXPECT_STREQ(items[1].DisplayName, "There is not enough disk space.");
    EXPECT_STREQ(items[2].DisplayName, "Sun");
    EXPECT_EQ(description_.GetBaseResourceNumber("BaseMedia"), 7998);
    EXPECT_EQ(description_.GetBaseResourceNumber("BaseResolution"), -1);
    EXPECT_EQ(description_.GetBaseResourceNumber(nullptr), -1);
    EXPECT_EQ(folder_.TakeMessages(), Texts{});
}

TEST_F(Description, FindsChildrenByIdentifier) {
    ASSERT_EQ(description_.LoadDescription("Roll"), 1);
    AEnXMLTree& document = description_.GetDescriptionTree();
    AXMLTreeNode combinations;
    ASSERT_EQ(
        document.getChild("Control_Definition", description_.GetDescriptionRoot(), combinations),
        1);
    AXMLTreeNode media;
    ASSERT_EQ(description_.FindChildByID(combinations, 2, &media), 1);
    AXMLTreeNode mode;
    EXPECT_EQ(description_.FindChildByID(media, 3, &mode), 1);
    EXPECT_EQ(document.getAttribute(mode, "ID"), "3");
    EXPECT_EQ(description_.FindChildByID(media, -1, &mode), 1);  // no number counts as -1
    EXPECT_EQ(document.getAttribute(mode, "ID"), "two");
    EXPECT_EQ(description_.FindChildByID(media, 1, &mode), 0);
    EXPECT_EQ(description_.FindChildByID(mode, 0, nullptr), 0);  // no children
    EXPECT_EQ(description_.FindChildByID(AXMLTreeNode(), 0, &mode), 0);
}

TEST_F(Description, ServesListsOfAHundredThousandItems) {
    constexpr int kCount = 100'000;
    std::string resolutions;
    std::string colors;
    std::string colorants;
    for (int index = 0; index < kCount; ++index) {
        resolutions += fmt::format(
            "<R><ID>{0}</ID><XResValue>{0}</XResValue><YResValue>1</YResValue></R>", index);
        colors += fmt::format("<C><ID>{0}</ID><InternalName>c{0}</InternalName></C>", index);
        colorants += fmt::format("<K ID='{0}'><ColorDepth>1</ColorDepth></K>", index);
    }
    ASSERT_EQ(
        Load("<P><Definition><ResolutionList>" + resolutions + "</ResolutionList><ColorList>" +
             colors + "</ColorList><ColorModeList><M><ID>0</ID><ColorantList>" + colorants +
             "</ColorantList></M></ColorModeList></Definition><Control_Definition><M><P/></M>"
             "</Control_Definition></P>"),
        1);
    const int32_t any = 0;
    ResolutionList list;
    ASSERT_EQ(description_.GetResolutionList("Roll", &any, &any, &list), 1);
    ASSERT_EQ(list.size(), std::size_t{kCount});
    EXPECT_EQ(double{list.back().XResolution}, kCount - 1);  // packed records
    std::vector<ColorantInfo> items(kCount);
    ColorantInfoList found = {-7, {}, items.data(), kCount};
    ASSERT_EQ(description_.GetColorantList(0, &found), 1);
    EXPECT_EQ(found.Count, kCount);
    EXPECT_STREQ(items.back().InternalName, "c99999");
}

}  // namespace
