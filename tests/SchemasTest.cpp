// The schemas of `schemas/`, as an editor or xmllint uses them.

#include <gtest/gtest.h>

#include "DriverHostFixture.h"

namespace {

constexpr char kDescription[] =
    "<D><BaseResourceNumber><BaseMedia/><BasePrintMode/><BaseResolution>5</BaseResolution>"
    "<BaseColor/><BaseColorMode/></BaseResourceNumber><Definition><ColorList><C><ID>0</ID>"
    "<InternalName>Black</InternalName><DisplayName/><ChannelName>filename_K.tif</ChannelName></C>"
    "</ColorList><ColorModeList><M><ID>0</ID><InternalName/><DisplayName/><ColorantList>"
    "<C ID='0'><ColorDepth>1</ColorDepth></C></ColorantList></M></ColorModeList></Definition>"
    "<Control_Definition><M ID='0' DefaultPrintMode='0'><P ID='0'><R ID='0' DefaultColorMode='0'>"
    "<K ID='0'/></R></P></M></Control_Definition><ModelList><M Name='a' TypeRead='line_by_line' "
    "CreateFolder='No' SupportWhite='2|Spot,Over;1,2;0,1'/></ModelList></D>";

constexpr char kHardware[] =
    "<PrinterHardware><Model ID='Roll, Roll 2'><Media ID='1, 2'><PrintMode ID='Default'>"
    "<Resolution ID='0'><ColorMode ID='3'>LEAF</ColorMode></Resolution></PrintMode></Media></Model>"
    "</PrinterHardware>";
constexpr char kDither[] =
    "<DitherParams ID='2,4'><NoiseLevel Value='0.5'/><Level Value='4'>"
    "<Weight ColorInk='default' Level='0' Value='0.3'/></Level><AntiClogLevel Value='1'/>"
    "</DitherParams>";
constexpr char kScreening[] = "<Item ColorName='Cyan' Angle='15.5' ShapeName='Diamond'/>";

struct SchemaCase {
    const char* Schema;
    std::string Good;
    /// Each turns the good document into one that the schema refuses.
    std::vector<std::pair<std::string, std::string>> Faults;
};

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
    return text.replace(text.find(from), from.size(), to);  // throws when it is not there
}

std::string List(const std::string& more) {
    return "<H><ManufacturerList><M Name='a' ManufactureXML='a.xml'/></ManufacturerList>" + more +
           "</H>";
}

TEST_F(DriverHost, SchemasTakeGoodFilesAndRefuseFaultyOnes) {
    const std::string dither = Replaced(kHardware, "LEAF", kDither);
    const std::string screening = Replaced(kHardware, "LEAF", kScreening);
    const std::string map = "<M><Model Name='a' XMLFile='sub/a.xml'/></M>";
    const SchemaCase cases[] = {
        {"description",
         kDescription,
         {{"<BaseColor/>", ""},
          {">5<", ">five<"},
          {"<ID>0</ID>", "<ID>-1</ID>"},
          {"<InternalName>Black</InternalName>", ""},
          {"filename_K.tif", "../filename_K.tif"},
          {"<ColorDepth>1", "<ColorDepth>3"},
          {"<C ID='0'>", "<C ID='0' Spot='1'>"},
          {"Control_Definition><M ID='0'", "Control_Definition><M"},
          {"<K ID='0'/>", "<K ID='0'><L/></K>"},
          {"line_by_line", "line"},
          {"'No'", "'0'"},
          {"1,2;0,1", "1,2"}}},
        {"model-list", map, {{"sub/", "../"}, {"XMLFile", "File"}, {"<Model", "text<Model"}}},
        {"model-map", map, {{"sub/a.xml", ""}, {"Name='a'", ""}}},
        {"dither-list", List(dither), {{"ManufactureXML='a.xml'", ""}, {"'0.5'", "'0,5'"}}},
        {"dither-list", List(""), {{"<M Name='a' ", "<M "}}},
        {"dither-parameters",
         "<H>" + dither + "</H>",
         {{"'1, 2'", "'1,,2'"}, {"'default'", "'16'"}, {"AntiClogLevel", "AntiClog"}}},
        {"screening-list", List(screening), {{"15.5", "steep"}}},
        {"screening-parameters",
         "<H>" + screening + "</H>",
         {{"Diamond", "Daimond"}, {"ColorName='Cyan'", ""}, {kScreening, kDither}}},
        {"options",
         "<RootElement><DriverOptions SupportWhiteType='-1'/></RootElement>",
         {{"-1", "none"}, {"SupportWhiteType", "WhiteType"}}},
    };
    const auto validate = [&](const std::string& schema, const std::string& file) {
        return RunProgram({"xmllint", "--noout", "--nonet", "--relaxng",
                           SCHEMAS_FOLDER "/" + schema + ".rng", file});
    };
    for (const SchemaCase& row : cases) {
        Write("good.xml", row.Good);
        const Outcome good = validate(row.Schema, "good.xml");
        EXPECT_EQ(good.Status, 0) << row.Schema << '\n' << good.Output;
        for (const auto& [from, to] : row.Faults) {
            Write("faulty.xml", Replaced(row.Good, from, to));
            const Outcome faulty = validate(row.Schema, "faulty.xml");
            // 3: not valid; anything else would say that the schema or the document does not load.
            EXPECT_EQ(faulty.Status, 3) << row.Schema << ": " << to << '\n' << faulty.Output;
        }
    }
}

/// The schema for a file of `OutputDrivers`, told by its name and what it holds.
std::string SchemaOf(const std::string& name, const std::string& text) {
    if (name == "ZeComFile.xml") return "model-list";
    if (name == "Ditherparams.xml") return "dither-list";
    if (name == "ScreeningParams.xml") return "screening-list";
    if (Contains(text, "<DitherParams")) return "dither-parameters";
    if (Contains(text, "<PrinterHardware")) return "screening-parameters";
    return Contains(text, "<Definition") ? "description" : "model-map";
}

TEST_F(DriverHost, ShippedModelDataFollowsTheSchemas) {
    std::size_t count = 0;
    for (const fs::directory_entry& entry :
         fs::recursive_directory_iterator(MODELS_FOLDER "/OutputDrivers")) {
        const fs::path& path = entry.path();
        // Templates are what their model's program reads, not what the driver does.
        if (path.extension() != ".xml" || path.parent_path().filename() == "JobTicketTemplates")
            continue;
        ASSERT_EQ(Shell("gzip -dcf '" + path.string() + "' > plain.xml").Status, 0);
        const std::string schema = SchemaOf(path.filename().string(), ReadText(Path("plain.xml")));
        const Outcome checked = RunProgram({"xmllint", "--noout", "--nonet", "--relaxng",
                                            SCHEMAS_FOLDER "/" + schema + ".rng", "plain.xml"});
        EXPECT_EQ(checked.Status, 0) << path << checked.Output;
        ++count;
    }
    EXPECT_GE(count, 6U);
}

}  // namespace
