// Dither and screening parameters: which file and entry serve, what each number does to the
// record, and that nothing else of it is touched.

#include <array>
#include <clocale>
#include <functional>
#include <map>

#include "JobRunner.h"

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

namespace fs = std::filesystem;

namespace {

using Files = std::map<std::string, std::string>;

/// A record as its bytes, all 0xA5 at first, at an odd address, as a packed record may stand, with
/// bytes around it that nobody may write.
template <class Record>
struct alignas(8) Bytes {
    static constexpr std::size_t kBehind = 63;
    unsigned char Before;
    Record Value;
    unsigned char Behind[kBehind];

    Bytes() { std::memset(static_cast<void*>(this), 0xA5, sizeof *this); }
    bool operator==(const Bytes& other) const {
        return std::memcmp(this, &other, sizeof *this) == 0;
    }
};
using Dither = Bytes<DitherParams>;
using Screening = Bytes<ScreeningParams>;

constexpr const char* kMaker = "Acme Printers";
constexpr const char* kList =
    "<List><ManufacturerList><M Name='Other' ManufactureXML='other.xml'/>"
    "<M Name='ACME printers' ManufactureXML='acme.xml'/></ManufacturerList></List>";

/// A parameter file whose entries all serve everything, with `leaves` in its colour mode.
std::string Serving(const std::string& leaves) {
    return "<P><PrinterHardware><Model ID='Default'><Media ID='Default'><PrintMode ID='Default'>"
           "<Resolution ID='Default'><ColorMode ID='Default'>" +
           leaves + "</ColorMode></Resolution></PrintMode></Media></Model></PrinterHardware></P>";
}

std::string Item(const std::string& name) {
    return fmt::format("<Item ColorName='{}'/>", name);
}

class HalftoneTest : public BoundaryTest {
  protected:
    /// A model of one colour mode.
    void InstallModel(int inkCount, int depth) {
        Model model = NumberedModel(std::max(inkCount, 1), "");
        model.ColorModes[0].resize(static_cast<std::size_t>(inkCount));
        Install(Replaced(Describe(model), "<ColorDepth>1<", fmt::format("<ColorDepth>{}<", depth)));
        CapabilityList media;
        ASSERT_EQ(driver->Call(kGetMediaList, &settings, &media, &unused), 1);
    }
    fs::path DataFile(const std::string& name) const { return Folder() / name; }
    fs::path Folder() const { return folder.Base() / "OutputDrivers"; }
    void SetFiles(const Files& files) {
        fs::remove_all(Folder());
        fs::create_directories(Folder() / "sub");
        for (const auto& [name, text] : files) {
            const bool encode = text.substr(0, 5) == "gzip ";
            if (text == "folder") {
                fs::create_directories(DataFile(name));
                continue;
            }
            WriteText(DataFile(name), encode ? text.substr(5) : text);
            if (encode)
                PrintedBy(fmt::format("cd '{0}' && gzip -n '{1}' && mv '{1}.gz' '{1}'",
                                      Folder().string(), name));
        }
    }
    Screening Screens() {
        Screening out;
        SetText(settings.ManufacturerName, kMaker);
        EXPECT_EQ(driver->Call(kGetScreeningParams, &out.Value, &settings), 1);
        return out;
    }
    /// The colour name of the first screen, which names the file and entry that served, and the
    /// messages since the last call.
    std::string Served() {
        std::string text = Screens().Value.Entries[0].ColorName;
        for (const std::string& message : NewMessages())
            text += "|" + message;
        return text;
    }
    Texts NewMessages() {
        const Texts all = folder.Messages();
        const Texts fresh(all.begin() + static_cast<std::ptrdiff_t>(messagesSeen_), all.end());
        messagesSeen_ = all.size();
        return fresh;
    }

    PrintSettings settings = Settings(kModelName, 4, 5, 6);
    int32_t unused = 0;

