#include "host/AXMLTree.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <iconv.h>
#include <sys/stat.h>
#include <zlib.h>

#include <cstdlib>
#include <string>

#include "TestFolder.h"
#include "boundary/FileSizeLimit.h"
#include "host/FileBytes.h"
#include "host/Gzip.h"

namespace {

std::string Gzip(const std::string& bytes) {
    const TestFolder folder;
    gzFile file = gzopen(folder.Name("packed").c_str(), "wb");
    gzwrite(file, bytes.data(), static_cast<unsigned>(bytes.size()));
    gzclose(file);
    return folder.Read("packed");
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
        {"<a> \t text \n</a>", " \t text \n"},
        {"<a>\n  <![CDATA[<b> & ]]>\n</a>", "<b> & "},
        {"<a>\n  <b>inner</b> own </a>", " own "},
        {"<a>  </a>", "  "},
        {"<a><![CDATA[ ]]>x</a>", " "},
        {"<a>one<!-- c -->two</a>", "one"},
        {"<a>&lt;&amp;&#65;&quot;\r\n</a>", "<&A\"\n"},
        {"<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE4</a>", "\xC3\xA4"},
    };
    for (const auto& row : kCases) {
        AXMLTree tree("RootElement");
        ASSERT_EQ(tree.loadXML(row.xml, 1), 1) << row.xml;
        EXPECT_EQ(tree.getValue(Root(tree)), row.text) << row.xml;
    }
}

TEST(AXMLTree, WhatIsNoDocumentLeavesNoRoot) {
    using namespace std::string_view_literals;
    for (const std::string_view text :
         {""sv, "text"sv, "<a>"sv, "<a></b>"sv, "<a/>text"sv, "text<a/>"sv, "<a/><b/>"sv,
          "<a b=c/>"sv, "<!-- only -->"sv, "<a>\0</a>"sv, "<a/>\0<"sv, "\x1F\x8B\b"sv, "<a"sv}) {
        AXMLTree tree("RootElement");
        EXPECT_EQ(tree.loadXML(text, 1), 0) << text;
        // A handle to nothing is safe.
        AXMLTreeNode node;
        EXPECT_EQ(tree.getRootNode(node), 0) << text;
        EXPECT_EQ(tree.getChildCount(node) + tree.getChild(0, node, node), 0);
        EXPECT_EQ(tree.addChild(node, node, "a", "", -1) + tree.setAttribute(node, "a", "b"), 0);
        EXPECT_EQ(tree.getAttribute(node, "a") + tree.getValue(node) + tree.getName(node), "");
    }
}

TEST(AXMLTree, SavesWithoutLosingAnything) {
    const TestFolder folder;
    const std::string declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
    AXMLTree own("RootElement");
    AXMLTreeNode item;
    EXPECT_EQ(own.getChildCount(Root(own)), 0);
    ASSERT_EQ(own.addChild(item, Root(own), "List", "", -1), 1);
    EXPECT_EQ(own.getChildCount(Root(own)), 1);
    ASSERT_EQ(own.addChild(item, item, "Item", "a < b & c", -1), 1);
    ASSERT_EQ(own.setAttribute(item, "Name", "\"old\""), 1);
    ASSERT_EQ(own.setAttribute(item, "Name", "\"new\" & <tag>"), 1);
    const AFilePath path = folder.Write("d.xml", std::string(1000, 'x'));
    ASSERT_EQ(own.saveToFile(path), 1);
    EXPECT_EQ(folder.Read("d.xml"),
              declaration +
                  "\n<RootElement>\n  <List>\n"
                  "    <Item Name=\"&quot;new&quot; &amp; &lt;tag>\">a &lt; b &amp; c</Item>\n"
                  "  </List>\n</RootElement>\n");

    const std::string before = declaration + "\n<!-- a -->\n\n<r>\n\t<!-- b -->\n   <x a=\"";
    const std::string after =
        "\"/> <![CDATA[<raw>]]>\n<?do it?><y>  two </y>\n\n</r>\n<!-- c -->\n";
    AXMLTree loaded("RootElement");
    ASSERT_EQ(loaded.loadFromFile(folder.Write("d.xml", before + "1" + after), 1), 1);
    ASSERT_EQ(loaded.getChild(0, Root(loaded), item), 1);
    ASSERT_EQ(loaded.setAttribute(item, "a", "2"), 1);
    ASSERT_EQ(loaded.saveToFile(path), 1);
    EXPECT_EQ(folder.Read("d.xml"), before + "2" + after);

    std::filesystem::create_directories(folder.Name("folder/inside"));
    {
        const FileSizeLimit limit(10);
        EXPECT_EQ(own.saveToFile(path), 0);
    }
    EXPECT_EQ(own.saveToFile(folder.Path("folder")), 0);
    EXPECT_EQ(own.saveToFile(folder.Path("x").Append("..")), 0);
    EXPECT_EQ(folder.Read("d.xml"), before + "2" + after) << "a failed save leaves the old file";
    EXPECT_EQ(folder.Count(), 2) << "no temporary file";
}

