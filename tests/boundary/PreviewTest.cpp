// Page previews: their pixels in both formats, sizes, names and places, the host's thumbnail, and
// a PNG library that is missing or fails.

#include <png.h>

#include <map>

#include "FileSizeLimit.h"
#include "JobRunner.h"

namespace {

namespace fs = std::filesystem;

/// The colours of full ink, by the letters of a picture.
const std::map<char, std::string> kColors = {{'W', "\xFF\xFF\xFF"},
                                             {'C', std::string("\x00\xFF\xFF", 3)},
                                             {'M', std::string("\xFF\x00\xFF", 3)},
                                             {'Y', std::string("\xFF\xFF\x00", 3)},
                                             {'K', std::string("\x00\x00\x00", 3)}};

std::string LittleEndian(std::size_t value, int bytes = 4) {
    std::string text;
    for (int i = 0; i < bytes; ++i)
        text += static_cast<char>(value >> (8 * i));
    return text;
}

/// The headers of a bitmap file.
std::string BitmapHeader(std::size_t width, std::size_t height) {
    const std::size_t rowBytes = (width * 3 + 3) / 4 * 4;
    return "BM" + LittleEndian(height * rowBytes + 54) + LittleEndian(0) + LittleEndian(54) +
           LittleEndian(40) + LittleEndian(width) + LittleEndian(height) + LittleEndian(1, 2) +
           LittleEndian(24, 2) + std::string(24, '\0');
}

/// A whole bitmap file of the picture's lines, top line first.
std::string Bitmap(const Texts& picture) {
    std::string file = BitmapHeader(picture[0].size(), picture.size());
    for (auto line = picture.rbegin(); line != picture.rend(); ++line) {
        for (const char color : *line) {
            const std::string& rgb = kColors.at(color);
            file += {rgb[2], rgb[1], rgb[0]};
        }
        file.append((4 - line->size() * 3 % 4) % 4, '\0');
    }
    return file;
}

/// The letters of a PNG's lines, '?' for any other colour; none when it cannot be read.
Texts PngPicture(const fs::path& path) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&image, path.c_str()) == 0) return {};
    EXPECT_EQ(image.format, PNG_FORMAT_RGB);
    std::string pixels(PNG_IMAGE_SIZE(image), '\0');
    if (png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr) == 0) return {};
    Texts picture(image.height);
    for (std::size_t pixel = 0; pixel < std::size_t{image.width} * image.height; ++pixel) {
        char letter = '?';
        for (const auto& [color, rgb] : kColors)
            if (pixels.compare(3 * pixel, 3, rgb) == 0) letter = color;
        picture[pixel / image.width] += letter;
    }
    return picture;
}

class PreviewTest : public BoundaryTest {
  protected:
    /// A model with a channel for each name.
    void InstallPreview(const std::string& preview, const Texts& inks,
                        const std::string& rules = "CreateFolder=\"No\"") {
        Model model = NumberedModel(static_cast<int>(inks.size()), rules);
        for (std::size_t i = 0; i < inks.size(); ++i)
            model.Colours[i].InternalName = inks[i];
        model.OutputElements = "<PreviewParam " + preview + "/>";
        Install(Describe(model));
    }
    /// Such a job with the host's thumbnail.
    Job StartWithThumbnail(const std::vector<Page>& pages, const fs::path& thumbnail) {
        JobChoices choices;
        choices.XResolution = 299.5F;  // counts as 300
        Job job = MakeJob(pages, choices);
        SetText(job.Status.ThumbnailPath, thumbnail.string());
        EXPECT_EQ(job.Open(), 1);
        EXPECT_EQ(job.Port(folder.Out()), 1);
        return job;
    }
};

// Both axes are mirrored, a byte's least significant pixel is its first, and spare bits are not
// shown. An ink is known by its name, wherever it stands.
TEST_F(PreviewTest, Pixels) {
    const Page page = {3,
                       2,
                       {{"Black", 1, "", std::string("\x04\x00", 2)},
                        {"Gold", 1, "", "\xFF\xFF"},
                        {"yellow", 1, "", std::string("\x00\x07", 2)},
                        {"Cyan", 1, "", std::string("\xF9\x00", 2)},
                        {"MAGENTA", 1, "", std::string("\x02\x00", 2)}}};
    const Texts picture = {"WWWWW", "WYYYW", "WKMCW", "WWWWW"};
    for (const char* type : {"BMP", "PNG", "png", ""}) {
        InstallPreview(
            fmt::format(R"(type="{}" name="picture" bestFit="0" sizeV="5" sizeH="4")", type),
            {"Black", "Gold", "Yellow", "Cyan", "Magenta"});
        ASSERT_TRUE(Print({page}));
        if (std::string(type) == "PNG")
            EXPECT_EQ(PngPicture(folder.Out() / "picture"),
                      Texts(picture.rbegin(), picture.rend()));
        else
            EXPECT_TRUE(Output("picture") == Bitmap(picture)) << type;
    }
    EXPECT_TRUE(folder.Messages().empty());
}