  private:
    std::size_t messagesSeen_ = 0;
};

Dither DefaultDither(int32_t levels, int32_t inks) {
    Dither dither;
    dither.Value.LevelCount = levels;
    dither.Value.AntiClogLevel = 0;
    dither.Value.NoiseLevel = 1;
    dither.Value.InkCount = inks;
    for (int ink = 0; ink < inks; ++ink)
        for (int position = 0; position < levels - 1; ++position)
            dither.Value.Values[ink][position] =
                static_cast<float>(position + 1) / static_cast<float>(levels - 1);
    return dither;
}

Screening DefaultScreens() {
    constexpr std::pair<const char*, int> kScreens[] = {
        {"Cyan", 105}, {"Magenta", 75},   {"Yellow", 90},  {"Black", 45},
        {"LCyan", 75}, {"LMagenta", 105}, {"Orange", 105}, {"Green", 75}};
    Screening screening;
    screening.Value.Count = 0;
    for (const auto& [name, angle] : kScreens) {
        ScreenEntry& entry = screening.Value.Entries[screening.Value.Count++];
        SetText(entry.ShapeName, "Diamond");
        entry.Frequency = 55;
        entry.Angle = static_cast<float>(angle);
        SetText(entry.ColorName, name);
    }
    return screening;
}

TEST_F(HalftoneTest, FileLookup) {
    const Files contents = {
        {"list", Serving(Item("list"))},
        {"map", "<M><A Name='ROLLER 64' XMLFile='sub/acme.xml'/><A Name='Roller 64'/></M>"},
        {"empty map", "<M><A Name='Roller 64'/></M>"},
        {"file", Serving(Item("file"))},
        {"gzip map", "gzip <M><A Name='Roller 64' XMLFile='sub/acme.xml'/></M>"},
        {"gzip file", "gzip " + Serving(Item("file"))},
        {"no hardware", "<P><Printerhardware/></P>"},
        {"folder", "folder"},
        {"no XML", "%PDF-1.4"},
        {"damaged", "\x1F\x8B\x08\x01\x02 no stream"}};
    constexpr const char* kOwn = "ManufactureXML='sub/acme.xml'";
    constexpr const char* kMap = "ManufactureMAPXML='map.xml'";
    const struct {
        const char* Attributes;  // of the manufacturer
        const char* Map;
        const char* File;
        const char* Served;
    } kRows[] = {
        {kOwn, "", "file", "file"},
        {kOwn, "", "gzip file", "file"},
        {kOwn, "", "no hardware", "list"},
        {kOwn, "", "folder", "list"},
        {kOwn, "", "no XML", "list"},
        {kOwn, "", "damaged", "list"},
        {"ManufactureXML='../OutputDrivers/sub/acme.xml'", "", "file", "list"},
        {"ManufactureXML='sub\\x\\..\\acme.xml'", "", "file", "file"},
        {"", "map", "file", "list"},
        {"ManufactureXML='none.xml' ManufactureMAPXML='map.xml'", "map", "file", "list"},
        {kMap, "map", "gzip file", "file"},
        {kMap, "gzip map", "file", "file"},
        {kMap, "file", "", "file"},  // a map may be a parameter file too
        {kMap, "map", "", "list"},
        {kMap, "map", "no hardware", "list"},
        {kMap, "empty map", "file", "list"},
    };
    for (const auto& row : kRows) {
        Files files = {{"ScreeningParams.xml",
                        Replaced(contents.at("list"), "<P>",
                                 fmt::format("<P><ManufacturerList><M Name='Other'/><M "
                                             "Name='ACME printers' {}/><M Name='Acme Printers' "
                                             "ManufactureXML='no.xml'/></ManufacturerList>",
                                             row.Attributes))}};
        if (*row.Map != '\0') files["map.xml"] = contents.at(row.Map);
        if (*row.File != '\0') files["sub/acme.xml"] = contents.at(row.File);
        SetFiles(files);
        EXPECT_EQ(Served(), row.Served) << row.Attributes << row.Map << ", " << row.File;
    }
    SetFiles({{"ScreeningParams.xml", "gzip " + contents.at("list")}});
    EXPECT_EQ(Served(), "Cyan") << "the list is plain";
    SetFiles({{"ScreeningParams.xml", Replaced(kList, "acme", "MyScreeningParams")},
              {"MyScreeningParams.xml", contents.at("gzip file")}});
    EXPECT_EQ(Served(), "Cyan") << "so is what has its name in the path";
}

TEST_F(HalftoneTest, SelectionWalk) {
    settings.ColorModeIndex = 7;
    SetFiles({{"ScreeningParams.xml", kList}});
    constexpr std::pair<std::string_view, const char*> kLevels[] = {{"Model", "Roller 64"},
                                                                    {"Media", "4"},
                                                                    {"PrintMode", "5"},
                                                                    {"Resolution", "6"},
                                                                    {"ColorMode", "7"}};
    struct Row {
        const char* Element;
        std::vector<std::string> IDs;  // of its siblings, which lead to the tags a, b, c
        const char* Served;
    };
    const Row kRows[] = {
        {"Model", {"Roller 6", "xRoller 64+, Roller 640", "Roller 64"}, "b"},
        {"Model", {"Default", "roller 64", "Default"}, "c"},
        {"Model", {"roller 64"}, "Cyan|Getting media node fails"},
        {"Media", {"Default", "3,4", "Default"}, "b"},
        {"Media", {"1,,4"}, "Cyan|Getting media node fails"},
        {"Media", {"four, 4294967300, +4"}, "a"},
        {"Media", {std::string(254, '1') + ",4", "4"}, "b"},
        {"PrintMode", {"4"}, "Cyan|Getting printmode node fails"},
        {"Resolution", {"5", ""}, "Cyan|Getting resolution node fails"},
        {"ColorMode", {"-7", "x"}, "Cyan|Getting colormode node fails"},
    };
    for (const Row& row : kRows) {
        std::vector<std::string> parts;
        for (std::size_t i = 0; i < row.IDs.size(); ++i)
            parts.push_back(Item(std::string(1, "abc"[i])));
        for (std::size_t level = std::size(kLevels); level-- > 0;) {
            const auto& [name, needed] = kLevels[level];
            const bool isIt = name == row.Element;
            for (std::size_t i = 0; i < parts.size(); ++i)
                parts[i] = fmt::format("<{0} ID='{1}'>{2}</{0}>", name, isIt ? row.IDs[i] : needed,
                                       parts[i]);
            if (isIt) parts = {fmt::format("{}", fmt::join(parts, ""))};
        }
        const std::string& all = parts[0];
        WriteText(DataFile("acme.xml"), "<P><PrinterHardware>" + all + "</PrinterHardware></P>");
        EXPECT_EQ(Served(), row.Served) << all;
    }
}

TEST_F(HalftoneTest, DitherRecords) {
    constexpr const char* kWeight = "<Weight ColorInk='{}' Level='{}' Value='{}'/>";
    const auto weights = [&](std::initializer_list<std::array<const char*, 3>> list) {
        std::string text;
        for (const auto& [ink, position, value] : list)
            text += fmt::format(fmt::runtime(kWeight), ink, position, value);
        return text;
    };
    const std::string ink1 = weights({{"1", "0", "0.1"}, {"1", "1", ".5"}, {"1", "2", "1e0 %"}});
    constexpr const char* kEnds = "<AntiClogLevel Value='3'/><NoiseLevel Value='0.25'/>";
    constexpr float kRead[] = {0.1F, 0.5F, 1.0F};
    constexpr const char* kNoEntry = "Getting ditherparams node fails";
    constexpr const char* kNoLevel = "Getting ditherparams-level node fails";
    constexpr const char* kNoAntiClog = "Getting ditherparams-anti clog level node fails";
    constexpr const char* kNoNoise = "Getting ditherparams-noise level node fails";
    const struct {
        const char* ID;
        const char* LevelCount;
        std::string Weights;
        const char* After;
        const char* ReadInks;  // the inks that have ink 1's amounts
        int32_t AntiClog;
        float Noise;
        const char* Message = "";
        int Answer = 1;
    } kRows[] = {
        {"2,4", "4", ink1, kEnds, "012", 3, 0.25F},
        {"Default", " 4.", ink1, kEnds, "012", 3, 0.25F},
        {"4", "4", "<a/><a/><a/>" + ink1 + "<a/><a/><a/>", kEnds, "1", 3, 0.25F},
        {"4", "4",
         ink1 + weights({{"", "0", "2"},
                         {"16", "2", "2"},
                         {"-1", "0", "2"},
                         {"2", "64", "2"},
                         {"2", "0", "no"},
                         {"2", "0", "nan"},
                         {"2", "", "2"}}),
         kEnds, "1", 3, 0.25F},
        {"4", "4", "", "<AntiClogLevel Value='9999999999'/><NoiseLevel Value='inf'/>", "", 0, 1},
        {"3,,4", "4", ink1, kEnds, "", 0, 1, kNoEntry, 0},
        {"4", "3", ink1, kEnds, "", 0, 1, "", 0},
        {"4", "", ink1, kEnds, "", 0, 1, kNoLevel, 0},
        {"4", "4", ink1, "<NoiseLevel Value='0.25'/>", "012", 0, 1, kNoAntiClog, 0},
        {"4", "4", ink1, "<AntiClogLevel Value=' 3 or so'/>", "012", 3, 1, kNoNoise, 0},
    };
    InstallModel(3, 2);
    settings.ColorModeIndex = 0;
    for (const auto& row : kRows) {
        const std::string level =
            *row.LevelCount == '\0'
                ? "<level/>"
                : fmt::format("<Level Value='{}'>{}</Level><Level/>", row.LevelCount, row.Weights);
        const std::string leaves =
            fmt::format("<DitherParams ID='9'/><DitherParams ID='{}'>{}{}</DitherParams>", row.ID,
                        level, row.After);
        SetFiles({{"Ditherparams.xml", kList}, {"acme.xml", Serving(leaves)}});
        Dither expected = DefaultDither(4, 3);
        expected.Value.AntiClogLevel = row.AntiClog;
        expected.Value.NoiseLevel = row.Noise;
        for (const char* ink = row.ReadInks; *ink != '\0'; ++ink)
            std::memcpy(&expected.Value.Values[*ink - '0'], kRead, sizeof kRead);
        Dither out;
        Dither extended;
        EXPECT_EQ(driver->Call(kGetDitherParams, kModelName, kMaker, &settings, &out.Value),
                  row.Answer);
        EXPECT_TRUE(out == expected) << leaves;
        EXPECT_EQ(NewMessages(), *row.Message == '\0' ? Texts{} : Texts{row.Message}) << leaves;
        driver->Call(kGetDitherParamsEx, kModelName, kMaker, &settings, &out, &extended.Value);
        EXPECT_TRUE(extended == expected) << leaves;
        NewMessages();
    }
}

TEST_F(HalftoneTest, DitherDefaultsByDepth) {
    struct Row {
        int Depth, InkCount;
        int32_t Levels, Inks;
        const char* Message;
    };
    constexpr const char* kNoMedia = "Getting media node fails";
    constexpr Row kRows[] = {{1, 4, 2, 4, kNoMedia},    {2, 1, 4, 1, kNoMedia},
                             {4, 17, 16, 16, kNoMedia}, {6, 2, 64, 2, kNoMedia},
                             {7, 2, 64, 2, kNoMedia},   {8, 4, 64, 4, nullptr},
                             {16, 1, 64, 1, nullptr},   {0, 2, 1, 2, kNoMedia},
                             {1, 0, 2, 0, kNoMedia},    {1000, 1, 64, 1, kNoMedia}};
    for (const Row& row : kRows) {
        InstallModel(row.InkCount, row.Depth);
        WriteText(DataFile("Ditherparams.xml"), "<L><PrinterHardware/></L>");
        Dither out;
        EXPECT_EQ(driver->Call(kGetDitherParams, "", "", &settings, &out.Value), 0);
        EXPECT_TRUE(out == DefaultDither(row.Levels, row.Inks)) << row.Depth;
        EXPECT_EQ(NewMessages(), row.Message == nullptr ? Texts{} : Texts{row.Message});
    }
}

// Before a capability has been asked, the counts of the caller's record say what to look for.
TEST_F(HalftoneTest, DitherCountsOfTheCaller) {
    struct Row {
        int32_t Levels, Inks;
        int CopiedPositions, CopiedInks;
        const char* Message;
    };
    constexpr Row kRows[] = {
        {4, 3, 3, 3, nullptr},    {100, 1000, 63, 16, nullptr},
        {-5, -3, 0, 0, nullptr},  {2147483647, 2147483647, 63, 16, nullptr},
        {256, 2, 63, 2, nullptr}, {5, 2, 0, 0, "Getting ditherparams node fails"},
    };
    for (const Row& row : kRows) {
        const std::string entry = fmt::format(
            "<DitherParams ID='{0}'><Level Value='{0}'><Weight ColorInk='15' Level='0' Value='7'/>"
            "</Level><AntiClogLevel/><NoiseLevel/></DitherParams>",
            row.Message == nullptr ? row.Levels : 1);
        SetFiles({{"Ditherparams.xml", kList}, {"acme.xml", Serving(entry)}});
        Dither out;
        out.Value.LevelCount = row.Levels;
        out.Value.InkCount = row.Inks;
        Dither expected = out;
        if (row.Message == nullptr) expected.Value.Values[15][0] = 7;
        for (int ink = 0; ink < row.CopiedInks; ++ink)
            std::memcpy(&expected.Value.Values[ink], &expected.Value.Values[15],
                        sizeof(float) * static_cast<std::size_t>(row.CopiedPositions));
        EXPECT_EQ(driver->Call(kGetDitherParams, kModelName, kMaker, &settings, &out.Value),
                  row.Message == nullptr ? 1 : 0);
        EXPECT_TRUE(out == expected) << row.Levels;
        EXPECT_EQ(NewMessages(), row.Message == nullptr ? Texts{} : Texts{row.Message});
    }
}

TEST_F(HalftoneTest, ScreeningRecords) {
    std::string many = Item("");
    for (int i = 0; i < 300; ++i)
        many += Item(fmt::format("Ink {}", i));
    const std::string name(70, 'n');
    const std::string shape(130, 's');
    const struct {
        std::string Items;
        std::function<void(ScreeningParams&)> Expected;
    } kRows[] = {
        {"", [](ScreeningParams&) {}},
        {"<Item Angle='1' Frequency='2' ShapeName='Round'/><item ColorName='a'/>",
         [](ScreeningParams&) {}},
        {"<Item ColorName='Cyan' Angle='15' ShapeName='No such shape'/><Item/>"
         "<Item ColorName='Spot' Frequency='1e2x' Angle='?'/>",
         [](ScreeningParams& out) {
             out.Count = 2;
             out.Entries[0].Angle = 15;
             SetText(out.Entries[0].ShapeName, "No such shape");
             SetText(out.Entries[1].ColorName, "Spot");
             SetText(out.Entries[1].ShapeName, "");
             out.Entries[1].Frequency = 100;
         }},
        {fmt::format("<Item ColorName='{}' ShapeName='{}' Angle='1e40' Frequency='nan'/>", name,
                     shape),
         [&](ScreeningParams& out) {
             out.Count = 1;
             SetText(out.Entries[0].ColorName, name);
             SetText(out.Entries[0].ShapeName, shape);
         }},
        {many,
         [](ScreeningParams& out) {
             out.Count = 256;
             for (int i = 0; i < 256; ++i) {
                 SetText(out.Entries[i].ColorName, fmt::format("Ink {}", i));
                 SetText(out.Entries[i].ShapeName, "");
             }
         }},
    };
    for (const auto& row : kRows) {
        SetFiles({{"ScreeningParams.xml", kList}, {"acme.xml", Serving(row.Items)}});
        Screening expected = DefaultScreens();
        row.Expected(expected.Value);
        EXPECT_TRUE(Screens() == expected) << row.Items.substr(0, 100);
    }
    // Without a manufacturer or model, or without settings, no file is looked at.
    for (const int missing : {0, 1, 2}) {
        PrintSettings bare = settings;
        SetText(bare.ManufacturerName, missing == 0 ? "" : kMaker);
        SetText(bare.ModelName, missing == 1 ? "" : kModelName);
        Screening out;
        EXPECT_EQ(driver->Call(kGetScreeningParams, &out.Value, missing == 2 ? nullptr : &bare), 1);
        EXPECT_TRUE(out == DefaultScreens()) << missing;
    }
    EXPECT_TRUE(NewMessages().empty());
}

// Dither files are read alike wherever the host runs, screening files as its user writes numbers.
TEST_F(HalftoneTest, Locale) {
    setenv("LOCPATH", TEST_LOCALES, 1);
#ifdef __SANITIZE_ADDRESS__
    const __lsan::ScopedDisabler pathOfTheCLibrary;  // made from LOCPATH, and never freed
#endif
    ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr) << TEST_LOCALES;
    SetFiles({{"Ditherparams.xml", kList},
              {"ScreeningParams.xml", Replaced(kList, "acme", "screens")},
              {"screens.xml", Serving("<Item ColorName='a' Angle='15,5' Frequency='60.5'/>")},
              {"acme.xml",
               Serving("<DitherParams ID='4'><Level Value='4'><Weight ColorInk='0' Level='0' "
                       "Value='0.75'/></Level><AntiClogLevel/><NoiseLevel Value='0,5'/>"
                       "</DitherParams>")}});
    Dither out;
    out.Value.LevelCount = 4;
    out.Value.InkCount = 1;
    EXPECT_EQ(driver->Call(kGetDitherParams, kModelName, kMaker, &settings, &out.Value), 1);
    const Screening screens = Screens();
    EXPECT_EQ(std::strtod("1,5", nullptr), 1.5) << "the host's locale is back";
    std::setlocale(LC_ALL, "C");
    unsetenv("LOCPATH");
    EXPECT_EQ(float{out.Value.Values[0][0]}, 0.75F);
    EXPECT_EQ(float{out.Value.NoiseLevel}, 0.0F);
    EXPECT_EQ(float{screens.Value.Entries[0].Angle}, 15.5F);
    EXPECT_EQ(float{screens.Value.Entries[0].Frequency}, 60.0F);
}

}  // namespace
