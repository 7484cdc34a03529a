#include "description/DriverOptions.h"

#include <gtest/gtest.h>

#include <cstring>

#include "DescriptionFolder.h"

using Texts = std::vector<std::string>;

namespace {

const char* const kFolders[] = {"Jobs and Settings/OptionsDrivers", "ICCProfile/OptionsDrivers",
                                "Devices/OptionsDrivers"};
const std::string kNewFolder = kFolders[0];

std::string Options(std::string_view value) {
    return "<RootElement>\n  <!-- kept -->\n  <DriverOptions SupportWhiteType=\"" +
           std::string(value) + "\"/>\n</RootElement>\n";
}

DriverOptionBlock Block(uint8_t kind, std::string_view name) {
    DriverOptionBlock block;
    std::memset(&block, 0, sizeof block);
    block.Kind = kind;
    std::memcpy(block.FileName, name.data(), name.size());
    return block;
}

std::string Bytes(const DriverOptionBlock& block) {
    return {reinterpret_cast<const char*>(&block), sizeof block};
}

class DriverOptions : public testing::Test {
  protected:
    void SetUp() override {
        for (const char* const each : kFolders)
            std::filesystem::create_directories(folder_.Path(each));
    }
    Texts NewFiles() const { return folder_.List(kNewFolder); }

