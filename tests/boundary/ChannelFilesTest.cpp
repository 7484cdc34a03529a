// Names of channel files, planes without a separation, and what other tools make of TIFF channels.

#include <algorithm>

#include "JobRunner.h"

namespace {

struct NamedChannel {
    const char* Pattern;   ///< null: the model names no channel for the colour
    const char* FileName;  ///< expected of the job "Proof"
};

class ChannelFilesTest : public BoundaryTest {
  protected:
    void Install(const std::vector<NamedChannel>& channels) {
        Model model = NumberedModel(static_cast<int>(channels.size()), "CreateFolder=\"No\"");
        for (std::size_t i = 0; i < channels.size(); ++i) {
            const bool isNamed = channels[i].Pattern != nullptr;
            model.Colours[i].ChannelName = isNamed ? channels[i].Pattern : "x";
            if (!isNamed) model.Colours[i].ID = "100";  // no colorant refers to it
        }
        // The first colour of an identifier counts.
        if (channels[0].Pattern != nullptr) model.Colours.push_back({"Again", "again.raw", "0"});
        BoundaryTest::Install(Describe(model));
    }
};

// With and without separations every channel has a file of its own.
TEST_F(ChannelFilesTest, Names) {
    const std::vector<NamedChannel> cases[] = {
        {{"filename_K.raw", "Proof_K.raw"},
         {"filename_filename.raw", "Proof_filename.raw"},
         {"K of filename", "K of Proof"},
         {"Filename.raw", "Filename.raw"},
         {"filenam.raw", "filenam.raw"},
         {"filename", "Proof"}},
        {{"a.raw", "a.raw"}, {"", "Proof"}, {"b.raw", "b.raw"}, {"", "Proof_4"}, {"", "Proof_5"}},
        {{nullptr, "Proof"}, {nullptr, "Proof_2"}, {nullptr, "Proof_3"}},
        // The names that are there move up; the last channels are the unnamed ones.
        {{nullptr, "b.raw"}, {"b.raw", "d.raw"}, {nullptr, "Proof"}, {"d.raw", "Proof_4"}},
        {{"a.raw", "a.raw"}, {nullptr, "Proof"}, {"", "d.raw"}, {"d.raw", "Proof_4"}},
    };
    for (const std::vector<NamedChannel>& channels : cases) {
        Install(channels);
        Texts names;
        for (const NamedChannel& channel : channels)
            names.emplace_back(channel.FileName);
        std::sort(names.begin(), names.end());
        const auto count = static_cast<int>(channels.size());
        for (const Page& page :
             {NumberedPage(37, 4, count, 1), RandomPage(37, 4, {{"Gold", 2}}, 1)}) {
            EmptyOutputFolder();
            ASSERT_TRUE(Print({page}));
            EXPECT_EQ(Listing(folder.Out()), names);
            int number = 0;
            for (const auto& [pattern, name] : channels) {
                EXPECT_EQ(Output(name), ChannelBytes(page, fmt::format("C{}", ++number))) << name;
            }
        }
    }
}

// The only channel of a colour mode goes by the job, its blank plane by the pattern all the same.
TEST_F(ChannelFilesTest, OneColorantMode) {
    Install({{"filename_K.raw", ""}});
    for (const auto& [separation, name] : {std::pair{"C1", "Proof"}, {"Gold", "Proof_K.raw"}}) {
        EmptyOutputFolder();
        const Page page = RandomPage(33, 4, {{separation}}, 1);
        ASSERT_TRUE(Print({page}));
        EXPECT_EQ(Listing(folder.Out()), Texts{name});
        EXPECT_EQ(Output(name), ChannelBytes(page, "C1"));
    }
}

}  // namespace
