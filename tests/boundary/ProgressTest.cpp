// Time slices, the progress that a host sees, and jobs that are aborted.

#include <cstdio>

#include "JobRunner.h"
#include "SystemStandIns.h"

namespace {

constexpr int kRowASlice = 201;  // milliseconds between two looks at the clock
constexpr int kThreeRowsASlice = 100;

class ProgressTest : public BoundaryTest {
  protected:
    /// A job after its page set-up. Separations in another order than the colorants, one unmatched.
    Job StartedJob(const std::string& rules, const std::string& longName = "Third") {
        folder.InstallModel(kModelName,
                            Describe(NumberedModel(3, "CreateFolder=\"No\" " + rules, "raw")));
        page = RandomPage(
            20, 7, {{"C3", 1, longName}, {"Gold", 1, "Gold ink"}, {"C1", 1, "First"}, {"C2"}}, 1);
        Job job = MakeJob({page});
        EXPECT_EQ(job.Open(), 1);
        EXPECT_EQ(job.Port(folder.Out(), "Proof.ps"), 1);
        EXPECT_EQ(job.Step(), 1);
        EXPECT_STREQ(job.Status.StatusText, "");
        return job;
    }
    void ExpectAllChannels(bool bottomFirst = false) {
        EXPECT_EQ(Output("Proof_C1.raw"), ChannelBytes(page, 2, bottomFirst));
        EXPECT_EQ(Output("Proof_C2.raw"), ChannelBytes(page, 3, bottomFirst));
        EXPECT_EQ(Output("Proof_C3.raw"), ChannelBytes(page, 0, bottomFirst));
    }

    Page page{};
};

std::string PlaneText(const char* name, int percent, int overall) {
    std::array<char, 600> text{};
    std::snprintf(text.data(), text.size(), "%s  %3d%% %3d%%", name, percent, overall);
    return text.data();
}

TEST_F(ProgressTest, PlaneOrder) {
    Job job = StartedJob("");
    const SteppingClock clock(kRowASlice);
    const char* const names[] = {"First", "C2", "Third"};  // without a display name: the internal
    for (int position = 0; position < 3; ++position) {
        for (int row = 0; row < 7; ++row) {
            ASSERT_EQ(job.Step(), 1);
            const int percent = row * 100 / 7;
            EXPECT_EQ(job.Status.StatusText,
                      PlaneText(names[position], percent, position * 100 / 4 + percent / 4));
            EXPECT_EQ(job.Status.StatusKind, 1);
            EXPECT_EQ(job.Status.JobState, kFilePort);
        }
    }
    EXPECT_EQ(job.Run(), (std::vector<int32_t>{1, 1, 1}));  // bands done, page end, job end
    ExpectAllChannels();
}

TEST_F(ProgressTest, LineInterleavedOrder) {
    Job job = StartedJob("TypeRead=\"LINE_BY_LINE\"");
    const SteppingClock clock(kRowASlice);
    const char* const texts[] = {"  0%", " 14%", " 28%", " 42%", " 57%", " 71%", " 85%"};
    for (const char* text : texts) {
        for (int channel = 0; channel < 3; ++channel) {
            ASSERT_EQ(job.Step(), 1);
            EXPECT_STREQ(job.Status.StatusText, text);
            EXPECT_EQ(job.Status.StatusKind, 3);
        }
    }
    EXPECT_EQ(job.Run(), (std::vector<int32_t>{1, 1, 1}));
    ExpectAllChannels();
}

// A slice ends with the first row after more than 200 ms.
TEST_F(ProgressTest, RowsOfASlice) {
    Job job = StartedJob("PrinterDirection=\"YES\"");
    const SteppingClock clock(kThreeRowsASlice);
    constexpr std::pair<const char*, int> kEnds[] = {
        {"First", 2}, {"First", 5}, {"C2", 1}, {"C2", 4}, {"Third", 0}, {"Third", 3}, {"Third", 6},
    };
    int position = 0;
    const char* name = "First";
    for (const auto& [separation, row] : kEnds) {
        if (std::strcmp(separation, name) != 0) ++position;
        name = separation;
        ASSERT_EQ(job.Step(), 1);
        const int percent = row * 100 / 7;
        EXPECT_EQ(job.Status.StatusText,
                  PlaneText(name, percent, position * 100 / 4 + percent / 4));
    }
    EXPECT_EQ(job.Run(), (std::vector<int32_t>{1, 1, 1}));
    ExpectAllChannels(true);
}

TEST_F(ProgressTest, LongSeparationNamesAreCut) {
    const std::string name(700, 'n');
    Job job = StartedJob("", name);
    const SteppingClock clock(kRowASlice);
    while (job.Status.StatusText[0] != 'n' && !job.HasEnded())
        ASSERT_EQ(job.Step(), 1);
    EXPECT_EQ(std::string(job.Status.StatusText, sizeof job.Status.StatusText),
              name.substr(0, 255) + '\0');
    EXPECT_EQ(job.Status.StatusKind, 1);
}

class AbortTest : public ProgressTest, public ::testing::WithParamInterface<const char*> {};

// After any number of slices: the files are closed, nothing temporary stays, later steps are
// silent, and the driver takes the next job.
TEST_P(AbortTest, EndsTheJobAtOnce) {
    for (int slices = 0; slices < 9; ++slices) {
        SCOPED_TRACE(slices);
        Job job = StartedJob(GetParam());
        {
            const SteppingClock clock(kThreeRowsASlice);
            for (int i = 0; i < slices; ++i)
                ASSERT_EQ(job.Step(), 1);
        }
        EXPECT_EQ(driver.Call(kAbortJob), 1);
        EXPECT_TRUE(job.HasEnded());
        EXPECT_TRUE(Listing(folder.Temp()).empty());
        const std::vector<std::string> files = Listing(folder.Out());
        EXPECT_EQ(job.Step(), 0);
        EXPECT_EQ(job.Step(), 0);
        EXPECT_EQ(Listing(folder.Out()), files);
        EXPECT_TRUE(folder.Log().empty());
    }
    ASSERT_TRUE(MakeJob({page}).Print(folder.Out(), "Proof.ps"));
    ExpectAllChannels(std::string(GetParam()).find("Direction") != std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Rules, AbortTest,
                         ::testing::Values("", "PrinterDirection=\"YES\"",
                                           "TypeRead=\"LINE_BY_LINE\"",
                                           "TypeRead=\"LINE_BY_LINE\" PrinterDirection=\"YES\""),
                         [](const auto& tested) { return "Case" + std::to_string(tested.index); });

TEST_F(ProgressTest, AbortBeforeThePort) {
    folder.InstallModel(kModelName, Describe(NumberedModel(3, "", "raw")));
    Job job = MakeJob({NumberedPage(10, 2, 3, 1)});
    ASSERT_EQ(job.Open(), 1);
    EXPECT_EQ(driver.Call(kAbortJob), 1);
    EXPECT_TRUE(job.HasEnded());
    EXPECT_EQ(job.Step(), 0);
    EXPECT_TRUE(folder.Log().empty());
    EXPECT_TRUE(Listing(folder.Out()).empty());
}

}  // namespace
