#include "description/DriverOptions.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "boundary/BaseFolder.h"

using Texts = std::vector<std::string>;

namespace {

const char* const kFolders[] = {"Jobs and Settings/OptionsDrivers", "ICCProfile/OptionsDrivers",
                                "Devices/OptionsDrivers"};

std::string Options(int32_t white) {
    return fmt::format("<R><!-- kept --><DriverOptions SupportWhiteType='{}'/></R>", white);
}

DriverOptionBlock Block(uint8_t kind, std::string_view name) {
    DriverOptionBlock block{};
    block.Kind = kind;
    name.copy(block.FileName, sizeof block.FileName);
    return block;
}

std::string Bytes(const DriverOptionBlock& block) {
    return {reinterpret_cast<const char*>(&block), sizeof block};
}

/// The white choice that the block's file holds; 7 when it cannot be read.
int32_t White(DriverOptionBlock& block) {
    int32_t white = 7;
    const int32_t answer = ReadDriverOptions(block, white);
    EXPECT_EQ(answer, white == 7 ? 0 : 1);
    return white;
}

struct DriverOptions : testing::Test {
    BaseFolder folder;
};

TEST_F(DriverOptions, AreReadAndWrittenWhereTheFileStands) {
    DriverOptionBlock block = Block(3, "my QL_DROP_x");  // the prefix may stand anywhere
    for (int index = 2; index >= 0; --index) {           // each folder goes before the next
        const std::filesystem::path file = folder.Base() / kFolders[index] / "my QL_DROP_x";
        std::filesystem::create_directories(file.parent_path());
        WriteText(file, Options(index + 10));
        EXPECT_EQ(White(block), index + 10);
        WriteDriverOptions(block, index + 20);
        EXPECT_EQ(White(block), index + 20);
        EXPECT_NE(ReadText(file).find("<!-- kept -->"), std::string::npos);
        EXPECT_EQ(Listing(folder.Options()).size(), index == 0 ? 1U : 0U);  // found, not copied
    }
    CreateDriverOptionsFile(block);  // deletes in the folder of new files alone
    EXPECT_EQ(Listing(folder.Options()), Texts{block.FileName});
    EXPECT_EQ(Listing(folder.Base() / kFolders[1]), Texts{"my QL_DROP_x"});
    EXPECT_EQ(Listing(folder.Base() / kFolders[2]), Texts{"my QL_DROP_x"});
}

TEST_F(DriverOptions, AreAsTheFileSays) {
    const std::pair<const char*, int32_t> cases[] = {
        {"<R><DriverOptions SupportWhiteType=' 12 '/></R>", 12},
        {"<R><DriverOptions/></R>", -1},
        {"<R><DriverOptions SupportWhiteType='none'/></R>", 0},
        {"<R><DriverOptions SupportWhiteType='-99999999999'/></R>", -2147483647 - 1},
        {"<R><Deep><DriverOptions SupportWhiteType='1'/></Deep></R>", 7},
        {"<R><DriverOptions SupportWhiteType='1'/>", 7},
        {"", 7},
    };
    const std::filesystem::path file = folder.Options() / "QL_DROP_1";
    for (const auto& [content, white] : cases) {
        WriteText(file, content);
        DriverOptionBlock block = Block(3, "QL_DROP_1");
        EXPECT_EQ(White(block), white) << content;
        WriteDriverOptions(block, 3);
        EXPECT_EQ(White(block), white == 7 ? 7 : 3) << content;
        EXPECT_EQ(ReadText(file) == content, white == 7);  // nothing of a damaged one is lost
        EXPECT_EQ(Listing(folder.Options()), Texts{"QL_DROP_1"});
    }
}

TEST_F(DriverOptions, NamesThatLeadElsewhereNameNoFile) {
    std::filesystem::create_directory(folder.Options() / "sub");
    for (const char* const name : {"sub\\QL_DROP_1", "C:QL_DROP_1", "ql_drop_1"}) {
        for (const char* const file : {"sub/QL_DROP_1", "QL_DROP_1", "ql_drop_1"}) {
            WriteText(folder.Options() / file, Options(1));
        }
        DriverOptionBlock block = Block(3, name);
        EXPECT_EQ(White(block), 7) << name;
        WriteDriverOptions(block, 1);
        EXPECT_EQ(Bytes(block), Bytes(Block(3, name)));
        CreateDriverOptionsFile(block);  // deletes nothing
        EXPECT_EQ(Listing(folder.Options()).size(), 5U) << name;
        std::filesystem::remove(folder.Options() / block.FileName);
    }
    DriverOptionBlock full = Block(3, "QL_DROP_" + std::string(247, 'x'));  // without a NUL
    WriteText(folder.Options() / std::string(full.FileName, 254), Options(8));
    EXPECT_EQ(White(full), 8);
}

TEST(DriverOptionsText, RestoresTheFirst200Bytes) {
    const std::pair<std::string, std::string> startsByText[] = {
        {"DriverOptionBinary=" + std::string(500, '7'), std::string(200, 'w')},
        {"a=1\nXDriverOptionBinary :=\n", ""},  // a blank is no digit
        {"DriverOptionBinary=fFaB1G2", "\xff\xab\x01\x02"},
        {"DriverOptionBinary=G11x+1-1", std::string("\0\x01\0\0", 4)},
    };
    const DriverOptionBlock before = Block(9, std::string(255, 'k'));
    for (const auto& [text, start] : startsByText) {
        DriverOptionBlock block = before;
        EXPECT_TRUE(DecodeDriverOptionsText(text.c_str(), block)) << text;
        EXPECT_EQ(Bytes(block),
                  start + std::string(200 - start.size(), '\0') + std::string(56, 'k'));
    }
    for (const char* const text : {"DriverOptionBinary", "=DriverOption"}) {
        DriverOptionBlock block = before;
        EXPECT_FALSE(DecodeDriverOptionsText(text, block)) << text;
        EXPECT_EQ(Bytes(block), Bytes(before)) << text;
    }
}

}  // namespace
