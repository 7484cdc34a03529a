// Dither and screening parameters: which file and entry serve, what each number does to the
// record, and that nothing else of it is touched.

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <clocale>
#include <functional>
#include <map>
#include <set>

#include "JobRunner.h"

namespace fs = std::filesystem;

namespace {

using Files = std::map<std::string, std::string>;

/// A record as its bytes, all 0xA5 at first, with as many behind it that nobody may write.
template <class Record>
struct Bytes {
    static constexpr std::size_t kBehind = 64;
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
    const std::string hardware = "ScreeningParams.xml";
    const std::string mapped =
        "<L><ManufacturerList><M Name='Acme Printers' ManufactureMAPXML='sub/map.xml'/>"
        "</ManufacturerList></L>";
    const std::string map =
        "<Map><A Name='other' XMLFile='other.xml'/><A Name='ROLLER 64' "
        "XMLFile='sub/model.xml'/><A Name='Roller 64' XMLFile='b.xml'/></Map>";
    /// A list that is a parameter file too.
    const auto both = [](const std::string& list) {
        return Replaced(list, "</ManufacturerList>",
                        "</ManufacturerList>" +
                            Replaced(Replaced(Serving(Item("list")), "<P>", ""), "</P>", ""));
    };
    const std::string model = Serving(Item("model"));
    const std::string acme = Serving(Item("acme"));
    const struct {
        const char* Name;
        Files Contents;
        const char* Served;
    } kRows[] = {
        {"no file at all", {}, "Cyan"},
        {"a file of the manufacturer's own", {{hardware, both(kList)}, {"acme.xml", acme}}, "acme"},
        {"encoded", {{hardware, kList}, {"acme.xml", "gzip " + acme}}, "acme"},
        {"the list is plain only", {{hardware, "gzip " + both(kList)}, {"acme.xml", acme}}, "Cyan"},
        {"without PrinterHardware", {{hardware, both(kList)}, {"acme.xml", "<P/>"}}, "list"},
        {"a folder", {{hardware, both(kList)}, {"acme.xml", "folder"}}, "list"},
        {"no XML", {{hardware, both(kList)}, {"acme.xml", "%PDF-1.4"}}, "list"},
        {"damaged gzip",
         {{hardware, both(kList)}, {"acme.xml", "\x1F\x8B\x08\x01\x02 no stream"}},
         "list"},
        {"out of the folder",
         {{hardware, both(Replaced(kList, "acme.xml", "../out.xml"))}, {"../out.xml", acme}},
         "list"},
        {"a path with backslashes",
         {{hardware, Replaced(kList, "acme.xml", "sub\\..\\sub\\a.xml")}, {"sub/a.xml", acme}},
         "acme"},
        {"the first entry of a name counts",
         {{hardware, both(Replaced(kList, "'Other' M", "'acme printers' x='' M"))},
          {"other.xml", "<P/>"},
          {"acme.xml", acme}},
         "list"},
        {"an unknown manufacturer",
         {{hardware, both(Replaced(kList, "ACME", "ACMES"))}, {"acme.xml", acme}},
         "list"},
        {"neither attribute",
         {{hardware, both("<L><ManufacturerList><M Name='Acme Printers'/></ManufacturerList></L>")},
          {"acme.xml", acme}},
         "list"},
        {"both attributes: the map is not read",
         {{hardware,
           both(Replaced(mapped, "ManufactureMAP", "ManufactureXML='a.xml' ManufactureMAP"))},
          {"sub/map.xml", map},
          {"sub/model.xml", model}},
         "list"},
        {"by the map",
         {{hardware, mapped}, {"sub/map.xml", map}, {"sub/model.xml", model}},
         "model"},
        {"an encoded map",
         {{hardware, mapped}, {"sub/map.xml", "gzip " + map}, {"sub/model.xml", model}},
         "model"},
        {"the map is a parameter file too",
         {{hardware, both(mapped)}, {"sub/map.xml", acme}, {"sub/model.xml", model}},
         "acme"},
        {"the map names a file that is missing",
         {{hardware, both(mapped)}, {"sub/map.xml", map}},
         "list"},
        {"the map names none",
         {{hardware, both(mapped)}, {"sub/map.xml", Replaced(map, "sub/model.xml", "")}},
         "list"},
        {"no list of manufacturers: the list serves all",
         {{hardware, Serving(Item("all"))}},
         "all"},
        {"an encoded file whose path holds the list's name is taken for plain",
         {{hardware, Replaced(kList, "acme", "sub/MyScreeningParams")},
          {"sub/MyScreeningParams.xml", "gzip " + acme}},
         "Cyan"},
    };
    for (const auto& row : kRows) {
        SetFiles(row.Contents);
        EXPECT_EQ(Served(), row.Served) << row.Name;
    }
}

TEST_F(HalftoneTest, SelectionWalk) {
    // The settings ask for media 4, print mode 5, resolution 6 and colour mode 7.
    settings.ColorModeIndex = 7;
    SetFiles({{"ScreeningParams.xml", kList}});
    const auto level = [](const char* name, const char* id, const std::string& inside) {
        return fmt::format("<{0} ID='{1}'>{2}</{0}>", name, id, inside);
    };
    const auto color = [&](const char* id, const char* tag) {
        return level("ColorMode", id, Item(tag));
    };
    const auto resolution = [&](const char* id, const char* tag) {
        return level("Resolution", id, color("7", tag));
    };
    const auto mode = [&](const char* id, const char* tag) {
        return level("PrintMode", id, resolution("6", tag));
    };
    const auto media = [&](const char* id, const char* tag) {
        return level("Media", id, mode("5", tag));
    };
    const auto model = [&](const char* id, const char* tag) {
        return level("Model", id, media("4", tag));
    };
    const std::string longList(254, '1');
    const struct {
        std::string Hardware;
        const char* Served;
    } kRows[] = {
        {model("Roller 6", "a") + model("xRoller 64+, Roller 640", "b") + model("Roller 64", "c"),
         "b"},
        {model("Default", "a") + model("roller 64", "b") + model("Default", "c"), "c"},
        {model("roller 64", "a"), "Cyan|Getting media node fails"},
        {level("model", "Roller 64", media("4", "a")), "Cyan|Getting media node fails"},
        {level("Model", "Default",
               media("Default", "a") + media("3,4", "b") + media("Default", "c")),
         "b"},
        {level("Model", "Default",
               media("Default", "a") + media("3,5", "b") + media("Default", "c")),
         "c"},
        {level("Model", "Default", media("1,,4", "a")), "Cyan|Getting media node fails"},
        {level("Model", "Default", media("default", "a") + media(",4", "b") + media(" 4x", "c")),
         "c"},
        {level("Model", "Default", media("four, 4294967300, +4", "a")), "a"},
        {level("Model", "Default", media((longList + ",4").c_str(), "a") + media("4", "b")), "b"},
        {level("Model", "Default", level("media", "4", mode("5", "a")) + media("9,4,9", "b")), "b"},
        {level("Model", "Default", level("Media", "4", mode("4", "a"))),
         "Cyan|Getting printmode node fails"},
        {level("Model", "Default",
               level("Media", "4", level("PrintMode", "5", resolution("5", "a")))),
         "Cyan|Getting resolution node fails"},
        {level("Model", "Default",
               level("Media", "4",
                     level("PrintMode", "5", level("Resolution", "6", color("", "a"))))),
         "Cyan|Getting colormode node fails"},
        // A default is no reason to go back: what it lacks is missing.
        {level("Model", "Default", media("Default", "a") + level("Media", "4", mode("1", "b"))),
         "Cyan|Getting printmode node fails"},
    };
    for (const auto& row : kRows) {
        WriteText(DataFile("acme.xml"),
                  "<P><PrinterHardware>" + row.Hardware + "</PrinterHardware></P>");
        EXPECT_EQ(Served(), row.Served) << row.Hardware;
    }
    // Without a first medium the special index stays as it is, which only "Default" serves.
    settings.MediaIndex = -102;
    WriteText(DataFile("acme.xml"), "<P><PrinterHardware>" + level("Model", "", media("0,4", "a")) +
                                        "</PrinterHardware></P>");
    EXPECT_EQ(Served(), "Cyan|Cannot get XML |Getting media node fails");
}

TEST_F(HalftoneTest, DitherRecords) {
    const auto entry = [](const std::string& level, const std::string& after) {
        return "<DitherParams ID='2,4'>" + level + after + "</DitherParams>";
    };
    const auto weight = [](const char* ink, int position, const char* value) {
        return fmt::format("<Weight ColorInk='{}' Level='{}' Value='{}'/>", ink, position, value);
    };
    const std::string ends = "<AntiClogLevel Value='3'/><NoiseLevel Value='0.25'/>";
    const std::string ink1 = weight("1", 0, "0.1") + weight("1", 1, ".5") + weight("1", 2, "1e0 %");
    const auto level = [](const std::string& weights) {
        return "<Level Value='4'>" + weights + "</Level>";
    };
    using Change = std::function<void(DitherParams&)>;
    const Change kEnds = [](DitherParams& out) {
        out.AntiClogLevel = 3;
        out.NoiseLevel = 0.25F;
    };
    const auto copied = [&](std::initializer_list<int> inks) {
        return [inks = std::vector<int>(inks), kEnds](DitherParams& out) {
            for (const int ink : inks) {
                out.Values[ink][0] = 0.1F;
                out.Values[ink][1] = 0.5F;
                out.Values[ink][2] = 1;
            }
            kEnds(out);
        };
    };
    const Change kNothing = [](DitherParams&) {};
    const struct {
        const char* Name;
        std::string Leaves;
        int Answer;
        Change Expected;
        const char* Message = nullptr;
    } kRows[] = {
        {"inks that are missing", entry(level(ink1), ends), 1, copied({0, 1, 2})},
        {"a Default entry after others",
         "<DitherParams ID='3'/>" + Replaced(entry(level(ink1), ends), "2,4", "Default"), 1,
         copied({0, 1, 2})},
        {"any ink may say where the defaults stay, by the number of children",
         entry(level(ink1 + "<a/><a/><a/><a/><a/><a/>"), ends), 1, copied({1})},
        {"skipped ones count as children",
         entry(level(ink1 + weight("", 0, "2") + weight("16", 0, "2") + weight("-1", 0, "2") +
                     weight("2", 64, "2") + weight("2", 0, "no") + weight("2", 0, "nan") +
                     "<Weight ColorInk='2' Value='2'/>"),
               ends),
         1, copied({1})},
        {"only the first Level counts, with what it holds beyond the record's use",
         entry(level(ink1 + weight("dEFAULT", 63, "-7") + weight("15", 3, "9")) + level("<x/>"),
               ends),
         1,
         [&](DitherParams& out) {
             copied({1, 2})(out);
             out.Values[0][63] = -7;
             out.Values[15][3] = 9;
         }},
        {"numbers that are none",
         entry(level(""), "<AntiClogLevel Value='9999999999'/><NoiseLevel Value='inf'/>"), 1,
         kNothing},
        {"no entry", "<DitherParams ID='3,,4'/>", 0, kNothing, "Getting ditherparams node fails"},
        {"no level", entry("<level/>", ends), 0, kNothing, "Getting ditherparams-level node fails"},
        {"another level count", entry("<Level Value='3'/>" + level(ink1), ends), 0, kNothing},
        {"no anti-clog level", entry(level(ink1), "<NoiseLevel Value='0.25'/>"), 0,
         [&](DitherParams& out) {
             copied({0, 1, 2})(out);
             out.AntiClogLevel = 0;
             out.NoiseLevel = 1;
         },
         "Getting ditherparams-anti clog level node fails"},
        {"no noise level", entry(level(ink1), "<AntiClogLevel Value=' 3 or so'/>"), 0,
         [&](DitherParams& out) {
             copied({0, 1, 2})(out);
             out.NoiseLevel = 1;
         },
         "Getting ditherparams-noise level node fails"},
    };
    InstallModel(3, 2);
    settings.ColorModeIndex = 0;
    for (const auto& row : kRows) {
        SetFiles({{"Ditherparams.xml", kList}, {"acme.xml", Serving(row.Leaves)}});
        Dither expected = DefaultDither(4, 3);
        row.Expected(expected.Value);
        for (const bool extended : {false, true}) {
            Dither out;
            const int32_t answer =
                extended
                    ? driver->Call(kGetDitherParamsEx, kModelName, kMaker, &settings,
                                   static_cast<void*>(this), &out.Value)
                    : driver->Call(kGetDitherParams, kModelName, kMaker, &settings, &out.Value);
            EXPECT_EQ(answer, row.Answer) << row.Name;
            EXPECT_TRUE(out == expected) << row.Name;
            EXPECT_EQ(NewMessages(), row.Message == nullptr ? Texts{} : Texts{row.Message})
                << row.Name;
        }
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
    // An entry that is missing for 256 levels is no fault.
    SetFiles({{"Ditherparams.xml", kList}, {"acme.xml", Serving("")}});
    Dither out;
    out.Value.LevelCount = 256;
    EXPECT_EQ(driver->Call(kGetDitherParams, kModelName, kMaker, &settings, &out.Value), 0);
    EXPECT_TRUE(NewMessages().empty());
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

// A call opens each of its files once, and the next call sees what has changed meanwhile.
TEST_F(HalftoneTest, FilesAreReadOnceACall) {
    SetFiles({{"ScreeningParams.xml",
               "<L><ManufacturerList><M Name='Acme Printers' ManufactureMAPXML='map.xml'/>"
               "</ManufacturerList></L>"},
              {"map.xml", "<M><A Name='Roller 64' XMLFile='model.xml'/></M>"},
              {"model.xml", Serving(Item("model"))}});
    const int watch = inotify_init1(IN_NONBLOCK);
    ASSERT_GE(watch, 0);
    ASSERT_GE(inotify_add_watch(watch, Folder().c_str(), IN_OPEN), 0);
    for (const char* tag : {"model", "changed"}) {
        WriteText(DataFile("model.xml"), Serving(Item(tag)));
        std::array<char, 65536> events{};
        while (read(watch, events.data(), events.size()) > 0) {
        }
        EXPECT_EQ(Served(), tag);
        const ssize_t count = read(watch, events.data(), events.size());
        std::multiset<std::string> opened;
        for (ssize_t at = 0; at < count;) {
            inotify_event event{};
            std::memcpy(&event, &events[static_cast<std::size_t>(at)], sizeof event);
            if (event.len > 0) opened.insert(&events[static_cast<std::size_t>(at) + sizeof event]);
            at += static_cast<ssize_t>(sizeof event + event.len);
        }
        EXPECT_EQ(opened,
                  (std::multiset<std::string>{"ScreeningParams.xml", "map.xml", "model.xml"}));
    }
    close(watch);
}

}  // namespace
