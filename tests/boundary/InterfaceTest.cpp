// Every operation of the driver interface: what it answers by its row, with nulls in each place,
// and how the host's special media indices are resolved.

#include <array>

#include "JobRunner.h"

namespace {

/// Four colours on media of the identifiers 10, 11, …; `rules` may stand behind the definition.
std::string DescriptionWithMedia(int count, const std::string& rules = "") {
    std::string media;
    for (int i = 0; i < count; ++i)
        media += fmt::format("<Item><ID>{}</ID></Item>", 10 + i);
    const std::string text =
        Replaced(Describe(NumberedModel(4, "")),
                 "<Item><ID>0</ID><InternalName>Paper</InternalName></Item>", media);
    return Replaced(text, "<ModelList>", rules + "<ModelList>");
}

class InterfaceTest : public BoundaryTest {
  protected:
    void SetUp() override { Install(DescriptionWithMedia(3)); }
    template <class... Arguments>
    void Expect(int32_t answer, int entry, Arguments... arguments) {
        EXPECT_EQ(driver->Call(entry, arguments...), answer) << "entry " << entry;
    }

    PrintSettings settings = Settings(kModelName);
};

TEST_F(InterfaceTest, FixedAnswers) {
    constexpr std::pair<int, int32_t> kAnswers[] = {
        {5, 0},  {6, 0},  {7, 1},  {9, 0},  {11, 246}, {12, 1}, {14, 1}, {15, 1}, {22, 0},
        {23, 0}, {28, 0}, {29, 0}, {34, 0}, {35, 0},   {37, 0}, {38, 1}, {40, 0}, {41, 0},
        {44, 1}, {45, 1}, {47, 0}, {48, 0}, {49, 0},   {53, 0}, {55, 0}, {57, 0}, {58, 246},
    };
    void* const none = nullptr;
    for (const auto& [entry, answer] : kAnswers)
        Expect(answer, entry, none, none, none, none);
    EXPECT_EQ(driver->Call<float>(kGetDriverValue), 8.0F);
    for (int32_t b : {-1, 0, 1})
        Expect(1, kReservedQuery18, none, &b);
}

TEST_F(InterfaceTest, ReservedQueries) {
    CapabilityItem item{};
    int32_t out = 0;
    void* const a = &item;
    Expect(1, kReservedMediaQuery2, &settings, &item, a, 7, &out);
    EXPECT_EQ(out, 7);
    Expect(1, kReservedQuery21, a, -8, &out);
    EXPECT_EQ(out, -8);
    Expect(0, kReservedMediaQuery1, &settings, &item, a, a, a, a);
    Expect(0, kReservedMediaQuery3, &settings, &item, a, a, a, a, a);
    for (int entry = 30; entry <= 33; ++entry) {
        CapabilityList list(3);
        driver->Call(entry, &list);
        EXPECT_TRUE(list.empty()) << entry;
        EXPECT_EQ(list.capacity(), 3U) << "its memory is the host's";
        driver->Call(entry, static_cast<CapabilityList*>(nullptr));
    }
}

// Nulls that no operation may trip over. The description is loaded; no job is open.
TEST_F(InterfaceTest, NullArguments) {
    CapabilityList media;
    int32_t out = 0;
    ASSERT_EQ(driver->Call(kGetMediaList, &settings, &media, &out), 1);
    out = 77;
    CapabilityItem item = media.front();
    ResolutionList resolutions;
    ColorantInfoList colorants{};
    DriverOptionBlock block{};
    JobStatusRecord status{};
    OutputSink sink;
    HostOutput* const output = &sink;
    const char* const text = "DriverOptionBinary=";
    void* const none = nullptr;
    Expect(0, kOpenJob, none, output);
    Expect(0, kOpenJob, &status, none);
    Expect(0, kProcessJobStep);
    Expect(0, kAbortJob);
    Expect(1, kOpenPort, folder.Out().c_str(), "name");
    Expect(0, kReadJobHeader);
    Expect(0, kShowDriverOptions, none, 2, &settings, none);
    Expect(0, kShowDriverOptions, &block, 2, none, none);
    Expect(0, kDecodeDriverOptions, none, &block, &settings);
    Expect(0, kDecodeDriverOptions, text, none, &settings);
    Expect(1, kDecodeDriverOptions, text, &block, none);
    Expect(-1, kFindColorModeID, none);
    Expect(0, kGetColorantList, 0, none);
    Expect(0, kGetColorantListAgain, 0, none);
    Expect(0, kGetColorantList, -1, &colorants);
    Expect(0, kGetScreeningParams, none, none);
    Expect(0, kGetMediaList, none, &media, &out);
    Expect(0, kGetMediaList, &settings, none, &out);
    Expect(1, kGetMediaList, &settings, &media, none);
    Expect(0, kGetPrintModeList, none, &item, &media, &out);
    Expect(0, kGetPrintModeList, &settings, &item, none, &out);
    Expect(0, kGetResolutionList, none, &item, &item, &resolutions, none);
    Expect(0, kGetResolutionList, &settings, &item, &item, none, none);
    Expect(0, kReservedMediaQuery1, none, none, none, none, none, none);
    Expect(1, kReservedMediaQuery2, none, none, none, 3, none);
    Expect(0, kReservedMediaQuery3, none, none, none, none, none, none, none);
    Expect(1, kReservedQuery21, none, 3, none);
    Expect(0, kAreOptionsDifferent, none, &block);
    Expect(0, kAreOptionsDifferent, &block, none);
    Expect(0, kEnsureDriverOptions, none);
    DitherParams dither{};
    Expect(0, kGetDitherParams, none, "Maker", &settings, &dither);
    Expect(0, kGetDitherParams, kModelName, none, &settings, &dither);
    Expect(0, kGetDitherParams, kModelName, "Maker", none, &dither);
    Expect(0, kGetDitherParamsEx, kModelName, "Maker", &settings, none, none);
    EXPECT_EQ(dither.LevelCount, 0) << "nothing is written";
    Expect(1, kSetPrintSettings, none);
    Expect(0, kIsColorModeAllowed, 0, none, none, &settings);  // no such item
    Expect(0, kGetDefaultColorMode, none, &settings);

    EXPECT_EQ(out, 77);
    EXPECT_EQ(block.Kind, 0);
    EXPECT_EQ(status.JobState, 0);
    EXPECT_TRUE(resolutions.empty());
    EXPECT_TRUE(folder.Messages().empty());
    EXPECT_EQ(FailedSteps(), 0U);
    EXPECT_TRUE(Listing(folder.Options()).empty());
    EXPECT_TRUE(Listing(folder.Out()).empty());
}

// The options call resolves the index in the host's record, the queries in a copy: only the
// resolved item is known to the combinations.
TEST_F(InterfaceTest, SpecialMediaIndices) {
    struct Row {
        int MediaCount;
        int32_t Index, Resolved;
    };
    constexpr Row kRows[] = {
        {3, -100, 12},   {3, -101, 11},   {3, -102, 12},   {3, -99, -99}, {3, -103, -103},
        {3, 5, 5},       {2, -101, 10},   {1, -100, 10},   {1, -102, 10}, {1, -101, -101},
        {0, -100, -100}, {0, -101, -101}, {0, -102, -102},
    };
    for (const auto& [mediaCount, index, resolved] : kRows) {
        SCOPED_TRACE(fmt::format("{} of {} media", index, mediaCount));
        Install(DescriptionWithMedia(
            mediaCount, fmt::format(R"(<Control_Definition><Media ID="500"/><Media ID="{}">
<PrintMode ID="0"><Resolution ID="0" DefaultColorMode="0"><ColorMode ID="0"/></Resolution>
</PrintMode></Media></Control_Definition>)",
                                    resolved)));
        settings = Settings(kModelName, index);
        CapabilityItem item{index, {}, {}};
        CapabilityItem printMode{};
        CapabilityList printModes;
        ResolutionList resolutions;
        int32_t out = -5;
        Expect(1, kGetPrintModeList, &settings, &item, &printModes, &out);
        EXPECT_EQ(
            driver->Call(kGetResolutionList, &settings, &item, &printMode, &resolutions, nullptr),
            1);
        EXPECT_EQ(printModes.size() + resolutions.size(), 2U);
        std::array<char, 256> name{};
        Expect(1, kIsColorModeAllowed, 0, &out, name.data(), &settings);
        EXPECT_STREQ(name.data(), "Mode 0");
        name = {};
        Expect(0, kGetDefaultColorMode, name.data(), &settings);
        EXPECT_STREQ(name.data(), "Mode 0");
        EXPECT_EQ(settings.MediaIndex, index);
        EXPECT_EQ(item.ID, index);

        DriverOptionBlock block{};
        constexpr int32_t kNoMode = 4;
        Expect(0, kShowDriverOptions, &block, kNoMode, &settings, nullptr);
        EXPECT_EQ(settings.MediaIndex, resolved);
    }
}

}  // namespace
