#include "host/Text.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "TestFolder.h"
#include "host/GetZeColorValue.h"
#include "host/Numbers.h"
#include "host/QL_LOG.h"
#include "platform/CodePage.h"

namespace {

TEST(Numbers, LeadingDecimalAndAtoi) {
    struct NumberCase {
        const char* text;
        std::optional<int32_t> leading;
        int32_t atoi;
    };
    constexpr int32_t kSmallest = std::numeric_limits<int32_t>::min();
    for (const NumberCase& row : {NumberCase{"", {}, 0},
                                  {" \t\r\n\v\f-7x", -7, -7},
                                  {"+3.9", 3, 3},
                                  {"0x1F", 0, 0},
                                  {"+-1", {}, 0},
                                  {".5", {}, 0},
                                  {"2147483647", 2147483647, 2147483647},
                                  {"-2147483648", kSmallest, kSmallest},
                                  {"2147483648", {}, 2147483647},
                                  {"-2147483649", {}, kSmallest},
                                  {"99999999999999999999999999", {}, 2147483647}}) {
        EXPECT_EQ(LeadingDecimal(row.text), row.leading) << row.text;
        EXPECT_EQ(Atoi(row.text), row.atoi) << row.text;
    }
    EXPECT_EQ(LeadingDecimal(std::string_view("123", 2)), 12) << "not beyond the view";
}

TEST(CodePage, ConvertsBothWays) {
    const std::string lengthy(5000, 'x');
    for (const auto& [codePage, ansi, utf8] : {
             std::tuple{"", "plain \xC3\xA4", "plain \xC3\xA4"},
             {"CP1252", "\xE4\x80", "\xC3\xA4\xE2\x82\xAC"},
             {"CP932", "\x8A\xBF\\", "\xE6\xBC\xA2\\"},
             {"no such character set", "\xC3\xA4", "\xC3\xA4"},
         }) {
        setenv("QL_CODE_PAGE", codePage, 1);
        EXPECT_EQ(AnsiToUtf8(lengthy + ansi), lengthy + utf8) << codePage;
        EXPECT_EQ(Utf8ToAnsi(lengthy + utf8), lengthy + ansi) << codePage;
    }
    unsetenv("QL_CODE_PAGE");
}

/// A code page for as long as this lives.
struct CodePage {
    explicit CodePage(const char* name) { setenv("QL_CODE_PAGE", name, 1); }
    ~CodePage() { unsetenv("QL_CODE_PAGE"); }
    CodePage(const CodePage&) = delete;
    CodePage& operator=(const CodePage&) = delete;
};

TEST(CodePage, TellsWhereCharactersEnd) {
    const struct {
        const char* codePage;
        std::string_view text;
        std::vector<std::size_t> bytes;  ///< of each character
        std::size_t whole;               ///< bytes before a character that is cut off at the end
    } cases[] = {
        {"CP932", "\x83\\\xB1\\\x83/\x83:A\xFF\x83", {2, 1, 1, 1, 1, 1, 1, 1, 1, 1}, 10},
        {"windows-31j", "\xFC\x4B\x80\x5C", {2, 1, 1}, 4},
        {"CP936", "\x81\\\x81\x7F\x80\xFF\\", {2, 1, 1, 1, 1, 1}, 7},
        {"GB18030",
         "\x81\x30\x81\x31\x81\\\x81\x30\x81/0\x81\x30\x2F",
         {4, 2, 1, 1, 1, 1, 1, 1, 1, 1},
         14},
        {"GB18030", "a\x81\x30\x81", {1, 1, 1, 1}, 1},
        {"BIG5", "\xA5\\\xA5\x7F\xA5", {2, 1, 1, 1}, 4},
        {"CP949", "\x81\x41\x81\\\xB0\xA1", {2, 1, 1, 2}, 6},
        {"EUC-JP", "\x8F\xA2\xAF\xB0\xA1\x8F\xA2", {3, 2, 1, 1}, 5},
        {"CP1252", "\xE4\xE2\x82\xAC", {1, 1, 1, 1}, 4},
        {"utf8", "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80\xF0\x9F\x98", {2, 3, 4, 1, 1, 1}, 9},
        {"", "\xC0\xAF\xED\xA0\x80\xF4\x90\x80\x80\xE2\x82", {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}, 9},
        {"no such character set", "\xC3\xA4\x83\\", {2, 1, 1}, 4},
    };
    for (const auto& [name, text, bytes, whole] : cases) {
        const CodePage codePage(name);
        EXPECT_EQ(IsCodePageKnown(), name[0] != 'n') << name;
        std::vector<std::size_t> found;
        for (std::size_t at = 0; at < text.size(); at += found.back()) {
            found.push_back(CharacterBytes(text.substr(at)));
            // No room for all of a character is no room for it.
            const std::size_t end = at + found.back();
            EXPECT_EQ(WholeCharacters(text, end).size(), end) << name;
            EXPECT_EQ(WholeCharacters(text, end - 1).size(), at) << name;
        }
        EXPECT_EQ(found, bytes) << name;
        EXPECT_EQ(WithoutCutCharacter(text), text.substr(0, whole)) << name;
    }
}

// More code pages than are remembered, by several threads at once.
TEST(CodePage, AreLearnedByAllThreads) {
    const CodePage codePage("CP1361");
    std::vector<std::thread> threads;
    std::atomic<int> wrong = 0;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&] { wrong += CharacterBytes("\x88:") == 2 ? 0 : 1; });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
    for (const char* name :
         {"CP737", "CP775", "CP850", "CP852", "CP855", "CP857", "CP860", "CP861", "CP932", "Nil"}) {
        const CodePage other(name);
        EXPECT_EQ(CharacterBytes("\x83\\"), name == std::string("CP932") ? 2U : 1U) << name;
        EXPECT_EQ(IsCodePageKnown(), name != std::string("Nil"));
    }
}

