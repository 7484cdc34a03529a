// Header files: what each kind of template line becomes, and where the header lands.

#include "JobRunner.h"

namespace {

constexpr const char* kRules = R"(CreateFolder="No" SupportWhite="1|A,B,C;1,2,3;10,20")";

class HeaderTest : public BoundaryTest {
  protected:
    void InstallHeader(const std::string& rules, const std::string& parameters) {
        Model model = NumberedModel(4, rules);
        model.OutputElements += parameters;
        Install(Describe(model));
    }
    void WriteTemplate(const std::string& text) {
        WriteText(folder.Base() / "OutputDrivers/HeaderTemplates/t.txt", text);
    }
};

std::string Hex(const std::string& bytes) {
    std::string text;
    for (const char byte : bytes)
        text += fmt::format("{:02X}", static_cast<unsigned char>(byte));
    return text;
}

// A page of 33 x 7 pixels of one bit at 300 x 600 dpi, four inks and white.
TEST_F(HeaderTest, EachKindOfLine) {
    const struct {
        std::string text;
        const char* bytes;
    } cases[] = {
        // Keywords, types and widths.
        {"int32,QL_WIDTH", "21000000"},
        {"int16,QL_HEIGHT", "0700"},
        {"int8,QL_NCOLORS", "05"},
        {"int16,QL_WIDTHDPI\r\nint16,QL_HEIGHTDPI", "2C015802"},
        {"int8,QL_TYPE_WHITE_MODE\r\nint8,QL_USE_VARIABLE", "0A00"},
        {"double,QL_WIDTHDPI", "0000000000C07240"},
        {"int32xyz,1\r\n int32,2\r\nInt32,3\r\nint,4", "01000000"},
        // Integers: decimal, hexadecimal, what does not fit.
        {"int16,70000", "7011"},
        {"int32,0xFFFFFFFFFFFFFFFFF1", "FFFFFFFF"},
        {"int32,0x123456789", "89674523"},
        {"int16,0x\r\nint16,0xG1", "00000000"},
        {"int32,99999999999999999999", "FFFFFFFF"},
        {"int32,4294967298", "02000000"},
        {"int32, 5\r\nint8,7mm", "0500000007"},
        {"int32,seven\r\nint8,1", "0000000001"},
        {"int32, QL_WIDTH\r\nint8,", "0000000000"},
        // Modifiers: one, of the first kind that occurs.
        {"int32,-1", "FFFFFFFF"},
        {"int32,QL_WIDTH+0.9", "21000000"},
        {"int32,QL_WIDTH/0.5", "21000000"},
        {"int16,-30000-10", "D08A"},
        {"int8,100/300\r\nint8,100*300", "0030"},
        {"int32,0x80000000/-1", "FFFFFF7F"},
        {"int32,7-9e99\r\nint32,7-nan", "0700000007000000"},
        {"int16,text+3", "0300"},
        {"float,2.5*2\r\nfloat,1/0\r\nfloat,1e99", "0000A0400000803F0000807F"},
        {"double,1.5e-3", "000000000000F8BF"},
        {"double,1e999+1e999\r\ndouble,3/1e999", "000000000000F07F0000000000000840"},
        {"double,abc*4\r\nfloat,QL_WIDTH/2", "000000000000000000008441"},
        // Texts.
        {"char,[6]HDR", "484452000000"},
        {"char,[3]ABCDEF", "414243"},
        {"char,[2]0x41\r\nchar,[2]QL_WIDTH\r\nchar,[2]QLX_", "00000000514C"},
        {"char,[601]X\r\nchar,[0]X\r\nchar,[-3]X\r\nchar,3X\r\nint8,1", "01"},
        {"char,x4]AB]C", "41425D43"},
        {"char,[4]a+1 ", "612B3120"},
        {"char,[5]QL_NONE\r\nint8,1", "01"},
        // Comments, blanks, line ends, what is no field.
        {"int16,QL_HEIGHTDPI //ql vertical dpi", "5802"},
        {"int8,QL_NCOLORS ", ""},
        {"int8,1//ql a//ql b\r\nchar,[8]a //ql b//ql c", "0161202F2F716C2062"},
        {"//ql int8,1\r\n\r\nfree text\r\nint8,QL_UNKNOWN\r\nint8,QLDO_X\r\nint8,2\r\n", "02"},
        {"int8,12\nint8,34", "0122"},
        {"\nint8,1\r\n\nint8,2\r\n", "0102"},
        {std::string("int8,1\r\n\0int8,2", 16), "01"},
        {"int8,1.9\r\nint8,1,2", "0101"},
    };
    InstallHeader(kRules, R"(<HeaderParam name="t.txt" output="filename.hdr"/>)");
    for (const auto& [text, bytes] : cases) {
        EmptyOutputFolder();
        WriteTemplate(text);
        ASSERT_TRUE(Print({NumberedPage(33, 7, 4, 1)})) << text;
        EXPECT_EQ(Hex(Output("Proof.hdr")), bytes) << text;
        EXPECT_EQ(std::filesystem::exists(folder.Out() / "Proof.hdr"), *bytes != '\0') << text;
    }
    EXPECT_TRUE(folder.Messages().empty());
}

// 2000 bytes: the first field that does not fit is the header's end.
TEST_F(HeaderTest, ALargeTemplate) {
    InstallHeader(kRules, R"(<HeaderParam name="t.txt" output="h"/>)");
    std::string text;
    for (int i = 0; i < 3; ++i)
        text += "char,[600]x\r\n";
    WriteTemplate(text + "char,[198]y\r\nint32,1\r\nint8,7\r\n");
    ASSERT_TRUE(Print({NumberedPage(8, 2, 4, 1)}));
    EXPECT_EQ(Output("h").size(), 1998U);
    // Only what stands before the first NUL byte is read.
    WriteTemplate("int8,7\r\n");
    std::filesystem::resize_file(folder.Base() / "OutputDrivers/HeaderTemplates/t.txt",
                                 uintmax_t{2} << 30);
    ASSERT_TRUE(Print({NumberedPage(8, 2, 4, 1)}));
    EXPECT_EQ(Output("h"), "\x07");
}

TEST_F(HeaderTest, AMalformedTextFieldEndsTheJob) {
    InstallHeader(kRules, R"(<HeaderParam name="t.txt" output="h"/>)");
    WriteTemplate("int8,7\r\nchar,]x\r\n");
    Job job = StartJob({NumberedPage(8, 2, 4, 1)});
    EXPECT_EQ(job.Run(), "0");
    EXPECT_TRUE(job.HasEnded());
    EXPECT_TRUE(Listing(folder.Out()).empty());
    // At the page's end the channels are complete by then.
    InstallHeader(kRules, R"(<HeaderParam name="t.txt" output="h" EndRip="YES"/>)");
    const Page page = NumberedPage(8, 2, 4, 1);
    Job late = StartJob({page});
    EXPECT_EQ(late.Run(), "110");
    EXPECT_EQ(Output("Proof_C4.raw"), ChannelBytes(page, "C4"));
    EXPECT_FALSE(std::filesystem::exists(folder.Out() / "h"));
}

// The codes of the white treatment in effect, deeper pages, and a header that cannot be written.
TEST_F(HeaderTest, ValuesOfThePage) {
    const struct {
        const char* offer;
        int bits;
        const char* bytes;  ///< colours, white code, several dot sizes
    } cases[] = {
        {"2|A,B,C;1,2,3;10,20,30", 1, "051400"},
        {"3|A,B,C;1,2,3;10,20", 2, "050001"},
        {"7|A;1;10", 8, "050001"},
        {"0|A,B;0,1;9", 1, "050900"},
        {"-1|A;1;10", 1, "040000"},
        {"", 1, "040000"},
    };
    WriteTemplate("int8,QL_NCOLORS\r\nint8,QL_TYPE_WHITE_MODE\r\nint8,QL_USE_VARIABLE\r\n");
    for (const auto& [offer, bits, bytes] : cases) {
        InstallHeader(fmt::format(R"(CreateFolder="No" SupportWhite="{}")", offer),
                      R"(<HeaderParam name="t.txt" output="h"/>)");
        std::filesystem::remove(folder.Out() / "h");
        const Page page = RandomPage(8, 2, {{"C1", bits}}, 1);
        ASSERT_TRUE(Print({page}));
        EXPECT_EQ(Hex(Output("h")), bytes) << offer;
        std::filesystem::remove(folder.Out() / "h");
        std::filesystem::create_directory(folder.Out() / "h");
        ASSERT_TRUE(Print({page})) << "a folder in the header's place";
        EXPECT_TRUE(folder.Messages().empty());
    }
}

// Written when the page begins it stands in the tile's folder, written at its end in the job's.
TEST_F(HeaderTest, Places) {
    const struct {
        const char* parameters;
        Texts headers;
    } cases[] = {
        {R"(<HeaderParam name="t.txt" output="filename.hdr"/>)",
         {"Proof-tile1/Proof.hdr", "Proof-tile2/Proof.hdr"}},
        {R"(<HeaderParam name="t.txt" output="filename.hdr" EndRip="YES"/>)", {"Proof.hdr"}},
        {R"(<HeaderParam name="t.txt"/>)", {}},
        {R"(<HeaderParam output="filename.hdr"/>)", {}},
        {R"(<HeaderParam name="missing.txt" output="filename.hdr"/>)", {}},
        {R"(<HeaderParam name="../t.txt" output="filename.hdr"/>)", {}},
        {R"(<HeaderParam name="t.txt" output="../filename.hdr"/>)", {}},
    };
    WriteTemplate("int16,QL_HEIGHT\r\n");
    WriteText(folder.Base() / "OutputDrivers/t.txt", "int8,1\r\n");
    for (const auto& [parameters, headers] : cases) {
        EmptyOutputFolder();
        InstallHeader(kRules, parameters);
        Job job = StartJob({NumberedPage(8, 2, 4, 1), NumberedPage(8, 3, 4, 1)});
        job.Status.RecordVersion = 3;
        job.Status.TileCount = 2;
        ASSERT_TRUE(IsPrinted(job.Run()));
        Texts found;
        for (const std::string& name : Listing(folder.Out()))
            if (name.ends_with(".hdr")) found.push_back(name);
        EXPECT_EQ(found, headers) << parameters;
        for (const std::string& name : found)
            EXPECT_EQ(Output(name).size(), 2U);
        EXPECT_FALSE(std::filesystem::exists(folder.Root() / "Proof.hdr"));
    }
}

}  // namespace
