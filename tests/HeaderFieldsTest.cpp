// The language of header templates, from text to bytes.

#include "plugin/output/HeaderFields.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

namespace {

const std::vector<HeaderKeyword> kKeywords = {
    {"QL_WIDTH", 1000},       {"QL_NCOLORS", 5},
    {"QL_DPI", 300},          {"QL_LEAST", INT32_MIN},
    {"QL_FLOAT", -2.75F},     {"QL_DOUBLE", 1e300},
    {"QL_NAN", std::nan("")}, {"QL_TEXT", std::string("text")},
};

/// The header in hexadecimal, without blanks.
std::string Header(const std::string& text) {
    HeaderBuffer buffer;
    buffer.fill(0xEE);
    const auto count = static_cast<std::size_t>(ProcessHeaderTemplate(text, kKeywords, buffer));
    std::string hex;
    for (std::size_t i = 0; i < buffer.size(); ++i) {
        if (i < count)
            hex += fmt::format("{:02X}", buffer[i]);
        else
            EXPECT_EQ(buffer[i], 0) << text;
    }
    return hex;
}

struct FieldCase {
    const char* Template;
    const char* Bytes;
};

constexpr FieldCase kFields[] = {
    // Types and their widths; a type is what the type text begins with.
    {"int32,1", "01000000"},
    {"int16,1", "0100"},
    {"int8,1", "01"},
    {"float,1", "0000803F"},
    {"double,1", "000000000000F03F"},
    {"char,[2]A", "4100"},
    {"int32xyz,1", "01000000"},
    {"int16 ,1", "0100"},
    {" int32,1", ""},
    {"INT32,1", ""},
    {"int64,1", ""},
    {",1", ""},
    // Lines, with CR LF, with LF alone and without; comments.
    {"int8,1\r\nint8,2\r\n", "0102"},
    {"int8,1\r\n\r\n//ql all, of it\r\nfree text\r\nint8,2", "0102"},
    {"int8,12\nint8,34\n", "0103"},
    {"int8,1x\n\n\nint8,2x\n", "0102"},
    {"\nint8,7", "07"},
    {"int8,1//ql a //ql b", "01"},
    {"int8,QL_NCOLORS \t//ql", ""},
    {"int8,QL_NCOLORS  //ql blanks before a comment", "05"},
    {"int8,QL_NCOLORS ", ""},
    {"int8,QL_NCOLORS+ 1 //ql", "06"},
    {"char,[3]AB //ql a blank is content", "414220"},
    {"char,[9]A//qlB", "410000000000000000"},
    // Values: hexadecimal, keyword, decimal, neither.
    {"int8,0x1F", "1F"},
    {"int32,0xFFFFFFFF", "FFFFFFFF"},
    {"int32,0x1FFFFFFFF", "FFFFFFFF"},
    {"int32,0x123456789012345678", "FFFFFFFF"},
    {"int16,0x12345", "4523"},
    {"int8,0x", "00"},
    {"int8,0x1Gx", "01"},
    {"int8,0X1F", "00"},
    {"double,0x10", "0000000000003040"},
    {"float,0xFFFFFFFF", "000080BF"},
    {"int32,QL_WIDTH", "E8030000"},
    {"int32,QL_UNKNOWN\r\nint8,1", "01"},
    {"int32,ql_width", "00000000"},
    {"int32,QL_WIDTHx", ""},
    {"int32, QL_WIDTH", "00000000"},
    {"int8,QLDO_ANY\r\nint8,1", "01"},
    {"int32, 5", "05000000"},
    {"int32,\t+5", "05000000"},  // the sign is a modifier's: the value is a tab
    {"int16,70000", "7011"},
    {"int32,4294967296", "00000000"},
    {"int32,99999999999999999999", "FFFFFFFF"},
    {"int8,12abc", "0C"},
    {"int8,1.9", "01"},
    {"int8,x", "00"},
    {"float,x", "00000000"},
    {"double,.5", "000000000000E03F"},
    {"double,1e400", "000000000000F07F"},
    {"float,1e39", "0000807F"},
    {"float,2,5", "00000040"},
    // Keywords of other kinds.
    {"int32,QL_FLOAT", "FEFFFFFF"},
    {"int8,QL_DOUBLE", "FF"},
    {"int32,QL_NAN", "00000000"},
    {"int32,QL_TEXT", "00000000"},
    {"int32,QL_TEXT+2", "02000000"},
    {"float,QL_NCOLORS", "0000A040"},
    {"float,QL_DOUBLE", "0000807F"},
    {"double,QL_FLOAT", "00000000000006C0"},
    {"double,QL_TEXT*2", "0000000000000000"},
    // Modifiers: + before - before / before *, at its first occurrence.
    {"int32,QL_WIDTH/8", "7D000000"},
    {"int32,QL_WIDTH*2/3", ""},
    {"int32,7*2/3", "02000000"},
    {"int8,7-2+1", "08"},
    {"int8,7-2-1", "05"},
    {"int8,0x10*2", "20"},
    {"int32,-1", "FFFFFFFF"},
    {"int32,+5", "05000000"},
    {"int8,5-", "05"},
    {"int8,5*", "00"},
    {"int8,5*x", "00"},
    {"int8,5*inf", "00"},
    {"int32,QL_WIDTH+0.9", "E8030000"},
    {"int32,QL_WIDTH/0.5", "E8030000"},
    {"int32,QL_WIDTH/0", "E8030000"},
    {"int32,QL_WIDTH*2.9", "D0070000"},
    {"int32,QL_LEAST-1", "FFFFFF7F"},
    {"int32,QL_LEAST*3", "00000080"},
    {"int32,QL_LEAST/-1", ""},  // the value is "QL_LEAST/"
    {"int16,200*200", "409C"},
    {"int8,100+100", "C8"},
    {"int8,200/3", "EE"},          // -56 / 3, toward zero
    {"int16,1000/70000", "0000"},  // by the whole operand
    {"int32,7*4294967297", "07000000"},
    {"int32,7/1e30", "07000000"},  // beyond 64 bits counts as 0
    {"float,2.5*2", "0000A040"},
    {"float,1/0", "0000803F"},
    {"float,1/0.000000000000000000000000000000000000000000000000001",
     "0000803F"},  // 0 in single precision
    {"float,0.1+0.2", "9A99993E"},
    {"double,0.1+0.2", "343333333333D33F"},
    {"double,1/0.0", "000000000000F03F"},
    {"double,1/inf", "000000000000F03F"},
    {"double,2*nan", "0000000000000000"},
    {"double,1.5e-3", "000000000000F8BF"},  // 1.5 minus 3
    {"double,QL_FLOAT-0.25", "00000000000008C0"},
    // Texts.
    {"char,[6]HDR", "484452000000"},
    {"char,[3]ABCDEF", "414243"},
    {"char,[2]", "0000"},
    {"char,[2]A]B-1", "415D"},
    {"char,(2]AB", "4142"},
    {"char,[ 2x]AB", "4142"},
    {"char,[0]X", ""},
    {"char,[601]X", ""},
    {"char,[-1]X", ""},
    {"char,[]X", ""},
    {"char,[2X", ""},
    {"char,[2]0x41", "0000"},
    {"char,[2]QL_WIDTH", "0000"},
    {"char,[2]QL_TEXT", "0000"},
    {"char,[2]QL_UNKNOWN", ""},
    {"char,[8]ql,//x", "716C2C2F2F780000"},
};

TEST(HeaderFields, GiveTheirBytes) {
    for (const FieldCase& field : kFields)
        EXPECT_EQ(Header(field.Template), field.Bytes) << field.Template;
    // Bytes beyond ASCII and a NUL are content like any other.
    EXPECT_EQ(Header(std::string("char,[3]\xFF\0\x80", 11)), "FF0080");
    EXPECT_EQ(Header(""), "");
}

TEST(HeaderFields, EndWhereTheHeaderIsFull) {
    std::string text;
    for (int i = 0; i < 3; ++i)
        text += "char,[600]x\r\n";
    text += "char,[197]y\r\n";  // 1997 bytes
    EXPECT_EQ(Header(text + "int16,1\r\nint8,2").size(), 2 * 2000U);
    // A field that does not fit ends the header, however small the next one.
    EXPECT_EQ(Header(text + "int32,1\r\nint8,2").size(), 2 * 1997U);
    EXPECT_EQ(Header(text + "int32,1\r\nchar,]").size(), 2 * 1997U);
}

TEST(HeaderFields, AMalformedTextEndsTheJob) {
    HeaderBuffer buffer;
    for (const char* const text : {"char,]", "int8,1\r\nchar,]x", "charlie,]]"})
        EXPECT_THROW(ProcessHeaderTemplate(text, kKeywords, buffer), int) << text;
}

/// Adds up what it is told.
struct Places final : HeaderLineListener {
    void OnLine(const HeaderLine& line) override {
        EXPECT_LE(Next, line.Begin);
        EXPECT_LE(line.Begin, line.End);
        Next = line.End;
        if (line.Result != HeaderLineResult::kField) return;
        EXPECT_EQ(line.Offset, Bytes);
        Bytes += line.Size;
    }
    std::size_t Next = 0;
    std::size_t Bytes = 0;
};

TEST(HeaderFields, TakeAnyText) {
    constexpr std::string_view kPieces[] = {
        "int32", "int16",      "int8", "float", "double",   "char",      ",",      ",", "[",   "]",
        "600",   "9999999999", "0x",   "QL_",   "QL_LEAST", "QL_DOUBLE", "QL_NAN", "+", "-",   "/",
        "*",     "//ql",       "\r\n", "\n",    " ",        "-1",        "1e999",  ".", "\xC3"};
    std::mt19937 random(4711);
    for (int i = 0; i < 20000; ++i) {
        std::string text;
        for (auto count = random() % 40; count > 0; --count)
            text += kPieces[random() % std::size(kPieces)];
        HeaderBuffer buffer;
        Places places;
        try {
            const int32_t count = ProcessHeaderTemplate(text, kKeywords, buffer, &places);
            EXPECT_EQ(static_cast<std::size_t>(count), places.Bytes) << text;
        } catch (int) {
            EXPECT_NE(text.find(",]"), std::string::npos) << text;
        }
    }
}

}  // namespace
