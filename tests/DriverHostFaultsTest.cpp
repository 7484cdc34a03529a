// What the built program does with what it cannot print, and when it is stopped.

#include <gtest/gtest.h>

#include "DriverHostFixture.h"
#include "driverhost/Container.h"

namespace {

/// A blank separation of 8 bits a pixel, of which only so many rows are there.
void WriteSeparation(const fs::path& path, const SeparationHeader& header, int64_t rows) {
    ContainerWriter writer(path, 0);
    std::vector<uint8_t> row(static_cast<std::size_t>(header.WidthPixels));
    writer.BeginSeparation(header);
    for (int64_t y = 0; y < rows; ++y)
        writer.WriteRow(row);
    writer.EndSeparation();
    writer.Close();
}

TEST_F(DriverHost, RefusesDocumentsThatCannotBePrinted) {
    Write("a.pdf", Pdf({kQuarters}));
    ASSERT_EQ(Shell("gs -q -dBATCH -dNOPAUSE -sDEVICE=pdfwrite -sOwnerPassword=a -sUserPassword=b "
                    "-dEncryptionR=3 -dKeyLength=128 -sOutputFile=locked.pdf a.pdf")
                  .Status,
              0);
    fs::create_directory(Path("folder.pdf"));
    struct Case {
        const char* Name;
        std::optional<std::string> Bytes;
        const char* Message;
    };
    const Case cases[] = {
        {"missing.pdf", {}, "does not exist"},
        {"folder.pdf", {}, "is no file"},
        {"locked.pdf", {}, "password"},
        {"empty.pdf", "", "is empty"},
        {"program.pdf", "%!PS\n(x) print\n", "shows no page"},
        {"garbage.pdf", "%PDF-1.4\nnothing of a PDF follows", "driverhost: "},
        {"nopages.pdf", Pdf({}), "no pages"},
        {"nobox.pdf", Pdf({{"", ""}}), "driverhost: "},
        {"huge.pdf", Pdf({{"0 0 900000000 900000000", ""}}), "page 1 measures"},
        {"tiny.pdf", Pdf({{"0 0 0.01 72", ""}}), "page 1 measures"},
    };
    for (const Case& row : cases) {
        if (row.Bytes) Write(row.Name, *row.Bytes);
        const Listing before = Files();
        ExpectRefused(MakeJob(row.Name), row.Message, before);
    }
}

TEST_F(DriverHost, DoesNotBelieveTheRasterizer) {
    Write("a.pdf", "%PDF-1.4\n");
    Write("garbage.tif", "no TIFF at all");
    // A plate of the right size whose rows end early, as a full disk leaves it.
    WriteSeparation(Path("short.tif"), {360, 360, 8, 360, 360, 0, 1, "Cyan", "Cyan"}, 320);
    const std::string copy = "cp '" + folder_.Path().string() + "'/";
    struct Case {
        std::string Script;
        const char* Message;
        Arguments Options = {};
    };
    const Case cases[] = {
        {"exit 0", "made no plate of Cyan"},
        {copy + "garbage.tif 'plate(Cyan).tif'", "unreadable"},
        {copy + "short.tif 'plate(Cyan).tif'", "ends early, at row 320 of 360"},
        {"echo 'Error: /ioerror in --showpage--'; exit 1", "ioerror"},
        {"kill -9 $$", "exit status 137"},
        {"sleep 1000", "no progress for 1 s", {"--timeout", "1"}},
    };
    for (const Case& row : cases) {
        ReplaceRasterizer(row.Script);
        const Listing before = Files();
        ExpectRefused(MakeJob("a.pdf", row.Options), row.Message, before);
    }
}

TEST_F(DriverHost, AnswersAWrongCommandLineWithItsOwnStatus) {
    MakeSmallJob();
    Write("b.settings.json", "[]");
    struct Case {
        Arguments CommandLine;
        int Status;
        const char* Message = "";
    };
    const std::string longName(245, 'n');
    const Case cases[] = {
        {{}, 2, "see driverhost --help"},
        {{"--help"}, 0},
        {{"make-jb"}, 2, "no command \"make-jb\" (did you mean \"make-job\"?)"},
        {{"run", "job"}, 2, "--out is required; see driverhost run --help"},
        {{"capabilities", "Nobody's printer"}, 2, "there are \"Fenland R4\", "},
        {{"capabilities", std::string(64, 'm')}, 2},
        {{"make-job", "a.pdf", "--model", "Fenland", "-o", "x"}, 2, "near it: \"Fenland R4\", "},
        {{"make-job", "a.pdf", "--model", "Fenland R4", "-o", "x", "--media", "Silk"}, 2},
        {{"make-job", "a.pdf", "--model", "Fenland R4", "-o", "x", "--resolution", "3"}, 2},
        {{"make-job", "a.pdf", "--model", "Fenland R4", "-o", "x", "--timeout", "0"}, 2},
        {{"make-job", "a.pdf", "--model", "Fenland R4", "-o", "x", "--white", "spot"}, 2},
        {{"make-job", "a.pdf", "--model", "Fenland R4", "-o", "nowhere/x"}, 1},
        {{"make-job", "a.pdf", "--model", "Fenland R4", "-o", "."}, 2},
        {{"make-job", "a.pdf", "--model", "Fenland R4", "-o", longName}, 2, "name is too long"},
        {{"make-job", "a.pdf", "--model", "Fenland R4", "-o", "a.pdf"}, 2, "the artwork itself"},
        {{"make-job", "job.pages.tif", "--model", "Fenland R4", "-o", "job"}, 2, "artwork itself"},
        {{"make-job", "job", "--model", "Fenland R4", "-o", "a.pdf"}, 1, "--force allows it"},
        {{"make-job", "a.pdf", "--model", "Fenland R4", "-o", "b"}, 1, "--force allows it"},
        {{"halftone", "Fenland R4", "--manufacturer", "F", "--plot", "a.pdf"}, 1, "no"},
        {{"options", "show", "a.pdf"}, 1, "is artwork, no job"},
        {{"run", "nothing", "--out", "o"}, 1},
        {{"run", "job", "--out", "a.pdf"}, 1},
        {{"run", "job", "--out", "o", "--name", "../x"}, 2},
        {{"run", "job", "job", "--out", "o", "--name", "x"}, 2},
        {{"run", "job", "--out", "o", "--copies", "0"}, 2},
    };
    const Listing before = Files();
    for (const Case& row : cases) {
        const Outcome outcome = Host(row.CommandLine);
        EXPECT_EQ(outcome.Status, row.Status)
            << testing::PrintToString(row.CommandLine) << outcome.Output;
        EXPECT_TRUE(Contains(outcome.Output, row.Message)) << outcome.Output;
    }
    EXPECT_TRUE(Files() == before);
    EXPECT_TRUE(Contains(Shell("QL_CODE_PAGE=NOSUCH \"$host\" models").Output,
                         "QL_CODE_PAGE names NOSUCH, which this system does not know"));
}

TEST_F(DriverHost, LeavesNothingBehindOnAFullDisk) {
    MakeSmallJob();
    const Listing before = Files();
    // No file may pass 4 KiB; a block counts 512 bytes.
    const Outcome made =
        Shell("ulimit -f 8; \"$host\" make-job a.pdf --model 'Fenland R4' --color-mode 2 -o job");
    EXPECT_EQ(made.Status, 1) << made.Output;
    EXPECT_TRUE(Files() == before);  // the earlier job stands

    const Outcome run = Shell("ulimit -f 8; \"$host\" run job --out printed");
    EXPECT_EQ(run.Status, 3) << run.Output;
    EXPECT_TRUE(Contains(run.Output, "a_C.tif is incomplete")) << run.Output;
    EXPECT_TRUE(Contains(run.Output, "printed/a is incomplete")) << run.Output;
    EXPECT_TRUE(Contains(run.Output, "3 channels are not written")) << run.Output;
}

TEST_F(DriverHost, StopsOnAnInterrupt) {
    Write("a.pdf", "%PDF-1.4\n");
    ReplaceRasterizer("kill -INT $PPID; sleep 1000");
    const Listing before = Files();
    EXPECT_EQ(MakeJob("a.pdf").Status, 130);
    EXPECT_TRUE(Files() == before);
}

TEST_F(DriverHost, AbortsARunningJobOnAnInterrupt) {
    MakeSmallJob();
    // Preloaded as it is, it stands before the sanitizers' library.
    const auto stopped = [&](const char* signal, const char* folder) {
        return Shell(
            fmt::format("STOP_SIGNAL={} LD_PRELOAD='{}' "
                        "ASAN_OPTIONS=$ASAN_OPTIONS:verify_asan_link_order=0 \"$host\" run "
                        "job --out {}",
                        signal, INTERRUPTING_CLOCK, folder));
    };
    const Outcome run = stopped("15", "printed");
    EXPECT_EQ(run.Status, 130) << run.Output;
    EXPECT_TRUE(Contains(run.Output, "interrupted; the job is aborted")) << run.Output;
    EXPECT_TRUE(Contains(run.Output, "a_C.tif is incomplete")) << run.Output;
    EXPECT_TRUE(Contains(run.Output, "printed/a is incomplete")) << run.Output;
    // Killed in the first channel, it leaves the record that stood there from the start.
    stopped("9", "killed");
    const std::string record = ReadText(Path("killed/a.print.json"));
    EXPECT_TRUE(Contains(record, "\"complete\": false")) << record;
    EXPECT_TRUE(Contains(record, "a/a_preview.png")) << record;
}

TEST_F(DriverHost, FailsWhenItsOutputCannotBeWritten) {
    MakeSmallJob();
    ASSERT_EQ(Host({"run", "job", "--out", "o"}).Status, 0);
    for (const char* const command :
         {"models", "capabilities 'Fenland R4'", "halftone 'Fenland R4' --manufacturer Fenland",
          "make-job a.pdf --model 'Fenland R4' -o b", "run job --out o", "run job --out o --json",
          "inspect job", "diff o o", "check .", "proof o -o p.png --job a", "header FenlandW6.txt",
          "ticket FenlandW6Job.xml", "options show job", "completion bash", "man", "--help",
          "run --help"})
        for (const char* const nowhere : {">/dev/full", ">&-"}) {
            const Outcome outcome = Shell(fmt::format("\"$host\" {} {}", command, nowhere));
            EXPECT_EQ(outcome.Status, 1) << command << nowhere;
            EXPECT_TRUE(Contains(outcome.Output, "cannot write to standard output"))
                << command << nowhere << outcome.Output;
        }
}

}  // namespace
