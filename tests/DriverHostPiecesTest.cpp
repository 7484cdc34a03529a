#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <numeric>
#include <sstream>
#include <string>
#include <vector>

#include "driverhost/HostError.h"
#include "driverhost/InkPlan.h"
#include "driverhost/InkScreen.h"
#include "driverhost/PdfPages.h"
#include "driverhost/Plates.h"
#include "driverhost/ThresholdMatrix.h"
#include "driverhost/WorkFolder.h"

namespace {

std::vector<std::string> Split(const std::string& list) {
    std::vector<std::string> names;
    std::istringstream stream(list);
    for (std::string name; std::getline(stream, name, ',');)
        names.push_back(name);
    return names;
}

/// The plates of each colorant, one that is split as "Cyan-" for its dark part and "Cyan+" for its
/// light part, then the inks that have no channel.
std::string Text(const InkPlan& plan) {
    constexpr const char* kMarks[] = {" ", "- ", "+ "};
    std::string text;
    for (const InkSource& source : plan.Sources) {
        for (const PlatePart& part : source)
            text += part.Plate + kMarks[static_cast<std::size_t>(part.Part)];
        text += "| ";
    }
    for (const std::string& spot : plan.MixedSpots)
        text += "mixed " + spot + ' ';
    for (const std::string& ink : plan.LostInks)
        text += "no " + ink + ' ';
    return text;
}

TEST(InkPlan, GivesEachColorantItsPlates) {
    struct Case {
        const char* Colorants;
        const char* Spots;
        const char* Plan;
    };
    const Case cases[] = {
        {"Cyan,Magenta,Yellow,Black", "", "Cyan | Magenta | Yellow | Black | "},
        {"BLACK,cyan,Yellow,Magenta,Light Cyan,LightBlack", "",
         "Black- | Cyan- | Yellow | Magenta | Cyan+ | Black+ | "},
        {"Cyan,Magenta,Yellow,Black,White", "WHITE,Orange",
         "Cyan | Magenta | Yellow | Black | WHITE | mixed Orange "},
        {"Gray", "", "Gray | "},
        {"Black,White", "Black", "Gray | | mixed Black "},
        {"Black,White", "White", "Cyan Magenta Yellow Black | White | "},
        {"Cyan,Magenta,Yellow,Black,Grey", "", "Cyan | Magenta | Yellow | Black- | Black+ | "},
        {"Cyan,Magenta,Yellow", "", "Cyan Black | Magenta Black | Yellow Black | "},
        {"Cyan,Black", "cyan", "Cyan | Black | mixed cyan no Magenta no Yellow "},
        {"White", "White", "White | no Cyan no Magenta no Yellow no Black "},
        {"White", "", "| no Cyan no Magenta no Yellow no Black "},
        // Spot inks whose process inks are known: red is printed with magenta and yellow.
        {"Cyan,Magenta,Yellow,Light Magenta,White", "White,Red",
         "Cyan Black | Magenta- Black- Red- | Yellow Black Red | Magenta+ Black+ Red+ | White | "
         "mixed Red "},
        {"Grey", "Red", "Cyan Magenta Yellow Black Red | mixed Red "},
        {"White", "White,Red", "White | mixed Red no Cyan no Magenta no Yellow no Black "},
    };
    SpotInks red;
    red["Red"][1][255] = red["Red"][2][200] = 200;
    for (const Case& row : cases) {
        std::vector<ColorantInfo> colorants;
        for (const std::string& name : Split(row.Colorants))
            name.copy(colorants.emplace_back().InternalName, name.size());
        EXPECT_EQ(Text(PlanInks(colorants, Split(row.Spots), red)), row.Plan) << row.Colorants;
    }
}

/// Levels of a flat tone over a square of four matrices a side.
std::vector<unsigned> Levels(const InkScreen& screen, uint8_t amount, int32_t bits) {
    constexpr std::size_t kSide = 4 * ThresholdMatrix::kSide;
    const std::vector<uint8_t> amounts(kSide, amount);
    std::vector<uint8_t> packed(
        static_cast<std::size_t>(PackedRowBytes(std::ssize(amounts), bits)));
    std::vector<unsigned> levels;
    for (std::size_t y = 0; y < kSide; ++y) {
        screen.ScreenRow(amounts, {0, static_cast<int64_t>(y)}, packed);
        for (const uint8_t byte : packed)
            for (int shift = 8 - bits; shift >= 0; shift -= bits)
                levels.push_back(byte >> shift & ((1U << bits) - 1));
    }
    return levels;
}

TEST(Halftone, KeepsTheToneAtEveryDepth) {
    const struct {
        int32_t Bits;
        std::vector<float> Amounts;
        double Noise;
        double Tolerance;  ///< of the mean, 255 being full tone: chance has more of it
    } kRows[] = {
        {1, {1}, 0, 0.6},
        {1, {1}, 16, 2},
        {2, {1.0F / 3, 2.0F / 3, 1}, 0, 0.6},
        {2, {0.3F, 0.64F, 1}, 1, 0.6},
        {2, {0.5F, 0.5F, 1}, 1, 0.6},
        {2, {0.5F, 0.75F, 1.2F}, 100, 2},
        {4, {.1F, .2F, .3F, .4F, .5F, .6F, .7F, .8F, .9F, .91F, .92F, .93F, .94F, .95F, 1}, 1, 0.6},
    };
    for (const auto& row : kRows)
        for (const uint8_t amount : std::array<uint8_t, 7>{0, 1, 51, 128, 200, 254, 255})
            for (const std::size_t ink : {0U, 1U, 2U, 7U}) {
                const auto screen =
                    MakeDispersedScreen(ink, row.Bits, InkLevels(row.Amounts), row.Noise);
                const std::vector<unsigned> levels = Levels(*screen, amount, row.Bits);
                double sum = 0;
                for (const unsigned level : levels)
                    sum += level == 0 ? 0 : double{row.Amounts[level - 1]};
                const double tone = sum / static_cast<double>(levels.size());
                EXPECT_NEAR(tone * 255, amount, amount == 0 ? 0 : row.Tolerance)
                    << row.Bits << " bits, noise " << row.Noise << ", ink " << ink;
                const auto [low, high] = std::minmax_element(levels.begin(), levels.end());
                // Of two levels that carry the same, the second is never needed.
                EXPECT_LE(*high - *low, row.Amounts[0] == 0.5F && amount > 128 ? 2U : 1U);
            }
    for (const std::vector<float>& falling :
         {std::vector<float>{0.5F, 0.4F, 1}, std::vector<float>{-0.1F, 0.5F, 1},
          std::vector<float>{0, NAN, 1}})
        EXPECT_THROW(InkLevels{falling}, HostError);
}

TEST(Halftone, SpreadsDotsAndKeepsInksApart) {
    // In every 8 x 8 square of a quarter tone stand 16 dots, give or take a few; the same dots in
    // two inks would print a quarter of the area twice.
    constexpr std::size_t kSide = 4 * ThresholdMatrix::kSide;
    const auto dotsOf = [](std::size_t ink, double noise) {
        return Levels(*MakeDispersedScreen(ink, 1, InkLevels(1), noise), 64, 1);
    };
    for (const double noise : {0.0, 1.0}) {
        const std::vector<unsigned> dots = dotsOf(0, noise);
        for (std::size_t square = 0; square < 64; ++square) {
            unsigned count = 0;
            for (std::size_t i = 0; i < 64; ++i)
                count += dots[(square / 8 * 8 + i / 8) * kSide + square % 8 * 8 + i % 8];
            EXPECT_NEAR(count, 16, 5 + 4 * noise) << square;
        }
        for (const std::size_t ink : {1U, 2U, 3U, 4U, 7U}) {
            const std::vector<unsigned> other = dotsOf(ink, noise);
            EXPECT_NEAR(std::inner_product(dots.begin(), dots.end(), other.begin(), 0U), 16 * 256,
                        16 * 128);
        }
    }
}

TEST(PageReport, ReadsSizesAndSpotInks) {
    const std::vector<PdfPage> pages = ParsePageReport(
        "        File has 4 pages\n\nTitle: Page 9 MediaBox: [0 0 1 1]\n\n"
        "Page 1 MediaBox: [10 20 210 120] CropBox: [30 30 200.5 110.3]    Rotate = 90 \n"
        "    Page Spot colors: \n        'Orange Spot'\n        'it''s'\n\n\n"
        "    Fonts used: \n        'Not an ink'\n"
        "Page 2 UserUnit: 2.000000  MediaBox: [210 120 10 20]\n"
        "Page 3 MediaBox: [0 0 100 50] CropBox: [-20 -30 300 400]\r\n"
        "Page 4 MediaBox: [0 0 100 50] CropBox: [200 200 300 300]    Rotate = -180\n");
    // Never beyond the sheet, and a view that is empty is none.
    const double sizes[][2] = {{110.3 - 30, 170.5}, {400, 200}, {100, 50}, {100, 50}};
    ASSERT_EQ(pages.size(), std::size(sizes));
    for (std::size_t i = 0; i < pages.size(); ++i) {
        EXPECT_DOUBLE_EQ(pages[i].WidthPoints, sizes[i][0]) << i;
        EXPECT_DOUBLE_EQ(pages[i].HeightPoints, sizes[i][1]) << i;
    }
    EXPECT_EQ(pages[0].Spots, (std::vector<std::string>{"Orange Spot", "it''s"}));
    EXPECT_TRUE(pages[1].Spots.empty());
    EXPECT_EQ(PixelsOf(80.3, 100), 112);
}

}  // namespace
