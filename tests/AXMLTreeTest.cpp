#include "host/AXMLTree.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <zlib.h>

#include <cstdlib>
#include <string>

#include "TestFolder.h"
#include "host/Gzip.h"

namespace {

std::string Gzip(const std::string& bytes) {
    z_stream stream = {};
    deflateInit2(&stream, 9, Z_DEFLATED, MAX_WBITS + 16, 8, Z_DEFAULT_STRATEGY);
    std::string out(deflateBound(&stream, bytes.size()) + 64, '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
    stream.avail_in = static_cast<uInt>(bytes.size());
    stream.next_out = reinterpret_cast<Bytef*>(out.data());
    stream.avail_out = static_cast<uInt>(out.size());
    deflate(&stream, Z_FINISH);
    out.resize(stream.total_out);
    deflateEnd(&stream);
    return out;
}

AXMLTreeNode Child(const AXMLTree& tree, const AXMLTreeNode& parent, int32_t position) {
    AXMLTreeNode child;
    tree.getChild(position, parent, child);
    return child;
}

AXMLTreeNode Root(const AXMLTree& tree) {
    AXMLTreeNode root;
    tree.getRootNode(root);
    return root;
}

TEST(AXMLTree, ElementTexts) {
    const struct {
        const char* xml;
        const char* text;
    } kCases[] = {
        {"<a/>", ""},
        {"<a>text</a>", "text"},
        {"<a> \t text \n</a>", " \t text \n"},
        {"<a><![CDATA[<b> & ]]></a>", "<b> & "},
        {"<a>\n  <![CDATA[x]]>\n</a>", "x"},
        {"<a>\n  <b>inner</b> own </a>", " own "},
        {"<a>first<b/>second</a>", "first"},
        {"<a>  </a>", "  "},
        {"<a><![CDATA[ ]]>x</a>", " "},
        {"<a>one<!-- c -->two</a>", "one"},
        {"<a>&lt;&amp;&#65;&quot;</a>", "<&A\""},
        {"<a>one\r\ntwo</a>", "one\ntwo"},
        {"<a><!-- c --><?pi x?></a>", ""},
        {"\xEF\xBB\xBF<a>mark</a>", "mark"},
        {"<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE4</a>", "\xC3\xA4"},
    };
    for (const auto& row : kCases) {
        AXMLTree tree("RootElement");
        ASSERT_EQ(tree.loadXML(row.xml, 1), 1) << row.xml;
        EXPECT_EQ(tree.getValue(Root(tree)), row.text) << row.xml;
        EXPECT_EQ(tree.getName(Root(tree)), "a");
    }
}

TEST(AXMLTree, WhatIsNoDocumentLeavesNoRoot) {
    using namespace std::string_view_literals;
    for (const std::string_view text :
         {""sv, "   "sv, "text"sv, "<a>"sv, "<a></b>"sv, "<a/>text"sv, "text<a/>"sv, "<a/><b/>"sv,
          "<a b=c/>"sv, "<!-- only -->"sv, "<a>\0</a>"sv, "<a/>\0<"sv, "\x1F\x8B\b"sv, "<a"sv}) {
        AXMLTree tree("RootElement");
        EXPECT_EQ(tree.loadXML(text, 1), 0) << text;
        AXMLTreeNode root;
        EXPECT_EQ(tree.getRootNode(root), 0) << text;
        EXPECT_EQ(tree.getChildCount(root), 0);
    }
}

TEST(AXMLTree, FindsElementsAlone) {
    AXMLTree tree("RootElement");
    ASSERT_EQ(
        tree.loadXML("<r> <!-- c --><x n='1'/>t<?y?><y n='2'/><x n='3'/><![CDATA[y]]></r>", 1), 1);
    const AXMLTreeNode root = Root(tree);
    EXPECT_EQ(tree.getChildCount(root), 3);
    const char* kNumbers[] = {"1", "2", "3", ""};
    for (const int32_t position : {0, 1, 2, 1, 0, 2, 3, 1, 3, 0}) {
        AXMLTreeNode child;
        EXPECT_EQ(tree.getChild(position, root, child), position < 3 ? 1 : 0);
        EXPECT_EQ(tree.getAttribute(child, "n"), kNumbers[position]) << position;
    }
    AXMLTreeNode child = root;
    EXPECT_EQ(tree.getChild(-1, root, child), 0);
    EXPECT_EQ(tree.getName(child), "") << "a failed search leaves no handle";
    EXPECT_EQ(tree.getChild("x", root, child), 1);
    EXPECT_EQ(tree.getAttribute(child, "n"), "1");
    EXPECT_EQ(tree.getChild("y", root, child), 1);
    EXPECT_EQ(tree.getAttribute(child, "n"), "2") << "the element, not the instruction";
    EXPECT_EQ(tree.getChild("X", root, child), 0);
    child = root;
    EXPECT_EQ(tree.getChild("x", child, child), 1) << "one handle as both";
    EXPECT_EQ(tree.getAttribute(child, "N"), "");
}

TEST(AXMLTree, AHandleToNothingIsSafe) {
    AXMLTree tree("RootElement");
    const AXMLTreeNode nothing;
    AXMLTreeNode child;
    EXPECT_EQ(tree.getChild("a", nothing, child), 0);
    EXPECT_EQ(tree.getChild(0, nothing, child), 0);
    EXPECT_EQ(tree.getChildCount(nothing), 0);
    EXPECT_EQ(tree.getAttribute(nothing, "a"), "");
    EXPECT_EQ(tree.getValue(nothing), "");
    EXPECT_EQ(tree.getName(nothing), "");
    EXPECT_EQ(tree.addChild(child, nothing, "a", "", -1), 0);
    EXPECT_EQ(tree.setAttribute(nothing, "a", "b"), 0);
}

TEST(AXMLTree, ADocumentOfOurOwnIsLaidOut) {
    const TestFolder folder;
    AXMLTree tree("RootElement");
    AXMLTreeNode list;
    AXMLTreeNode item;
    ASSERT_EQ(tree.addChild(list, Root(tree), "List", "", -1), 1);
    EXPECT_EQ(tree.getChildCount(list), 0);
    ASSERT_EQ(tree.addChild(item, list, "Item", "a < b & c", -1), 1);
    ASSERT_EQ(tree.setAttribute(item, "Name", "\"old\""), 1);
    ASSERT_EQ(tree.setAttribute(item, "Name", "\"new\" & <tag>"), 1);
    EXPECT_EQ(tree.getChildCount(list), 1);
    ASSERT_EQ(tree.saveToFile(folder.Path("d.xml")), 1);
    EXPECT_EQ(folder.Read("d.xml"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<RootElement>\n"
              "  <List>\n"
              "    <Item Name=\"&quot;new&quot; &amp; &lt;tag>\">a &lt; b &amp; c</Item>\n"
              "  </List>\n"
              "</RootElement>\n");
}

TEST(AXMLTree, ALoadedDocumentKeepsWhatNobodyChanged) {
    const TestFolder folder;
    const std::string text =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- before -->\n\n"
        "<r  >\n\t<!-- kept -->\n   <x a=\"1\"/> <![CDATA[<raw>]]>\n<?do it?><y>  two "
        "</y>\n\n</r>\n"
        "<!-- after -->\n";
    AXMLTree tree("RootElement");
    ASSERT_EQ(tree.loadFromFile(folder.Write("d.xml", text), 1), 1);
    ASSERT_EQ(tree.setAttribute(Child(tree, Root(tree), 0), "a", "2"), 1);
    ASSERT_EQ(tree.saveToFile(folder.Path("d.xml")), 1);
    std::string expected = text;
    expected.replace(expected.find("<r  >"), 5, "<r>");
    expected.replace(expected.find("\"1\"/>"), 5, "\"2\"/>");
    EXPECT_EQ(folder.Read("d.xml"), expected);
    EXPECT_EQ(folder.Count(), 1) << "no temporary file";

    ASSERT_EQ(tree.loadFromFile(folder.Write("plain.xml", "<r><x/></r>"), 1), 1);
    ASSERT_EQ(tree.saveToFile(folder.Path("plain.xml")), 1);
    EXPECT_EQ(folder.Read("plain.xml"), "<r><x/></r>");

    const std::string latin = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<r>\xE4</r>";
    ASSERT_EQ(tree.loadXML(latin, 1), 1);
    ASSERT_EQ(tree.saveToFile(folder.Path("latin.xml")), 1);
    EXPECT_EQ(folder.Read("latin.xml"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<r>\xC3\xA4</r>");
}

TEST(AXMLTree, AFailedSaveLeavesTheOldFile) {
    const TestFolder folder;
    const AXMLTree tree("RootElement");
    std::filesystem::create_directories(folder.Name("folder.xml/inside"));
    EXPECT_EQ(tree.saveToFile(folder.Path("folder.xml")), 0);
    EXPECT_EQ(tree.saveToFile(folder.Path("missing/d.xml")), 0);
    EXPECT_EQ(tree.saveToFile(folder.Path("x").Append("..")), 0) << "an invalid path";
    EXPECT_EQ(folder.Count(), 1) << "no temporary file";
    const AFilePath saved = folder.Write("d.xml",
                                         "an old file that is longer than the new one, so "
                                         "that its end would show behind the new text");
    EXPECT_EQ(tree.saveToFile(saved), 1);
    AXMLTree again("x");
    EXPECT_EQ(again.loadFromFile(saved, 1), 1);
    EXPECT_EQ(again.getName(Root(again)), "RootElement");
}

TEST(AXMLTree, TextsAreInTheCodePage) {
    const TestFolder folder;
    setenv("QL_CODE_PAGE", "CP1252", 1);
    AXMLTree tree("RootElement");
    ASSERT_EQ(tree.loadXML("<r n='\xC3\xA4\xE2\x82\xAC'>\xE6\xBC\xA2!</r>", 1), 1);
    EXPECT_EQ(tree.getAttribute(Root(tree), "n"), "\xE4\x80");
    EXPECT_EQ(tree.getValue(Root(tree)), "?!");
    AXMLTreeNode child;
    ASSERT_EQ(tree.addChild(child, Root(tree), "\xFC", "\xDF", -1), 1);
    EXPECT_EQ(tree.getChild("\xFC", Root(tree), child), 1);
    ASSERT_EQ(tree.setAttribute(child, "n", "\xE9"), 1);
    ASSERT_EQ(tree.saveToFile(folder.Path("d.xml")), 1);
    unsetenv("QL_CODE_PAGE");
    EXPECT_EQ(folder.Read("d.xml"),
              "<r n=\"\xC3\xA4\xE2\x82\xAC\">\xE6\xBC\xA2!<\xC3\xBC n=\"\xC3\xA9\">\xC3\x9F</"
              "\xC3\xBC></r>");
}

TEST(AXMLTree, LongListsAndDeepOnesDoNotHurt) {
    constexpr int32_t kItems = 100000;
    std::string list = "<r>";
    for (int32_t i = 0; i < kItems; ++i)
        list += "<i n='" + std::to_string(i) + "'/>";
    AXMLTree tree("RootElement");
    ASSERT_EQ(tree.loadXML(list + "</r>", 1), 1);
    // A loop as callers write it, the count asked for at each turn.
    int32_t found = 0;
    AXMLTreeNode item;
    for (int32_t i = 0; i < tree.getChildCount(Root(tree)); ++i) {
        found += tree.getChild(i, Root(tree), item);
    }
    EXPECT_EQ(found, kItems);
    EXPECT_EQ(tree.getAttribute(item, "n"), "99999");

    constexpr std::size_t kDepth = 1000000;
    std::string deep;
    for (std::size_t i = 0; i < kDepth; ++i)
        deep += "<a>";
    for (std::size_t i = 0; i < kDepth; ++i)
        deep += "</a>";
    const TestFolder folder;
    ASSERT_EQ(tree.loadXML(deep, 1), 1);
    ASSERT_EQ(tree.saveToFile(folder.Path("deep.xml")), 1);
    EXPECT_GT(folder.Read("deep.xml").size(), deep.size() - 10);
    EXPECT_EQ(tree.loadXML(deep.substr(0, kDepth * 3), 1), 0);
}

TEST(AEnXMLTree, ReadsGzipAndPlainButNothingDamaged) {
    const TestFolder folder;
    const std::string text = "<r><n>42</n>" + std::string(200000, ' ') + "</r>";
    const std::string packed = Gzip(text);
    const std::size_t half = text.size() / 2;
    std::string badChecksum = packed;
    badChecksum[packed.size() - 7] ^= 1;
    std::string badLength = packed;
    badLength[packed.size() - 1] ^= 1;
    const struct {
        const char* what;
        std::string bytes;
        int32_t answer;
    } kCases[] = {
        {"plain", text, 1},
        {"gzip", packed, 1},
        {"two members", Gzip(text.substr(0, half)) + Gzip(text.substr(half)), 1},
        {"checksum", badChecksum, 0},
        {"length", badLength, 0},
        {"cut in the trailer", packed.substr(0, packed.size() - 1), 0},
        {"cut in the data", packed.substr(0, packed.size() / 2), 0},
        {"cut in the header", packed.substr(0, 5), 0},
        {"garbage behind", packed + "x", 0},
        {"a cut second member", packed + packed.substr(0, 12), 0},
        {"no document inside", Gzip("text"), 0},
        {"nothing inside", Gzip(""), 0},
        {"empty", "", 0},
    };
    for (const auto& row : kCases) {
        AEnXMLTree tree("RootElement");
        const AFilePath path = folder.Write("d.xml", row.bytes);
        EXPECT_EQ(tree.loadFromFileEn(path, 1), row.answer) << row.what;
        AXMLTreeNode child;
        tree.getChild("n", Root(tree), child);
        EXPECT_EQ(tree.getValue(child), row.answer == 1 ? "42" : "") << row.what;
        EXPECT_EQ(tree.loadFromFile(path, 1), row.bytes == text ? 1 : 0) << row.what;
    }
}

TEST(AEnXMLTree, IsNotMisledIntoHangingOrSwelling) {
    const TestFolder folder;
    AEnXMLTree tree("RootElement");
    ASSERT_EQ(mkfifo(folder.Name("pipe").c_str(), 0600), 0);
    for (const AFilePath& path : {folder.Path("pipe"), folder.Path(""), folder.Path("missing"),
                                  folder.Path("x").Append(".."), AFilePath("/dev/zero")}) {
        EXPECT_EQ(tree.loadFromFileEn(path, 1), 0) << path.fullPath();
    }
    const std::string blanks = Gzip(std::string(1000, ' '));
    EXPECT_TRUE(InflateGzip(blanks, 1000).has_value());
    EXPECT_FALSE(InflateGzip(blanks, 999).has_value());
    EXPECT_FALSE(InflateGzip(blanks + blanks, 1999).has_value());
}

}  // namespace
