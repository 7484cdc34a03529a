// What is doubtful before a page is begun, in both modes, and the log of calls that fail.

#include <algorithm>

#include "DoubtTest.h"
#include "SystemStandIns.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kOptionsName = "QL_DROP_x.xml";
constexpr const char* kCustom = "<?xml version=\"1.0\"?><R><CustomColorMode/></R>";
constexpr const char* kStored5 =
    R"(<RootElement><DriverOptions SupportWhiteType="5"/></RootElement>)";
constexpr const char* kStored0 =
    R"(<RootElement><DriverOptions SupportWhiteType="0"/></RootElement>)";
const Edit kNoModelList[] = {{"<ModelList>", "<Gone>"}, {"</ModelList>", "</Gone>"}};
const std::vector<Separation> kBoth = {{"C1"}, {"C2"}};
const std::vector<Separation> kExchanged = {{"C2"}, {"C1"}};

/// A job of two equal pages, each in a tile folder.
struct Row {
    std::vector<Saying> Said;
    std::vector<Separation> Separations = kBoth;
    std::vector<Edit> Edits{};
    const char* CustomColorMode = nullptr;
    Texts Channels = {"C1", "C2"};  ///< the separations in C1.raw, C2.raw; "": not looked at
    const char* Options = nullptr;  ///< the file's text; null: the job names none
    int16_t ColorMode = 0;
    std::size_t Times = 2;  ///< that it is said by default
};

class DoubtsTest : public DoubtTest {
  protected:
    Order Ordered(const Row& row) {
        Order order = {.Pages = std::vector<Page>(2, RandomPage(40, 3, row.Separations, 1)),
                       .CustomColorMode = row.CustomColorMode,
                       .Tiles = 2};
        order.Choices.ColorMode = row.ColorMode;
        fs::remove_all(folder.Options());
        fs::create_directory(folder.Options());
        if (row.Options != nullptr) {
            order.Choices.Options.Kind = 3;
            SetText(order.Choices.Options.FileName, kOptionsName);
            if (*row.Options != '\0') WriteText(folder.Options() / kOptionsName, row.Options);
        }
        Install(row.Edits);
        return order;
    }
    void ExpectChannels(const Page& printed, const Texts& channels) {
        const Texts names = Listing(folder.Out());
        for (std::size_t i = 0; i < channels.size(); ++i) {
            const std::string end = fmt::format("/C{}.raw", i + 1);
            for (const std::string& name : names) {
                if (!name.ends_with(end) || channels[i].empty()) continue;
                EXPECT_EQ(Output(name), ChannelBytes(printed, channels[i])) << name;
            }
            EXPECT_EQ(std::count_if(names.begin(), names.end(),
                                    [&](const auto& name) { return name.ends_with(end); }),
                      2)
                << end;
        }
    }
    /// By default the pages are printed and the doubt is said; strict, the answers are these and
    /// nothing is made.
    void Walk(const Row& row, const std::string& job, const char* strictAnswers) {
        SCOPED_TRACE(fmt::format("{} {} {}", row.Said[0].Names, row.Separations[0].Name,
                                 row.Edits.empty() ? "" : row.Edits[0].to));
        Order order = Ordered(row);
        const Outcome byDefault = Do(order, nullptr);
        EXPECT_EQ(byDefault.Answers, "1111111");
        ExpectSaid(row.Said, job, row.Times, byDefault);
        ExpectChannels(order.Pages[0], row.Channels);

        order = Ordered(row);
        const Texts options = Listing(folder.Options());
        const Outcome strict = Do(order, "1");
        EXPECT_EQ(strict.Answers, strictAnswers);
        ExpectStrict(row.Said, job, strict);
        EXPECT_EQ(Listing(folder.Out()), Texts{});
        EXPECT_EQ(Listing(folder.Options()), options);
    }
};