    DescriptionFolder folder_;
};

TEST_F(DriverOptions, StartWithNoneChosen) {
    DriverOptionBlock block = Block(0, std::string(255, 'x'));
    EnsureDriverOptions(block);
    EXPECT_EQ(block.Kind, 3);
    const std::string name = block.FileName;
    EXPECT_EQ(name.substr(0, 8), "QL_DROP_");
    EXPECT_EQ(name.substr(name.size() - 4), ".xml");
    EXPECT_EQ(Bytes(block).substr(1 + name.size()), std::string(255 - name.size(), '\0'));
    EXPECT_EQ(NewFiles(), Texts{name});
    int32_t white = 7;
    EXPECT_EQ(ReadDriverOptions(block, white), 1);
    EXPECT_EQ(white, -1);

    const std::string before = Bytes(block);
    EnsureDriverOptions(block);
    EXPECT_EQ(Bytes(block), before);
    WriteDriverOptions(block, 4);
    EXPECT_EQ(ReadDriverOptions(block, white), 1);
    EXPECT_EQ(white, 4);
    EXPECT_EQ(NewFiles(), Texts{name});
}

TEST_F(DriverOptions, NewFileReplacesTheOneInTheFolderOfNewFiles) {
    for (const std::string each : kFolders)
        folder_.Write(each + "/QL_DROP_1.xml", Options("2"));
    DriverOptionBlock block = Block(0, "QL_DROP_1.xml");
    CreateDriverOptionsFile(block);
    EXPECT_EQ(NewFiles(), Texts{block.FileName});
    EXPECT_STRNE(block.FileName, "QL_DROP_1.xml");
    EXPECT_EQ(folder_.List(kFolders[1]), Texts{"QL_DROP_1.xml"});
    EXPECT_EQ(folder_.List(kFolders[2]), Texts{"QL_DROP_1.xml"});
}

TEST_F(DriverOptions, AreReadAndWrittenWhereTheFileStands) {
    DriverOptionBlock block = Block(3, "my QL_DROP_x");  // the prefix may stand anywhere
    for (int index = 2; index >= 0; --index) {           // each folder goes before the next
        const std::string file = std::string(kFolders[index]) + "/my QL_DROP_x";
        folder_.Write(file, Options(std::to_string(index + 10)));
        int32_t white = 7;
        EXPECT_EQ(ReadDriverOptions(block, white), 1);
        EXPECT_EQ(white, index + 10);
        WriteDriverOptions(block, index + 20);
        const std::string value = '"' + std::to_string(index + 20) + '"';
        EXPECT_NE(folder_.Read(file).find(value), std::string::npos) << folder_.Read(file);
        EXPECT_NE(folder_.Read(file).find("<!-- kept -->"), std::string::npos);
        EXPECT_EQ(NewFiles().size(), index == 0 ? 1U : 0U);  // found, not copied
    }
    EXPECT_STREQ(block.FileName, "my QL_DROP_x");
}

TEST_F(DriverOptions, OfAMissingFileAreMadeAnew) {
    DriverOptionBlock block = Block(3, "QL_DROP_gone.xml");
    int32_t white = 7;
    EXPECT_EQ(ReadDriverOptions(block, white), 1);
    EXPECT_EQ(white, -1);
    EXPECT_EQ(block.Kind, 3);
    const std::string first = block.FileName;
    EXPECT_NE(first, "QL_DROP_gone.xml");
    std::filesystem::remove(folder_.Path(kNewFolder + '/' + first));
    WriteDriverOptions(block, 6);
    EXPECT_NE(block.FileName, first);
    EXPECT_EQ(ReadDriverOptions(block, white), 1);
    EXPECT_EQ(white, 6);
}

TEST_F(DriverOptions, WithoutAFolderAreNotRead) {
    std::filesystem::remove_all(folder_.Path(kNewFolder));
    DriverOptionBlock block = Block(3, "QL_DROP_gone.xml");
    int32_t white = 7;
    EXPECT_EQ(ReadDriverOptions(block, white), 0);
    WriteDriverOptions(block, 1);
    EXPECT_EQ(white, 7);
    EXPECT_FALSE(std::filesystem::exists(folder_.Path(kNewFolder)));
}

TEST_F(DriverOptions, AreAsTheFileSays) {
    struct Case {
        const char* content;
        int32_t answer;
        int32_t white;
    };
    const Case cases[] = {
        {"<R><DriverOptions SupportWhiteType=' 12 '/></R>", 1, 12},
        {"<R><DriverOptions SupportWhiteType=''/></R>", 1, -1},
        {"<R><DriverOptions/></R>", 1, -1},
        {"<R><DriverOptions SupportWhiteType='none'/></R>", 1, 0},
        {"<R><DriverOptions SupportWhiteType='-99999999999'/></R>", 1, -2147483647 - 1},
        {"<R><Other SupportWhiteType='1'/></R>", 0, 7},
        {"<R><Deep><DriverOptions SupportWhiteType='1'/></Deep></R>", 0, 7},
        {"<R><DriverOptions SupportWhiteType='1'/>", 0, 7},
        {"no xml", 0, 7},
        {"", 0, 7},
    };
    for (const Case& each : cases) {
        const std::string file = kNewFolder + "/QL_DROP_1";
        folder_.Write(file, each.content);
        DriverOptionBlock block = Block(3, "QL_DROP_1");
        int32_t white = 7;
        EXPECT_EQ(ReadDriverOptions(block, white), each.answer) << each.content;
        EXPECT_EQ(white, each.white) << each.content;
        WriteDriverOptions(block, 3);
        if (each.answer == 0) {
            EXPECT_EQ(folder_.Read(file), each.content);  // nothing of it is lost
        } else {
            EXPECT_EQ(ReadDriverOptions(block, white), 1);
            EXPECT_EQ(white, 3) << each.content;
        }
        EXPECT_EQ(NewFiles(), Texts{"QL_DROP_1"});
    }
}

TEST_F(DriverOptions, NamesThatLeadElsewhereNameNoFile) {
    const std::string full = "QL_DROP_" + std::string(247, 'x');  // all 255 bytes, without NUL
    const std::string names[] = {"../../QL_DROP_1",
                                 "..\\QL_DROP_1",
                                 "/QL_DROP_1",
                                 "sub/QL_DROP_1",
                                 "C:QL_DROP_1",
                                 "ql_drop_1",
                                 ""};
    folder_.Write("QL_DROP_1", Options("1"));
    folder_.Write("Jobs and Settings/QL_DROP_1", Options("1"));
    folder_.Write(kNewFolder + "/sub/QL_DROP_1", Options("1"));
    folder_.Write(kNewFolder + "/QL_DROP_1", Options("1"));
    for (const std::string& name : names) {
        DriverOptionBlock block = Block(3, name);
        const std::string before = Bytes(block);
        int32_t white = 7;
        EXPECT_EQ(ReadDriverOptions(block, white), 0) << name;
        EXPECT_EQ(white, 7);
        WriteDriverOptions(block, 1);
        EXPECT_EQ(Bytes(block), before);
        EXPECT_EQ(NewFiles(), (Texts{"QL_DROP_1", "sub"})) << name;
        CreateDriverOptionsFile(block);  // deletes nothing
        EXPECT_EQ(NewFiles().size(), 3U);
        std::filesystem::remove(folder_.Path(kNewFolder + '/' + block.FileName));
    }
    EXPECT_EQ(folder_.Read("QL_DROP_1"), Options("1"));
    EXPECT_EQ(folder_.Read("Jobs and Settings/QL_DROP_1"), Options("1"));

    DriverOptionBlock block = Block(3, full);
    folder_.Write(kNewFolder + '/' + full.substr(0, 254), Options("8"));
    int32_t white = 7;
    EXPECT_EQ(ReadDriverOptions(block, white), 1);
    EXPECT_EQ(white, 8);
}

TEST(DriverOptionsText, RestoresTheFirst200Bytes) {
    const std::string zeros(400, '0');
    struct Case {
        std::string text;
        bool holds;
        std::string start;  ///< the block's first bytes; those up to 200 are zero
    };
    const Case cases[] = {
        {"DriverOptionBinary=03514C" + zeros, true, "\x03QL"},
        {"a=1\nXDriverOptionBinary :=\n", true, std::string(1, '\0')},  // a blank is no digit
        {"DriverOptionBinary = 0", true, ""},
        {"DriverOptionBinary=fFaB", true, "\xff\xab"},
        {"DriverOptionBinary=1G2", true, "\x01\x02"},
        {"DriverOptionBinary=G11x+1-1", true, std::string("\0\x01\0\0", 4)},
        {"DriverOptionBinary=0xA", true, std::string("\0\x0a", 2)},
        {"DriverOptionBinary=", true, ""},
        {"DriverOptionBinary", false, ""},
        {"=DriverOption", false, ""},
        {"", false, ""},
    };
    for (const Case& each : cases) {
        DriverOptionBlock block = Block(9, std::string(255, 'k'));
        const std::string before = Bytes(block);
        EXPECT_EQ(DecodeDriverOptionsText(each.text.c_str(), block), each.holds) << each.text;
        std::string expected = before;
        if (each.holds) {
            expected.replace(0, 200, each.start + std::string(200 - each.start.size(), '\0'));
        }
        EXPECT_EQ(Bytes(block), expected) << each.text;
    }
    DriverOptionBlock block = Block(9, "kept");
    EXPECT_FALSE(DecodeDriverOptionsText(nullptr, block));
    EXPECT_STREQ(block.FileName, "kept");
}

TEST(DriverOptionsText, ReadsAllOf400Digits) {
    std::string text = "DriverOptionBinary=";
    for (int index = 0; index < 250; ++index)
        text += "7a";
    DriverOptionBlock block = Block(0, "");
    EXPECT_TRUE(DecodeDriverOptionsText(text.c_str(), block));
    EXPECT_EQ(Bytes(block), std::string(200, 'z') + std::string(56, '\0'));
}

}  // namespace
