// Descriptions that lack something or hold nonsense: the answer and the messages that a user
// sees, in their order.

#include "JobRunner.h"
#include "WideModel.h"

namespace {

using Texts = std::vector<std::string>;

struct Fault {
    const char* Name;
    std::string From;  // what the description's text loses; '*' is all between two texts
    std::string To;    // what stands there instead
    Texts Messages{};
    int32_t Answer = 0;
};

/// `text` with the first piece from `from` replaced.
std::string Mutated(const std::string& text, const std::string& from, const std::string& to) {
    const std::size_t star = from.find('*');
    const std::string head = from.substr(0, star);
    const std::size_t begin = text.find(head);
    if (begin == std::string::npos) return text;
    std::size_t end = begin + head.size();
    if (star != std::string::npos) {
        const std::string tail = from.substr(star + 1);
        end = tail.empty() ? text.size() : text.find(tail, end) + tail.size();
    }
    return text.substr(0, begin) + to + text.substr(end);
}

const Fault kFaults[] = {
    {"Empty", "*", "", {"Loading description file fails"}},
    {"NotXml", "*", "no description", {"Loading description file fails"}},
    {"CutOff", "</ColorModeList>*", "", {"Loading description file fails"}},
    {"RootOnly", "*", "<Any/>", {"Getting DEFINITIONNODE node fails"}},
    {"NoDefinition", "<Definition>*</Definition>", "", {"Getting DEFINITIONNODE node fails"}},
    {"NoBaseNumbers", "<BaseResourceNumber>*</BaseResourceNumber>", "",
     Texts(5, "Getting BASERESOURCENODE node fails"), 1},
    {"NoMediaBase", "<BaseMedia>-1</BaseMedia>", "", {"Getting szNode node fails"}, 1},
    {"NoColorBase", "<BaseColor/>", "", {"Getting szNode node fails"}, 1},
    {"BaseNotANumber", "<BaseMedia>-1", "<BaseMedia>many", {}, 1},
    {"NoMediaList", "<MediaList*</MediaList>", "", {}, 1},
    {"NoPrintModeList", "<PrintModeList>*</PrintModeList>", "", {}, 1},
    {"NoResolutionList", "<ResolutionList>*</ResolutionList>", "", {}, 1},
    {"DefaultMediaNotANumber", "DefaultMedia=\"2\"", "DefaultMedia=\"x\"", {}, 1},
    {"NegativeMedia", "<ID>0<", "<ID>-1<", {"Wrong media index."}},
    {"MediaNotANumber", "<ID>0<", "<ID>zero<", {"Wrong media index."}},
    {"MediaWithoutID", "<ID>0</ID>", "", {"Wrong media index."}},
    {"MediaBeyond32Bits", "<ID>0<", "<ID>4294967296<", {"Wrong media index."}},
    {"MediaWithTrailingText", "<ID>0<", "<ID> 0 pieces<", {}, 1},
    {"NegativePrintMode",
     "<ID>0</ID><InternalName>draft",
     "<ID>-3</ID><InternalName>draft",
     {"Wrong PrintMode index."}},
    {"NegativeResolution",
     "<ID>0</ID><XResValue>300",
     "<ID>-3</ID><XResValue>300",
     {"Wrong Resolution index."}},
    {"NegativeXResolution", "<XResValue>300", "<XResValue>-300", {"Wrong xResolution."}},
    {"XResolutionNotANumber", "<XResValue>300", "<XResValue>high", {"Wrong xResolution."}},
    {"NoXResolution", "<XResValue>300</XResValue>", "", {"Wrong xResolution."}},
    {"NegativeYResolution", "<YResValue>301", "<YResValue>-1", {"Wrong yResolution."}},
    {"BothResolutions",
     "<XResValue>300</XResValue><YResValue>301",
     "<XResValue>-1</XResValue><YResValue>-1",
     {"Wrong xResolution."}},
    {"NegativeColor",
     "<ID>0</ID><InternalName>Cyan",
     "<ID>-3</ID><InternalName>Cyan",
     {"Wrong Color index."}},
    {"NoColorList", "<ColorList>*</ColorList>", "", {"Loading COLORLISTNODE fails."}},
    {"EmptyColorList", "<ColorList>*</ColorList>", "<ColorList/>", {"Wrong nClrDefCount"}},
    {"NegativeColorMode",
     "<ID>0</ID><InternalName>kc<",
     "<ID>-3</ID><InternalName>kc<",
     {"Wrong color mode index."}},
    {"NoColorModeList", "<ColorModeList>*</ColorModeList>", ""},
    {"EmptyColorModeList", "<ColorModeList>*</ColorModeList>", "<ColorModeList/>", {}, 1},
    {"ColorantBeyondList", "Colorant ID=\"1\"", "Colorant ID=\"4\"", {"Wrong color ID."}},
    {"NegativeColorant", "Colorant ID=\"1\"", "Colorant ID=\"-1\"", {"Wrong color ID."}},
    {"ColorantNotANumber", "Colorant ID=\"1\"", "Colorant ID=\"k\"", {"Wrong color ID."}},
    {"NegativeDepth", "<ColorDepth>2", "<ColorDepth>-2", {"Wrong color depth."}},
    {"NoDepth", "<ColorDepth>2</ColorDepth>", "", {"Wrong color depth."}},
    {"NegativeSpot", "IsSpotColor=\"1\"", "IsSpotColor=\"-1\"", {"Wrong color spot."}},
    {"SpotNotANumber", "IsSpotColor=\"1\"", "IsSpotColor=\"yes\"", {"Wrong color spot."}},
};

class DescriptionFaultsTest : public BoundaryTest, public ::testing::WithParamInterface<Fault> {};

TEST_P(DescriptionFaultsTest, AnswersAndSaysSo) {
    const std::string good = WideModelDescription();
    const std::string bad = Mutated(good, GetParam().From, GetParam().To);
    ASSERT_NE(good, bad);
    folder.InstallModel(kWideModel, bad);
    PrintSettings settings = Settings(kWideModel);
    CapabilityList media;
    int32_t out = 0;
    EXPECT_EQ(driver.Call(kGetMediaList, &settings, &media, &out), GetParam().Answer);
    EXPECT_EQ(folder.Messages(), GetParam().Messages);
    if (GetParam().Answer == 1) return;
    EXPECT_TRUE(media.empty());

    // A failed load leaves nothing behind: a mended file is read from its beginning.
    folder.InstallModel(kWideModel, good);
    EXPECT_EQ(driver.Call(kGetMediaList, &settings, &media, &out), 1);
    EXPECT_EQ(media.size(), 3u);
    EXPECT_EQ(folder.Messages(), GetParam().Messages);
}

INSTANTIATE_TEST_SUITE_P(Faults, DescriptionFaultsTest, ::testing::ValuesIn(kFaults),
                         [](const auto& tested) { return tested.param.Name; });

class ModelListFaultsTest : public BoundaryTest {};

TEST_F(ModelListFaultsTest, EveryQuerySaysThatThereIsNoModel) {
    const std::filesystem::path list = folder.Base() / "OutputDrivers/ZeComFile.xml";
    const std::string kLists[] = {
        "",
        "<Models/>",
        "no list",
        "<Models><Model Name=\"Other\" XMLFile=\"model.xml\"/></Models>",
    };
    WriteText(folder.Base() / "OutputDrivers/model.xml", WideModelDescription());
    PrintSettings settings = Settings(kWideModel);
    CapabilityList media;
    int32_t out = 0;
    EXPECT_EQ(driver.Call(kGetMediaList, &settings, &media, &out), 0);
    EXPECT_EQ(folder.Messages(), Texts{"Cannot get XML "}) << "no list at all";
    Texts messages = {"Cannot get XML "};
    for (const std::string& text : kLists) {
        WriteText(list, text);
        EXPECT_EQ(driver.Call(kGetMediaList, &settings, &media, &out), 0) << text;
        messages.emplace_back("Cannot get XML ");
        EXPECT_EQ(folder.Messages(), messages) << text;
    }
    folder.InstallModel(kWideModel, "");
    std::filesystem::remove(folder.Base() / "OutputDrivers/model.xml");
    EXPECT_EQ(driver.Call(kGetMediaList, &settings, &media, &out), 0);
    messages.emplace_back("Loading description file fails");
    EXPECT_EQ(folder.Messages(), messages);
}

TEST_F(ModelListFaultsTest, DeepNestingEndsInAnAnswer) {
    std::string deep;
    for (int i = 0; i < 200000; ++i)
        deep += "<a>";
    folder.InstallModel(kWideModel, deep);
    PrintSettings settings = Settings(kWideModel);
    CapabilityList media;
    int32_t out = 0;
    EXPECT_EQ(driver.Call(kGetMediaList, &settings, &media, &out), 0);
    for (int i = 0; i < 200000; ++i)
        deep += "</a>";
    folder.InstallModel(kWideModel, deep);
    EXPECT_EQ(driver.Call(kGetMediaList, &settings, &media, &out), 0);
}

}  // namespace
