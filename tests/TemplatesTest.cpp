// What `driverhost header`, `ticket` and `check` say of templates.

#include <array>

#include "DriverHostFixture.h"

namespace {

struct LineCase {
    const char* Line;
    const char* Found;  ///< COLUMN: severity: and how the text starts; "" when nothing is said
};

/// Lines of a header template, in order; the header is full behind the last.
constexpr LineCase kHeaderLines[] = {
    {"\xEF\xBB\xBFint8,1", "1: error: a byte order mark"},
    {"//ql comment, with a comma", ""},
    {"int32,QL_WIDTH+1 //ql all is well", ""},
    {"int8,+.5e1", ""},
    {"int16,0xFFFF", ""},
    {"char,[6]//ql zeros", ""},
    {"int32,QL_WIDHT", "7: error: no keyword \"QL_WIDHT\" (did you mean \"QL_WIDTH\"?)"},
    {"int32,QL_WIDTH ", "7: error: no keyword \"QL_WIDTH \": blanks belong"},
    {"int32,QL_WIDTH*2/3", "7: error: no keyword \"QL_WIDTH*2\": a value has one modifier"},
    {"int32,ql_width", "7: error: \"ql_width\" is no keyword"},
    {"int32, QL_WIDTH", "7: error: a blank stands before the keyword"},
    {"int32,wide", "7: error: \"wide\" is no number: 0 is stored"},
    {"int33,5", "1: error: no type \"int33\" (did you mean \"int32\"?)"},
    {" int8,5", "1: error: a blank stands before the type"},
    {"int16x,5", "1: warning: the type \"int16x\" counts as int16"},
    {"width, height", "1: warning: no type before the comma"},
    {"text", "1: warning: no comma"},
    {"int8,12mm", "6: warning: only the number that \"12mm\" begins with"},
    {"int8,0x1G", "6: warning: only the hexadecimal number"},
    {"int8,256", "6: warning: \"256\" does not fit into int8"},
    {"double,1.5e-3", "8: error: an exponent has no sign: 1.5 is read, then - \"3\""},
    {"int8,7+0.5", "8: warning: the operand 0.5 counts as 0 in int8"},
    {"float,7/0", "9: warning: a division by 0"},
    {"float,7+x", "9: warning: the operand \"x\" is no number"},
    {"char,5", "6: error: char without ']'"},
    {"char,[601]x", "6: error: the size is not from 1 to 600"},
    {"char,[2]ABC", "9: warning: the text has 3 bytes: 2 of them"},
    {"char,[3]QL_WIDTH", "9: warning: \"QL_WIDTH\" is no text: 3 zeros"},
    {"char,[3]A //ql", "10: warning: the blanks between the text and the comment"},
    {"char,[600]", ""},
    {"char,[600]", ""},
    {"char,[600]", ""},
    {"char,[600]", "1: error: the field does not fit: the header has room for 2000 bytes"},
};

using Templates = DriverHost;

TEST_F(Templates, AreReadLineByLine) {
    fs::create_directory(Path("HeaderTemplates"));
    fs::create_directory(Path("JobTicketTemplates"));
    const std::string file = "HeaderTemplates/a.txt";
    std::string text;
    std::vector<std::string> due;
    int number = 0;
    for (const auto& [line, found] : kHeaderLines) {
        text += std::string(line) + "\r\n";
        ++number;
        if (*found != '\0') due.push_back(fmt::format("{}:{}", number, found));
    }
    Write(file, text);
    // Both commands say the same.
    for (const char* const command : {"check", "header"})
        ExpectFound(FoundIn(file, Host({command, file})), due);
    const std::pair<std::string, std::string> others[] = {
        {"int8,12\nint8,34\n", "1:7: error: the line ends with LF where CR LF is due"},
        {"text //ql\n", "1:1: warning: no line gives a field: no header"},
        {std::string("int8,1\0x", 8), "1:7: warning: a NUL byte ends the template"},
        {"int8,1\r\nchar,]x", "2:6: error: char without a size before ']': the job fails"},
    };
    for (const auto& [content, found] : others) {
        Write(file, content);
        for (const char* const command : {"check", "header"})
            EXPECT_TRUE(Contains(Host({command, file}).Output, file + ':' + found)) << found;
    }
    Write("JobTicketTemplates/t.xml", "QL_TILES\r\nQL_COPYS QL_TILES QL_COPIESX");
    ExpectFound(FoundIn("JobTicketTemplates/t.xml", Host({"check", "JobTicketTemplates/t.xml"})),
                std::array{"2:1: error: no keyword \"QL_COPYS\" (did you mean \"QL_COPIES\"?)",
                           "2:10: error: only the first QL_TILES is replaced",
                           "2:19: warning: of \"QL_COPIESX\" only QL_COPIES is replaced"});
}

TEST_F(Templates, HeaderShowsFieldsAndComparesAFile) {
    Write("t", "int16,QL_WIDTH\r\nchar,[10]ABCDEFGHI\r\n\r\nfloat,2.5*2 //ql five\r\n");
    const Outcome shown = Host({"header", "t", "--set", "QL_WIDTH=258"});
    EXPECT_EQ(shown.Status, 0);
    for (const char* const part :
         {"t: 16 bytes\n", "QL_WIDTH 258\n", "QL_HEIGHT 2000 (sample)\n",
          "     0  02 01                    258                    1  int16,QL_WIDTH\n",
          "     2  41 42 43 44 45 46 47 48  \"ABCDEFGHI\"            2  char,[10]ABCDEFGHI\n"
          "    10  49 00\n",
          "    12  00 00 A0 40              5                      4  float,2.5*2 //ql five\n"})
        EXPECT_TRUE(Contains(shown.Output, part)) << part << '\n' << shown.Output;

    const std::string header(
        "\x02\x01"
        "ABCDEFGHI\0\0\0\xA0\x40",
        16);
    std::string changed = header;
    changed[13] = 1;
    const std::tuple<std::string, Arguments, int, const char*> files[] = {
        {header, {"--set", "QL_WIDTH=258"}, 0, "  258  "},
        {header, {}, 0, "  258  "},  // a sample value is not compared
        {header, {"--set", "QL_WIDTH=259"}, 1, "differs: the template gives 259\n"},
        {changed, {}, 1, "differs: the template gives 5\n"},
        {header.substr(0, 14), {}, 1, "    12  the file ends within this field"},
        {header + "x", {}, 1, "    16  78                       not the template's\n"},
        {"", {}, 1, "     0  the file ends"},
    };
    for (const auto& [bytes, more, status, part] : files) {
        Write("h", bytes);
        Arguments arguments = {"header", "t", "--file", "h"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const Outcome compared = Host(arguments);
        EXPECT_EQ(compared.Status, status) << compared.Output;
        EXPECT_TRUE(Contains(compared.Output, part)) << part << '\n' << compared.Output;
    }
    Write("bad", "int8,1\r\nchar,]");
    const std::tuple<Arguments, int, const char*> refused[] = {
        {{"header", "bad"}, 1, "bad:2:6: error: "},
        {{"header", "none.txt"}, 2, "there is no template none.txt"},
        {{"header", "t", "--file", "none"}, 1, "none cannot be read"},
        {{"header", "t", "--set", "QL_WIDHT=1"}, 2, "did you mean \"QL_WIDTH\""},
        {{"header", "t", "--set", "QL_WIDTH=1x"}, 2, "\"1x\" is no number for QL_WIDTH"},
        {{"header", "t", "--page", "none"}, 1, "none does not exist"},
        {{"ticket", "t", "--set", "QL_TILES=1,2"}, 2, "QL_TILES takes PAGE,ROW,COLUMN"},
    };
    for (const auto& [arguments, status, part] : refused) {
        const Outcome outcome = Host(arguments);
        EXPECT_EQ(outcome.Status, status) << outcome.Output;
        EXPECT_TRUE(Contains(outcome.Output, part)) << part << '\n' << outcome.Output;
    }
}

// What the driver writes for a job is what both commands show of it.
TEST_F(Templates, ShowWhatTheDriverWrites) {
    Write("a.pdf", Pdf({kQuarters}));
    ASSERT_EQ(Host({"make-job", "a.pdf", "-o", "job", "--model", "Fenland W6"}).Status, 0);
    ASSERT_EQ(Host({"run", "job", "--out", "out"}).Status, 0);
    const Outcome header =
        Host({"header", "FenlandW6.txt", "--page", "job", "--file", "out/a/a.hdr"});
    EXPECT_EQ(header.Status, 0) << header.Output;
    EXPECT_TRUE(Contains(header.Output, "int32,QL_WIDTH\n")) << header.Output;
    const Outcome ticket = Host({"ticket", "FenlandW6Job.xml", "--page", "job"});
    EXPECT_EQ(ticket.Output, ReadText(Path("out/a/FenlandW6Job.xml")));
    EXPECT_EQ(Host({"header", "FenlandW6.txt", "--page", "job", "--page-number", "2"}).Status, 2);

    Write("t", "QL_COPIES|QL_TILES|QL_HEIGHTDPI");
    const Outcome set = Host({"ticket", "t", "--set", "QL_COPIES=7", "--set", "QL_TILES=0,2,-1",
                              "--set", "QL_HEIGHTDPI=59.96"});
    EXPECT_EQ(set.Output, "7|\t<Row>2</Row>\r\n\t<COLUMN>-1</COLUMN>\r\n|60.0");
}

}  // namespace
