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

/// What no job reaches, or not easily: the rules themselves are held by the boundary's tests.
constexpr FieldCase kFields[] = {
    // Keywords of the kinds that no page has.
    {"int32,QL_FLOAT", "FEFFFFFF"},
    {"int8,QL_DOUBLE", "FF"},
    {"int32,QL_NAN", "00000000"},
    {"int32,QL_TEXT\r\nint8,QL_TEXT+2", "0000000002"},
    {"float,QL_DOUBLE", "0000807F"},
    {"double,QL_FLOAT", "00000000000006C0"},
    {"double,QL_FLOAT-0.25", "00000000000008C0"},
    {"char,[2]QL_TEXT", "0000"},
    // The ends of the integers.
    {"int32,QL_LEAST-1", "FFFFFF7F"},
    {"float,0xFFFFFFFF", "000080BF"},
    {"int16,200*200", "409C"},
    {"int8,200/3", "EE"},          // -56 / 3, toward zero
    {"int16,1000/70000", "0000"},  // by the whole operand
    {"int32,7*4294967297", "07000000"},
    {"int32,7/1e30", "07000000"},  // beyond 64 bits counts as 0
    // What is 0 in single precision only, and what is rounded there.
    {"float,1/0.000000000000000000000000000000000000000000000000001", "0000803F"},
    {"float,0.1+0.2", "9A99993E"},
    {"double,0.1+0.2", "343333333333D33F"},
    // Which modifier counts, and blanks around it.
    {"int8,7-2+1\r\nint8,7-2-1\r\nint32,7*2/3", "080502000000"},
    {"int8,QL_NCOLORS+ 1 //ql", "06"},
    {"int8,QL_NCOLORS \t//ql", ""},
    {"char,[9]A//qlB", "410000000000000000"},
};

TEST(HeaderFields, GiveTheirBytes) {
    for (const FieldCase& field : kFields)
        EXPECT_EQ(Header(field.Template), field.Bytes) << field.Template;
    // Bytes beyond ASCII and a NUL are content like any other.
    EXPECT_EQ(Header(std::string("char,[3]\xFF\0\x80", 11)), "FF0080");
    EXPECT_EQ(Header(""), "");
}

// For whoever explains a template: each line from its begin to its end, without CR LF.
TEST(HeaderFields, TellsEveryLine) {
    class Lines final : public HeaderLineListener {
      public:
        void OnLine(const HeaderLine& line) override {
            Text += fmt::format("{}-{}:{} ", line.Begin, line.End, static_cast<int>(line.Result));
        }
        std::string Text;
    } lines;
    HeaderBuffer buffer;
    ProcessHeaderTemplate("\nint8,1\r\n\n\r\nfree//ql\r\nint9,1", kKeywords, buffer, &lines);
    EXPECT_EQ(lines.Text, "0-0:1 1-7:0 9-9:1 10-10:1 12-20:2 22-28:3 ");
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
        try {
            ProcessHeaderTemplate(text, kKeywords, buffer);
        } catch (int) {
            EXPECT_NE(text.find(",]"), std::string::npos) << text;
        }
    }
}

}  // namespace