TEST_F(DoubtsTest, Separations) {
    std::string wide;  // a name that the status text cannot hold
    for (int i = 0; i < 150; ++i)
        wide += "\xC3\xA4";
    const Row rows[] = {
        {{{"C1|C2"}}, {{"C1"}, {"C2", 2}}, {}, nullptr, {"C1", "C2"}, ""},  // a new options file
        {{{"C1|C2|W.raw"}}, kExchanged, {White(1)}},
        {{{"C1|C2|W.raw"}}, kExchanged, {White(2), kByLine}},
        {{{"Gold"}, {"Gold|C1|C2|W.raw"}}, {{"Gold"}, {"C1"}, {"C2"}}, {White(2)}},
        {{{"Gold"}}, {{"C1"}, {"C2"}, {"Gold", 8}}},  // it is not output: no doubt about depths
        {{{"Gold"}}, {{"C1"}, {"Gold"}, {"Silver"}}},
        {{{"C1|c1"}}, {{"C1"}, {"c1"}, {"C2"}}},
        {{{"Gold"}}, {{"C2"}, {"C1"}, {"Gold"}}, {}, kCustom, {"C2", "C1"}},
        {{{wide}}, {{"C1"}, {"C2"}, {wide}}},
        {{{"x" + wide}}, {{"C1"}, {"C2"}, {"x" + wide}}},
        {{{""}}, kExchanged, {}, "<?xm"},
        {{{""}}, kExchanged, {}, "<?xml version=\"1.0\"?><R><CustomColorMode>"},
    };
    for (const Row& row : rows)
        Walk(row, kJobName, "0");
}

TEST_F(DoubtsTest, StoredWhite) {
    const struct {
        Saying Said;
        const char* Options;
        std::size_t Times;
    } rows[] = {
        {{kOptionsName, kNoSuchFile}, "", 1},  // the second page finds the new file
        {{kOptionsName}, "<RootElement>", 2},
        {{kOptionsName}, "<RootElement/>", 2},
        {{std::string(kOptionsName) + "|5"}, kStored5, 2},
    };
    for (const auto& [said, options, times] : rows) {
        Walk({.Said = {said}, .Edits = {White(3)}, .Options = options, .Times = times}, kJobName,
             "0");
    }
}

TEST_F(DoubtsTest, FilesOfOnePath) {
    const struct {
        const char* Name;
        std::vector<Edit> Edits;
        Texts Channels;
        int16_t ColorMode = 0;
    } rows[] = {
        {"C1.raw", {{"C2.raw", "C1.raw"}}, {"C2"}},
        {"C1.raw", {{"C2.raw", "/C1.raw"}}, {"C2"}},
        {"C1.raw", {White(3), {"W.raw", "C1.raw"}}, {""}},
        {"C1.raw", {kHeader, {"head.bin", "C1.raw"}}, {"C1"}},
        {"t.xml", {kHeader, {"head.bin", "t.xml"}, kTicket}, {"C1", "C2"}},
        {"C1.raw", {{"sizeV=\"0\"", "sizeV=\"8\" name=\"C1.raw\""}}, {""}},
        // The only channel of a colour mode goes by the job's name.
        {kJobName, {{"sizeV=\"0\"", "sizeV=\"8\" name=\"filename\""}}, {}, 2},
    };
    for (const auto& [name, edits, channels, mode] : rows) {
        Row row = {.Said = {{name}}, .Edits = edits, .Channels = channels, .ColorMode = mode};
        if (mode != 0) row.Separations = {{"C1"}};
        Walk(row, kJobName, "0");
    }
}

