// What `driverhost check` says of model data, and whether it agrees with the driver.

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <pugixml.hpp>
#include <set>
#include <sstream>

#include "DriverHostFixture.h"
#include "driverhost/check/FileChecks.h"

namespace {

/// Nothing is to be said of it. The tests name its lines.
constexpr char kDescription[] = R"(<Printer>
<BaseResourceNumber>
  <BaseMedia/><BasePrintMode/><BaseResolution>-1</BaseResolution><BaseColor/><BaseColorMode/>
</BaseResourceNumber>
<Definition>
  <MediaList DefaultMedia="1">
    <M><ID>0</ID><InternalName>film</InternalName><DisplayName>Film</DisplayName></M>
    <M><ID>1</ID><InternalName>vinyl</InternalName><DisplayName>Vinyl</DisplayName></M>
  </MediaList>
  <PrintModeList>
    <P><ID>0</ID><InternalName>fast</InternalName><DisplayName>Fast</DisplayName></P>
  </PrintModeList>
  <ResolutionList>
    <R><ID>0</ID><XResValue>360</XResValue><YResValue>720</YResValue><DisplayName>Low</DisplayName></R>
    <R><ID>1</ID><XResValue>720</XResValue><YResValue>720</YResValue><DisplayName>High</DisplayName></R>
  </ResolutionList>
  <ColorList>
    <C><ID>0</ID><InternalName>Cyan</InternalName><DisplayName>Cyan</DisplayName><ChannelName>filename_C.tif</ChannelName></C>
    <C><ID>1</ID><InternalName>Black</InternalName><DisplayName>Black</DisplayName><ChannelName>filename_K.tif</ChannelName></C>
    <C><ID>2</ID><InternalName>White</InternalName><DisplayName>White</DisplayName><ChannelName>filename_W.tif</ChannelName></C>
  </ColorList>
  <ColorModeList>
    <K><ID>0</ID><InternalName>two</InternalName><DisplayName>Two</DisplayName><ColorantList>
      <I ID="0" IsSpotColor="0"><ColorDepth>1</ColorDepth></I>
      <I ID="1" IsSpotColor="0"><ColorDepth>1</ColorDepth></I></ColorantList></K>
    <K><ID>1</ID><InternalName>one</InternalName><DisplayName>One</DisplayName><ColorantList>
      <I ID="1"><ColorDepth>8</ColorDepth></I></ColorantList></K>
  </ColorModeList>
</Definition>
<Control_Definition>
  <M ID="0" DefaultPrintMode="0"><P ID="0">
    <R ID="0" DefaultColorMode="0"><K ID="0"/><K ID="1"/></R>
    <R ID="1" DefaultColorMode="1"><K ID="1"/></R></P></M>
  <M ID="1" DefaultPrintMode="0"><P ID="0">
    <R ID="0" DefaultColorMode="0"><K ID="0"/></R>
    <R ID="1" DefaultColorMode="0"><K ID="0"/></R></P></M>
</Control_Definition>
<ModelList>
  <E Name="Roll" TypeRead="PAGE" PrinterDirection="NO" CreateFolder="YES" SupportWhite="1|Under,Full;1,3;0,1">
    <JobTicketParam name="ticket.txt" code="utf-8"/>
    <HeaderParam name="header.txt" output="filename.hdr" EndRip="NO"/>
    <PreviewParam type="PNG" sizeH="300" sizeV="200" bestFit="0" name="filename.png"/>
  </E>
</ModelList>
</Printer>
)";

constexpr char kModels[] = "<Models>\n<Model Name=\"Roll\" XMLFile=\"roll.xml\"/>\n</Models>\n";

/// The first occurrence of `from`, which must be there, becomes `to`.
struct Edit {
    std::string from;
    std::string to;
};

std::string Edited(std::string text, const std::vector<Edit>& edits) {
    for (const auto& [from, to] : edits)
        text.replace(text.find(from), from.size(), to);  // throws when it is not there
    return text;
}

using Starts = std::vector<const char*>;

struct FaultCase {
    std::vector<Edit> Edits;
    Starts Found;  ///< LINE:COLUMN: severity: and how the text starts, in order
};