TEST(AXMLTree, TextsAreInTheCodePage) {
    const TestFolder folder;
    setenv("QL_CODE_PAGE", "CP1252", 1);
    AXMLTree tree("RootElement");
    AXMLTreeNode child;
    ASSERT_EQ(tree.loadXML("<r n='ä'>漢!</r>", 1), 1);
    EXPECT_EQ(tree.getAttribute(Root(tree), "n"), "\xE4");
    EXPECT_EQ(tree.getValue(Root(tree)), "?!");
    ASSERT_EQ(tree.addChild(child, Root(tree), "\xFC", "\xDF", -1), 1);
    EXPECT_EQ(tree.getChild("\xFC", Root(tree), child), 1);
    ASSERT_EQ(tree.setAttribute(child, "n", "\x80"), 1);
    ASSERT_EQ(tree.saveToFile(folder.Path("d.xml")), 1);
    unsetenv("QL_CODE_PAGE");
    EXPECT_EQ(folder.Read("d.xml"), "<r n=\"ä\">漢!<ü n=\"€\">ß</ü></r>");
}

/// UTF-8 in another encoding, as the system converts it.
std::string In(const char* encoding, std::string text) {
    iconv_t converter = iconv_open(encoding, "UTF-8");
    std::string out(text.size() * 4 + 4, '\0');
    char* from = text.data();
    char* to = out.data();
    std::size_t fromLeft = text.size();
    std::size_t toLeft = out.size();
    iconv(converter, &from, &fromLeft, &to, &toLeft);
    iconv_close(converter);
    return out.substr(0, out.size() - toLeft);
}

/// "<?xml … encoding='NAME'?>" and a root with this text, in that encoding.
std::string Declared(const char* name, const char* encoding, const std::string& text = "漢ä") {
    return In(encoding, fmt::format("<?xml version='1.0' encoding=\"{}\"?><a>{}</a>", name, text));
}

TEST(AXMLTree, ReadsTheEncodingThatADocumentHas) {
    const std::string mark = "\xEF\xBB\xBF";
    const std::string plain = "\n<a>漢ä</a>";
    const std::string cases[] = {
        plain,
        mark + plain,
        mark + Declared("utf-8", "UTF-8"),
        Declared("UTF8", "UTF-8"),
        "<?xml version='1.0'?><a>漢ä</a>",
        "<?xml-x encoding='GBK'?><a>漢ä</a>",
        In("UTF-16LE", plain),
        In("UTF-16BE", plain),
        In("UTF-16LE", mark + plain),
        In("UTF-16BE", mark + plain),
        In("UTF-32LE", plain),
        In("UTF-32BE", mark + plain),
        Declared("UTF-16", "UTF-16LE"),
        Declared("utf-16", "UTF-16BE"),
        Declared("UTF-16BE", "UTF-16BE"),
        In("UTF-16BE", mark) + Declared("UTF-16", "UTF-16BE"),
        Declared("UTF-32", "UTF-32BE"),
        Declared("GB18030", "GB18030"),
        Declared("EUC-JISX0213", "EUC-JISX0213"),
        "\r\n" + Declared("GB18030", "GB18030"),
    };
    for (const std::string& bytes : cases) {
        AXMLTree tree("RootElement");
        EXPECT_EQ(tree.loadXML(bytes, 1), 1) << bytes;
        EXPECT_EQ(tree.getValue(Root(tree)), "漢ä") << bytes;
    }
    const struct {
        const char* name;
        const char* text;
    } pages[] = {{"Shift_JIS", "表ソ"},  {"Big5", "功"},       {"euc-kr", "한"},
                 {"windows-1251", "Жы"}, {"ISO-8859-15", "€"}, {"IBM037", "ä"}};
    for (const auto& [name, text] : pages) {
        AXMLTree tree("RootElement");
        EXPECT_EQ(tree.loadXML(Declared(name, name, text), 1), 1) << name;
        EXPECT_EQ(tree.getValue(Root(tree)), text) << name;
    }
}

