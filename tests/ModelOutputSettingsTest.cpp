#include "description/ModelOutputSettings.h"

#include <gtest/gtest.h>

#include "DescriptionFolder.h"
#include "host/Text.h"

using Texts = std::vector<std::string>;
using Codes = std::vector<int32_t>;

namespace {

PrintSettings Settings(std::string_view model, int32_t colorMode) {
    PrintSettings settings;
    CopyText(settings.ModelName, sizeof settings.ModelName, model);
    settings.ColorModeIndex = colorMode;
    return settings;
}

class OutputRules : public testing::Test {
  protected:
    int32_t Read(std::string_view model, int32_t colorMode = 0) {
        return ReadModelOutputSettings(description_, Settings(model, colorMode), output_);
    }

    DescriptionFolder folder_;
    CDynamic description_;
    ModelOutputSettings output_;
};

TEST_F(OutputRules, AreThoseOfTheModelsFirstEntry) {
    folder_.Describe(kGoodDescription);
    ASSERT_EQ(Read("Roll"), 1);
    EXPECT_EQ(output_.LineByLine, 1);
    EXPECT_EQ(output_.PrinterDirection, 1);
    EXPECT_EQ(output_.CreateFolder, 0);
    EXPECT_EQ(output_.SupportWhiteType, -1);
    EXPECT_EQ(output_.DefaultWhiteType, 2);
    EXPECT_EQ(output_.WhiteTypeNames, (Texts{"Spot", "Overprint"}));
    EXPECT_EQ(output_.WhiteTypeCodes, (Codes{1, 2}));
    EXPECT_EQ(output_.WhiteHeaderCodes, (Codes{0, 1}));
    EXPECT_EQ(output_.HasJobTicket, 1);
    EXPECT_EQ(output_.JobTicketName, "ticket.xml");
    EXPECT_EQ(output_.JobTicketCode, "utf-16");
    EXPECT_EQ(output_.HeaderTemplateName, "roll.txt");
    EXPECT_EQ(output_.HeaderOutputName, "filename.hdr");
    EXPECT_EQ(output_.HeaderAtEndRip, 1);
    EXPECT_EQ(output_.PreviewType, "PNG");
    EXPECT_EQ(output_.PreviewSizeH, 300);
    EXPECT_EQ(output_.PreviewSizeV, 200);
    EXPECT_EQ(output_.PreviewBestFit, 0);
    EXPECT_EQ(output_.PreviewName, "filename_small.png");
}

TEST_F(OutputRules, StartFromTheDefaultsThatEveryReadRestores) {
    folder_.Describe(kGoodDescription);
    output_.SupportWhiteType = 5;
    ASSERT_EQ(Read("Roll"), 1);
    ASSERT_EQ(Read("Roll 2"), 1);  // has no entry: containment does not count here
    EXPECT_EQ(output_.HasJobTicket, 0);
    EXPECT_EQ(output_.JobTicketName, "jobTicket.txt");
    EXPECT_EQ(output_.JobTicketCode, "utf-8");
    EXPECT_EQ(output_.PreviewType, "BMP");
    EXPECT_EQ(output_.PreviewSizeH, 500);
    EXPECT_EQ(output_.PreviewSizeV, 500);
    EXPECT_EQ(output_.PreviewBestFit, 1);
    EXPECT_EQ(output_.PreviewName, "");
    EXPECT_EQ(output_.ChannelNames.size(), 4U);
    // Kept from the earlier read.
    EXPECT_EQ(output_.SupportWhiteType, 5);
    EXPECT_EQ(output_.CreateFolder, 0);
    EXPECT_EQ(output_.DefaultWhiteType, 2);
    EXPECT_EQ(output_.HeaderAtEndRip, 1);

    ASSERT_EQ(Read("Plain"), 1);
    EXPECT_EQ(output_.LineByLine, 1);
    EXPECT_EQ(output_.PrinterDirection, 1);
    EXPECT_EQ(output_.CreateFolder, 1);
    EXPECT_EQ(output_.DefaultWhiteType, -1);
    EXPECT_EQ(output_.WhiteTypeCodes, (Codes{1, 2}));
    EXPECT_EQ(output_.HeaderTemplateName, "roll.txt");
    EXPECT_EQ(output_.HeaderOutputName, "filename.hdr");
    EXPECT_EQ(output_.HeaderAtEndRip, 0);
    EXPECT_EQ(output_.PreviewType, "BMP");
    EXPECT_EQ(output_.PreviewSizeH, 500);
}

TEST_F(OutputRules, ChangeNothingWithoutADescription) {
    output_.PreviewSizeH = 7;
    output_.ChannelNames = {"kept"};
    EXPECT_EQ(Read("Roll"), 0);
    EXPECT_EQ(output_.PreviewSizeH, 7);
    EXPECT_EQ(output_.ChannelNames, Texts{"kept"});
    EXPECT_EQ(folder_.TakeMessages(), Texts{"Cannot get XML "});
}

TEST_F(OutputRules, ReadTheWhiteOffer) {
    struct Case {
        const char* offer;
        int32_t defaultType;
        Texts names;
        Codes codes;
        Codes headerCodes;
    };
    const Case cases[] = {
        {"3", 3, {""}, {0}, {0}},
        {"|Spot;1;2", 0, {"|Spot"}, {1}, {2}},
        {"1|", 1, {""}, {0}, {0}},
        {"x|A,B,;4,y, 6;7", 0, {"A", "B"}, {4, 0, 6}, {7}},
        {"5|,A;,;;9", 5, {"", "A"}, {0}, {0}},
        {"-1|A;1;2;3;4", -1, {"A"}, {1}, {2}},
        {"2|A|B;1|2;0", 2, {"A|B"}, {1}, {0}},
    };
    for (const Case& each : cases) {
        folder_.Describe(Edited(kGoodDescription, {{"2|Spot,Overprint;1,2;0,1", each.offer}}));
        CDynamic description;
        ModelOutputSettings output;
        ASSERT_EQ(ReadModelOutputSettings(description, Settings("Roll", 0), output), 1);
        EXPECT_EQ(output.DefaultWhiteType, each.defaultType) << each.offer;
        EXPECT_EQ(output.WhiteTypeNames, each.names) << each.offer;
        EXPECT_EQ(output.WhiteTypeCodes, each.codes) << each.offer;
        EXPECT_EQ(output.WhiteHeaderCodes, each.headerCodes) << each.offer;
    }
}

TEST_F(OutputRules, NameTheChannelsOfTheColorMode) {
    // Two colours share an identifier and two a name; one colorant's colour is not listed.
    folder_.Describe(Edited(kGoodDescription, {{"<C><ID>2</ID>", "<C><ID>1</ID>"},
                                               {"<InternalName>White", "<InternalName>Cyan"}}));
    ASSERT_EQ(Read("None", 0), 1);
    EXPECT_EQ(output_.ChannelNames, (Texts{"filename_c", "filename_m", "filename_k"}));
    const std::map<AString, AString> map = {{"Cyan", "filename_w.tif"},
                                            {"Magenta", "filename_m"},
                                            {"Yellow", "filename_y"},
                                            {"Black", "filename_k"}};
    EXPECT_EQ(output_.ChannelNameMap, map);
    ASSERT_EQ(Read("None", 1), 1);
    EXPECT_EQ(output_.ChannelNames, Texts{"filename_k"});
    for (const int32_t without : {2, 3, -1}) {
        ASSERT_EQ(Read("None", without), 1);
        EXPECT_EQ(output_.ChannelNames, Texts{}) << without;
    }
    EXPECT_EQ(GetChannelName(description_, "Cyan", "None"), "filename_c");  // the first
    EXPECT_EQ(GetChannelName(description_, "cyan", "None"), "");
    EXPECT_EQ(folder_.TakeMessages(), Texts{});
}

TEST_F(OutputRules, ChannelOfAColorIsEmptyWithoutADescription) {
    EXPECT_EQ(GetChannelName(description_, "White", "Roll"), "");
    EXPECT_EQ(GetChannelName(description_, "White", nullptr), "");
    EXPECT_EQ(folder_.TakeMessages(), Texts{"Cannot get XML "});
    folder_.Describe(Edited(kGoodDescription, {{"ColorList", "C"}}));
    EXPECT_EQ(GetChannelName(description_, "White", "Roll"), "");
    EXPECT_EQ(folder_.TakeMessages(), Texts{"Loading COLORLISTNODE fails."});
}

TEST(SplitAtSeparator, TriesTheSeparatorsInTheirOrder) {
    struct Case {
        const char* text;
        const char* separators;
        const char* head;
        const char* rest;
    };
    const Case cases[] = {
        {"a,b;c,d", ";,", "a,b", "c,d"},
        {"a,b;c,d", ",;", "a", "b;c,d"},
        {"a,b", "|,", "a", "b"},
        {"abc", "|,", "abc", ""},
        {",a", ",", "", "a"},
        {"a,", ",", "a", ""},
        {"", ",", "", ""},
        {"a", "", "a", ""},
    };
    for (const Case& each : cases) {
        std::string_view head;
        EXPECT_EQ(SplitAtSeparator(each.text, each.separators, head), each.rest) << each.text;
        EXPECT_EQ(head, each.head) << each.text;
    }
}

}  // namespace
