// Previews and thumbnails: bytes of known pages, planes by name, sizes, names, and the PNG library.

#include "JobRunner.h"

namespace {

using Rgb = std::array<unsigned char, 3>;

constexpr Rgb kWhite = {255, 255, 255};
constexpr Rgb kCyan = {0, 255, 255};
constexpr Rgb kYellow = {255, 255, 0};
constexpr Rgb kBlack = {0, 0, 0};

int32_t Number(const std::string& bytes, std::size_t offset) {
    int32_t value = 0;
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

/// A bitmap's pixels from the top; empty when its headers are not those of a preview.
std::vector<std::vector<Rgb>> ReadBitmap(const std::string& bytes) {
    if (bytes.size() < 54 || bytes.substr(0, 2) != "BM") return {};
    const int32_t width = Number(bytes, 18);
    const int32_t height = Number(bytes, 22);
    const auto rowBytes = static_cast<std::size_t>((width * 3 + 3) / 4 * 4);
    const auto size = static_cast<std::size_t>(height) * rowBytes + 54;
    std::string header = "BM" + std::string(12, '\0') + std::string("\x28\0\0\0", 4) +
                         bytes.substr(18, 8) + std::string("\1\0\x18\0", 4) + std::string(24, '\0');
    header[10] = 54;
    for (std::size_t i = 0; i < 4; ++i)
        header[2 + i] = static_cast<char>(size >> (8 * i));
    EXPECT_EQ(bytes.substr(0, 54), header);
    EXPECT_EQ(bytes.size(), size);
    if (bytes.size() != size) return {};
    std::vector<std::vector<Rgb>> rows;
    for (int32_t y = height - 1; y >= 0; --y) {
        rows.emplace_back();
        for (int32_t x = 0; x < width; ++x) {
            const auto* pixel = reinterpret_cast<const unsigned char*>(bytes.data()) + 54 +
                                static_cast<std::size_t>(y) * rowBytes + 3 * x;
            rows.back().push_back({pixel[2], pixel[1], pixel[0]});
        }
    }
    return rows;
}

class PreviewTest : public BoundaryTest {
  protected:
    void InstallPreview(const std::vector<std::string>& inks, const std::string& parameters) {
        Model model = NumberedModel(static_cast<int>(inks.size()), R"(CreateFolder="No")");
        for (std::size_t i = 0; i < inks.size(); ++i)
            model.Colours[i].InternalName = inks[i];
        model.OutputElements = parameters;
        Install(Describe(model));
    }
    /// A job of square pixels: its resolution is the model's on one axis and twice it on the other.
    bool PrintSquare(const Page& page, int steps = 0) {
        JobChoices choices;
        choices.XResolution = choices.YResolution = 600;
        Job job = StartJob({page}, "Proof.ps", choices);
        for (int step = 0; step < steps; ++step)
            job.Step();
        return IsPrinted(job.Run());
    }
};

/// A page of one-bit separations whose only inked byte is the first of a row.
Page Inked(uint32_t width, uint32_t height, std::vector<std::string> names, std::size_t inked,
           uint32_t row, char byte) {
    Page page = {width, height, {}};
    for (const std::string& name : names)
        page.Separations.push_back({name, 1, "", std::string(RowBytes(width, 1) * height, '\0')});
    page.Separations[inked].Rows[RowBytes(width, 1) * row] = byte;
    return page;
}

// A page smaller than its box lies in the middle, at its own size and mirrored: the first byte's
// lowest bit is the page's last column, the first line its last row, and the file's top is row 0.
TEST_F(PreviewTest, PlanesAndMirroredAxes) {
    const struct {
        std::vector<std::string> inks;
        std::size_t inked;
        Rgb color;
    } cases[] = {
        {{"Cyan", "Magenta", "Yellow", "Black"}, 0, kCyan},
        {{"Cyan", "Magenta", "Yellow", "Black"}, 3, kBlack},
        {{"black", "YELLOW", "Gold"}, 1, kYellow},
        {{"black", "YELLOW", "Gold"}, 2, kWhite},
        {{"Gold", "Silver", "Bronze", "Copper", "Tin"}, 2, kYellow},
        {{"Gold", "Silver", "Bronze", "Copper", "Tin"}, 4, kWhite},
        {{"Gray"}, 0, kCyan},
    };
    for (const auto& [inks, inked, color] : cases) {
        InstallPreview(inks, R"(<PreviewParam sizeV="20" sizeH="10" bestFit="0"/>)");
        ASSERT_TRUE(PrintSquare(Inked(10, 4, inks, inked, 1, '\x03')));
        const auto rows = ReadBitmap(Output("thumbnail.bmp"));
        ASSERT_EQ(rows.size(), 10U);
        for (std::size_t y = 0; y < 10; ++y) {
            ASSERT_EQ(rows[y].size(), 20U);
            for (std::size_t x = 0; x < 20; ++x) {
                // Columns 5 to 14 and rows 3 to 6 are the page.
                const bool ink = y == 3 + 2 && (x == 14 || x == 13);
                EXPECT_EQ(rows[y][x], ink ? color : kWhite) << inks[inked] << x << ',' << y;
            }
        }
    }
}

// Intensities go by the number of set bits; a page reduced to one pixel shows their mean.
TEST_F(PreviewTest, SizesAndNames) {
    const struct {
        const char* parameters;
        const char* file;  ///< null: no preview
        int32_t width, height;
    } cases[] = {
        {"", "thumbnail.bmp", 500, 250},
        {R"(<PreviewParam sizeV="80" name="filename_filename.x"/>)", "Proof_filename.x", 80, 40},
        {R"(<PreviewParam sizeV="30" sizeH="70" bestFit="0" name="FileName.b"/>)", "FileName.b", 30,
         70},
        {R"(<PreviewParam sizeV="0"/>)", nullptr, 0, 0},
        {R"(<PreviewParam sizeV="-5"/>)", nullptr, 0, 0},
        {R"(<PreviewParam sizeV="20001"/>)", nullptr, 0, 0},
        {R"(<PreviewParam sizeV="2147483647" sizeH="2147483647" bestFit="0"/>)", nullptr, 0, 0},
        {R"(<PreviewParam sizeV="4001" sizeH="4000" bestFit="0"/>)", nullptr, 0, 0},
        {R"(<PreviewParam sizeV="60" sizeH="-1"/>)", "thumbnail.bmp", 60, 30},
        {R"(<PreviewParam sizeV="60" name="../out.bmp"/>)", nullptr, 0, 0},
        {R"(<PreviewParam sizeV="60" type="png" name="a.png"/>)", "a.png", 60, 30},
    };
    for (const auto& [parameters, file, width, height] : cases) {
        EmptyOutputFolder();
        InstallPreview({"Cyan"}, parameters);
        ASSERT_TRUE(PrintSquare(Inked(1000, 500, {"Cyan"}, 0, 1, '\xFF')));
        Texts names = {"Proof"};
        if (file != nullptr) names.emplace_back(file);
        std::sort(names.begin(), names.end());
        EXPECT_EQ(Listing(folder.Out()), names) << parameters;
        if (file == nullptr) continue;
        const auto rows = ReadBitmap(Output(file));
        ASSERT_EQ(rows.size(), static_cast<std::size_t>(height)) << parameters;
        EXPECT_EQ(rows[0].size(), static_cast<std::size_t>(width)) << parameters;
    }
    EXPECT_TRUE(folder.Messages().empty());
}

// The host's picture stands under the preview's name from the job's start, until a page replaces
// it; in a job of tiles it stays in the job's folder.
TEST_F(PreviewTest, Thumbnail) {
    InstallPreview({"Cyan"}, R"(<PreviewParam sizeV="8" name="filename_p.bmp"/>)");
    WriteText(folder.Jobs() / "picture", "the host's");
    for (const int32_t tiles : {1, 2}) {
        EmptyOutputFolder();
        const Page page = Inked(16, 8, {"Cyan"}, 0, 1, '\xFF');
        Job job = MakeJob({page, page});
        (folder.Jobs() / "picture").string().copy(job.Status.ThumbnailPath, 255);
        job.Status.RecordVersion = 3;
        job.Status.TileCount = tiles;
        ASSERT_EQ(job.Open(), 1);
        ASSERT_EQ(job.Port(folder.Out()), 1);
        EXPECT_EQ(Output("Proof_p.bmp"), "the host's");
        ASSERT_TRUE(IsPrinted(job.Run()));
        EXPECT_EQ(Output("Proof_p.bmp") == "the host's", tiles == 2);
        EXPECT_EQ(ReadBitmap(Output(tiles == 2 ? "Proof-tile2/Proof_p.bmp" : "Proof_p.bmp")).size(),
                  2U);
    }
}

// A PNG holds the same rows the other way up. Without the library beside the plug-in, or without
// its entry points, the file is empty, and messages say what is missing.
TEST_F(PreviewTest, Png) {
    const std::string parameters =
        R"(<PreviewParam sizeV="20" sizeH="10" bestFit="0" type="PNG"/>)";
    const Page page = Inked(10, 4, {"Cyan"}, 0, 1, '\x03');
    InstallPreview({"Cyan"}, parameters);
    ASSERT_TRUE(PrintSquare(page));
    const std::string png = Output("thumbnail.bmp");
    ASSERT_EQ(png.substr(1, 3), "PNG");
    EXPECT_EQ(png.substr(16, 13), std::string("\0\0\0\x14\0\0\0\x0A\x08\x02\0\0\0", 13));
    EXPECT_TRUE(folder.Messages().empty());

    const std::filesystem::path copy = folder.Root() / "libOutputDriver.so";
    std::filesystem::copy_file(OUTPUT_DRIVER_LIBRARY, copy);
    for (const bool hasLibrary : {false, true}) {
        if (hasLibrary) std::filesystem::copy_file(INCOMPLETE_PNG, folder.Root() / "libpng3.so");
        driver = std::make_unique<Driver>(copy.c_str());
        const std::size_t before = folder.Messages().size();
        ASSERT_TRUE(PrintSquare(page));
        EXPECT_EQ(Output("thumbnail.bmp"), "");
        Texts messages = folder.Messages();
        messages.erase(messages.begin(), messages.begin() + static_cast<std::ptrdiff_t>(before));
        if (!hasLibrary) {
            EXPECT_EQ(messages, Texts{"Cannot open libpng3.dll"});
            continue;
        }
        ASSERT_EQ(messages.size(), 8U) << "all but png_write_end";
        EXPECT_EQ(messages.front(), "Failed to load png_create_write_struct");
        EXPECT_EQ(messages.back(), "Failed to load png_write_info");
    }
}

}  // namespace
