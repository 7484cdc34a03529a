// Pictures of printed pages, made by the built program and read with libpng.

#include <png.h>

#include "DriverHostFixture.h"

namespace {

using Rgb = std::array<int, 3>;

struct Picture {
    int64_t Width = 0;
    int64_t Height = 0;
    std::vector<uint8_t> Samples;

    /// Mean colour of a square of `side` pixels, rounded.
    Rgb Mean(int64_t left, int64_t top, int64_t side) const {
        std::array<int64_t, 3> sums = {};
        for (int64_t y = top; y < top + side; ++y)
            for (int64_t x = left; x < left + side; ++x)
                for (std::size_t sample = 0; sample < 3; ++sample)
                    sums[sample] +=
                        Samples.at(static_cast<std::size_t>((y * Width + x) * 3) + sample);
        const auto mean = [&](std::size_t i) {
            return static_cast<int>((sums[i] + side * side / 2) / (side * side));
        };
        return {mean(0), mean(1), mean(2)};
    }
};

Picture ReadPicture(const fs::path& path) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    EXPECT_NE(png_image_begin_read_from_file(&image, path.string().c_str()), 0) << path;
    image.format = PNG_FORMAT_RGB;
    Picture picture = {image.width, image.height, std::vector<uint8_t>(PNG_IMAGE_SIZE(image))};
    EXPECT_NE(png_image_finish_read(&image, nullptr, picture.Samples.data(), 0, nullptr), 0);
    return picture;
}

/// From the upper left by rows: white ink (a tenth of cyan without it), half magenta, cyan, and
/// cyan with magenta.
const Page kPatches = {"0 0 72 72",
                       "/S0 cs 1 scn 0 36 36 36 re f 0 0.5 0 0 k 36 36 36 36 re f "
                       "1 0 0 0 k 0 0 36 36 re f 1 1 0 0 k 36 0 36 36 re f"};

struct ProofCase {
    Arguments MakeOptions;
    Arguments ProofOptions;
    int64_t Side;
    Rgb Patches[4];
    const char* Spot = "WHITE";  ///< what the first patch is printed with
    const char* White = "";      ///< white treatment
};

const Arguments kFlatbed = {
    "--model",      "Fenland F8", "--media",      "Glass",
    "--print-mode", "Standard",   "--color-mode", "CMYK, White, Varnish, contone"};
const Arguments kOnBlack = {"--model",      "Fenland W6", "--media",      "Foam board, black",
                            "--print-mode", "0",          "--color-mode", "CMYK, dots"};
const Arguments kDark = {"--paper", "404040", "--long-side", "200"};

const ProofCase kProofs[] = {
    {{"--model", "Fenland R4", "--color-mode", "CMYK, dots"},
     {},
     1600,
     {{230, 255, 255}, {255, 128, 255}, {0, 255, 255}, {0, 0, 255}}},
    {{"--model", "Fenland R4", "--color-mode", "CMYK, contone"},
     {"--scale", "0.25", "--paper", "FFEEDD"},
     90,
     {{230, 238, 221}, {255, 119, 221}, {0, 238, 221}, {0, 0, 221}}},
    // Bottom line first, on the grey paper of white ink.
    {kFlatbed,
     {"--long-side", "200"},
     200,
     {{255, 255, 255}, {180, 90, 180}, {0, 180, 180}, {0, 0, 180}}},
    {kFlatbed,
     {"--long-side", "200", "--inks", "white, Cyan"},
     200,
     {{255, 255, 255}, {180, 180, 180}, {0, 180, 180}, {0, 180, 180}}},
    {kFlatbed,
     {"--long-side", "200", "--paper", "000000"},
     200,
     {{43, 45, 49}, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}},
     "Varnish"},
    // A tenth of cyan, half magenta, and full inks: white lies under the dots, beside them,
    // everywhere, nowhere.
    {kOnBlack,
     kDark,
     200,
     {{58, 83, 83}, {160, 32, 160}, {0, 255, 255}, {0, 0, 255}},
     "WHITE",
     "Underprint"},
    {kOnBlack,
     kDark,
     200,
     {{230, 236, 236}, {160, 128, 160}, {0, 64, 64}, {0, 0, 64}},
     "WHITE",
     "Spot"},
    {kOnBlack,
     kDark,
     200,
     {{230, 255, 255}, {255, 128, 255}, {0, 255, 255}, {0, 0, 255}},
     "WHITE",
     "Overprint"},
    {kOnBlack,
     kDark,
     200,
     {{58, 64, 64}, {64, 32, 64}, {0, 64, 64}, {0, 0, 64}},
     "WHITE",
     "No white"},
};

TEST_F(DriverHost, ProofShowsWhatWillBeSeen) {
    for (const ProofCase& proof : kProofs) {
        SCOPED_TRACE(proof.MakeOptions[1] + proof.MakeOptions.back() + proof.White + proof.Spot);
        std::string pdf = Pdf({kPatches});
        Write("a.pdf", pdf.replace(pdf.find("WHITE"), 5, proof.Spot));
        Arguments make = {"make-job", "a.pdf", "-o", "job"};
        make.insert(make.end(), proof.MakeOptions.begin(), proof.MakeOptions.end());
        ASSERT_EQ(Host(make).Status, 0);
        if (*proof.White != '\0') {
            ASSERT_EQ(Host({"options", "set", "job", proof.White}).Status, 0);
        }
        fs::remove_all(Path("printed"));
        ASSERT_EQ(Host({"run", "job", "--out", "printed"}).Status, 0);
        Arguments draw = {"proof", "printed", "-o", "proof.png"};
        draw.insert(draw.end(), proof.ProofOptions.begin(), proof.ProofOptions.end());
        const Outcome drawn = Host(draw);
        ASSERT_EQ(drawn.Status, 0) << drawn.Output;

        const Picture picture = ReadPicture(Path("proof.png"));
        ASSERT_EQ(picture.Width, proof.Side);
        ASSERT_EQ(picture.Height, proof.Side);
        const int64_t side = proof.Side * 2 / 5;
        const int64_t far = proof.Side - side;
        for (int patch = 0; patch < 4; ++patch) {
            const Rgb mean = picture.Mean(patch % 2 * far, patch / 2 * far, side);
            for (std::size_t i = 0; i < 3; ++i)
                EXPECT_NEAR(mean[i], proof.Patches[patch][i], patch < 2 ? 2.55 : 0) << patch << i;
        }
    }
}

TEST_F(DriverHost, ProofRefusesWhatItCannotDraw) {
    MakeSmallJob();
    ASSERT_EQ(Host({"run", "job", "--out", "printed"}).Status, 0);
    const auto refuse = [&](const Arguments& more, const char* message) {
        Arguments arguments = {"proof", "printed", "-o", "proof.png"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const Outcome outcome = Host(arguments);
        EXPECT_NE(outcome.Status, 0) << message;
        EXPECT_TRUE(Contains(outcome.Output, message)) << outcome.Output;
        EXPECT_FALSE(fs::exists(Path("proof.png"))) << message;
    };
    refuse({"--page", "2"}, "none with the number 2");
    refuse({"--scale", "1e9"}, "larger than");
    refuse({"--inks", "Cyan,Whit"}, "no ink \"Whit\"; it has Cyan, Magenta, Yellow, Black");
    fs::resize_file(Path("printed/a/a_M.tif"), 1000);
    refuse({}, "a_M.tif");
    Write("printed/a.print.json", "{\"pages\":3}");
    refuse({}, "is damaged");
    fs::remove(Path("printed/a.print.json"));
    refuse({}, "no job that was run");
}

}  // namespace
