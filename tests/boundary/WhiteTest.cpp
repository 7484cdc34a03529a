// The white channel of a page: its bytes by type, direction and order, its name, and what becomes
// of the temporary file.

#include <algorithm>

#include "FileSizeLimit.h"
#include "JobRunner.h"

namespace {

constexpr const char* kWhiteFile = "Proof_W.raw";

std::string Rules(const std::string& offer, const std::string& more = {}) {
    return fmt::format(R"(CreateFolder="No" SupportWhite="{}" {})", offer, more);
}

/// A numbered model whose description names a white channel as well.
std::string WhiteModel(int count, const std::string& rules,
                       const std::string& whitePattern = "filename_W.raw") {
    Model model = NumberedModel(count, rules);
    model.Colours.push_back({"White", whitePattern});
    return Describe(model);
}

/// The union of the page's separations from the first of the list on, in one order of lines.
std::string Union(const Page& page, const std::vector<int>& separations, bool inverted,
                  bool bottomFirst) {
    std::string lines(LineBytes(page) * page.Height, '\0');
    for (const int separation : separations) {
        const std::string plane = ChannelBytes(
            page, page.Separations[static_cast<std::size_t>(separation)].Name, bottomFirst);
        for (std::size_t i = 0; i < lines.size(); ++i)
            lines[i] = static_cast<char>(lines[i] | plane[i]);
    }
    if (inverted)
        for (char& byte : lines)
            byte = static_cast<char>(~byte);
    return lines;
}

class WhiteTest : public BoundaryTest {
  protected:
    bool LeavesNothing() const { return Listing(folder.Temp()).empty(); }
};

// Large enough for several blocks of the temporary file; one separation is deeper than the others.
TEST_F(WhiteTest, BytesByTypeDirectionAndOrder) {
    Page large = RandomPage(70'001, 100, {{"C1"}, {"C2"}, {"C3"}}, 3);
    Page deep = RandomPage(33, 5, {{"C1"}, {"C2", 8}, {"C3", 2}}, 4);
    for (const Page& page : {large, deep}) {
        for (const char* more : {"", "PrinterDirection=\"YES\"", "TypeRead=\"LINE_BY_LINE\"",
                                 "TypeRead=\"LINE_BY_LINE\" PrinterDirection=\"YES\""}) {
            const bool bottomFirst = std::string(more).find("Direction") != std::string::npos;
            const std::size_t size = LineBytes(page) * page.Height;
            const struct {
                int type;
                std::string bytes;
            } cases[] = {
                {1, Union(page, {0, 1, 2}, true, bottomFirst)},
                {2, Union(page, {0, 1, 2}, false, bottomFirst)},
                {3, std::string(size, '\xFF')},
                {4, ""},
                {5, std::string(size, '\0')},
                {6, ""},
            };
            for (const auto& [type, bytes] : cases) {
                SCOPED_TRACE(fmt::format("type {}, {} pixels, {}", type, page.Width, more));
                EmptyOutputFolder();
                Install(WhiteModel(3, Rules(fmt::format("{}|A;1;1", type), more)));
                WriteText(folder.Temp() / "TempWhiteData", type < 3 ? "left over" : "");
                ASSERT_TRUE(Print({page}));
                EXPECT_TRUE(Output(kWhiteFile) == bytes);
                EXPECT_TRUE(Output("Proof_C2.raw") == ChannelBytes(page, "C2", bottomFirst));
                std::filesystem::remove(folder.Temp() / "TempWhiteData");
                EXPECT_TRUE(LeavesNothing());
            }
        }
    }
    EXPECT_TRUE(folder.Messages().empty());
}

// What comes before separation 0 in the order of the colorants finds nothing to be united with;
// a page without separation 0 has no white.
TEST_F(WhiteTest, SeparationZeroBeginsTheUnion) {
    for (const char* more : {"", "TypeRead=\"LINE_BY_LINE\""}) {
        Install(WhiteModel(3, Rules("2|A;2;1", more)));
        const Page page = RandomPage(64, 6, {{"C2"}, {"C1"}, {"C3"}}, 5);
        ASSERT_TRUE(Print({page}));
        EXPECT_EQ(Output(kWhiteFile), Union(page, {0, 2}, false, false)) << more;
        const Page other = RandomPage(64, 6, {{"Gold"}, {"C1"}, {"C3"}}, 6);
        WriteText(folder.Temp() / "TempWhiteData", std::string(6 * LineBytes(other), 'x'));
        ASSERT_TRUE(Print({other}));
        EXPECT_EQ(Output(kWhiteFile), "") << more;
        EXPECT_TRUE(LeavesNothing());
    }
}

// Types without a meaning print the lines that stand ready, the page's height of them.
TEST_F(WhiteTest, OtherTypesPrintWhatStandsReady) {
    const struct {
        const char* more;
        std::string ready;
        std::string white;
    } cases[] = {
        {"", "aaaabbbbcccc", "aaaabbbb"},
        {"", "aaaabb", "aaaabbaa"},
        {"PrinterDirection=\"YES\"", "aaaabbbbcccc", "ccccbbbb"},
        {"PrinterDirection=\"YES\"", "xaaaabbbb", "bbbbaaaa"},
    };
    for (const auto& [more, ready, white] : cases) {
        Install(WhiteModel(2, Rules("4|A;4;1", more)));
        WriteText(folder.Temp() / "TempWhiteData", ready);
        ASSERT_TRUE(Print({NumberedPage(32, 2, 2, 1)}));
        EXPECT_EQ(Output(kWhiteFile), white) << ready;
        EXPECT_TRUE(LeavesNothing());
    }
}

// Pages of types 3 and 5 are named from the model's map, the others by the colour.
TEST_F(WhiteTest, Names) {
    const struct {
        int count;
        int type;
        const char* pattern;  ///< null: the model has no white colour
        Texts names;
    } cases[] = {
        {2, 2, "w_filename.x", {"Proof_C1.raw", "Proof_C2.raw", "w_Proof.x"}},
        {2, 3, "w_filename.x", {"Proof_C1.raw", "Proof_C2.raw", "w_Proof.x"}},
        {2, 2, "", {"Proof", "Proof_C1.raw", "Proof_C2.raw"}},
        {2, 5, nullptr, {"Proof", "Proof_C1.raw", "Proof_C2.raw"}},
        {1, 2, "", {"Proof", "Proof_2"}},
        {1, 3, nullptr, {"Proof", "Proof_2"}},
    };
    for (const auto& [count, type, pattern, names] : cases) {
        SCOPED_TRACE(fmt::format("{} inks, type {}", count, type));
        EmptyOutputFolder();
        const std::string rules = Rules(fmt::format("{}|A;1;1", type));
        Install(pattern == nullptr ? Describe(NumberedModel(count, rules))
                                   : WhiteModel(count, rules, pattern));
        ASSERT_TRUE(Print({NumberedPage(40, 3, count, 1)}));
        EXPECT_EQ(Listing(folder.Out()), names);
    }
    // The only channel keeps the job's name, also when it has no other and stays blank.
    Model one = NumberedModel(1, Rules("3|A;3;1"));
    one.Colours[0].ChannelName = "";
    Install(Describe(one));
    EmptyOutputFolder();
    ASSERT_TRUE(Print({RandomPage(40, 3, {{"Gold"}}, 1)}));
    EXPECT_EQ(Listing(folder.Out()), (Texts{"Proof", "Proof_2"}));
    EXPECT_EQ(Output("Proof"), std::string(24, '\0'));
    // Channels without a name leave the job's to white.
    Model model = NumberedModel(3, Rules("2|A;2;1"));
    model.Colours[0].ChannelName = "";
    model.Colours[2].ChannelName = "";
    Install(Describe(model));
    EmptyOutputFolder();
    const Page page = NumberedPage(40, 3, 3, 2);
    ASSERT_TRUE(Print({page}));
    EXPECT_EQ(Listing(folder.Out()), (Texts{"Proof", "Proof_1", "Proof_3", "Proof_C2.raw"}));
    EXPECT_EQ(Output("Proof"), Union(page, {0, 1, 2}, false, false));
    EXPECT_EQ(Output("Proof_3"), ChannelBytes(page, "C3"));
}

// A union that lacks what the disk did not take is not printed, whether it was full for a while or
// at the end. The channels lie elsewhere: they are whole.
TEST_F(WhiteTest, AUnionThatTheDiskDoesNotTake) {
    Install(WhiteModel(2, Rules("2|A;2;1")));
    constexpr rlim_t kWholeBytes = 4000 * 200;
    enum Step { kStart, kBands, kEnd };
    constexpr struct {
        Step full;  ///< in which no file passes this size
        rlim_t room;
        bool isPrinted;
    } kCases[] = {{kBands, 100'000, false},
                  {kEnd, 100'000, false},
                  {kEnd, kWholeBytes - 1, false},
                  {kEnd, kWholeBytes, true}};
    for (const int count : {1, 2}) {
        const Page page = NumberedPage(32'000, 200, count, 1);
        const std::string whole = Union(page, {0, count - 1}, false, false);
        for (const auto& [full, room, isPrinted] : kCases) {
            SCOPED_TRACE(fmt::format("{} inks, {} bytes in step {}", count, room, int{full}));
            EmptyOutputFolder();
            for (const char* channel : {"Proof_C1.raw", "Proof_C2.raw"})
                std::filesystem::create_symlink("/dev/null", folder.Out() / channel);
            Job job = StartJob({page});
            for (const Step step : {kStart, kBands, kEnd}) {
                const FileSizeLimit limit(step == full ? room : RLIM_INFINITY);
                EXPECT_EQ(job.Step(), 1);
            }
            EXPECT_TRUE(Output(kWhiteFile) == (isPrinted ? whole : ""));
            EXPECT_TRUE(LeavesNothing());
        }
    }
}

TEST_F(WhiteTest, AFullPlaneThatTheDiskDoesNotTake) {
    Install(WhiteModel(2, Rules("3|A;3;1")));
    const Page page = NumberedPage(3200, 10, 2, 1);
    Job job = StartJob({page});
    EXPECT_EQ(job.Step() + job.Step(), 2);
    const FileSizeLimit limit(3999);
    EXPECT_EQ(job.Step(), 0);
    EXPECT_TRUE(job.HasEnded());
    EXPECT_STREQ(job.Status.StatusText, "Write Data Error");
    EXPECT_EQ(Output("Proof_C2.raw"), ChannelBytes(page, "C2"));
}

// The user's choice counts where the model offers white, and is the job's alone.
TEST_F(WhiteTest, TheUsersChoice) {
    const std::string choice =
        R"(<RootElement><DriverOptions SupportWhiteType="3"/></RootElement>)";
    WriteText(folder.Options() / "QL_DROP_a.xml", choice);
    JobChoices choices;
    choices.Options.Kind = 3;
    SetText(choices.Options.FileName, "QL_DROP_a.xml");
    const Page page = NumberedPage(32, 2, 2, 1);
    Install(WhiteModel(2, Rules("0|A;3;1")));
    ASSERT_TRUE(Print({page}, "Proof.ps", choices));
    EXPECT_EQ(Output(kWhiteFile), std::string(8, '\xFF'));
    EmptyOutputFolder();
    ASSERT_TRUE(Print({page}));
    EXPECT_FALSE(std::filesystem::exists(folder.Out() / kWhiteFile));
    Install(WhiteModel(2, "CreateFolder=\"No\""));
    ASSERT_TRUE(Print({page}, "Proof.ps", choices));
    EXPECT_FALSE(std::filesystem::exists(folder.Out() / kWhiteFile));
}

}  // namespace
