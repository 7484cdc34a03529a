#include "host/Text.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <optional>
#include <string>

#include "TestFolder.h"
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

TEST(CodePage, WhatHasNoCounterpartIsAQuestionMark) {
    setenv("QL_CODE_PAGE", "ISO-8859-1", 1);
    EXPECT_EQ(Utf8ToAnsi("a\xE2\x82\xAC, \xF0\x9F\x98\x80, \xFF, \xC3"), "a?, ?, ?, ?");
    setenv("QL_CODE_PAGE", "CP932", 1);
    EXPECT_EQ(AnsiToUtf8("a\x8A"), "a?") << "half a character";
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