// One pixel of full ink in each separation by turns. An ink that the colour mode does not print
// does not count.
TEST_F(PreviewTest, PlanesBySeparation) {
    struct Row {
        Texts Inks;  ///< of the page
        std::string Colors;
        Texts Printed;  ///< by the model; none: all
    };
    const Row rows[] = {
        {{"C1", "C2", "C3", "C4", "C5"}, "CMYKW", {}},
        {{"Gold", "black", "Silver", "Cyan"}, "WKWC", {}},
        {{"Gray"}, "C", {}},
        {{"Gold", "Black", "Silver"}, "CWY", {"Silver", "Gold"}},
        {{"Gold", "Black", "Cyan"}, "WWC", {"Gold", "Cyan"}},
    };
    for (const auto& [inks, colors, printed] : rows) {
        InstallPreview(R"(bestFit="0" sizeV="3" sizeH="3")", printed.empty() ? inks : printed);
        for (std::size_t inked = 0; inked < inks.size(); ++inked) {
            Page page = {1, 1, {}};
            for (std::size_t i = 0; i < inks.size(); ++i)
                page.Separations.push_back({inks[i], 1, "", std::string(1, i == inked ? 1 : 0)});
            ASSERT_TRUE(Print({page}));
            EXPECT_TRUE(Output("thumbnail.bmp") ==
                        Bitmap({"WWW", fmt::format("W{}W", colors[inked]), "WWW"}))
                << inks[inked];
        }
    }
}

// Black of one pixel: 255 less its intensity is the light that is left.
TEST_F(PreviewTest, IntensityGoesBySetBits) {
    struct Row {
        int Depth;
        char Value;
        int Light;
    };
    constexpr Row kRows[] = {{1, 1, 0},      {2, 1, 128},    {2, 2, 128},    {2, 3, 0},
                             {4, 8, 192},    {4, 5, 170},    {4, 14, 128},   {4, 15, 0},
                             {8, 64, 224},   {8, 3, 219},    {8, 7, 213},    {8, 15, 204},
                             {8, 0x1F, 192}, {8, 0x3F, 170}, {8, 0x7F, 128}, {8, '\xFF', 0}};
    InstallPreview(R"(bestFit="0" sizeV="3" sizeH="3")", {"Black"});
    for (const Row& row : kRows) {
        ASSERT_TRUE(Print({{1, 1, {{"Black", row.Depth, "", std::string(1, row.Value)}}}}));
        EXPECT_EQ(static_cast<uint8_t>(Output("thumbnail.bmp").at(54 + 12 + 3)), row.Light)
            << row.Depth << " bits, value " << static_cast<int>(row.Value);
    }
}

// A thumbnail stays where a page has no preview.
TEST_F(PreviewTest, Sizes) {
    struct Row {
        const char* Sizes;
        uint32_t Width, Height;                ///< of the page, at 300 by 600 dpi
        uint32_t PreviewWidth, PreviewHeight;  ///< 0: there is none
    };
    constexpr Row kRows[] = {
        {"", 1000, 1000, 500, 250},
        {"", 100, 1000, 100, 500},
        {R"(sizeV="40" sizeH="-3")", 100, 400, 20, 40},
        {R"(sizeV="10")", 1000, 1, 10, 1},
        {R"(sizeV="30" sizeH="20" bestFit="0")", 100, 100, 30, 20},
        {R"(sizeV="20000" sizeH="800" bestFit="0")", 9, 9, 20000, 800},
        {R"(sizeV="0")", 9, 9, 0, 0},
        {R"(sizeV="-1")", 9, 9, 0, 0},
        {R"(sizeV="20001")", 9, 1, 0, 0},
        {R"(sizeV="20000")", 9, 9, 0, 0},
        {R"(sizeV="9" sizeH="0" bestFit="0")", 9, 9, 0, 0},
        {R"(sizeV="20000" sizeH="801" bestFit="0")", 9, 9, 0, 0},
        {R"(sizeV="2147483647" sizeH="2147483647" bestFit="0")", 9, 9, 0, 0},
    };
    WriteText(folder.Root() / "picture", "thumbnail");
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.Sizes);
        InstallPreview(row.Sizes, {"Cyan"});
        EmptyOutputFolder();
        WriteText(folder.Out() / "thumbnail.bmp", "something longer stands there");
        ASSERT_TRUE(IsPrinted(StartWithThumbnail({RandomPage(row.Width, row.Height, {{"Cyan"}}, 1)},
                                                 folder.Root() / "picture")
                                  .Run()));
        EXPECT_EQ(Output("thumbnail.bmp").substr(0, 54),
                  row.PreviewWidth == 0 ? "thumbnail"
                                        : BitmapHeader(row.PreviewWidth, row.PreviewHeight));
    }
}