TEST_F(DoubtsTest, Opening) {
    const std::string c1 = "</ID><InternalName>C1";
    const std::string c2 = "</ID><InternalName>C2";
    const Edit exchanged[] = {{"<ID>0</ID><InternalName>0", "<ID>1</ID><InternalName>0"},
                              {"<ID>1</ID><InternalName>1", "<ID>0</ID><InternalName>1"}};
    const struct {
        const char* Name;
        std::vector<Edit> Edits;
        Texts Channels;
    } rows[] = {
        {"", {exchanged[0], exchanged[1]}, {"C2", "C1"}},
        {"", {{"<ID>0" + c1, "<ID>1" + c1}, {"<ID>1" + c2, "<ID>0" + c2}}, {"C2", "C1"}},
        {"", {{"<ID>1" + c2, "<ID>9" + c2}}, {"C1"}},
        {kModelName, {{"<Model Name=\"Roller 64\"", "<Model Name=\"Other\""}}, {"C1", "C2"}},
        {kModelName, {{"<ModelList>", "<ModelList/><Gone>"}, kNoModelList[1]}, {"C1", "C2"}},
    };
    const std::string jobFile = JobFile();
    for (const auto& [name, edits, channels] : rows)
        Walk({.Said = {{name}}, .Edits = edits, .Channels = channels, .Times = 1}, jobFile, "-");

    // Without a colour mode the pages' separations have no place, which is another doubt.
    const Saying position = {"77"};
    Order order = Ordered({.Said = {}, .ColorMode = 77});
    EXPECT_EQ(Do(order, nullptr).Answers, "1111111");
    EXPECT_TRUE(!Said('E').empty() && Says(Said('E')[0], jobFile, position));
    EXPECT_EQ(Listing(folder.Out()).size(), 2U) << "the tile folders";
    Outcome strict = Do(order, "1");
    EXPECT_EQ(strict.Answers, "-");
    ExpectStrict({position}, jobFile, strict);

    // Another model of the same description.
    const Saying other = {"Roller 99"};
    order = Ordered(
        {.Said = {}, .Edits = {{"<ModelList>", R"(<ModelList><Model Name="Roller 99"/>)"}}});
    order.Choices.PrinterName = "Roller 99";
    PrintSettings settings = Settings(kModelName);
    char name[256] = {};
    driver->Call(kGetDefaultColorMode, name, &settings);
    ExpectSaid({other}, jobFile, 1, Do(order, nullptr));
    strict = Do(order, "1");
    EXPECT_EQ(strict.Answers, "-");
    ExpectStrict({other}, jobFile, strict);
}

// What a strict host has printed all the same.
TEST_F(DoubtsTest, NothingToDoubt) {
    const Edit lateHeader = {"head.bin\"", "t.xml\" EndRip=\"yes\""};  // not in the tile's folder
    const Edit otherMode = {"<ID>1</ID><InternalName>C2", "<ID>9</ID><InternalName>C2"};
    const Row rows[] = {
        {{}},
        {{}, {{"C2"}}},
        {{}, kExchanged, {White(3)}},
        {{}, {{"Gold"}, {"C1"}}, {}, kCustom},
        {{}, kExchanged, {}, "<?xml version=\"1.0\"?><R><Other/></R>"},
        {{}, kExchanged, {}, " <?xm"},
        {{}, kBoth, {White(3)}, nullptr, {}, kStored0},
        {{}, kBoth, {}, nullptr, {}, kStored5},
        {{}, kBoth, {}, nullptr, {}, ""},
        {{}, {{"C1"}}, {otherMode}, nullptr, {}, nullptr, 2},
        {{}, kBoth, {{"C2.raw", "c1.raw"}}},
        {{}, kBoth, {kNoModelList[0], kNoModelList[1]}},
        {{}, kBoth, {kHeader, {"head.bin", ""}}},
        {{}, kBoth, {kHeader, lateHeader, kTicket}},
        {{}, kBoth, {kHeader, {"t.txt", "empty.txt"}}},
    };
    WriteText(Installed("HeaderTemplates/empty.txt"), "//ql no field\r\n");
    for (const Row& row : rows) {
        SCOPED_TRACE(&row - rows);
        EXPECT_EQ(Do(Ordered(row), "1").Answers, "1111111");
        EXPECT_EQ(Said('E'), Texts{});
    }
    for (const auto& [value, answers] :
         {std::pair{"", "1111111"}, {"0", "1111111"}, {"00", "0"}, {"no", "0"}}) {
        EXPECT_EQ(Do(Ordered({{}, {{"C1"}, {"C2", 2}}}), value).Answers, answers) << value;
    }
}

