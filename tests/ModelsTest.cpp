// The models that are shipped: every colour mode prints.

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "DriverHostFixture.h"

namespace {

using nlohmann::json;

/// The first choice of a model that allows a colour mode, as options of make-job; empty when
/// nothing allows it.
Arguments FirstChoiceOf(const json& model, int colorMode) {
    for (const json& media : model.at("combinations"))
        for (const json& printMode : media.at("printModes"))
            for (const json& resolution : printMode.at("resolutions"))
                for (const json& allowed : resolution.at("colorModes"))
                    if (allowed == colorMode)
                        return {"--media",      media.at("media").dump(),
                                "--print-mode", printMode.at("id").dump(),
                                "--resolution", resolution.at("id").dump(),
                                "--color-mode", allowed.dump()};
    return {};
}

TEST_F(DriverHost, PrintsEveryColorModeOfEveryModel) {
    Write("a.pdf", Pdf({{"0 0 36 36", "0.6 0.4 0.2 0.1 k 0 0 36 36 re f"}}));
    for (const std::string name :
         {"Fenland R4", "Fenland F8", "Fenland W6", "Fenland T4", "Fenland S1"}) {
        const Outcome shown = Host({"capabilities", name, "--json"});
        ASSERT_EQ(shown.Status, 0) << shown.Output;
        const json model = json::parse(shown.Output);
        for (const json& mode : model.at("colorModes")) {
            const int position = mode.at("position");
            SCOPED_TRACE(fmt::format("{}, colour mode {}", name, position));
            const Arguments choice = FirstChoiceOf(model, position);
            ASSERT_FALSE(choice.empty());
            Arguments make = {"make-job", "a.pdf", "--model", name, "-o", "job"};
            make.insert(make.end(), choice.begin(), choice.end());
            const Outcome made = Host(make);
            ASSERT_EQ(made.Status, 0) << made.Output;
            const Outcome run = Host({"run", "job", "--out", fmt::format("{}-{}", name, position)});
            EXPECT_EQ(run.Status, 0) << run.Output;
            Arguments halftone = {"halftone", name,     "--manufacturer", "Fenland",
                                  "--json",   "--plot", "plot.png"};
            halftone.insert(halftone.end(), choice.begin(), choice.end());
            const Outcome screens = Host(halftone);
            ASSERT_EQ(screens.Status, 0) << screens.Output;
            const json dither = json::parse(screens.Output).at("dither");
            EXPECT_TRUE(dither.at("fromFile") || dither.at("source").is_null()) << dither;
        }
    }
}

TEST_F(DriverHost, ShipsEncodedFilesThatAreTheirSources) {
    for (const auto& [name, folder] :
         {std::pair("FenlandF8.xml", ""), std::pair("FenlandF8Dither.xml", "Halftone/"),
          std::pair("FenlandF8Screening.xml", "Halftone/")}) {
        const std::string source = ReadText(fs::path(MODELS_FOLDER "/sources") / name);
        const Outcome decoded =
            Shell(fmt::format("gzip -dc < '{}/OutputDrivers/{}{}'", MODELS_FOLDER, folder, name));
        EXPECT_TRUE(decoded.Status == 0 && decoded.Output == source) << name;
    }
}

}  // namespace
