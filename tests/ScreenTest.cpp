// Screens as they come out: angle, frequency and ink of every dot shape, and what is told of
// faults.

#include <array>
#include <limits>
#include <numeric>

#include "DriverHostFixture.h"
#include "SpectralPeak.h"
#include "driverhost/DotScreen.h"
#include "driverhost/HostError.h"
#include "halftone/ReadScreeningParams.h"

namespace {

/// Pixels of one tint, 0 or 1 each, by the packed rows.
std::vector<uint8_t> Tint(const DotScreen& screen, uint8_t amount, std::size_t side) {
    std::vector<uint8_t> pixels;
    std::vector<uint8_t> packed((side + 7) / 8);
    const std::vector<uint8_t> amounts(side, amount);
    for (std::size_t y = 0; y < side; ++y) {
        screen.ScreenRow(amounts, {0, static_cast<int64_t>(y)}, packed);
        for (std::size_t x = 0; x < side; ++x)
            pixels.push_back(packed[x / 8] >> (7 - x % 8) & 1);
    }
    return pixels;
}

double Coverage(const std::vector<uint8_t>& pixels) {
    return static_cast<double>(std::count(pixels.begin(), pixels.end(), 1)) /
           static_cast<double>(pixels.size());
}

TEST(DotScreen, AngleFrequencyAndInkOfEveryShape) {
    constexpr ScreenGeometry kGeometries[] = {
        {720, 720, 55, 15},    {720, 360, 40, 75},   {1440, 720, 72, 7.5}, {360, 360, 60, 0},
        {2400, 2400, 133, 45}, {600, 600, 50, 105},  {1200, 600, 50, -30}, {100, 150, 20, 1000},
        {3600, 3600, 60, 22},  {720, 720, 60, 52.5},
    };
    for (const ScreenGeometry& wanted : kGeometries) {
        for (const std::string_view shape : kShapeNames) {
            // Every shape on two kinds of pixel, a few of them on all.
            if (&wanted > &kGeometries[1] && shape != "Round" && shape != "Line") continue;
            SCOPED_TRACE(fmt::format("{} {} lines {} degrees at {}", shape, wanted.Frequency,
                                     wanted.Angle, wanted.XResolution));
            const DotScreen screen(wanted, FindDotShape(shape));
            constexpr std::size_t kSide = 512;
            const Peak peak =
                FindPeak(Tint(screen, 77, kSide), kSide, wanted.XResolution, wanted.YResolution);
            EXPECT_LT(AngleBetween(peak.Angle, wanted.Angle), 1);
            // Two dots stand in a cell of the double shapes, along one axis or both.
            const double ratio = peak.Frequency / wanted.Frequency;
            const bool twofold = shape.find("Double") != std::string_view::npos && ratio > 1.5;
            EXPECT_NEAR(twofold ? ratio / 2 : ratio, 1, 0.05);
            std::array<int64_t, 257> below = {};  // pixels by threshold + 1, then summed up
            for (int64_t y = 0; y < 2048; ++y)
                for (const uint8_t threshold : screen.Row(y))
                    ++below[threshold + 1U];
            std::partial_sum(below.begin(), below.end(), below.begin());
            for (std::size_t amount = 0; amount < 256; ++amount)
                EXPECT_NEAR(static_cast<double>(below[amount]) / static_cast<double>(below[256]),
                            static_cast<double>(amount) / 255, 0.01);
        }
    }
}

TEST(DotScreen, RowsOfAnyWidthAndWhatCannotBeMade) {
    const DotScreen screen({720, 720, 55, 15}, FindDotShape("Round"));
    for (const std::size_t width : {1U, 7U, 8U, 9U, 758U, 4095U, 4097U, 12345U}) {
        std::vector<uint8_t> amounts(width);
        for (std::size_t x = 0; x < width; ++x)
            amounts[x] = static_cast<uint8_t>(x * 37);
        std::vector<uint8_t> packed((width + 7) / 8 + 1, 0xA5);
        const auto column = static_cast<int64_t>(width) * 3;
        screen.ScreenRow(amounts, {column, 5'000'000'000},
                         std::span(packed).first(packed.size() - 1));
        const std::span<const uint8_t> thresholds = screen.Row(5'000'000'000);
        std::vector<uint8_t> expected(packed.size());
        for (std::size_t x = 0; x < width; ++x)
            if (amounts[x] > thresholds[(x + width * 3) % thresholds.size()])
                expected[x / 8] = static_cast<uint8_t>(expected[x / 8] | 0x80 >> x % 8);
        expected.back() = 0xA5;
        EXPECT_EQ(packed, expected) << width;
    }
    EXPECT_EQ(Coverage(Tint(screen, 0, 64)), 0);
    EXPECT_EQ(Coverage(Tint(screen, 255, 64)), 1);
    EXPECT_EQ(FindDotShape("round"), nullptr);
    constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
    for (const ScreenGeometry& geometry :
         {ScreenGeometry{100, 100, 51, 0}, ScreenGeometry{2400, 2400, 18, 0},
          ScreenGeometry{720, 720, 0, 0}, ScreenGeometry{720, 720, -55, 0},
          ScreenGeometry{720, 720, kNone, 0}, ScreenGeometry{720, 720, 55, kNone},
          ScreenGeometry{0, 720, 55, 0}})
        EXPECT_THROW(DotScreen(geometry, FindDotShape("Round")), HostError);
}

TEST_F(DriverHost, HalftoneTellsWhatIsWrong) {
    const std::string list =
        "<L><PrinterHardware><Model ID='Default'><Media ID='Default'><PrintMode ID='Default'>"
        "<Resolution ID='Default'><ColorMode ID='Default'>{}</ColorMode></Resolution></PrintMode>"
        "</Media></Model></PrinterHardware></L>";
    ASSERT_EQ(Shell("cp -R '" MODELS_FOLDER "' base").Status, 0);
    const auto answer = [&](const std::string& leaf, const Arguments& more) {
        Write("base/OutputDrivers/ScreeningParams.xml", fmt::format(fmt::runtime(list), leaf));
        Arguments arguments = {"--base", "base", "halftone", "Fenland R4", "--manufacturer"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return Host(arguments);
    };
    const struct {
        std::string Leaf;
        Arguments More;
        int Status;
        const char* Said;
    } kRows[] = {
        {"<Item ColorName='Blue' ShapeName='Star'/>", {"Nobody"}, 0, "drawn as Diamond"},
        {"", {std::string(64, 'm')}, 2, "at most 63 bytes"},
        {"<Item ColorName='Cyan' Frequency='500'/>",
         {"Nobody", "--plot", "p.png"},
         1,
         "Cyan: a screen of 500 lines an inch"},
        {"</ColorMode><ColorMode ID='77'>", {"Nobody", "--plot", "no/p.png"}, 1, "cannot write"},
    };
    for (const auto& row : kRows) {
        const Outcome shown = answer(row.Leaf, row.More);
        EXPECT_EQ(shown.Status, row.Status) << shown.Output;
        EXPECT_TRUE(Contains(shown.Output, row.Said)) << shown.Output;
    }
    Write("base/OutputDrivers/ScreeningParams.xml", "<L><PrinterHardware/></L>");
    const Outcome faulty =
        Host({"--base", "base", "halftone", "Fenland R4", "--manufacturer", "N"});
    EXPECT_TRUE(Contains(faulty.Output, "fault  Getting media node fails")) << faulty.Output;
    EXPECT_FALSE(fs::exists(Path("p.png")));
}

}  // namespace
