// Every operation of the driver interface: what it answers by its row, with nulls in each place,
// and how the host's special media indices are resolved.

#include <algorithm>
#include <array>

#include "JobRunner.h"

namespace {

const Model& FourColourModel() {
    static const Model model = NumberedModel(4, "", "raw");
    return model;
}

/// `FourColourModel` with media of the identifiers 10, 11, …
std::string DescriptionWithMedia(int count) {
    std::string media;
    for (int i = 0; i < count; ++i) {
        media += "<Item><ID>" + std::to_string(10 + i) + "</ID></Item>";
    }
    const std::string one =
        "<Item><ID>0</ID><InternalName>Paper</InternalName>"
        "<DisplayName>Paper</DisplayName></Item>";
    return Replaced(Describe(FourColourModel()), one, media);
}

class InterfaceTest : public BoundaryTest {
  protected:
    void SetUp() override { folder.InstallModel(kModelName, DescriptionWithMedia(3)); }

    PrintSettings settings = Settings(kModelName);
};

TEST_F(InterfaceTest, FixedAnswers) {
    struct Row {
        int Entry;
        int32_t Answer;
    };
    constexpr Row kRows[] = {
        {5, 0},  {6, 0},  {7, 1},  {9, 0},  {11, 246}, {12, 1}, {14, 1}, {15, 1}, {22, 0},
        {23, 0}, {28, 0}, {29, 0}, {34, 0}, {35, 0},   {37, 0}, {38, 1}, {40, 0}, {41, 0},
        {44, 1}, {45, 1}, {47, 0}, {48, 0}, {49, 0},   {53, 0}, {55, 0}, {57, 0}, {58, 246},
    };
    void* const none = nullptr;
    for (const Row& row : kRows) {
        EXPECT_EQ(driver.Call(row.Entry, none, none, none, none), row.Answer) << row.Entry;
    }
    EXPECT_EQ(driver.Call<float>(kGetDriverValue), 8.0F);
    for (int32_t b : {-1, 0, 1})
        EXPECT_EQ(driver.Call(kReservedQuery18, none, &b), 1) << b;
}

TEST_F(InterfaceTest, QueriesThatPassAValueOn) {
    CapabilityItem item{};
    int32_t out = 0;
    void* const a = &item;
    EXPECT_EQ(driver.Call(kReservedMediaQuery2, &settings, &item, a, 7, &out), 1);
    EXPECT_EQ(out, 7);
    EXPECT_EQ(driver.Call(kReservedQuery21, a, -8, &out), 1);
    EXPECT_EQ(out, -8);
    EXPECT_EQ(driver.Call(kReservedMediaQuery1, &settings, &item, a, a, a, a), 0);
    EXPECT_EQ(driver.Call(kReservedMediaQuery3, &settings, &item, a, a, a, a, a), 0);
}

TEST_F(InterfaceTest, ReservedListsAreEmptied) {
    for (int entry = 30; entry <= 33; ++entry) {
        CapabilityList list(3);
        const CapabilityItem* const begin = list.data();
        driver.Call(entry, &list);
        EXPECT_TRUE(list.empty()) << entry;
        EXPECT_EQ(list.data(), begin);
        EXPECT_EQ(list.capacity(), 3u);
        driver.Call(entry, static_cast<CapabilityList*>(nullptr));
    }
}

TEST_F(InterfaceTest, HalftoneQueriesAnswerZeroAndWriteNothing) {
    std::vector<char> record(1 << 20, 0x5a);
    const std::vector<char> before = record;
    void* const d = nullptr;
    EXPECT_EQ(driver.Call(kGetScreeningParams, record.data(), &settings), 0);
    EXPECT_EQ(driver.Call(kGetDitherParams, kModelName, "Maker", &settings, record.data()), 0);
    EXPECT_EQ(driver.Call(kGetDitherParamsEx, kModelName, "Maker", &settings, d, record.data()), 0);
    EXPECT_EQ(record, before);
}

// Options, nulls and texts that no operation may trip over. The description is loaded.
TEST_F(InterfaceTest, NullArguments) {
    CapabilityList media;
    int32_t out = 77;
    ASSERT_EQ(driver.Call(kGetMediaList, &settings, &media, &out), 1);
    out = 77;
    CapabilityItem item = media.front();
    ResolutionList resolutions;
    ColorantInfoList colorants{};
    DriverOptionBlock block{};
    DriverOptionBlock other{};
    JobStatusRecord status{};
    OutputSink sink;
    HostOutput* const output = &sink;
    const char* const text = "DriverOptionBinary=";
    void* const none = nullptr;

    const auto expect = [](int32_t answer, int32_t expected, const char* what) {
        EXPECT_EQ(answer, expected) << what;
    };
    expect(driver.Call(kOpenJob, none, output), 0, "open: status");
    expect(driver.Call(kOpenJob, &status, none), 0, "open: output");
    expect(driver.Call(kShowDriverOptions, none, 2, &settings, none), 0, "options: block");
    expect(driver.Call(kShowDriverOptions, &block, 2, none, none), 0, "options: settings");
    expect(driver.Call(kDecodeDriverOptions, none, &block, &settings), 0, "decode: text");
    expect(driver.Call(kDecodeDriverOptions, text, none, &settings), 0, "decode: block");
    expect(driver.Call(kDecodeDriverOptions, text, &block, none), 1, "decode: settings");
    expect(driver.Call(kFindColorModeID, none), -1, "find: name");
    expect(driver.Call(kGetColorantList, 0, none), 0, "colorants: list");
    expect(driver.Call(kGetColorantListAgain, 0, none), 0, "colorants again: list");
    expect(driver.Call(kGetColorantList, -1, &colorants), 0, "colorants: position");
    expect(driver.Call(kGetScreeningParams, none, none), 0, "screening");
    expect(driver.Call(kGetMediaList, none, &media, &out), 0, "media: settings");
    expect(driver.Call(kGetMediaList, &settings, none, &out), 0, "media: list");
    expect(driver.Call(kGetMediaList, &settings, &media, none), 1, "media: default");
    expect(driver.Call(kGetPrintModeList, none, &item, &media, &out), 0, "modes: settings");
    expect(driver.Call(kGetPrintModeList, &settings, &item, none, &out), 0, "modes: list");
    expect(driver.Call(kGetResolutionList, none, &item, &item, &resolutions, none), 0,
           "resolutions: settings");
    expect(driver.Call(kGetResolutionList, &settings, &item, &item, none, none), 0,
           "resolutions: list");
    expect(driver.Call(kReservedMediaQuery1, none, none, none, none, none, none), 0, "media 1");
    expect(driver.Call(kReservedMediaQuery2, none, none, none, 3, none), 1, "media 2");
    expect(driver.Call(kReservedMediaQuery3, none, none, none, none, none, none, none), 0,
           "media 3");
    expect(driver.Call(kReservedQuery21, none, 3, none), 1, "query 21");
    expect(driver.Call(kAreOptionsDifferent, none, &block), 0, "different: first");
    expect(driver.Call(kAreOptionsDifferent, &block, none), 0, "different: second");
    expect(driver.Call(kEnsureDriverOptions, none), 0, "ensure");
    expect(driver.Call(kGetDitherParams, none, none, none, none), 0, "dither");
    expect(driver.Call(kGetDitherParamsEx, none, none, none, none, none), 0, "dither ex");
    expect(driver.Call(kSetPrintSettings, none), 1, "set settings");
    expect(driver.Call(kIsColorModeAllowed, 0, none, none, &settings), 0, "allowed: no such item");
    expect(driver.Call(kGetDefaultColorMode, none, &settings), 0, "default: no such item");
    expect(driver.Call(kReadJobHeader), 0, "header without a job");

    EXPECT_EQ(out, 77);
    EXPECT_EQ(std::memcmp(&block, &other, sizeof block), 0);
    EXPECT_EQ(status.JobState, 0);
    EXPECT_TRUE(resolutions.empty());
    EXPECT_EQ(sink.BytesTaken, 0);
    EXPECT_TRUE(folder.Messages().empty());
    EXPECT_TRUE(folder.Log().empty());
    EXPECT_TRUE(Listing(folder.Options()).empty());
}

TEST_F(InterfaceTest, JobCallsWithoutAJob) {
    EXPECT_EQ(driver.Call(kProcessJobStep), 0);
    EXPECT_EQ(driver.Call(kAbortJob), 0);
    EXPECT_EQ(driver.Call(kOpenPort, folder.Out().c_str(), "name"), 1);
    EXPECT_TRUE(folder.Log().empty());
    EXPECT_TRUE(Listing(folder.Out()).empty());
}

struct SpecialIndex {
    int MediaCount;
    int32_t Index;
    int32_t Resolved;
};
constexpr SpecialIndex kSpecialIndices[] = {
    {3, -100, 12},   {3, -101, 11},   {3, -102, 12},   {3, -99, -99}, {3, -103, -103},
    {3, 5, 5},       {2, -101, 10},   {1, -100, 10},   {1, -102, 10}, {1, -101, -101},
    {0, -100, -100}, {0, -101, -101}, {0, -102, -102},
};

class SpecialMediaTest : public BoundaryTest, public ::testing::WithParamInterface<SpecialIndex> {};

// In the caller's record, as far as the options dialog's call shows it; mode 4 does no more.
TEST_P(SpecialMediaTest, OptionsCallResolvesItInPlace) {
    folder.InstallModel(kModelName, DescriptionWithMedia(GetParam().MediaCount));
    PrintSettings settings = Settings(kModelName, GetParam().Index);
    DriverOptionBlock block{};
    EXPECT_EQ(driver.Call(kShowDriverOptions, &block, 4, &settings, nullptr), 0);
    EXPECT_EQ(settings.MediaIndex, GetParam().Resolved);
    EXPECT_EQ(block.Kind, 0);
}

// In a copy for queries: only the resolved item is known to the combinations.
TEST_P(SpecialMediaTest, QueriesResolveItInACopy) {
    const std::string branch =
        "<PrintMode ID=\"0\"><Resolution ID=\"0\" DefaultColorMode=\"0\">"
        "<ColorMode ID=\"0\"/></Resolution></PrintMode>";
    const std::string media = std::to_string(GetParam().Resolved);
    folder.InstallModel(kModelName,
                        Replaced(DescriptionWithMedia(GetParam().MediaCount), "<ModelList>",
                                 "<Control_Definition><Media ID=\"500\"/><Media ID=\"" + media +
                                     "\" DefaultPrintMode=\"0\">" + branch +
                                     "</Media></Control_Definition><ModelList>"));
    PrintSettings settings = Settings(kModelName, GetParam().Index);
    CapabilityItem item{GetParam().Index, {}, {}};
    CapabilityItem printMode{};
    CapabilityList printModes;
    ResolutionList resolutions;
    std::array<char, 256> name{};
    int32_t out = -5;
    EXPECT_EQ(driver.Call(kGetPrintModeList, &settings, &item, &printModes, &out), 1);
    EXPECT_EQ(printModes.size(), 1u);
    EXPECT_EQ(out, 0);
    EXPECT_EQ(driver.Call(kGetResolutionList, &settings, &item, &printMode, &resolutions, nullptr),
              1);
    EXPECT_EQ(resolutions.size(), 1u);
    EXPECT_EQ(driver.Call(kIsColorModeAllowed, 0, &out, name.data(), &settings), 1);
    EXPECT_EQ(out, 1);
    EXPECT_STREQ(name.data(), "Mode 0");
    name = {};
    EXPECT_EQ(driver.Call(kGetDefaultColorMode, name.data(), &settings), 0);
    EXPECT_STREQ(name.data(), "Mode 0");
    EXPECT_EQ(settings.MediaIndex, GetParam().Index);
    EXPECT_EQ(item.ID, GetParam().Index);
}

INSTANTIATE_TEST_SUITE_P(Indices, SpecialMediaTest, ::testing::ValuesIn(kSpecialIndices),
                         [](const auto& tested) {
                             const SpecialIndex& row = tested.param;
                             const std::string index = std::to_string(row.Index);
                             return std::to_string(row.MediaCount) + "Media" +
                                    Replaced(index, "-", "Minus");
                         });

}  // namespace
