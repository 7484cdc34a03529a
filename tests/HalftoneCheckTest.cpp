// What `driverhost check` says of halftone files.

#include "DriverHostFixture.h"

namespace {

constexpr char kDither[] = R"(<D>
<PrinterHardware>
<Model ID="Roll">
<Media ID="0,1">
<PrintMode ID="Default">
<Resolution ID="0">
<ColorMode ID="0">
<DitherParams ID="4">
<Level Value="4">
<Weight ColorInk="0" Level="0" Value="0.3"/>
<Weight ColorInk="0" Level="1" Value="0.6"/>
<Weight ColorInk="default" Level="2" Value="1"/>
</Level>
<AntiClogLevel Value="0"/><NoiseLevel Value="1"/>
</DitherParams>
<Item ColorName="Cyan" Angle="15" Frequency="60" ShapeName="Round"/>
</ColorMode>
</Resolution>
</PrintMode>
</Media>
</Model>
</PrinterHardware>
</D>
)";

struct Row {
    const char* From;
    const char* To;
    std::vector<const char*> Found;  ///< LINE:COLUMN: severity: and how the text starts, in order
};

const Row kRows[] = {
    {"<D>", "<D>", {}},
    // The tree.
    {"<Model ID=\"Roll\">", "<Model>", {"3:1: error: the model has no ID"}},
    {"<Model ID=\"Roll\">",
     "<Model ID=\"My Rolls\"/>\n<Model ID=\"Roll\">",
     {"3:1: error: no element \"Media\"; the driver shows \"Getting media node fails\"",
      "4:8: warning: nothing reaches this model: every name in its ID stands in that of line 3"}},
    {"<Media ID=\"0,1\">",
     "<Medium/>\n<Media ID=\"0,1\">",
     {"4:1: warning: element \"Medium\" is not read (did you mean \"Media\"?)"}},
    {"\"0,1\"", "\"0,,1\"", {"4:8: error: the list ends at its empty field: \"1\" is not read"}},
    {"\"0,1\"",
     "\"0,7mm,x,0\"",
     {"4:1: warning: only the 7 of ID \"7mm\" is read", "4:8: warning: \"x\" is no number",
      "4:8: warning: nothing reaches 0 here: line 4 serves it"}},
    {"<PrintMode ID=\"Default\">",
     "<PrintMode ID=\"Default\"><Resolution ID=\"Default\"><ColorMode ID=\"1\"><Item "
     "ColorName=\"a\" Angle=\"1\" Frequency=\"1\" ShapeName=\"Line\"/></ColorMode></Resolution>"
     "</PrintMode>\n<PrintMode ID=\"Default\">",
     {"5:12: warning: nothing reaches this entry: the \"Default\" of line 6 counts"}},
    // Dither leaves.
    {"<DitherParams ID=\"4\">",
     "<DitherParams ID=\"4,3\">",
     {"8:15: warning: nothing reaches the level count 3",
      "9:8: error: the entry serves 3 levels, but its Level is for \"4\""}},
    {"<DitherParams ID=\"4\">",
     "<DitherParams ID=\"Default\">",
     {"9:8: warning: of the level counts that \"Default\" serves, all but \"4\" are refused"}},
    {"Level=\"0\" Value=\"0.3\"",
     "Level=\"3\" Value=\"0,3\"",
     {"9:1: warning: ink 0 has no weight at position 0, which stays 0.333",
      "10:22: warning: position 3 is not used: of 4 levels, positions 0 to 2 are",
      "10:32: warning: only the 0 of Value \"0,3\" is read"}},
    {"ColorInk=\"0\" Level=\"0\"",
     "ColorInk=\"16\" Level=\"64\"",
     {"9:1: warning: ink 0 has no weight at position 0",
      "10:9: error: the weight is skipped: its ColorInk \"16\" is not a number of 0 to 15",
      "10:23: error: the weight is skipped: its Level \"64\" is not a number of 0 to 63"}},
    {"Level=\"1\" Value=\"0.6\"",
     "Level=\"0\" Value=\"2\"",
     {"9:1: warning: ink 0 has no weight at position 1",
      "9:8: error: the weights of ink 0 do not rise: position 1 has 0.6667 after 2",
      "10:1: warning: the weight is not used: a later one has its place",
      "11:32: warning: 2 is no share of full ink"}},
    {"Value=\"0.6\"", "Value=\"0.3\"", {"11:32: warning: the weights of ink 0 do not rise"}},
    {"Value=\"0.6\"", "Value=\"0.06\"", {"11:32: error: the weights of ink 0 do not rise"}},
    {"<AntiClogLevel Value=\"0\"/><NoiseLevel Value=\"1\"/>",
     "<AntiClogLevel/>",
     {"8:1: error: no element \"NoiseLevel\"; the driver shows \"Getting ditherparams-noise",
      "14:1: warning: the Value is no number of 32 bits: 0 is kept"}},
    // Screens.
    {"ShapeName=\"Round\"",
     "ShapeName=\"round\"",
     {"16:50: warning: no dot shape is named \"round\"; the host gets the name as it stands (did "
      "you mean \"Round\"?)"}},
    {"Angle=\"15\" Frequency=\"60\"",
     "Angle=\"7.5\" Frequency=\"-60\"",
     {"16:24: warning: where the decimal sign is a comma, only the 7 of \"7.5\" is read",
      "16:36: error: -60 is no Frequency"}},
    {"<Item ColorName=\"Cyan\"",
     "<Item Colour=\"Cyan\"",
     {"16:1: warning: the item has no ColorName and is passed over",
      "16:7: warning: attribute \"Colour\" is not read"}},
};

