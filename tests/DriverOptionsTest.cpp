#include "description/DriverOptions.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "boundary/BaseFolder.h"
#include "boundary/FileSizeLimit.h"

using Texts = std::vector<std::string>;
namespace fs = std::filesystem;

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
        const fs::path file = folder.Base() / kFolders[index] / "my QL_DROP_x";
        fs::create_directories(file.parent_path());
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
    const fs::path file = folder.Options() / "QL_DROP_1";
    std::size_t refused = 0;
    for (const auto& [content, white] : cases) {
        WriteText(file, content);
        DriverOptionBlock block = Block(3, "QL_DROP_1");
        EXPECT_EQ(White(block), white) << content;
        WriteDriverOptions(block, 3);
        EXPECT_EQ(White(block), white == 7 ? 7 : 3) << content;
        EXPECT_EQ(ReadText(file) == content, white == 7);  // nothing of a damaged one is lost
        EXPECT_EQ(folder.Log().size(), white == 7 ? ++refused : refused) << content;
        EXPECT_EQ(Listing(folder.Options()), Texts{"QL_DROP_1"});
    }
}

// A look makes and changes nothing, and the search ends where nobody can say whether there is a
// file.
TEST_F(DriverOptions, AreLookedAtWithoutATrace) {
    const fs::path last = folder.Base() / kFolders[2];
    fs::create_directories(last);
    WriteText(last / "QL_DROP_read", Options(4));
    WriteText(last / "QL_DROP_damaged", "<R>");
    WriteText(last / "QL_DROP_loop", Options(4));
    fs::create_symlink("QL_DROP_loop", folder.Options() / "QL_DROP_loop");
    fs::create_directory(last / "QL_DROP_folder");
    const struct {
        const char* name;
        OptionsState state;
        fs::path path;
        int error;
    } cases[] = {
        {"QL_DROP_read", OptionsState::kRead, last, 0},
        {"QL_DROP_damaged", OptionsState::kUnreadable, last, 0},
        {"QL_DROP_folder", OptionsState::kUnreadable, last, 0},
        {"QL_DROP_loop", OptionsState::kUnreadable, folder.Options(), ELOOP},
        {"QL_DROP_missing", OptionsState::kMissing, folder.Options(), ENOENT},
        {"QL_DROP/read", OptionsState::kNone, {}, 0},
        {"", OptionsState::kNone, {}, 0},
    };
    for (const auto& [name, state, path, error] : cases) {
        DriverOptionBlock block = Block(3, name);
        int32_t white = 7;
        OptionsPlace place;
        EXPECT_EQ(PeekDriverOptions(block, white, &place), state) << name;
        EXPECT_EQ(white, state == OptionsState::kRead ? 4 : 7);
        if (!path.empty()) {
            EXPECT_EQ(place.Path.fullPath(), (path / name).string());
        }
        EXPECT_EQ(place.SystemError, error) << name;
        if (state == OptionsState::kUnreadable) {
            EXPECT_EQ(White(block), 7) << name;
            WriteDriverOptions(block, 1);
            EXPECT_EQ(Bytes(block), Bytes(Block(3, name))) << "keeps its name";
        }
        EXPECT_EQ(Listing(last).size(), 4U) << name;
        EXPECT_EQ(std::distance(fs::directory_iterator(folder.Options()), {}), 1) << name;
    }
    EXPECT_NE(folder.Log().back().find("QL_DROP_loop: Too many levels"), std::string::npos);
}

// Each choice that is not stored, and each file that is not made, is said with its reason.
TEST_F(DriverOptions, ThatAreNotStoredAreSaid) {
    const std::string file = (folder.Options() / "QL_DROP_1").string();
    const std::string large = Options(2) + "<!--" + std::string(10000, 'x') + "-->";
    WriteText(file, large);
    DriverOptionBlock block = Block(3, "QL_DROP_1");
    {
        const FileSizeLimit full(4096);  // the log has room
        WriteDriverOptions(block, 1);
    }
    EXPECT_EQ(Bytes(block), Bytes(Block(3, "QL_DROP_1")));
    EXPECT_EQ(ReadText(file), large);
    EXPECT_EQ(Listing(folder.Options()), Texts{"QL_DROP_1"});
    block = Block(3, "my.xml");
    WriteDriverOptions(block, 1);
    fs::remove_all(folder.Options());
    CreateDriverOptionsFile(block);
    const std::string entries[] = {
        "the white choice cannot be stored: " + file + ": File too large",
        "the white choice cannot be stored, the options block names no file: my.xml",
        fmt::format("the white choice cannot be stored: {}/{}: No such file or directory",
                    folder.Options().string(), block.FileName)};
    ASSERT_EQ(folder.Log().size(), std::size(entries));
    for (std::size_t i = 0; i < std::size(entries); ++i) {
        const std::string entry = folder.Log()[i];
        EXPECT_EQ(entry.find("E description\\DriverOptions("), 0U) << entry;
        EXPECT_EQ(entry.substr(entry.find("): ") + 3), entries[i]);
    }
}

TEST_F(DriverOptions, NamesThatLeadElsewhereNameNoFile) {
    fs::create_directory(folder.Options() / "sub");
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
        fs::remove(folder.Options() / block.FileName);
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
