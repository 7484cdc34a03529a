// Time slices, the progress that a host sees, and jobs that are aborted.

#include "JobRunner.h"

namespace {

constexpr int kRowASlice = 201;  // milliseconds between two looks at the clock
constexpr int kThreeRowsASlice = 100;

class ProgressTest : public BoundaryTest {
  protected:
    /// A job after its page set-up.
    Job PageStarted(const std::string& rules) {
        Install(3, "CreateFolder=\"No\" " + rules);
        Job job = StartJob({page});
        EXPECT_EQ(job.Step(), 1);
        EXPECT_STREQ(job.Status.StatusText, "");
        return job;
    }
    void ExpectAllChannels(bool bottomFirst) {
        for (const char* name : {"C1", "C2", "C3"}) {
            EXPECT_EQ(Output(fmt::format("Proof_{}.raw", name)),
                      ChannelBytes(page, name, bottomFirst))
                << name;
        }
    }

    // In another order than the colorants, one unmatched, one without a display name.
    Page page = RandomPage(
        20, 7, {{"C3", 1, "Third"}, {"Gold", 1, "Gold ink"}, {"C1", 1, "First"}, {"C2"}}, 1);
};

/// The row that a slice ends with.
struct SliceEnd {
    int Position;
    int Row;
};

struct SliceCase {
    const char* Rules;
    int RowMs;
    std::vector<SliceEnd> Ends;
};

// A slice ends with the first row after more than 200 ms.
TEST_F(ProgressTest, TextsAndSlices) {
    SliceCase everyRow = {"", kRowASlice, {}};
    SliceCase everyLine = {"TypeRead=\"LINE_BY_LINE\"", kRowASlice, {}};
    for (int i = 0; i < 3 * 7; ++i) {
        everyRow.Ends.push_back({i / 7, i % 7});
        everyLine.Ends.push_back({-1, i / 3});
    }
    const SliceCase cases[] = {
        everyRow,
        everyLine,
        {"PrinterDirection=\"YES\"",
         kThreeRowsASlice,
         {{0, 2}, {0, 5}, {1, 1}, {1, 4}, {2, 0}, {2, 3}, {2, 6}}},
    };
    constexpr const char* kPercents[] = {"  0%", " 14%", " 28%", " 42%", " 57%", " 71%", " 85%"};
    constexpr const char* kNames[] = {"First", "C2", "Third"};
    for (const auto& [rules, rowMs, ends] : cases) {
        SCOPED_TRACE(rules);
        Job job = PageStarted(rules);
        const StandIn clock(clockStepMs, rowMs);
        for (const auto& [position, row] : ends) {
            ASSERT_EQ(job.Step(), 1);
            std::string text = kPercents[row];
            if (position >= 0) {
                const int overall = position * 100 / 4 + row * 100 / 7 / 4;
                text = fmt::format("{}  {} {:3}%", kNames[position], text, overall);
            }
            EXPECT_EQ(job.Status.StatusText, text);
            EXPECT_EQ(job.Status.StatusKind, position < 0 ? 3 : 1);
            EXPECT_EQ(job.Status.JobState, kFilePort);
        }
        EXPECT_EQ(job.Run(), "111") << "bands done, page end, job end";
        ExpectAllChannels(rowMs == kThreeRowsASlice);
    }
}

// After any number of slices, before the port too: the files are closed, nothing temporary stays,
// later steps are silent, and the driver takes the next job.
TEST_F(ProgressTest, AbortEndsTheJobAtOnce) {
    for (const char* order : {"", "TypeRead=\"LINE_BY_LINE\""}) {
        for (const bool isReversed : {false, true}) {
            for (int slices = -1; slices < 9; ++slices) {
                SCOPED_TRACE(fmt::format("{} {} {}", order, isReversed, slices));
                Job job = PageStarted(
                    fmt::format("{} {}", order, isReversed ? "PrinterDirection=\"YES\"" : ""));
                if (slices < 0) job.Open();
                {
                    const StandIn clock(clockStepMs, kThreeRowsASlice);
                    for (int i = 0; i < slices; ++i)
                        ASSERT_EQ(job.Step(), 1);
                }
                EXPECT_EQ(driver->Call(kAbortJob), 1);
                EXPECT_TRUE(job.HasEnded());
                EXPECT_TRUE(Listing(folder.Temp()).empty());
                const Texts files = Listing(folder.Out());
                EXPECT_EQ(job.Step() + job.Step(), 0);
                EXPECT_EQ(Listing(folder.Out()), files);
                EXPECT_EQ(FailedSteps(), 0U);
            }
            ASSERT_TRUE(Print({page}));
            ExpectAllChannels(isReversed);
        }
    }
}

}  // namespace