// In these texts a byte inside a character looks like what is looked for.
TEST(Text, LooksAtCharacters) {
    const CodePage codePage("CP932");
    EXPECT_EQ(FindCharacter("\x83\\a\\\x83\\", '\\'), 3U);
    EXPECT_EQ(FindLastCharacter("\x83\\a\\\x83\\", '\\'), 3U);
    EXPECT_EQ(FindCharacter("\x83\\", '\\') & FindLastCharacter("\x83\\", '\\'), std::string::npos);
    EXPECT_EQ(FindText("\x83"
                       "filename_filename",
                       "filename"),
              10U);
    EXPECT_EQ(FindText("\x83"
                       "filename",
                       "filename"),
              std::string::npos);
    EXPECT_EQ(FindText("abc", ""), 0U);
    EXPECT_FALSE(
        EqualsIgnoringCase("\x83"
                           "ABC",
                           "\x83"
                           "aBC"));
    EXPECT_TRUE(
        EqualsIgnoringCase("\x83"
                           "ABC",
                           "\x83"
                           "Abc"));
    EXPECT_EQ(LowerCase("X\x83"
                        "AB"),
              "x\x83"
              "Ab");
    char field[4] = {'x', 'x', 'x', 'x'};
    CopyText(field, sizeof field, "a\x83\\\x83\\");
    EXPECT_EQ(std::string(field, 4), std::string("a\x83\\\0", 4));
    CopyText(field, sizeof field, "ab\x83\\");
    EXPECT_EQ(std::string(field, 4), std::string("ab\0\0", 4));
    EXPECT_EQ(GetZeColorValue("\x83"
                              "C"),
              GetZeColorValue("\x83"
                              "C"));
    EXPECT_NE(GetZeColorValue("\x83"
                              "C"),
              GetZeColorValue("\x83"
                              "c"));
}

TEST(CodePage, WhatHasNoCounterpartIsAQuestionMark) {
    setenv("QL_CODE_PAGE", "ISO-8859-1", 1);
    EXPECT_EQ(Utf8ToAnsi("a\xE2\x82\xAC, \xF0\x9F\x98\x80, \xFF, \xC3"), "a?, ?, ?, ?");
    setenv("QL_CODE_PAGE", "CP932", 1);
    EXPECT_EQ(AnsiToUtf8("a\x8A"), "a?") << "half a character";
    EXPECT_EQ(AnsiToUtf8("\x85\\b"), "?b") << "a pair without a character";
    unsetenv("QL_CODE_PAGE");
    EXPECT_EQ(AnsiToUtf8("a\xFFz"), "a?z");
    EXPECT_EQ(Utf8ToAnsi("a\xE4z\xE2\x82"), "a?z??");
}

TEST(QL_LOG, GoesToStandardErrorWithoutAFile) {
    const TestFolder folder;
    setenv("QL_LOG_FILE", folder.Name("missing/log").c_str(), 1);
    testing::internal::CaptureStderr();
    QL_LOG("host\\A", 87, 'E', "{}%s");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "E host\\A(87): {}%s\n");
    unsetenv("QL_LOG_FILE");
}

}  // namespace