class HalftoneCheck : public DriverHost {
  protected:
    static std::string Edited(const std::string& from, const std::string& to) {
        std::string text = kDither;
        return text.replace(text.find(from), from.size(), to);
    }
};

TEST_F(HalftoneCheck, FindsFaultsOfAParameterFile) {
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.To);
        Write("a.xml", Edited(row.From, row.To));
        ExpectFound(FoundIn("a.xml", Host({"check", "a.xml"})), row.Found);
    }
}

// With the files that lead to it, a parameter file is held against the models that it is for.
TEST_F(HalftoneCheck, FollowsListsAndMaps) {
    ASSERT_EQ(Shell("cp -R '" MODELS_FOLDER "' base").Status, 0);
    const std::string data = "base/OutputDrivers/";
    Write(data + "Ditherparams.xml",
          "<L><ManufacturerList>\n"
          "<M Name='A' ManufactureMAPXML='map.xml'/>\n<M Name='a' ManufactureXML='none.xml'/>\n"
          "<M Name='B' ManufactureXML='MyDitherparams.xml'/>\n<M Name='C'/>\n"
          "</ManufacturerList></L>");
    Write(data + "map.xml",
          "<m>\n<x Name='Fenland R4' XMLFile='r4.xml'/>\n<x Name='Fenland S1' "
          "XMLFile='r4.xml'/>\n<x Name='fenland r4' XMLFile='r4.xml'/>\n<x/>\n</m>");
    std::string r4 = Edited("ID=\"Roll\">\n<Media ID=\"0,1\"",
                            "ID=\"Old\"/><Model ID=\"Fenland R4\"><Media ID=\"0,4\"");
    r4.replace(r4.find("</ColorMode>"), 0,
               "<Item ColorName=\"cYAN\" Angle=\"1\" Frequency=\"60\" ShapeName=\"Round\"/>\n"
               "<Item ColorName=\"Cyam\" Angle=\"1\" Frequency=\"60\" ShapeName=\"Round\"/>");
    Write(data + "r4.xml", r4);
    Write("b.xml", kDither);
    ASSERT_EQ(Shell("gzip -c b.xml > base/OutputDrivers/MyDitherparams.xml").Status, 0);
    const Outcome checked = Host({"check", "base"});
    using Starts = std::vector<const char*>;
    ExpectFound(FoundIn(data + "Ditherparams.xml", checked),
                Starts{"3:4: warning: nothing reaches this entry: line 2 has the name first",
                       "3:13: error: ", "5:1: warning: the manufacturer has neither"});
    ExpectFound(FoundIn(data + "map.xml", checked),
                Starts{"4:4: warning: nothing reaches this entry: line 2 has the name first",
                       "5:1: warning: the entry has no Name", "5:1: error: "});
    ExpectFound(
        FoundIn(data + "MyDitherparams.xml", checked),
        Starts{"1:1: error: the file is gzip-compressed; the driver reads this one as plain"});
    ExpectFound(FoundIn(data + "r4.xml", checked),
                Starts{"2:1: error: no element serves the model \"Fenland S1\"",
                       "3:1: error: no element \"Media\"",
                       "3:8: warning: nothing reaches this model: no model that leads to this file",
                       "3:48: warning: nothing reaches Media 4: the models of this file have 4",
                       "17:7: error: no colour of the models that lead to this file is named "
                       "\"Cyam\" (did you mean \"cyan\"?)"});
}

}  // namespace