// The thumbnail goes into the job's folder, a preview beside the channels of its page.
TEST_F(PreviewTest, NamesAndPlaces) {
    const std::pair<const char*, const char*> names[] = {
        {"filename-filename.bmp", "Proof-filename.bmp"},
        {"FileName.bmp", "FileName.bmp"},
        {"", "thumbnail.bmp"}};
    const std::vector<Page> pages = {NumberedPage(9, 9, 1, 1), NumberedPage(9, 9, 1, 2)};
    WriteText(folder.Root() / "host.bmp", "thumbnail");
    for (const auto& [pattern, name] : names) {
        for (const int32_t tiles : {1, 2}) {
            SCOPED_TRACE(fmt::format("{}, {} tiles", name, tiles));
            InstallPreview(fmt::format("name=\"{}\"", pattern), {"C1"}, "");
            EmptyOutputFolder();
            Job job = StartWithThumbnail(pages, folder.Root() / "host.bmp");
            job.Status.RecordVersion = JobStatusRecord::kTileRecordVersion;
            job.Status.TileCount = tiles;
            EXPECT_EQ(Output(fmt::format("Proof/{}", name)), "thumbnail");
            ASSERT_TRUE(IsPrinted(job.Run()));
            const auto of = [&](const char* place) {
                return Output(fmt::format("Proof/{}{}", place, name));
            };
            EXPECT_EQ(of("") == "thumbnail", tiles == 2);
            EXPECT_EQ(of(tiles == 2 ? "Proof-tile2/" : "").substr(0, 2), "BM");
            EXPECT_EQ(of("Proof-tile1/") == of("Proof-tile2/"), tiles == 1);
        }
    }
    for (const fs::path& missing : {folder.Root() / "missing.bmp", folder.Root(), fs::path()}) {
        InstallPreview(R"(name="../out.bmp")", {"C1"});
        EmptyOutputFolder();
        EXPECT_TRUE(IsPrinted(StartWithThumbnail({pages[0]}, missing).Run()));
        EXPECT_EQ(Listing(folder.Out()), Texts{"Proof"}) << missing;
    }
    EXPECT_FALSE(fs::exists(folder.Root() / "out.bmp"));
    EXPECT_TRUE(folder.Messages().empty());
}

// The file is empty, messages say what is missing or failed, and the page is complete.
TEST_F(PreviewTest, PngLibrariesThatAreMissingOrFail) {
    const std::pair<const char*, Texts> libraries[] = {
        {nullptr, {"Cannot open libpng3.dll"}},
        {PARTIAL_PNG, {"Failed to load png_set_IHDR", "Failed to load png_write_info"}},
        {FAILING_PNG, {"Exception caught in png_write_info"}},
    };
    const Page page = RandomPage(9, 9, {{"C1"}}, 1);
    const fs::path copy = folder.Root() / "libOutputDriver.so";
    fs::copy_file(OUTPUT_DRIVER_LIBRARY, copy);
    Texts messages;
    for (const auto& [library, expected] : libraries) {
        InstallPreview(R"(type="PNG" name="picture.png")", {"C1"});
        driver.reset();
        fs::remove(folder.Root() / "libpng3.so");
        if (library != nullptr) fs::copy_file(library, folder.Root() / "libpng3.so");
        driver = std::make_unique<Driver>(copy.c_str());
        EXPECT_TRUE(Print({page}));
        messages.insert(messages.end(), expected.begin(), expected.end());
        EXPECT_EQ(folder.Messages(), messages);
        EXPECT_EQ(Listing(folder.Out()), (Texts{"Proof", "picture.png"}));
        EXPECT_EQ(Output("picture.png"), "");
        EXPECT_EQ(Output("Proof"), ChannelBytes(page, "C1"));
    }
    driver.reset();
}

// A disk that is full in the middle of the picture, and a folder of its name: the page goes on
// without, and the log says so.
TEST_F(PreviewTest, PicturesThatCannotBeWritten) {
    const Page page = RandomPage(400, 300, {{"Cyan"}, {"Magenta"}, {"Black"}}, 1);
    for (const char* type : {"PNG", "BMP"}) {
        InstallPreview(fmt::format(R"(type="{}" name="picture")", type),
                       {"Cyan", "Magenta", "Black"});
        EmptyOutputFolder();
        Job job = StartJob({page});
        const FileSizeLimit limit(20'000);
        EXPECT_TRUE(IsPrinted(job.Run()));
        EXPECT_EQ(Output("Proof_C3.raw"), ChannelBytes(page, "Black"));
        EXPECT_FALSE(fs::exists(folder.Out() / "picture")) << type;
        ASSERT_FALSE(folder.Log().empty()) << type;
        const std::string entry = folder.Log().back();
        EXPECT_EQ(entry[0], 'E') << entry;
        EXPECT_NE(entry.find("Proof: the preview cannot be written: "), std::string::npos) << entry;
        EXPECT_NE(entry.find("picture: File too large"), std::string::npos) << entry;
    }
    EXPECT_EQ(folder.Messages(), Texts{"Exception caught in png_write_row"});
    EmptyOutputFolder();
    fs::create_directory(folder.Out() / "picture");
    EXPECT_TRUE(Print({page}));
    EXPECT_EQ(folder.Log().back()[0], 'W');
}

}  // namespace
