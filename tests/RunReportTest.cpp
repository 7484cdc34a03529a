// Several jobs in one run, and what the report says of each.

#include <nlohmann/json.hpp>

#include "DriverHostFixture.h"

namespace {

using Json = nlohmann::json;

class RunReport : public DriverHost {
  protected:
    void SetUp() override {
        Write("a.pdf", Pdf({kQuarters}));
        ASSERT_EQ(Host({"make-job", "a.pdf", "-o", "tiff", "--model", "Fenland R4"}).Status, 0);
        ASSERT_EQ(Host({"make-job", "a.pdf", "-o", "raw", "--model", "Fenland F8"}).Status, 0);
    }

    Json Run(const std::string& arguments, int status) const {
        const Outcome outcome = Shell("\"$host\" run --json " + arguments + " >report");
        EXPECT_EQ(outcome.Status, status) << outcome.Output;
        Json report = Json::parse(ReadText(Path("report")), nullptr, false);
        EXPECT_EQ(report["exitStatus"], status);
        return report["jobs"];
    }

    static std::string StatesOf(const Json& jobs) {
        std::string states;
        for (const Json& job : jobs)
            states += job["state"].get<std::string>() + ' ';
        return states;
    }
};

TEST_F(RunReport, JobsOfTwoModelsPrintAsEachAlone) {
    const Json jobs = Run("tiff raw tiff --out together", 0);
    EXPECT_EQ(StatesOf(jobs), "complete complete complete ");
    EXPECT_EQ(jobs[0]["folders"], Json({"a"}));
    EXPECT_EQ(jobs[1]["folders"], Json({"."}));
    EXPECT_EQ(jobs[2]["folders"], Json({"a_001"}));
    EXPECT_EQ(jobs[1]["model"], "Fenland F8");
    EXPECT_EQ(jobs[1]["pages"][0]["width"], 300);
    std::uintmax_t bytes = 0;
    int channels = 0;  // among what else the model asks for
    for (const Json& file : jobs[1]["files"]) {
        const std::string path = "together/" + file["path"].get<std::string>();
        EXPECT_EQ(file["sha256"], Shell("sha256sum " + path).Output.substr(0, 64));
        EXPECT_EQ(file["bytes"], fs::file_size(Path(path)));
        bytes += fs::file_size(Path(path));
        channels += path.ends_with(".raw") ? 1 : 0;
    }
    EXPECT_EQ(channels, 8);
    EXPECT_EQ(jobs[1]["bytes"], bytes);
    EXPECT_NEAR(jobs[1]["bytesPerSecond"].get<double>() * jobs[1]["seconds"].get<double>(),
                static_cast<double>(bytes), 1);

    ASSERT_EQ(Host({"run", "tiff", "--out", "alone"}).Status, 0);
    ASSERT_EQ(Host({"run", "raw", "--out", "alone"}).Status, 0);
    ASSERT_EQ(Host({"run", "tiff", "--out", "alone"}).Status, 0);
    const Outcome same = Host({"diff", "together", "alone"});
    EXPECT_EQ(same.Status, 0) << same.Output;
}

TEST_F(RunReport, ThumbnailLiesWithTheJob) {
    // A page's own picture takes its place, but for pages in folders of their own.
    Write("a.pdf", Pdf({kQuarters, kQuarters}));
    ASSERT_EQ(MakeJob("a.pdf").Status, 0);
    Write("picture", "any bytes");
    const Json jobs = Run("job --out printed --copies 3 --thumbnail picture", 0);
    const Json sum = Shell("sha256sum picture").Output.substr(0, 64);
    const Json& files = jobs[0]["files"];
    EXPECT_TRUE(std::any_of(files.begin(), files.end(), [&sum](const Json& file) {
        return file["sha256"] == sum && file["path"].get<std::string>().starts_with("a/a_");
    })) << files;
}

TEST_F(RunReport, RunsInOneBaseFolderTakeTurns) {
    const Outcome outcome = Shell(
        "for i in 1 2 3 4; do \"$host\" run raw --out at$i & runs=\"$runs $!\"; done\n"
        "for run in $runs; do wait $run || exit 1; done\n"
        "for i in 2 3 4; do \"$host\" diff at1 at$i || exit 1; done");
    EXPECT_EQ(outcome.Status, 0) << outcome.Output;
}

TEST_F(RunReport, NamesWhatIsIncomplete) {
    const std::string pages = ReadText(Path("tiff.pages.tif"));
    Write("cut", ReadText(Path("tiff")));
    Write("cut.pages.tif", pages);
    fs::resize_file(Path("cut.pages.tif"), pages.size() / 2);
    struct Case {
        const char* Jobs;
        int Status;
        const char* States;
        std::vector<std::string> Incomplete;  ///< folders of the first job
    };
    const Case cases[] = {
        {"cut tiff", 3, "incomplete complete ", {"a"}},
        {"nothing tiff", 1, "failed complete ", {}},
        {"tiff cut nothing", 3, "complete incomplete failed ", {}},
        {"tiff --thumbnail nothing", 2, "failed ", {}},
        {"tiff --media Silk", 2, "failed ", {}},
        // Without folders of their own the second would take the place of the first.
        {"raw raw", 1, "complete failed ", {}},
        {"raw raw --replace", 3, "incomplete complete ", {"."}},
    };
    for (const Case& row : cases) {
        fs::remove_all(Path("printed"));
        const Json jobs = Run(std::string(row.Jobs) + " --out printed", row.Status);
        EXPECT_EQ(StatesOf(jobs), row.States) << row.Jobs;
        EXPECT_EQ(jobs[0]["incompleteFolders"], row.Incomplete) << row.Jobs;
        EXPECT_EQ(jobs[0]["message"].is_null(), jobs[0]["state"] == "complete") << row.Jobs;
    }
}

TEST_F(RunReport, SaysWhichFolderCannotBeRead) {
    ASSERT_EQ(Shell("mkdir -p o/locked && chmod 0 o/locked").Status, 0);
    // The superuser reads every folder, unless the right to is taken away.
    const Outcome run = Shell(
        "drop=; test $(id -u) = 0 && drop='setpriv --bounding-set "
        "-dac_override,-dac_read_search --inh-caps -dac_override,-dac_read_search'; "
        "$drop \"$host\" run tiff --out o; status=$?; chmod 700 o/locked; exit $status");
    EXPECT_EQ(run.Status, 1);
    EXPECT_TRUE(Contains(run.Output, "o/locked: Permission denied")) << run.Output;
}

}  // namespace