const FaultCase kDescriptionFaults[] = {
    {{}, {}},
    // Refused by the driver.
    {{{"<ID>1</ID><InternalName>vinyl", "<ID>-1</ID><InternalName>vinyl"}},
     {"8:8: error: ID \"-1\" is no number of 0 or more; the driver refuses the description: "
      "\"Wrong "
      "media index.\""}},
    {{{"<XResValue>720</XResValue><YResValue>720</YResValue>", "<XResValue>0</XResValue>"}},
     {"15:5: error: the item has no element \"YResValue\"",
      "15:18: error: XResValue is 0 dots per inch"}},
    {{{"<I ID=\"1\"><ColorDepth>8", "<I ID=\"3\"><ColorDepth>8"}},
     {"27:10: error: ID \"3\" is no position of the 3 colours"}},
    {{{"<Control_Definition", "<Control_Definitions"},
      {"</Control_Definition", "</Control_Definitions"}},
     {"1:1: error: no element \"Control_Definition\"",
      "30:1: error: element \"Control_Definitions\" is not read (did you mean "
      "\"Control_Definition\"?)"}},
    // Misread: identifiers that are no positions, combinations of nothing, files that collide.
    {{{"<ID>1</ID><InternalName>Black", "<ID>0</ID><InternalName>Black"}},
     {"19:8: error: ID 0 is taken by the item in line 18"}},
    {{{"<ID>2</ID><InternalName>White", "<ID>7</ID><InternalName>White"}},
     {"20:8: error: ID 7 is not the item's position, 2"}},
    {{{"<R ID=\"1\" DefaultColorMode=\"1\"><K ID=\"1\"/>",
       "<R ID=\"2\" DefaultColorMode=\"1\"><K/>"}},
     {"33:8: error: ID \"2\" names nothing", "33:36: error: the item has no ID"}},
    {{{"<K ID=\"0\"/><K ID=\"1\"/>", "<K ID=\"1\"/><K ID=\"1\"/>"}},
     {"32:15: warning: DefaultColorMode 0 is not allowed here", "32:50: error: ID 1 is taken"}},
    {{{"filename_K.tif", "filename_C.tif"}},
     {"23:5: error: channels 1 and 2 of \"Two\" share the file"}},
    {{{"filename_K.tif", "filename.HDR"}},
     {"19:84: warning: ChannelName \"filename.HDR\" makes a file of raw lines",
      "39:3: error: the header and a channel of \"Two\" share the file"}},
    {{{"filename_C.tif", "../filename_C.tif"}},
     {"18:82: error: ChannelName \"../filename_C.tif\""}},
    {{{"name=\"filename.png\"", "name=\"filename.hdr\""}},
     {"39:3: error: the header and the preview share the file \"filename.hdr\""}},
    {{{"\"ticket.txt\"", "\"../ticket.txt\""}},
     {"40:21: error: \"../ticket.txt\" names a file outside"}},
    {{{"\"header.txt\"", "\"heade.txt\""}}, {"41:18: error: "}},
    {{{"<ID>1</ID><InternalName>vinyl", "<Id>1</Id><InternalName>vinyl"}},
     {"8:5: error: the item has no element \"ID\"",
      "8:8: error: element \"Id\" is not read (did you mean \"ID\"?)"}},
    // Found by its number alone.
    {{{"<ID>1</ID><InternalName>Black", "<ID>01</ID><InternalName>Black"}},
     {"25:10: error: channel names are looked up by the text of the ID: \"1\" is not \"01\"",
      "27:10: error: channel names are looked up"}},
    {{{"<ID>1</ID><InternalName>one", "<ID>1, 2</ID><InternalName>one"}},
     {"26:8: warning: only the 1 of ID \"1, 2\" is read",
      "26:8: error: channel names are looked up by the text of the ID, which is \"1, 2\" and "
      "must"}},
    {{{"<InternalName>film", "<InternalName>" + std::string(64, 'f')}},
     {"7:18: error: InternalName is longer than the 63 bytes"}},
    // What the files look like.
    {{{"<ColorDepth>8", "<ColorDepth>16"}}, {"27:17: error: ColorDepth 16 cannot be printed"}},
    {{{"<ColorDepth>1</ColorDepth></I>\n", "<ColorDepth>2</ColorDepth></I>\n"}},
     {"25:33: error: ColorDepth 1 beside the 2 of an earlier colorant"}},
    {{{"filename_K.tif", "filename_K.tfi"}},
     {"19:84: error: ChannelName \"filename_K.tfi\" makes a file of raw lines; did you mean "
      "\".tif\""}},
    {{{"filename_K.tif", "filename_K.raw"}},
     {"19:84: warning: ChannelName \"filename_K.raw\" makes a file of raw lines, where \".tif\" "
      "makes one of TIFF"}},
    {{{"filename_C.tif", "filename.c"}, {"filename_K.tif", "filename.k"}, {"_W.tif", ".w"}}, {}},
    {{{"filename_W.tif", "filename_C.tif"}},
     {"39:3: error: the white ink and a channel of \"Two\" share the file \"filename_C.tif\""}},
    {{{"filename.hdr", "filename_W.tif"}},
     {"39:3: error: the header and the white ink share the file \"filename_W.tif\""}},
    // An only channel has the job's name, and its own when it is blank.
    {{{"<I ID=\"1\"><ColorDepth>8", "<I ID=\"0\"><ColorDepth>8"},
      {"      <I ID=\"0\" IsSpotColor=\"0\"><ColorDepth>1</ColorDepth></I>\n", ""},
      {"filename.hdr", "filename_C.tif"}},
     {"38:3: error: the header and a channel of \"One\" share the file \"filename_C.tif\""}},
    {{{"PrinterDirection=\"NO\"", "PrinterDirection=\"YSE\""}},
     {"39:34: error: PrinterDirection \"YSE\" counts as NO (did you mean \"YES\"?)"}},
    {{{"TypeRead=\"PAGE\"", "TypeRead=\"LINE_BY_LIN\""}},
     {"39:18: error: TypeRead \"LINE_BY_LIN\" counts as PAGE (did you mean \"LINE_BY_LINE\"?)"}},
    {{{"PrinterDirection=", "PrinterDirektion="}},
     {"39:34: error: attribute \"PrinterDirektion\" is not read (did you mean "
      "\"PrinterDirection\"?)"}},
    {{{"1|Under,Full;1,3;0,1", "2|Under,Full;1,x;0"}},
     {"39:75: error: SupportWhite has 2 names, 2 codes and 1 header codes",
      "39:75: error: the default 2 is none of the codes",
      "39:75: error: \"1,x;0\" holds more than numbers"}},
    {{{"output=\"filename.hdr\"", "output=\"\""}},
     {"41:5: error: no output: the driver writes no header"}},
    {{{"<E Name=\"Roll\"", "<E Name=\"roll\""}}, {"39:6: error: no model has these rules"}},
    {{{"sizeV=\"200\" bestFit=\"0\"", "sizeV=\"4000\" bestFit=\"1\""}}, {}},
    {{{"sizeV=\"200\" bestFit=\"0\"", "sizeV=\"5000\" bestFit=\"1\""}},
     {"42:42: error: no preview is made of a page whose longer side is less than 1.6 times"}},
    {{{"sizeV=\"200\"", "sizeV=\"0\""}}, {"42:5: error: no preview is made"}},
    // Ignored or guessed.
    {{{"<ID>0</ID><InternalName>film", "<ID>0 x</ID><InternalName>film"}},
     {"7:8: warning: only the 0 of ID \"0 x\" is read"}},
    {{{"<ID>0</ID><InternalName>film", "<ID>0<!-- -->5</ID><InternalName>film"}},
     {"7:21: warning: only the text before is read"}},
    {{{"<M><ID>0</ID>", "<M ID=\"0\"><ID>0</ID><Weight/>text"}},
     {"7:8: warning: attribute \"ID\" is not read; it is read from a child element",
      "7:25: warning: element \"Weight\" is not read", "7:34: warning: this text is not read"}},
    {{{"DefaultMedia=\"1\"", "DefaultMedium=\"1\" DefaultMedia=\"x\""}},
     {"6:14: warning: attribute \"DefaultMedium\" is not read (did you mean \"DefaultMedia\"?)",
      "6:32: warning: DefaultMedia \"x\" is no number; 0 is read"}},
    {{{"CreateFolder=\"YES\"", "CreateFolder=\"no\""}, {"filename_C.tif", "c.tif"}},
     {"18:82: warning: \"c.tif\" holds no job name: each job replaces",
      "40:21: warning: \"ticket.txt\" holds no job name"}},
    {{{"<I ID=\"0\" IsSpotColor=\"0\"", "<I IsSpotColor=\"2\""}},
     {"24:7: warning: the colorant has no ID; it counts as colour 0",
      "24:10: warning: IsSpotColor 2"}},
    {{{"<R ID=\"0\" DefaultColorMode=\"0\"><K ID=\"0\"/></R>", ""}},
     {"36:5: warning: the only resolution here serves every resolution"}},
    {{{"<M ID=\"1\" DefaultPrintMode=\"0\"><P ID=\"0\">",
       "<M ID=\"1\" DefaultPrintMode=\"4\"><P ID=\"0\">"}},
     {"34:13: warning: DefaultPrintMode \"4\" is no position of PrintModeList"}},
    {{{"<K ID=\"0\"/><K ID=\"1\"/></R>", "<K ID=\"0\"/></R>"},
      {"<R ID=\"1\" DefaultColorMode=\"1\"><K ID=\"1\"/>",
       "<R ID=\"1\" DefaultColorMode=\"0\"><K ID=\"0\"/>"}},
     {"26:5: warning: no combination allows this colour mode"}},
    {{{"<InternalName>White", "<InternalName>Weiss"}},
     {"20:5: warning: no colour mode prints this colour",
      "39:75: warning: no colour with the InternalName \"White\""}},
    {{{"type=\"PNG\"", "type=\"png\""}},
     {"42:19: warning: type \"png\" counts as BMP (did you mean \"PNG\"?)",
      "42:66: warning: name \"filename.png\" does not say"}},
    {{{"<XResValue>360</XResValue><YResValue>720</YResValue><DisplayName>Low",
       "<XResValue>360</XResValue><YResValue>720</YResValue><DisplayName>720 x 360 dpi"}},
     {"14:18: warning: \"720 x 360 dpi\" has 360 dots per inch across and 720 down"}},
    {{{"<XResValue>360</XResValue><YResValue>720</YResValue><DisplayName>Low",
       "<XResValue>360</XResValue><YResValue>720</YResValue><DisplayName>360x720, 8 pass"}},
     {}},
};