TEST_F(DoubtsTest, FailuresAreLogged) {
    const std::string jobFile = JobFile();
    const char* const container = "job.pages.tif";
    const auto altered = [this](uint32_t tag, int value) -> Order {
        return {.Before = [=, this] {
            WriteContainer(Container(), {page}, [=](TIFF* tiff, std::size_t, std::size_t) {
                TIFFSetField(tiff, tag, value);
            });
        }};
    };
    Order tile = Taken(folder.Out() / "Order7-tile1");
    tile.Tiles = 2;
    Order otherModel;
    otherModel.Choices.PrinterName = "Other";
    const struct {
        const char* Answers;  ///< "": OpenPort has failed
        Saying Said;
        Order Ordered;
        std::vector<Edit> Edits{};
    } rows[] = {
        {"-", {jobFile}, Missing(jobFile)},
        {"-", {jobFile}, Written(jobFile, "short")},
        {"-", {"job.pages.tif|job.tif", kNoSuchFile}, Missing(Container())},
        {"0", {container}, Written(Container(), "no TIFF")},
        {"0", {container}, altered(TIFFTAG_PHOTOMETRIC, 1)},
        {"10", {container}, altered(TIFFTAG_IMAGELENGTH, 99)},
        {"-", {"Other"}, otherModel},
        {"-", {"model.xml", kNoSuchFile}, Missing(Installed("model.xml"))},
        {"-", {"model.xml"}, Written(Installed("model.xml"), "<")},
        {"-", {"model.xml|ColorList"}, {}, {{"ColorList>", "Gone>"}}},
        {"", {"255"}, {.PortKind = 255}},
        {"", {"none|Order7", kNoSuchFile}, {.Folder = folder.Root() / "none"}, {{kRules, ""}}},
        {"0", {"Order7-tile1", "File exists"}, tile},
        {"0", {"out"}, {.Before = [] { freeSpaceBytes = 1; }}},
        {"10", {"C2.raw", "Is a directory"}, Taken(folder.Out() / "C2.raw"), {White(1), kReversed}},
        {"10", {"C\\n2.raw"}, Taken(folder.Out() / "C\n2.raw"), {{"C2.raw", "C\n2.raw"}}},
        {"0", {"t.txt"}, Written(Installed("HeaderTemplates/t.txt"), "char,]x\r\n"), {kHeader}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(fmt::format("{} {}", &row - rows, row.Said.Names));
        const StandIn space(freeSpaceBytes, -1);
        Install(row.Edits);
        EXPECT_EQ(Do(row.Ordered, nullptr).Answers, row.Answers);
        const Texts messages = Said('E');
        EXPECT_TRUE(std::any_of(messages.begin(), messages.end(), [&](const auto& message) {
            return Says(message, kJobName, row.Said) || Says(message, jobFile, row.Said);
        })) << ::testing::PrintToString(messages);
    }
}

TEST_F(DoubtsTest, CallsOutOfOrder) {
    Install({});
    Job none(*driver, JobFile());
    EXPECT_EQ(none.Step() + none.Port(folder.Out()) + driver->Call(kAbortJob), 1);
    Job printed = StartJob({page});
    EXPECT_TRUE(IsPrinted(printed.Run()));
    printed.Step();
    driver->Call(kAbortJob);
    Job aborted = StartJob({page});
    EXPECT_EQ(aborted.Step() + driver->Call(kAbortJob) + aborted.Step(), 2);
    EXPECT_EQ(Said('E'), Texts{});

    Job early = MakeJob({page});
    EXPECT_EQ(early.Open() + early.Step(), 1);
    EXPECT_EQ(Said('E').size(), 1U) << "a step without a port";
    Job null = MakeJob({page});
    const char* const text = nullptr;
    EXPECT_EQ(null.Open() + driver->Call(kOpenPort, text, text), 2);
    EXPECT_EQ(Said('E').size(), 2U) << "a port without a text";
}

}  // namespace
