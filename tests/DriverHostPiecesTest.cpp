#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "driverhost/Halftone.h"
#include "driverhost/HostError.h"
#include "driverhost/InkPlan.h"
#include "driverhost/OutputFiles.h"
#include "driverhost/PdfPages.h"
#include "driverhost/Plates.h"
#include "driverhost/Progress.h"
#include "driverhost/WorkFolder.h"

namespace {

std::vector<ColorantInfo> Colorants(const std::vector<std::string>& names) {
    std::vector<ColorantInfo> list(names.size());
    for (std::size_t i = 0; i < names.size(); ++i)
        std::memcpy(list[i].InternalName, names[i].data(), names[i].size());
    return list;
}

/// "Cyan" for a whole plate, "Cyan-" for its dark part, "Cyan+" for its light part.
std::string Text(const InkSource& source) {
    std::string text;
    for (const PlatePart& part : source) {
        text += (text.empty() ? "" : " ") + part.Plate;
        if (part.Part != Tone::kWhole) text += part.Part == Tone::kDark ? "-" : "+";
    }
    return text;
}

struct InkPlanCase {
    std::vector<std::string> Colorants;
    std::vector<std::string> Spots;
    std::vector<std::string> Sources;
    std::vector<std::string> Mixed;
    std::vector<std::string> Lost;
};

TEST(InkPlan, GivesEachColorantItsPlates) {
    const InkPlanCase cases[] = {
        {{"Cyan", "Magenta", "Yellow", "Black"},
         {},
         {"Cyan", "Magenta", "Yellow", "Black"},
         {},
         {}},
        {{"BLACK", "cyan", "Yellow", "Magenta", "Light Cyan", "LightBlack"},
         {},
         {"Black-", "Cyan-", "Yellow", "Magenta", "Cyan+", "Black+"},
         {},
         {}},
        {{"Cyan", "Magenta", "Yellow", "Black", "White"},
         {"WHITE", "Orange"},
         {"Cyan", "Magenta", "Yellow", "Black", "WHITE"},
         {"Orange"},
         {}},
        {{"Gray"}, {}, {"Gray"}, {}, {}},
        {{"Black", "White"}, {"White", "Black"}, {"Gray", "White"}, {"Black"}, {}},
        {{"Cyan", "Magenta", "Yellow", "Black", "Grey"},
         {},
         {"Cyan", "Magenta", "Yellow", "Black-", "Black+"},
         {},
         {}},
        {{"Cyan", "Magenta", "Yellow"},
         {},
         {"Cyan Black", "Magenta Black", "Yellow Black"},
         {},
         {}},
        {{"Cyan", "Black"}, {"cyan"}, {"Cyan", "Black"}, {"cyan"}, {"Magenta", "Yellow"}},
        {{"White"}, {"White"}, {"White"}, {}, {"Cyan", "Magenta", "Yellow", "Black"}},
        {{"White"}, {}, {""}, {}, {"Cyan", "Magenta", "Yellow", "Black"}},
    };
    for (const InkPlanCase& row : cases) {
        const InkPlan plan = PlanInks(Colorants(row.Colorants), row.Spots);
        SCOPED_TRACE(row.Colorants.front() + '/' + std::to_string(row.Colorants.size()));
        std::vector<std::string> sources;
        for (const InkSource& source : plan.Sources)
            sources.push_back(Text(source));
        EXPECT_EQ(sources, row.Sources);
        EXPECT_EQ(plan.MixedSpots, row.Mixed);
        EXPECT_EQ(plan.LostInks, row.Lost);
    }
}

TEST(InkPlan, LightInkHandsOverToTheDarkOne) {
    EXPECT_EQ(AmountOf(Tone::kLight, 0), 0);
    EXPECT_EQ(AmountOf(Tone::kLight, 127), 254);
    EXPECT_EQ(AmountOf(Tone::kDark, 127), 0);
    EXPECT_EQ(AmountOf(Tone::kLight, 255), 0);
    EXPECT_EQ(AmountOf(Tone::kDark, 255), 255);
    for (int amount = 1; amount < 256; ++amount) {
        const auto value = static_cast<uint8_t>(amount);
        const auto before = static_cast<uint8_t>(amount - 1);
        EXPECT_GE(AmountOf(Tone::kDark, value), AmountOf(Tone::kDark, before)) << amount;
    }
}

/// Levels of a flat tone over a whole screen.
std::vector<unsigned> Levels(uint8_t amount, int32_t bits, std::size_t ink) {
    constexpr std::size_t kSide = ThresholdMatrix::kSide;
    const ThresholdMatrix matrix(ink);
    const std::vector<uint8_t> amounts(kSide, amount);
    std::vector<unsigned> levels;
    for (std::size_t y = 0; y < kSide; ++y) {
        std::vector<uint8_t> packed(static_cast<std::size_t>(PackedRowBytes(int64_t{kSide}, bits)));
        HalftoneRow(amounts, bits, matrix, static_cast<int64_t>(y), packed);
        for (const uint8_t byte : packed)
            for (int shift = 8 - bits; shift >= 0; shift -= bits)
                levels.push_back(byte >> shift & ((1U << bits) - 1));
    }
    return levels;
}

TEST(Halftone, KeepsTheToneAtEveryDepth) {
    for (const int32_t bits : {1, 2, 4, 8}) {
        const unsigned top = (1U << bits) - 1;
        for (const int amount : {0, 1, 51, 100, 128, 200, 254, 255}) {
            for (const std::size_t ink : {0U, 1U, 2U, 7U}) {
                const std::vector<unsigned> levels =
                    Levels(static_cast<uint8_t>(amount), bits, ink);
                double sum = 0;
                for (const unsigned level : levels)
                    sum += level;
                const double tone = sum / static_cast<double>(levels.size()) / top * 255;
                EXPECT_NEAR(tone, amount, 0.6) << bits << " bits, ink " << ink;
                const auto [low, high] = std::minmax_element(levels.begin(), levels.end());
                EXPECT_LE(*high - *low, 1U) << bits << " bits, amount " << amount;
            }
        }
    }
}

TEST(Halftone, SpreadsDotsAndKeepsInksApart) {
    // In every 8 x 8 square of a quarter tone stand 16 dots, give or take a few; the same dots in
    // two inks would print a quarter of the area twice.
    const std::vector<unsigned> dots = Levels(64, 1, 0);
    for (std::size_t square = 0; square < 64; ++square) {
        unsigned count = 0;
        for (std::size_t i = 0; i < 64; ++i)
            count += dots[(square / 8 * 8 + i / 8) * 64 + square % 8 * 8 + i % 8];
        EXPECT_NEAR(count, 16, 5) << square;
    }
    for (const std::size_t ink : {1U, 2U, 3U, 4U, 7U}) {
        const std::vector<unsigned> other = Levels(64, 1, ink);
        std::size_t both = 0;
        for (std::size_t i = 0; i < dots.size(); ++i)
            both += dots[i] & other[i];
        EXPECT_NEAR(static_cast<double>(both), 4096.0 / 16, 128) << ink;
    }
}

TEST(Halftone, LeavesSpareBitsClear) {
    const ThresholdMatrix matrix(0);
    const std::array<uint8_t, 3> amounts = {255, 255, 255};
    std::array<uint8_t, 1> packed = {0xFF};
    HalftoneRow(amounts, 1, matrix, 0, packed);
    EXPECT_EQ(packed[0], 0xE0);
    HalftoneRow(amounts, 2, matrix, 0, packed);
    EXPECT_EQ(packed[0], 0xFC);
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
    ASSERT_EQ(pages.size(), 4U);
    EXPECT_DOUBLE_EQ(pages[0].WidthPoints, 110.3 - 30);
    EXPECT_DOUBLE_EQ(pages[0].HeightPoints, 170.5);
    EXPECT_EQ(pages[0].Spots, (std::vector<std::string>{"Orange Spot", "it''s"}));
    EXPECT_DOUBLE_EQ(pages[1].WidthPoints, 400);
    EXPECT_DOUBLE_EQ(pages[1].HeightPoints, 200);
    EXPECT_TRUE(pages[1].Spots.empty());
    EXPECT_DOUBLE_EQ(pages[2].WidthPoints, 100);  // never beyond the sheet
    EXPECT_DOUBLE_EQ(pages[3].WidthPoints, 100);  // an empty view is none
    EXPECT_EQ(PixelsOf(80.3, 100), 112);
}

TEST(PageReport, RefusesWhatIsNotWhole) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "no pages"},
        {"File has 0 page.\n", "no pages"},
        {"**** This file requires a password for access.\n", "password"},
        {"File has 2 pages\nPage 1 MediaBox: [0 0 9 9]\n", "damaged"},
        {"File has 1 page.\nPage 1\n", "no size"},
        {"File has 1 page.\nPage 1 MediaBox: [0 0 0 9]\n", "no size"},
        {"File has 1 page.\nPage 1 MediaBox: [0 0 nan 9]\n", "no size"},
        {"File has 1 page.\nPage 1 MediaBox: [0 0\n", "no size"},
    };
    for (const auto& [report, message] : cases) {
        try {
            ParsePageReport(report);
            ADD_FAILURE() << "accepted: " << report;
        } catch (const HostError& error) {
            EXPECT_NE(std::string(error.what()).find(message), std::string::npos) << error.what();
        }
    }
}