class Check : public DriverHost {
  protected:
    Check() {
        for (const char* const folder : {"HeaderTemplates", "JobTicketTemplates"})
            fs::create_directories(Path(Data(folder)));
        Write(Data("ZeComFile.xml"), kModels);
        Write(Data("roll.xml"), kDescription);
        Write(Data("HeaderTemplates/header.txt"), "int32,QL_WIDTH\r\n");
        Write(Data("JobTicketTemplates/ticket.txt"), "QL_COPIES\r\n");
    }

    static std::string Data(const std::string& name) { return "base/OutputDrivers/" + name; }

    /// The findings of a file in the whole base folder.
    std::vector<std::string> Found(const std::string& file) const {
        const Outcome checked = Host({"check", "base"});
        EXPECT_EQ(checked.Status, Contains(checked.Output, ": error: ") ? 1 : 0) << checked.Output;
        return FoundIn(file, checked);
    }
};

TEST_F(Check, FindsFaultsOfADescriptionWhereTheyStand) {
    for (const FaultCase& fault : kDescriptionFaults) {
        Write(Data("roll.xml"), Edited(kDescription, fault.Edits));
        SCOPED_TRACE(fault.Edits.empty() ? "" : fault.Edits[0].to);
        ExpectFound(Found(Data("roll.xml")), fault.Found);
    }
    // In the encoded form the places are those of the text; in other encodings of the characters.
    Write("plain.xml", Edited(kDescription, {{"<ID>0</ID><InternalName>film",
                                              "<ID>\xC3\xA4</ID><InternalName>film"}}));
    const std::string place = "7:8: error: ID \"\xC3\xA4\"";
    Write(Data("roll.xml"), Edited(kDescription, {{"Film", "Folie f\xFCr"}}));
    ExpectFound(
        Found(Data("roll.xml")),
        Starts{"7:71: error: no XML document: bytes that are no UTF-8"});
    for (const char* const encode :
         {"gzip -c", "iconv -f utf-8 -t utf-16", "iconv -f utf-8 -t utf-16be"}) {
        ASSERT_EQ(Shell(fmt::format("{} plain.xml > {}", encode, Data("roll.xml"))).Status, 0);
        EXPECT_TRUE(Found(Data("roll.xml")).at(0).starts_with(place)) << encode;
    }
}

