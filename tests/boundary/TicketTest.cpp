// Job tickets: what the keywords become, and what is left where a ticket cannot be written.

#include <sys/stat.h>

#include "FileSizeLimit.h"
#include "JobRunner.h"

namespace {

constexpr const char* kMessage = "Cannot create job ticket file";

class TicketTest : public BoundaryTest {
  protected:
    void SetUp() override {
        Model model = NumberedModel(2, R"(CreateFolder="No")");
        model.OutputElements += R"(<JobTicketParam name="t.xml"/>)";
        Install(Describe(model));
    }
    std::filesystem::path Template() const {
        return folder.Base() / "OutputDrivers/JobTicketTemplates/t.xml";
    }
};

TEST_F(TicketTest, Keywords) {
    const struct {
        std::string text;
        std::string ticket;
    } cases[] = {
        {"QL_COPIES QL_COPIES", "12 QL_COPIES"},
        {"QL_WIDTHINDOTSxQL_HEIGHTINDOTS", "1024x7"},
        {"QL_WIDTHDPI/QL_HEIGHTDPI", "300.0/600.5"},
        {"<QL_PRINTERNAME>QL_COLORMODE", "<Roller 64>Mode 0"},
        {"a\nQL_TILES\r\nb", "a\n\r\nb"},
        {std::string("a\0QL_COPIES\xFF", 12), std::string("a\0"
                                                          "12\xFF",
                                                          5)},
        {"ql_copies QL_WIDTH QL_COPIE", "ql_copies QL_WIDTH QL_COPIE"},
        {"", ""},
    };
    JobChoices choices;
    choices.YResolution = 600.5F;
    for (const auto& [text, ticket] : cases) {
        WriteText(Template(), text);
        Job job = StartJob({RandomPage(1000, 7, {{"C1"}, {"C2"}}, 1)}, "Proof.ps", choices);
        job.Status.Copies = 12;
        ASSERT_TRUE(IsPrinted(job.Run()));
        EXPECT_EQ(Output("t.xml"), ticket);
        EXPECT_EQ(ReadText(Template()), text);
    }
    EXPECT_TRUE(folder.Messages().empty());
}

// A text that is put in can hold a keyword that is looked for later; names come as UTF-8.
TEST_F(TicketTest, NamesAsUtf8) {
    const std::string longName(254, 'n');
    const struct {
        const char* codePage;
        std::string name;
        std::string written;
    } cases[] = {
        {"CP1252", "caf\xE9 QL_TILES.pdf", "caf\xC3\xA9 .pdf"},
        {"", "caf\xC3\xA9.pdf", "caf\xC3\xA9.pdf"},
        {"", "caf\xE9.pdf", ""},  // no text of this code page
        {"", "caf\xE9", ""},
        // What the field cuts within a character.
        {"", longName + "\xC3", longName},
        {"", longName + "x\xC3", longName + "x"},
        {"CP932", longName + "x\x95", longName + "x"},
    };
    WriteText(Template(), "[QL_ORIGINALFILE]");
    for (const auto& [codePage, name, written] : cases) {
        setenv("QL_CODE_PAGE", codePage, 1);
        Job job = MakeJob({NumberedPage(8, 1, 2, 1)});
        std::string header = ReadText(JobFile());
        header.replace(264, 256, name + std::string(256 - name.size(), '\0'));
        WriteText(JobFile(), header);
        ASSERT_EQ(job.Open(), 1);
        ASSERT_EQ(job.Port(folder.Out()), 1);
        ASSERT_TRUE(IsPrinted(job.Run()));
        EXPECT_EQ(Output("t.xml"), "[" + written + "]") << codePage;
    }
    unsetenv("QL_CODE_PAGE");
}

TEST_F(TicketTest, Tiles) {
    constexpr int32_t kZeros[] = {0, 0, 0};
    constexpr int32_t kRows[] = {1, 3, 2};
    constexpr int32_t kFirst[] = {5, 0, 0};
    const struct {
        int32_t version, count;
        const int32_t *pages, *rows, *columns;
        std::string first, last;  ///< of the pages
    } cases[] = {
        {3, 3, kZeros, kRows, kZeros, "\t<Row>1</Row>\r\n", "\t<Row>2</Row>\r\n"},
        {3, 3, kRows, kRows, kFirst,
         "\t<Page>1</Page>\r\n\t<Row>1</Row>\r\n\t<COLUMN>5</COLUMN>\r\n",
         "\t<Page>2</Page>\r\n\t<Row>2</Row>\r\n\t<COLUMN>0</COLUMN>\r\n"},
        {3, 2, kRows, nullptr, nullptr, "\t<Page>1</Page>\r\n", "\t<Page>3</Page>\r\n"},
        {3, 3, nullptr, nullptr, nullptr, "", ""},
        {2, 3, kRows, kRows, kRows, "", ""},
        {3, 1, kRows, kRows, kRows, "", ""},
    };
    WriteText(Template(), "QL_TILES");
    for (const auto& [version, count, pages, rows, columns, first, last] : cases) {
        EmptyOutputFolder();
        const Page page = NumberedPage(8, 1, 2, 1);
        Job job = StartJob(count == 2 ? std::vector<Page>{page, page}
                                      : std::vector<Page>{page, page, page});
        job.Status.RecordVersion = version;
        job.Status.TileCount = count;
        job.Status.TilePageNumbers = pages;
        job.Status.TileRowNumbers = rows;
        job.Status.TileColumnNumbers = columns;
        ASSERT_TRUE(IsPrinted(job.Run()));
        const bool tiled = version >= 3 && count > 1;
        EXPECT_EQ(Output(tiled ? "Proof-tile1/t.xml" : "t.xml"), first);
        EXPECT_EQ(Output(tiled ? fmt::format("Proof-tile{}/t.xml", count) : "t.xml"), last);
    }
}

// A missing template or a pipe, a folder in the ticket's place: a message, and what stood there
// stays.
TEST_F(TicketTest, Failures) {
    WriteText(folder.Out() / "t.xml", "older");
    const Page page = NumberedPage(8, 1, 2, 1);
    ASSERT_TRUE(Print({page}));
    ASSERT_EQ(mkfifo(Template().c_str(), 0600), 0);
    ASSERT_TRUE(Print({page}));
    EXPECT_EQ(Output("t.xml"), "older");
    EXPECT_EQ(folder.Messages(), (Texts{kMessage, kMessage}));
    std::filesystem::remove(Template());
    WriteText(Template(), "QL_COPIES");
    std::filesystem::remove(folder.Out() / "t.xml");
    std::filesystem::create_directory(folder.Out() / "t.xml");
    ASSERT_TRUE(Print({page}));
    EXPECT_EQ(folder.Messages(), Texts(3, kMessage));
    EXPECT_EQ(Listing(folder.Out()), (Texts{"Proof_C1.raw", "Proof_C2.raw", "t.xml/"}));
}

// The folder of templates as output folder: the template is filled in itself.
TEST_F(TicketTest, ATemplateThatIsItsOwnTicket) {
    WriteText(Template(), "QL_HEIGHTINDOTS");
    Job job = MakeJob({NumberedPage(8, 3, 2, 1)});
    ASSERT_EQ(job.Open(), 1);
    ASSERT_EQ(job.Port(Template().parent_path()), 1);
    ASSERT_TRUE(IsPrinted(job.Run()));
    EXPECT_EQ(ReadText(Template()), "3");
}

}  // namespace
