// A model's halftone parameters as they come out in the jobs that are made for it.

#include <array>
#include <nlohmann/json.hpp>

#include "DriverHostFixture.h"
#include "Rasters.h"
#include "SpectralPeak.h"

namespace {

using nlohmann::json;

constexpr std::size_t kWide = 1024;
constexpr std::size_t kSide = 512;
constexpr double kTint = 0.4;

/// Ink amounts, 1 being full tone, of a part of a separation's rows.
double MeanInk(const Raster& raster, int bits, const std::vector<double>& levels,
               std::size_t firstRow, std::size_t firstColumn, std::size_t columns) {
    double sum = 0;
    for (std::size_t y = firstRow; y < firstRow + kSide; ++y)
        for (const char level :
             Pixels(raster.Lines.at(y), kWide, bits).substr(firstColumn, columns))
            sum += levels.at(static_cast<std::size_t>(level));
    return sum / static_cast<double>(kSide * columns);
}

/// Upper left, 512 pixels a side.
std::vector<uint8_t> Corner(const Raster& raster) {
    std::vector<uint8_t> inked;
    for (std::size_t y = 0; y < kSide; ++y)
        for (const char level : Pixels(raster.Lines.at(y), kSide, 1))
            inked.push_back(static_cast<uint8_t>(level));
    return inked;
}

class ScreenedJob : public DriverHost {
  protected:
    /// A page of 1024 x 1024 pixels: above a tint of all inks, or of black alone, below a ramp of
    /// 64 steps.
    void WriteArtwork(double xResolution, double yResolution, bool isGray) const {
        const auto ink = [isGray](double amount) {
            return fmt::format("{0} {0} {0} {1} k", isGray ? 0 : amount, amount);
        };
        const double width = 72 * static_cast<double>(kWide) / xResolution;
        const double height = 72 * static_cast<double>(kWide) / yResolution;
        std::string content = fmt::format("{} 0 0 {} {} re f ", ink(kTint), width, height);
        for (int step = 0; step < 64; ++step)
            content += fmt::format("{} {} 0 {} {} re f ", ink(step / 63.0), width * step / 64,
                                   width, height / 2);
        Write("a.pdf", Pdf({{fmt::format("0 0 {} {}", width, height), content}}));
    }
};

TEST_F(ScreenedJob, PrintsTheScreensAndLevelsOfItsModel) {
    const struct {
        const char* Model;
        Arguments Choice;
        double XResolution;
        double YResolution;
        int Bits;
        bool IsDispersed = false;
    } kRows[] = {
        {"Fenland R4", {"--resolution", "720x360"}, 720, 360, 1},
        {"Fenland R4", {"--resolution", "720x360", "--screen", "fm"}, 720, 360, 1, true},
        {"Fenland S1", {}, 2400, 2400, 1},
        {"Fenland T4",
         {"--media", "0", "--resolution", "300x300", "--color-mode", "0"},
         300,
         300,
         1},
        {"Fenland T4",
         {"--media", "2", "--resolution", "300x300", "--color-mode", "2"},
         300,
         300,
         4},
        {"Fenland W6", {"--resolution", "1", "--color-mode", "1"}, 720, 720, 2},
    };
    for (const auto& row : kRows) {
        Arguments arguments = {"make-job", "a.pdf", "-o", "job", "--model", row.Model};
        arguments.insert(arguments.end(), row.Choice.begin(), row.Choice.end());
        WriteArtwork(row.XResolution, row.YResolution, row.Model == std::string("Fenland S1"));
        const Outcome made = Host(arguments);
        ASSERT_EQ(made.Status, 0) << made.Output;
        arguments = {"halftone", row.Model, "--manufacturer", "Fenland", "--json"};
        const auto end = row.IsDispersed ? row.Choice.end() - 2 : row.Choice.end();
        arguments.insert(arguments.end(), row.Choice.begin(), end);
        const Outcome shown = Host(arguments);
        ASSERT_EQ(shown.Status, 0) << shown.Output;
        const json answer = json::parse(shown.Output);
        const std::vector<Raster> rasters = ReadTiff(Path("job.pages.tif"));
        ASSERT_EQ(rasters.size(), answer.at("dither").at("inks").size());
        for (std::size_t ink = 0; ink < rasters.size(); ++ink) {
            const Raster& raster = rasters[ink];
            SCOPED_TRACE(
                fmt::format("{} {} bits {} {}", row.Model, row.Bits, raster.Name, made.Output));
            ASSERT_EQ(raster.Lines.size(), kWide);
            std::vector<double> levels = {0};
            for (const double amount : answer.at("dither").at("inks")[ink].at("amounts"))
                levels.push_back(amount);
            EXPECT_NEAR(MeanInk(raster, row.Bits, levels, 0, 0, kWide), kTint, 0.01);
            for (std::size_t quarter = 0; quarter < 4; ++quarter)
                EXPECT_NEAR(MeanInk(raster, row.Bits, levels, kSide, quarter * 256, 256),
                            (7.5 + 16.0 * static_cast<double>(quarter)) / 63, 0.01)
                    << quarter;
            if (row.Bits > 1) continue;
            const Peak peak = FindPeak(Corner(raster), kSide, row.XResolution, row.YResolution);
            const json& screen = answer.at("screening").at("screens").at(ink);
            if (row.IsDispersed) {
                EXPECT_LT(peak.Share, 0.005);
                continue;
            }
            EXPECT_GT(peak.Share, 0.03);
            EXPECT_LT(AngleBetween(peak.Angle, screen.at("angle")), 1);
            EXPECT_NEAR(peak.Frequency / screen.at("frequency").get<double>(), 1, 0.05);
            const std::string line =
                fmt::format("{}: {:g} lpi at {:g}°, {}\n", screen.at("color").get<std::string>(),
                            screen.at("frequency").get<double>(), screen.at("angle").get<double>(),
                            screen.at("shape").get<std::string>());
            EXPECT_TRUE(Contains(made.Output, line)) << line;
        }
    }
}

TEST_F(ScreenedJob, SaysWhichParametersCannotServe) {
    ASSERT_EQ(Shell("cp -R '" MODELS_FOLDER "' base").Status, 0);
    Write("a.pdf", Pdf({kQuarters}));
    const std::string list =
        "<L><ManufacturerList><M Name='{}' ManufactureXML='p.xml'/></ManufacturerList></L>";
    const std::string parameters =
        "<L><PrinterHardware><Model ID='Default'><Media ID='Default'><PrintMode ID='Default'>"
        "<Resolution ID='Default'><ColorMode ID='Default'>{}</ColorMode></Resolution></PrintMode>"
        "</Media></Model></PrinterHardware></L>";
    const std::string levels =
        "<DitherParams ID='Default'><Level Value='4'><Weight ColorInk='0' Level='0' Value='{}'/>"
        "</Level><AntiClogLevel Value='0'/><NoiseLevel Value='{}'/></DitherParams>";
    const std::string noScreen = "<Item ColorName='Cyan' Frequency='{}'/>";
    const struct {
        std::string Manufacturer;  ///< in the lists
        std::string Leaf;
        Arguments More;
        int Status;
        std::string Said;
    } kRows[] = {
        {"fenland",
         "<Item ColorName='Blue' Frequency='50' Angle='7'/>",
         {},
         0,
         "Cyan: 50 lpi at 7°, Diamond for \"\", the screen of Blue\n"},
        {"Fenland R4 Z", noScreen, {}, 0, "Cyan: 55 lpi at 105°, Diamond\n"},
        {"Fen",
         noScreen,
         {"--manufacturer", "FEN"},
         0,
         "Cyan: a screen of 500 lines an inch at 105 degrees cannot be made at 360 x 360 dpi; its "
         "cells have 2 to 128 pixels a side; it gets dispersed dots\n"},
        {"Fenland", noScreen, {"--screen", "am"}, 1, "Cyan: a screen of 500 lines an inch"},
        {"Fenland", noScreen, {"--screen", "fm"}, 0, "Cyan: dispersed dots, 2 even levels\n"},
        {"Fenland",
         fmt::format(fmt::runtime(levels), 0.9, "nan"),
         {"--color-mode", "1"},
         0,
         "Cyan: its levels carry 0.9, 0.6666667, 1 of ink, which do not rise; they are taken as "
         "evenly spaced\n"},
        {"Fenland",
         fmt::format(fmt::runtime(levels), 0.5, "-3"),
         {"--color-mode", "1", "--dry-run"},
         0,
         "Cyan: dispersed dots, levels of 0.5, 0.666667, 1 ink, noise -3\n"},
        {"Fenland", "", {"--screen", "dots"}, 2, "--screen"},
        {"Fenland", "", {"--manufacturer", std::string(64, 'm')}, 2, "at most 63 bytes"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.Said);
        for (const char* const file : {"ScreeningParams.xml", "Ditherparams.xml"})
            Write(fmt::format("base/OutputDrivers/{}", file),
                  fmt::format(fmt::runtime(list), row.Manufacturer));
        Write("base/OutputDrivers/p.xml",
              fmt::format(fmt::runtime(parameters), fmt::format(fmt::runtime(row.Leaf), 500)));
        const Listing before = Files();
        Arguments arguments = {"--base", "base", "make-job", "a.pdf", "-o", "job"};
        arguments.insert(arguments.end(), {"--model", "Fenland R4"});
        arguments.insert(arguments.end(), row.More.begin(), row.More.end());
        const Outcome made = Host(arguments);
        EXPECT_EQ(made.Status, row.Status) << made.Output;
        EXPECT_TRUE(Contains(made.Output, row.Said)) << made.Output;
        EXPECT_TRUE(row.Status == 0 || Files() == before);
    }
    // What cannot be read is not made up for: with other screens nobody would see it.
    for (const char* const file : {"p.xml", "ScreeningParams.xml"}) {
        fs::remove(Path(fmt::format("base/OutputDrivers/{}", file)));
        fs::create_directory(Path(fmt::format("base/OutputDrivers/{}", file)));
        ExpectRefused(Host({"--base", "base", "make-job", "a.pdf", "-o", "job", "--model",
                            "Fenland R4", "--manufacturer", "Fenland"}),
                      fmt::format("base/OutputDrivers/{} is a folder: other", file), Files());
    }
}

}  // namespace