TEST_F(Check, FollowsTheModelListAndTheFilesThatItNames) {
    Write(Data("ZeComFile.xml"),
          "<Models>\n"
          "<Model Name=\"Roll\" XMLFile=\"roll.xml\" Nmae=\"x\"/>\n"
          "<Model Name=\"Roll 2\" XMLFile=\"roll.xml\"/>\n"
          "<Model Name=\"Flat\" XMLFile=\"roll.xml\"/>\n"
          "<Model Name=\"Lost\" XMLFile=\"../lost.xml\"/>\n"
          "<Model XMLFile=\"lost.xml\"/>\n"
          "<Model Name=\"Last\"/>\n"
          "</Models>\n");
    ExpectFound(Found(Data("ZeComFile.xml")),
                Starts{"2:39: warning: attribute \"Nmae\" is not read (did you mean \"Name\"?)",
                       "3:8: error: no model reaches this entry: the entry in line 2 takes",
                       "4:1: error: \"roll.xml\" has no output rules",
                       "5:20: error: \"../lost.xml\" names a file outside its folder",
                       "6:1: warning: the entry has no Name",
                       "6:8: error: ", "7:1: error: the entry has no XMLFile",
                       "7:8: error: no model reaches this entry: the entry in line 6"});
    Write(Data("ZeComFile.xml"), kModels);
    // Halftone lists, options, what nothing names and what a host needs.
    Write(Data("stray.xml"), "<a/>");
    Write(Data("Ditherparams.xml"),
          "<H><ManufacturerList><M Name=\"a\" ManufactureXML=\"none.xml\"/>\n"
          "<M Name=\"b\" ManufactureMAPXML=\"map.xml\"/></ManufacturerList></H>");
    Write(Data("map.xml"), "<m><x Name=\"Roll\" XMLFile=\"stray.xml\"/></m>");
    ExpectFound(Found(Data("Ditherparams.xml")), Starts{"1:34: error: "});
    ExpectFound(Found(Data("stray.xml")), Starts{"1:1: error: no element \"PrinterHardware\""});
    Write(Data("map.xml"), "<m/>");
    ExpectFound(Found(Data("stray.xml")), Starts{"1:1: warning: no other file names this one"});
    fs::create_directories(Path("base/Jobs and Settings/OptionsDrivers"));
    Write("base/Jobs and Settings/OptionsDrivers/QL_DROP_1.xml",
          "<R><DriverOptions SupportWhiteType=\"x\"/></R>");
    ExpectFound(Found("base/Jobs and Settings/OptionsDrivers/QL_DROP_1.xml"),
                Starts{"1:19: warning: SupportWhiteType \"x\""});
    ExpectFound(Found("base/Temp"), Starts{"1:1: error: the folder does not exist: reversed"});
    Write("base/Temp", "");
    ExpectFound(Found("base/Temp"), Starts{"1:1: error: it is no folder"});
    Write(Data("JobTicketTemplates/ticket.txt"), "QL_COPYS QL_TILES QL_TILES QL_HOUSE\r\n");
    ExpectFound(Found(Data("JobTicketTemplates/ticket.txt")),
                Starts{"1:1: error: no keyword \"QL_COPYS\" (did you mean \"QL_COPIES\"?)",
                       "1:19: error: only the first QL_TILES is replaced",
                       "1:28: warning: no keyword \"QL_HOUSE\""});
}

