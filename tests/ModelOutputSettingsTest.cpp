#include "description/ModelOutputSettings.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest.h>

#include "GoodDescription.h"
#include "boundary/BaseFolder.h"
#include "host/Text.h"

namespace {

class OutputRules : public testing::Test {
  protected:
    int32_t Read(std::string_view model, int32_t colorMode = 0) {
        PrintSettings settings;
        CopyText(settings.ModelName, sizeof settings.ModelName, model);
        settings.ColorModeIndex = colorMode;
        return ReadModelOutputSettings(description_, settings, output_);
    }
    std::string White(std::string_view model) {
        EXPECT_EQ(Read(model), 1);
        return fmt::format("{} of {} {} {} {}", output_.SupportWhiteType, output_.DefaultWhiteType,
                           output_.WhiteTypeNames, output_.WhiteTypeCodes,
                           output_.WhiteHeaderCodes);
    }
    /// Every rule of the model's entry.
    std::string Rules(std::string_view model) {
        const std::string white = White(model);
        return fmt::format(
            "line by line {}, direction {}, folder {}; white {}; ticket {} {} {}; "
            "header {} {} {}; preview {} {} {} {} {}",
            output_.LineByLine, output_.PrinterDirection, output_.CreateFolder, white,
            output_.HasJobTicket, output_.JobTicketName, output_.JobTicketCode,
            output_.HeaderTemplateName, output_.HeaderOutputName, output_.HeaderAtEndRip,
            output_.PreviewType, output_.PreviewSizeH, output_.PreviewSizeV, output_.PreviewBestFit,
            output_.PreviewName);
    }

    BaseFolder folder_;
    CDynamic description_;
    ModelOutputSettings output_;
};

// The first entry of just the model's name counts; what no read restores is kept from the last.
TEST_F(OutputRules, AreThoseOfTheModelsEntry) {
    folder_.InstallModel("", kGoodDescription);
    output_.SupportWhiteType = 5;
    EXPECT_EQ(Rules("Roll"),
              R"(line by line 1, direction 1, folder 0; )"
              R"(white 5 of 2 ["Spot", "Overprint"] [1, 2] [0, 1]; ticket 1 ticket.xml utf-16; )"
              R"(header roll.txt filename.hdr 1; preview PNG 300 200 0 filename_small.png)");
    EXPECT_EQ(Rules("Roll 2"),
              R"(line by line 1, direction 1, folder 0; )"
              R"(white 5 of 2 ["Spot", "Overprint"] [1, 2] [0, 1]; ticket 0 jobTicket.txt utf-8; )"
              R"(header roll.txt filename.hdr 1; preview BMP 500 500 1 )");
    EXPECT_EQ(Rules("Plain"),
              R"(line by line 1, direction 1, folder 1; )"
              R"(white 5 of -1 ["Spot", "Overprint"] [1, 2] [0, 1]; ticket 0 jobTicket.txt utf-8; )"
              R"(header roll.txt filename.hdr 0; preview BMP 500 500 1 )");
}

// The lists of an earlier model's offer stay, and offer nothing.
TEST_F(OutputRules, OfferWhiteAsTheLastEntryReadDoes) {
    folder_.InstallModel("",
                         Edited(kGoodDescription, {{"<Model Name=\"Plain\"",
                                                    "<Model Name='None' SupportWhite='-1|A;1;1'/>"
                                                    "<Model Name=\"Plain\""}}));
    const struct {
        const char* model;
        bool hasEntry;
        int32_t chosen;  ///< -1: the effective treatment without a choice
        int32_t none;
    } cases[] = {
        {"No entry", false, -1, -1}, {"Roll", true, 5, 2},        {"Roll 2", false, 5, 2},
        {"Plain", true, -1, -1},     {"No entry", false, -1, -1}, {"None", true, 5, -1},
    };
    for (const auto& [model, hasEntry, chosen, none] : cases) {
        SCOPED_TRACE(model);
        EXPECT_EQ(Read(model), 1);
        EXPECT_TRUE(output_.HasModelList);
        EXPECT_EQ(output_.HasModelEntry, hasEntry);
        output_.SupportWhiteType = 5;
        EXPECT_EQ(output_.EffectiveWhiteType(), chosen);
        output_.SupportWhiteType = -1;
        EXPECT_EQ(output_.EffectiveWhiteType(), none);
    }
}

TEST_F(OutputRules, ReadTheWhiteOffer) {
    const std::pair<const char*, const char*> cases[] = {
        {"3", R"(-1 of 3 [""] [0] [0])"},
        {"|Spot;1;2", R"(-1 of 0 ["|Spot"] [1] [2])"},
        {"1|", R"(-1 of 1 [""] [0] [0])"},
        {"x|A,B,;4,y, 6;7", R"(-1 of 0 ["A", "B"] [4, 0, 6] [7])"},
        {"5|,A;,;;9", R"(-1 of 5 ["", "A"] [0] [0])"},
        {"-1|A;1;2;3;4", R"(-1 of -1 ["A"] [1] [2])"},
        {"2|A|B;1|2;0", R"(-1 of 2 ["A|B"] [1] [0])"},
    };
    std::string entries;
    for (const auto& [offer, white] : cases)
        entries += fmt::format("<Model Name='{0}' SupportWhite='{0}'/>", offer);
    folder_.InstallModel("", Edited(kGoodDescription, {{"<ModelList>", "<ModelList>" + entries}}));
    for (const auto& [offer, white] : cases)
        EXPECT_EQ(White(offer), white) << offer;
}

}  // namespace
