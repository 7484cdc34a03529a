// Names of channel files, planes without a separation, and what other tools make of TIFF channels.

#include <cstdlib>

#include "JobRunner.h"

namespace {

struct NamedChannel {
    const char* Pattern;
    bool IsListed;         ///< whether the model names a channel for the colour
    const char* FileName;  ///< expected of the job "Proof"
};

struct NamingCase {
    const char* Name;
    std::vector<NamedChannel> Channels;
};

const NamingCase kNamingCases[] = {
    {"Patterns",
     {{"filename_K.raw", true, "Proof_K.raw"},
      {"filename_filename.raw", true, "Proof_filename.raw"},
      {"K of filename", true, "K of Proof"},
      {"Filename.raw", true, "Filename.raw"},
      {"filenam.raw", true, "filenam.raw"},
      {"filename", true, "Proof"}}},
    {"EmptyPatterns",
     {{"a.raw", true, "a.raw"},
      {"", true, "Proof"},
      {"b.raw", true, "b.raw"},
      {"", true, "Proof_4"},
      {"", true, "Proof_5"}}},
    {"NoNames", {{"x", false, "Proof"}, {"x", false, "Proof_2"}, {"x", false, "Proof_3"}}},
    // The names that are there move up; the last channels are the unnamed ones.
    {"FewerNames",
     {{"x", false, "b.raw"},
      {"b.raw", true, "d.raw"},
      {"x", false, "Proof"},
      {"d.raw", true, "Proof_4"}}},
    {"FewerNamesAndAnEmptyOne",
     {{"a.raw", true, "a.raw"},
      {"x", false, "Proof"},
      {"", true, "d.raw"},
      {"d.raw", true, "Proof_4"}}},
    {"OneChannel", {{"filename_K.raw", true, "Proof"}}},
};

class NamingTest : public BoundaryTest, public ::testing::WithParamInterface<NamingCase> {};

TEST_P(NamingTest, EveryChannelHasAFileOfItsOwn) {
    const std::vector<NamedChannel>& channels = GetParam().Channels;
    const auto count = static_cast<int>(channels.size());
    Model model = NumberedModel(count, "CreateFolder=\"No\"", "raw");
    std::vector<std::string> expectedNames;
    for (std::size_t i = 0; i < channels.size(); ++i) {
        model.Colours[i].ChannelName = channels[i].Pattern;
        if (!channels[i].IsListed) model.Colours[i].ID = "100";  // no colorant refers to it
        expectedNames.emplace_back(channels[i].FileName);
    }
    const Page page = NumberedPage(37, 4, count, 1);
    ASSERT_TRUE(Print(model, {page}));
    std::sort(expectedNames.begin(), expectedNames.end());
    EXPECT_EQ(Listing(folder.Out()), expectedNames);
    for (std::size_t i = 0; i < channels.size(); ++i) {
        EXPECT_EQ(Output(channels[i].FileName), ChannelBytes(page, i)) << channels[i].FileName;
    }
}

// The same names when none of the channels has a separation.
TEST_P(NamingTest, BlankPlanesHaveTheSameNames) {
    const std::vector<NamedChannel>& channels = GetParam().Channels;
    if (channels.size() == 1) return;  // has a name of its own, below
    const auto count = static_cast<int>(channels.size());
    Model model = NumberedModel(count, "CreateFolder=\"No\" PrinterDirection=\"YES\"", "raw");
    for (std::size_t i = 0; i < channels.size(); ++i) {
        model.Colours[i].ChannelName = channels[i].Pattern;
        if (!channels[i].IsListed) model.Colours[i].ID = "100";
    }
    const Page page = RandomPage(37, 4, {{"Gold", 2}}, 1);
    ASSERT_TRUE(Print(model, {page}));
    EXPECT_EQ(Listing(folder.Out()).size(), channels.size());
    for (const NamedChannel& channel : channels) {
        EXPECT_EQ(Output(channel.FileName), BlankBytes(page)) << channel.FileName;
    }
}

INSTANTIATE_TEST_SUITE_P(Names, NamingTest, ::testing::ValuesIn(kNamingCases),
                         [](const auto& tested) { return tested.param.Name; });

class ChannelFilesTest : public BoundaryTest {};

// A blank plane goes by the channel's pattern even where a plane with data goes by the job.
TEST_F(ChannelFilesTest, BlankPlaneOfAOneColorantMode) {
    const Page page = RandomPage(33, 4, {{"Gold"}}, 1);
    ASSERT_TRUE(Print(NumberedModel(1, "CreateFolder=\"No\"", "raw"), {page}));
    EXPECT_EQ(Listing(folder.Out()), std::vector<std::string>{"Proof_C1.raw"});
    EXPECT_EQ(Output("Proof_C1.raw"), BlankBytes(page));
}

TEST_F(ChannelFilesTest, FormatGoesByTheExtension) {
    Model model = NumberedModel(6, "CreateFolder=\"No\"", "raw");
    const char* const patterns[] = {"a.TIF", "b.Tiff", "c.tif.raw", "d.tiff2", "tif", "e.tif"};
    for (std::size_t i = 0; i < 6; ++i)
        model.Colours[i].ChannelName = patterns[i];
    const Page page = NumberedPage(65, 7, 5, 1);
    ASSERT_TRUE(Print(model, {page}));
    for (std::size_t i = 0; i < 6; ++i) {
        const std::string expected = i < 5 ? ChannelBytes(page, i) : BlankBytes(page);
        if (i < 2 || i == 5) {
            const auto tiff = ReadTiff(folder.Out() / patterns[i]);
            ASSERT_TRUE(tiff) << patterns[i];
            EXPECT_EQ(tiff->Data, expected);
        } else {
            EXPECT_EQ(Output(patterns[i]), expected) << patterns[i];
        }
    }
}

TEST_F(ChannelFilesTest, TiffinfoReadsAChannel) {
    for (const int depth : {1, 2, 4, 8}) {
        const Page page = RandomPage(1001, 70, {{"C1", depth}, {"C2", depth}}, 1);
        ASSERT_TRUE(Print(NumberedModel(2, "CreateFolder=\"No\"", "tif"), {page}));
        const std::filesystem::path report = folder.Root() / "report";
        const std::string command = "tiffinfo -D '" + (folder.Out() / "Proof_C2.tif").string() +
                                    "' > '" + report.string() + "' 2>&1";
        EXPECT_EQ(std::system(command.c_str()), 0);  // NOLINT: a fixed command in a test
        const std::string text = ReadText(report);
        for (const std::string& part : {std::string("Image Width: 1024 Image Length: 70"),
                                        std::string("Resolution: 300, 600 pixels/inch"),
                                        "Bits/Sample: " + std::to_string(depth) + "\n",
                                        std::string("Compression Scheme: None"),
                                        std::string("Photometric Interpretation: min-is-white"),
                                        std::string("Samples/Pixel: 1")}) {
            EXPECT_NE(text.find(part), std::string::npos) << part << " in\n" << text;
        }
        for (const char* bad : {"Warning", "rror", "TIFFRead"}) {
            EXPECT_EQ(text.find(bad), std::string::npos) << text;
        }
    }
}

// What an older, larger file of the name held is gone.
TEST_F(ChannelFilesTest, OlderFilesAreReplaced) {
    WriteText(folder.Out() / "Proof_C1.raw", std::string(100000, 'x'));
    WriteText(folder.Out() / "Proof_C2.raw", std::string(100000, 'x'));
    const Page page = RandomPage(33, 4, {{"C1"}}, 1);
    ASSERT_TRUE(Print(NumberedModel(2, "CreateFolder=\"No\"", "raw"), {page}));
    EXPECT_EQ(Output("Proof_C1.raw"), ChannelBytes(page, 0));
    EXPECT_EQ(Output("Proof_C2.raw"), BlankBytes(page));
}

}  // namespace