TEST_F(Check, TakesOneFileAndAnswersWithItsStatus) {
    Write(Data("roll.xml"), Edited(kDescription, {{"type=\"PNG\"", "type=\"gif\""}}));
    Write("alone.xml", kDescription);
    Write("list.xml", "<a><b/></a>");
    const std::string path = Data("roll.xml");
    const std::tuple<Arguments, int, const char*> cases[] = {
        {{"check", path}, 0, "base/OutputDrivers/roll.xml:42:19: warning: "},
        {{"check", path, "--strict"}, 1, "3 files checked: 0 errors, 2 warnings"},
        {{"check", "alone.xml", "--strict"}, 0, "1 file checked: 0 errors, 0 warnings"},
        {{"check", "list.xml"}, 1, "list.xml:1:1: error: no kind of file"},
        {{"check", "nowhere"}, 2, "there is no file or folder nowhere"},
        {{"check", "."}, 1, "OutputDrivers:1:1: error: the folder does not exist"},
        {{"--base", "base", "check"}, 0, "4 files checked: "},
    };
    for (const auto& [arguments, status, text] : cases) {
        const Outcome checked = Host(arguments);
        EXPECT_EQ(checked.Status, status) << checked.Output;
        EXPECT_TRUE(Contains(checked.Output, text)) << text << '\n' << checked.Output;
    }
    const auto report = nlohmann::json::parse(Host({"check", path, "--json"}).Output);
    EXPECT_EQ(report["warnings"], 2);
    EXPECT_EQ(report["findings"][0]["column"], 19);
    EXPECT_EQ(report["findings"][0]["file"], path);
}