TEST(Progress, ReadsTheLastPercentage) {
    EXPECT_EQ(PercentOf("Cyan   50%  12%"), 12);
    EXPECT_EQ(PercentOf("100%"), 100);
    EXPECT_EQ(PercentOf("50% Grey"), 50);
    EXPECT_EQ(PercentOf("Write Data Error"), -1);
    EXPECT_EQ(PercentOf("%"), -1);
}

TEST(OutputFiles, TellsShortAndMissingChannelsFromOtherFiles) {
    const WorkFolder folder(std::filesystem::temp_directory_path() / "driverhost-test");
    const auto write = [&folder](const char* name, std::size_t bytes) {
        std::ofstream(folder.Path() / name, std::ios::binary) << std::string(bytes, 'x');
    };
    const PageExpectation expected = {33, 10, 2, 3};  // 16 bytes a line
    write("a_C.raw", 160);
    write("a_M.raw", 159);
    write("thumbnail.bmp", 1000);
    PageFaults faults = CheckPage(folder.Path(), ListFiles(folder.Path()), expected);
    EXPECT_EQ(faults.ShortFiles, std::vector<std::string>{"a_M.raw"});
    EXPECT_EQ(faults.MissingChannels, 1);

    write("a_M.raw", 160);
    write("a_Y.raw", 160);
    faults = CheckPage(folder.Path(), ListFiles(folder.Path()), expected);
    EXPECT_FALSE(faults.Any());

    write("a_W.tif", 160);  // no TIFF for all its name
    const Listing tiff = {{"a_W.tif", {160, {}}}};
    EXPECT_EQ(CheckPage(folder.Path(), tiff, expected).ShortFiles.size(), 1U);
}

TEST(Plates, FindsAnInkByItsEncodedName) {
    const WorkFolder folder(std::filesystem::temp_directory_path() / "driverhost-test");
    const std::pair<const char*, const char*> cases[] = {
        {"plate(White).tif", "White"},
        {"plate(Gr%C3%BCn%2FA (b) %2541).tif", "Gr\xC3\xBCn/A (b) %41"},
        {"plate(50%).tif", "50%"},
    };
    for (const auto& [file, ink] : cases) {
        std::ofstream(folder.Path() / file) << 'x';
        EXPECT_EQ(FindPlate(folder.Path(), ink), folder.Path() / file);
    }
    EXPECT_TRUE(FindPlate(folder.Path(), "white").empty());
}

TEST(OutputFiles, FindsTheFolderOfATile) {
    const Listing files = {
        {"job-tile1/a", {}}, {"job-tile11/a", {}}, {"x/job-tile1/b", {}}, {"job-tile1", {}}};
    EXPECT_EQ(FilesOfTile(files, 1).size(), 2U);
    EXPECT_EQ(FilesOfTile(files, 11).size(), 1U);
}

}  // namespace