TEST(AXMLTree, RefusesBytesThatAreNotInItsEncoding) {
    const std::string cases[] = {
        "<a>\xE4</a>",
        "<a>\xC0\xAF</a>",
        "<a>\xED\xA0\x80</a>",
        "<a/><!--\xFF-->",
        Declared("utf-8", "ISO-8859-1", "ä"),
        Declared("US-ASCII", "UTF-8"),
        Declared("Shift_JIS", "UTF-8", "\x83"),
        Declared("klingon", "UTF-8", ""),
        Declared("ISO-8859-1//IGNORE", "UTF-8", ""),
        Declared("", "UTF-8", ""),
        // Declared in bytes that it cannot have.
        Declared("UTF-16", "UTF-8", ""),
        Declared("UTF-16BE", "UTF-16LE", ""),
        Declared("UTF-8", "UTF-16LE", ""),
        Declared("ISO-8859-1", "UTF-16LE", ""),
        "\xEF\xBB\xBF" + Declared("windows-1252", "UTF-8", ""),
        // Half of a character at the end, and half of a pair.
        In("UTF-16LE", "<a/>") + "x",
        In("UTF-16LE", "<a>") + std::string("\0\xD8", 2) + In("UTF-16LE", "</a>"),
    };
    for (const std::string& bytes : cases) {
        AXMLTree tree("RootElement");
        EXPECT_EQ(tree.loadXML(bytes, 1), bytes == cases[9] ? 1 : 0) << bytes;
    }
    AXMLTree tree("RootElement");
    const std::string most = "<a>" + std::string(64 * 1024 * 1024 - 7, ' ') + "</a>";
    EXPECT_EQ(tree.loadXML(most, 1), 1);
    EXPECT_EQ(tree.loadXML(most + ' ', 1), 0) << "too large";
    const std::string wide = Declared("ISO-8859-1", "ISO-8859-1", "");
    EXPECT_EQ(
        tree.loadXML(wide.substr(0, wide.size() - 4) + std::string(36'000'000, '\xE4') + "</a>", 1),
        1);
    EXPECT_EQ(tree.getValue(Root(tree)).size(), 72'000'000U);
}

TEST(AXMLTree, DeepDocumentsDoNotHurt) {
    AXMLTree tree("RootElement");
    std::string deep;
    for (int i = 0; i < 1000000; ++i)
        deep += "<a>";
    EXPECT_EQ(tree.loadXML(deep, 1), 0);
    for (int i = 0; i < 1000000; ++i)
        deep += "</a>";
    const TestFolder folder;
    ASSERT_EQ(tree.loadXML(deep, 1), 1);
    ASSERT_EQ(tree.saveToFile(folder.Path("deep.xml")), 1);
    EXPECT_GT(folder.Read("deep.xml").size(), deep.size() - 10);
}

TEST(AEnXMLTree, ReadsGzipAndPlainButNothingDamaged) {
    const TestFolder folder;
    const std::string text = "<r><n>42</n>" + std::string(200000, ' ') + "</r>";
    const std::string packed = Gzip(text);
    const std::string other = Gzip("<!-- more -->");
    const auto changed = [](std::string bytes, std::size_t fromEnd) {
        bytes[bytes.size() - fromEnd] ^= 1;
        return bytes;
    };
    const std::pair<std::string, bool> kCases[] = {
        {text, true},
        {packed, true},
        {packed + other, true},
        {changed(packed, 7), false},  // checksum
        {changed(packed, 1), false},  // length
        {packed.substr(0, packed.size() - 1), false},
        {packed.substr(0, packed.size() / 2), false},
        {packed + "x", false},
        {packed + other.substr(0, 12), false},
        {Gzip(""), false},
    };
    AEnXMLTree tree("RootElement");
    for (const auto& [bytes, isGood] : kCases) {
        const AFilePath path = folder.Write("d.xml", bytes);
        EXPECT_EQ(tree.loadFromFile(path, 1), bytes == text ? 1 : 0) << "reads plain files alone";
        EXPECT_EQ(tree.loadFromFileEn(path, 1), isGood ? 1 : 0) << bytes.size();
        AXMLTreeNode child;
        tree.getChild("n", Root(tree), child);
        EXPECT_EQ(tree.getValue(child), isGood ? "42" : "") << bytes.size();
    }
    // What misleads into hanging or swelling.
    ASSERT_EQ(mkfifo(folder.Name("pipe").c_str(), 0600), 0);
    for (const AFilePath& path : {folder.Path("pipe"), folder.Path(""), AFilePath("/dev/zero")})
        EXPECT_EQ(tree.loadFromFileEn(path, 1), 0) << path.fullPath();
    EXPECT_FALSE(ReadFileBytes(AFilePath("/proc/self/mem"))) << "an error is no end of the file";
    EXPECT_TRUE(InflateGzip(packed, text.size()).has_value());
    EXPECT_FALSE(InflateGzip(packed + packed, text.size() * 2 - 1).has_value());
}

}  // namespace