TEST_F(Check, EndsOnHostileFilesWithAClearLine) {
    const std::string many(20000, 'x');
    std::string unknown;
    std::string attributes;
    std::string deep;
    for (int i = 0; i < 100'000; ++i) {
        unknown += "<y/>";
        attributes += fmt::format(" a{}='1'", i);
        deep += "<d>";
    }
    const std::pair<std::string, const char*> cases[] = {
        {"", ":1:1: error: no XML document"},
        {std::string("<a>\n\0</a>", 9), ":2:1: error: no XML document"},
        {"<a>\n <b></a>", ":2:"},
        {"<a/>\n<b/>", ":2:1: error: no XML document: a second root element"},
        {"\x1F\x8B\x08junk", ":1:1: error: the gzip data are damaged"},
        {"<" + many + "/>", ":1:1: error: no element \"Definition\""},
        {"<a>" + unknown + "</a>", "not listed"},
        {"<a><Definition" + attributes + "/></a>", "not listed"},
        {"<a><Definition>" + deep, "no XML document"},
        {"<a>" + std::string(1'000'001, '<'), ":1:1: error: not checked: 1000002 tags"},
        {"<a><Definition><x\n\tName=\"\x01&#10;\"/></Definition></a>", ":1:16: warning: "},
    };
    for (const auto& [bytes, text] : cases) {
        Write(Data("roll.xml"), bytes);
        const Outcome checked = Host({"check", "base"});
        EXPECT_EQ(checked.Status, 1) << bytes.substr(0, 60);
        EXPECT_TRUE(Contains(checked.Output, text))
            << bytes.substr(0, 60) << checked.Output.substr(checked.Output.size() - 300);
    }
}

/// Every value of a description, one after the other, set to this and that.
template <class Visit>
void ForEachChange(Visit visit) {
    pugi::xml_document document;
    document.load_string(kDescription);
    std::vector<pugi::xml_node> elements;
    const pugi::xpath_node_set all = document.select_nodes("//*");
    for (const char* const value : {"", "x", "-1", "7"}) {
        for (const pugi::xpath_node& found : all) {
            pugi::xml_node node = found.node();
            if (node.first_child() && node.first_child() == node.last_child() &&
                node.first_child().type() == pugi::node_pcdata) {
                const std::string before = node.text().get();
                node.text().set(value);
                visit(document);
                node.text().set(before.c_str());
            }
            for (pugi::xml_attribute attribute : node.attributes()) {
                const std::string before = attribute.value();
                attribute.set_value(value);
                visit(document);
                attribute.set_value(before.c_str());
            }
        }
    }
    for (const pugi::xpath_node& found : all) {
        pugi::xml_node node = found.node();
        const std::string before = node.name();
        node.set_name("Renamed");
        visit(document);
        node.set_name(before.c_str());
    }
}

TEST_F(Check, AgreesWithTheDriverOnWhatIsRefused) {
    int refused = 0;
    int loaded = 0;
    ForEachChange([&](const pugi::xml_document& document) {
        std::ostringstream text;
        document.save(text, "", pugi::format_raw);
        Write("changed.xml", text.str());
        CheckRun run;
        CheckDescription(run, AFilePath(Path("changed.xml").string()));
        bool saysRefused = false;
        for (const Findings::File& file : run.Found.Files()) {
            for (const Finding& finding : file.List) {
                saysRefused = saysRefused || Contains(finding.Text, "; the driver refuses");
                // What only the driver itself told.
                EXPECT_FALSE(finding.Text.starts_with("the driver refuses"))
                    << finding.Text << text.str();
            }
        }
        const bool isRefused = DriverRefusal(text.str()).has_value();
        EXPECT_EQ(saysRefused, isRefused) << text.str();
        ++(isRefused ? refused : loaded);
    });
    EXPECT_GT(refused, 50);
    EXPECT_GT(loaded, 50);
}

}  // namespace
