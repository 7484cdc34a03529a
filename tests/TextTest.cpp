#include "host/Text.h"

#include <gtest/gtest.h>
#include <locale.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <set>
#include <string>

#include "TestFolder.h"
#include "host/ALocaleSwitcher.h"
#include "host/FSGanerateID.h"
#include "host/GetZeColorValue.h"
#include "host/Numbers.h"
#include "host/QL_LOG.h"
#include "platform/CodePage.h"

namespace {

TEST(Numbers, LeadingDecimalAndAtoi) {
    constexpr std::optional<int32_t> kNothing;
    const struct {
        const char* text;
        std::optional<int32_t> leading;
        int32_t atoi;
    } kCases[] = {
        {"", kNothing, 0},
        {"12", 12, 12},
        {" \t\r\n\v\f-7x", -7, -7},
        {"+3.9", 3, 3},
        {"0012", 12, 12},
        {"0x1F", 0, 0},
        {"-", kNothing, 0},
        {"+-1", kNothing, 0},
        {"- 1", kNothing, 0},
        {"x1", kNothing, 0},
        {".5", kNothing, 0},
        {"2147483647", 2147483647, 2147483647},
        {"-2147483648", -2147483647 - 1, -2147483647 - 1},
        {"2147483648", kNothing, 2147483647},
        {"-2147483649", kNothing, -2147483647 - 1},
        {"99999999999999999999999999", kNothing, 2147483647},
        {"-99999999999999999999999999", kNothing, -2147483647 - 1},
    };
    for (const auto& row : kCases) {
        EXPECT_EQ(LeadingDecimal(row.text), row.leading) << row.text;
        EXPECT_EQ(Atoi(row.text), row.atoi) << row.text;
    }
    EXPECT_EQ(LeadingDecimal(std::string_view("123", 2)), 12) << "not beyond the view";
}

TEST(Text, FieldsAreCutAndZeroFilled) {
    char field[6];
    const struct {
        const char* text;
        std::size_t most;
        std::string_view bytes;
    } kCases[] = {
        {"", 9, std::string_view("\0\0\0\0\0\0", 6)},
        {"abc", 9, std::string_view("abc\0\0\0", 6)},
        {"abcdefgh", 9, std::string_view("abcde\0", 6)},
        {"abcd", 2, std::string_view("ab\0\0\0\0", 6)},
    };
    for (const auto& row : kCases) {
        std::fill(std::begin(field), std::end(field), 'x');
        CopyText(field, sizeof field, row.text, row.most);
        EXPECT_EQ(std::string_view(field, sizeof field), row.bytes) << row.text;
    }
    EXPECT_EQ(FieldText("abc", 2), "ab");
    EXPECT_EQ(FieldText("a\0c", 3), "a");
    EXPECT_EQ(FieldText("", 1), "");
}

TEST(Text, CaseIsIgnoredForAsciiAlone) {
    EXPECT_TRUE(EqualsIgnoringCase("CyAn", "cYaN"));
    EXPECT_FALSE(EqualsIgnoringCase("cyan", "cyan "));
    EXPECT_FALSE(EqualsIgnoringCase("[", "{"));
    EXPECT_FALSE(EqualsIgnoringCase("\xC4", "\xE4"));
}

/// A code page for as long as this object lives.
class CodePage {
  public:
    explicit CodePage(const char* name) { setenv("QL_CODE_PAGE", name, 1); }
    ~CodePage() { unsetenv("QL_CODE_PAGE"); }
    CodePage(const CodePage&) = delete;
    CodePage& operator=(const CodePage&) = delete;
};

TEST(CodePage, ConvertsBothWays) {
    const struct {
        const char* codePage;
        const char* ansi;
        const char* utf8;
    } kCases[] = {
        {"", "plain \xC3\xA4", "plain \xC3\xA4"}, {"CP1252", "\xE4\x80", "\xC3\xA4\xE2\x82\xAC"},
        {"ISO-8859-1", "\xA9", "\xC2\xA9"},       {"CP932", "\x8A\xBF\\", "\xE6\xBC\xA2\\"},
        {"GBK", "\xBA\xBA", "\xE6\xB1\x89"},      {"no such character set", "\xC3\xA4", "\xC3\xA4"},
    };
    for (const auto& row : kCases) {
        const CodePage codePage(row.codePage);
        EXPECT_EQ(AnsiToUtf8(row.ansi), row.utf8) << row.codePage;
        EXPECT_EQ(Utf8ToAnsi(row.utf8), row.ansi) << row.codePage;
        const std::string lengthy(5000, 'x');
        EXPECT_EQ(Utf8ToAnsi(lengthy + row.utf8), lengthy + row.ansi) << row.codePage;
    }
}

TEST(CodePage, WhatHasNoCounterpartIsAQuestionMark) {
    {
        const CodePage codePage("ISO-8859-1");
        EXPECT_EQ(Utf8ToAnsi("a\xE2\x82\xAC"
                             "b\xF0\x9F\x98\x80"
                             "c"),
                  "a?b?c");
        EXPECT_EQ(Utf8ToAnsi("a\xFF"
                             "b\xC3"),
                  "a?b?");
    }
    EXPECT_EQ(AnsiToUtf8("a\xFF"
                         "b"),
              "a?b");
    EXPECT_EQ(Utf8ToAnsi("a\xE4z"), "a?z");
    EXPECT_EQ(Utf8ToAnsi("\xE2\x82"), "??");
    const CodePage codePage("CP932");
    EXPECT_EQ(AnsiToUtf8("a\x8A"), "a?");
}

TEST(ALocaleSwitcher, GivesTheThreadPointsAndTakesThemBack) {
    // Whatever locale with a decimal comma the system has; "C" alone still proves the way back.
    locale_t comma = static_cast<locale_t>(nullptr);
    for (const char* name : {"de_DE.UTF-8", "fr_FR.UTF-8", "nl_NL.UTF-8", "de_DE"}) {
        if (comma == nullptr) comma = newlocale(LC_ALL_MASK, name, static_cast<locale_t>(nullptr));
    }
    const locale_t former = uselocale(static_cast<locale_t>(nullptr));
    if (comma != nullptr) uselocale(comma);
    const locale_t outside = uselocale(static_cast<locale_t>(nullptr));
    {
        const ALocaleSwitcher outer;
        const ALocaleSwitcher inner;
        EXPECT_EQ(std::strtod("1.5", nullptr), 1.5);
    }
    EXPECT_EQ(uselocale(static_cast<locale_t>(nullptr)), outside);
    uselocale(former);
    if (comma != nullptr) freelocale(comma);
}

TEST(GetZeColorValue, KnowsTheUsualInks) {
    const struct {
        const char* name;
        uint32_t color;  // 0x00BBGGRR
    } kCases[] = {
        {"Cyan", 0xFFFF00},  {"MAGENTA", 0xFF00FF}, {"yellow", 0x00FFFF}, {"Black", 0x000000},
        {"White", 0xFFFFFF}, {"Red", 0x0000FF},     {"Blue", 0xFF0000},
    };
    for (const auto& row : kCases)
        EXPECT_EQ(GetZeColorValue(row.name), row.color) << row.name;
    for (const char* name : {"LightCyan", "light cyan", "Light-Cyan", "LC", "Light_Cyan"}) {
        EXPECT_EQ(GetZeColorValue(name), GetZeColorValue("Lc")) << name;
    }
    EXPECT_EQ(GetZeColorValue("Spot 1"), GetZeColorValue("SPOT 1"));
    EXPECT_NE(GetZeColorValue("Spot 1"), GetZeColorValue("Spot 2"));
    EXPECT_EQ(GetZeColorValue("Spot 1") >> 24, 0U);
    EXPECT_EQ(GetZeColorValue("Spot 1"), 0x9443BCU) << "the same in every run";
}

TEST(FSGanerateID, NeverRepeats) {
    std::set<std::string> identifiers;
    for (int i = 0; i < 1000; ++i)
        identifiers.insert(FSGanerateID());
    EXPECT_EQ(identifiers.size(), 1000U);
    EXPECT_EQ(identifiers.begin()->find_first_not_of("0123456789ABCDEF"), std::string::npos);
    EXPECT_EQ(identifiers.begin()->size(), 32U);
}

TEST(QL_LOG, AppendsOneLineAnEntry) {
    const TestFolder folder;
    setenv("QL_LOG_FILE", folder.Name("log").c_str(), 1);
    QL_LOG("host\\A", 85, 'E', "first");
    QL_LOG("host\\A", 86, 'I', "{}%s");
    setenv("QL_LOG_FILE", folder.Name("missing/log").c_str(), 1);
    testing::internal::CaptureStderr();
    QL_LOG("host\\A", 87, 'E', "elsewhere");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "E host\\A(87): elsewhere\n");
    unsetenv("QL_LOG_FILE");
    EXPECT_EQ(folder.Read("log"), "E host\\A(85): first\nI host\\A(86): {}%s\n");
}

}  // namespace
