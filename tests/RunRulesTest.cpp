// What a run refuses before its first line, what it may replace, and what it misses afterwards.

#include "DriverHostFixture.h"
#include "driverhost/Container.h"
#include "driverhost/DriverWords.h"
#include "driverhost/SideFiles.h"

namespace {

/// For what the superuser may do although the rights forbid it.
constexpr char kDropRights[] =
    "drop=; test $(id -u) = 0 && drop='setpriv --bounding-set -dac_override,-dac_read_search "
    "--inh-caps -dac_override,-dac_read_search'; ";

class RunRules : public DriverHost {
  protected:
    void SetUp() override {
        Write("a.pdf", Pdf({kQuarters}));
        ASSERT_EQ(
            Shell("cp -R \"$(dirname \"$host\")\"/models base && rm -f base/Jobs*/*/*").Status, 0);
    }

    /// With a base folder of the test's own: `make JOB MODEL` makes a job, and `run JOB` runs it.
    Outcome InBase(const std::string& script) const {
        return Shell(
            "export QL_BASE_FOLDER=base; options='base/Jobs and Settings/OptionsDrivers'; "
            "run() { \"$host\" run \"$@\" --out out; }; make() { job=$1; model=$2; shift 2; "
            "\"$host\" make-job a.pdf -o $job --model \"Fenland $model\" \"$@\" >made 2>&1; }; " +
            script);
    }
};

TEST_F(RunRules, RefusesWhatCannotComeOutRight) {
    ASSERT_EQ(InBase("make raw F8 && make tiles F8 --tiles 2x1 && make white W6").Status, 0);
    // A terabyte for each channel.
    Write("huge", ReadText(Path("raw")));
    ContainerWriter writer(Path("huge.pages.tif"), 0);
    writer.BeginSeparation({1'000'000, 1'000'000, 8, 300, 300, 0, 1, "Cyan", "Cyan"});
    std::vector<uint8_t> row(1'000'000);
    writer.WriteRow(row);
    writer.EndSeparation();
    writer.Close();
    const std::string longName(250, 'n');
    const struct {
        std::string Script;
        int Status;
        const char* Message;
    } kRows[] = {
        {"mv base/Temp away; run raw", 1, "base/Temp is missing"},
        {"run white", 1, "base/Temp is missing"},
        {"\"$host\" options set white 'No white' >&2; run white && rm -r out", 0, ""},
        {"mv away base/Temp; chmod 555 base/Temp; " + std::string(kDropRights) +
             "$drop \"$host\" run raw --out out; status=$?; chmod 755 base/Temp; exit $status",
         1, "base/Temp cannot be written in"},
        {"run huge", 1, "the job needs 9000.0 GB"},
        {"run raw --name " + longName, 2, "the job's name is too long: with its 250 bytes"},
        {"run raw --resolution 600x600", 2, "the job has 300x300 dpi"},
        {"run raw --resolution 300x300 && rm -r out", 0, ""},
        {"mkdir -p out/a-tile2; run tiles; status=$?; rmdir out/a-tile2 out; exit $status", 1,
         "out/a-tile2 stands in the way"},
        {"run a.pdf", 1, "a.pdf is artwork, no job"},
    };
    for (const auto& [script, status, message] : kRows) {
        const Outcome outcome = InBase(script);
        EXPECT_EQ(outcome.Status, status) << script << outcome.Output;
        EXPECT_TRUE(Contains(outcome.Output, message)) << script << outcome.Output;
        EXPECT_FALSE(fs::exists(Path("out"))) << script;
    }
}

TEST_F(RunRules, ReplacesOnlyWhatItMay) {
    ASSERT_EQ(InBase("make raw F8 && make tiles F8 --tiles 2x1").Status, 0);
    Write("keep", "not the job's");
    // One after the other in one folder.
    const struct {
        const char* Script;
        int Status;
        const char* Message;
    } kRows[] = {
        {"mkdir out; echo mine >out/a_2M.raw; run raw", 1, "out/a_2M.raw would be replaced"},
        {"run raw --replace", 1, "out/a_2M.raw would be replaced"},
        {"run raw --force", 0, "replaced: "},
        {"run raw", 1, "--replace removes them first"},
        {"run raw --force", 1, "--replace removes them first"},
        // Fewer inks: those of the earlier job do not stay beside them.
        {"make few F8 --color-mode 3; run few --replace; "
         "test ! -e out/a_5LC.raw && run few --name b && \"$host\" diff out out",
         0, "a complete job; its files are replaced"},
        {"sed -i '/complete/s/true/false/; s/\"a_1C.raw\"/\"a_1C.raw\", \"..\\/keep\"/' "
         "out/a.print.json; run few",
         0, "did not come to its end; its files are replaced"},
        {"test -e keep && run tiles && run tiles", 1, "other files are those of a complete job"},
        {"run tiles --replace --name a && ls out/a-tile1 | wc -l", 0, "10\n"},
        {"echo mine >out/a-tile1/mine; run tiles --replace --force", 1, "stands in the way"},
        // The file of its record is another job's.
        {"make roll R4; run roll && ls out", 0, "a.3.print.json\n"},
        // What it is printed from stays in any case.
        {"cp raw a.hdr; cp raw.pages.tif a.hdr.pages.tif; \"$host\" run raw --out . "
         "--thumbnail a.hdr --force",
         1, "a.hdr, which it is printed from"},
    };
    for (const auto& [script, status, message] : kRows) {
        const Outcome outcome = InBase(script);
        EXPECT_EQ(outcome.Status, status) << script << outcome.Output;
        EXPECT_TRUE(Contains(outcome.Output, message)) << script << outcome.Output;
    }
}

TEST_F(RunRules, WhiteChoiceTravelsWithTheJob) {
    ASSERT_EQ(InBase("make white W6").Status, 0);
    const auto inkOf = [this](const std::string& script) {
        const Outcome run = InBase("rm -rf out; { " + script +
                                   "; } >log 2>&1 && \"$host\" inspect out/a/a_W.tif | tail -1");
        return run.Status == 0 ? run.Output.substr(0, run.Output.find('%')) : run.Output;
    };
    const std::string none = "    0.00 ";
    const std::string full = "  100.00 ";
    const struct {
        const char* Script;
        std::string Ink;
    } kRows[] = {
        {"\"$host\" options set white 'No white' && run white", none},
        {"test $(ls \"$options\" | wc -l) = 1 && cp -R base other && rm -r \"other/Jobs and "
         "Settings\" && run white --base other && test ! -e \"other/Jobs and Settings\"",
         none},
        // The file is there and wins.
        {"sed -i '/white/s/5/3/' white.settings.json && run white", none},
        {"rm \"$options\"/* && run white && test $(ls \"$options\" | wc -l) = 0", full},
        // Made again in its place, and ordered anew.
        {"make white W6 && run white", full},
        {"make white W6 --white 5 && run white", none},
        {"\"$host\" options set white overprint && test $(ls \"$options\" | wc -l) = 1 && "
         "run white",
         full},
    };
    for (const auto& [script, ink] : kRows)
        EXPECT_EQ(inkOf(script), ink) << script << ReadText(Path("log"));

    const struct {
        std::string Script;
        const char* Message;
    } kRefused[] = {
        {"sed -i /white/d white.settings.json; sed -i 's/\"colorMode\": 2,/\"colorMode\": 2/' "
         "white.settings.json; rm \"$options\"/*; run white",
         "choose again with `driverhost options set"},
        {"chmod 555 \"$options\"; " + std::string(kDropRights) +
             "$drop \"$host\" options set white spot; status=$?; "
             "$drop \"$host\" options restore white && exit 5; chmod 755 \"$options\"; exit "
             "$status",
         "the choice is not stored"},
        {"\"$host\" options set white spot >log; echo x >\"$options\"/$(ls \"$options\"); run "
         "white",
         "cannot be read from its options file"},
    };
    for (const auto& [script, message] : kRefused) {
        const std::string job = ReadText(Path("white"));
        const Outcome outcome = InBase("rm -rf out; " + script);
        EXPECT_EQ(outcome.Status, 1) << script << outcome.Output;
        EXPECT_TRUE(Contains(outcome.Output, message)) << outcome.Output;
        EXPECT_FALSE(fs::exists(Path("out")));
    }
}

TEST_F(RunRules, MissesWhatTheModelPromises) {
    ASSERT_EQ(InBase("make white W6 && make roll R4").Status, 0);
    const std::string description = "base/OutputDrivers/FenlandW6.xml";
    const std::string templates = "base/OutputDrivers/";
    const struct {
        std::string Change;
        int Status;
        const char* Message;
    } kRows[] = {
        {"mv " + templates + "HeaderTemplates/FenlandW6.txt h", 3, "header a/a.hdr is missing"},
        {"echo '//ql nothing' >" + templates + "HeaderTemplates/FenlandW6.txt", 0, ""},
        {"mv " + templates + "JobTicketTemplates/FenlandW6Job.xml t", 3,
         "job ticket a/FenlandW6Job.xml is missing"},
        {"mv t " + templates +
             "JobTicketTemplates/FenlandW6Job.xml; sed -i 's/sizeV=\"480\"/"
             "sizeV=\"0\"/' " +
             description,
         0, ""},
        // A picture of the job stays where no preview takes its place.
        {"set -- --thumbnail a.pdf", 0, "a/a_preview.bmp"},
    };
    for (const auto& [change, status, message] : kRows) {
        const Outcome outcome =
            InBase("rm -rf out; export QL_STRICT=0; " + change + "; run white \"$@\"");
        EXPECT_EQ(outcome.Status, status) << change << outcome.Output;
        EXPECT_TRUE(Contains(outcome.Output, message)) << change << outcome.Output;
    }
    // Without the PNG library, which is called as on this system.
    const Outcome outcome = InBase(
        "mkdir alone; cp \"$host\" \"$(dirname \"$host\")\"/libOutputDriver.so alone; "
        "alone/driverhost run roll --out out");
    EXPECT_EQ(outcome.Status, 3);
    EXPECT_TRUE(Contains(outcome.Output, "alone/libpng3.so\n")) << outcome.Output;
    EXPECT_TRUE(Contains(outcome.Output, "page 1: the preview a_001/a_preview.png is "))
        << outcome.Output;
}

TEST_F(RunRules, ReadmesHostPrintsTheSame) {
    const Outcome outcome = InBase(
        "minimal() { '" MINIMAL_HOST "' '" OUTPUT_DRIVER_LIBRARY
        "' base \"$@\"; }; mkdir out few; "
        "make raw F8 && make white W6 && \"$host\" run raw --name artwork --out out && "
        "minimal raw few && rm out/*.json && \"$host\" diff out few && ! minimal white nowhere");
    EXPECT_EQ(outcome.Status, 0) << outcome.Output;
}

TEST(SideFiles, AreWholeOrNot) {
    const WorkFolder folder(fs::temp_directory_path() / "side-files");
    const auto faultOf = [&](SideFile file, const std::string& bytes) {
        file.Path = "x";
        std::ofstream(folder.Path() / "x", std::ios::binary) << bytes;
        return FaultOf(folder.Path(), "", file);
    };
    SideFile header(SideKind::kHeader);
    header.Bytes = 4;
    EXPECT_EQ(faultOf(header, "1234"), "");
    EXPECT_EQ(faultOf(header, "123"), "the header x has 3 bytes instead of 4");
    header.IsCut = true;
    EXPECT_EQ(faultOf(header, "1234"),
              "the header x is cut: its template gives more than a "
              "header holds");
    SideFile ticket(SideKind::kTicket);
    ticket.Template = "n=QL_COPIES";
    ticket.Filled = "n=3";
    EXPECT_EQ(faultOf(ticket, "n=3"), "");
    EXPECT_EQ(faultOf(ticket, "n=QL_COPIES"), "the job ticket x is not filled in");
    EXPECT_EQ(faultOf(ticket, "n="), "the job ticket x is short");
    SideFile preview(SideKind::kPreview);
    preview.Width = preview.Height = 1;
    const std::string bmp =
        std::string("BM\x3A\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\x01\0\0\0\x01", 23) +
        std::string(35, '\0');
    EXPECT_EQ(faultOf(preview, bmp), "");
    EXPECT_EQ(faultOf(preview, bmp.substr(0, 57)),
              "the preview x is no whole picture of 1 x 1 pixels");
    preview.Width = 2;
    EXPECT_NE(faultOf(preview, bmp), "");
}

TEST(DriverWords, AreSentences) {
    const std::pair<const char*, const char*> kEntries[] = {
        {"E host\\ExportBitmap(91): Cannot write /a (1): b", "Cannot write /a (1): b"},
        {"W plugin\\output\\RTL(9): job: no preview", "warning: job: no preview"},
        {"E PrinterDriver\\Common\\Xsrc\\ABasePrinterDriverImp(114): Exception", ""},
        {"D host\\ZEJob(9): opened a job", ""},
        {"a line of somebody else's", ""},
        {"", ""},
    };
    for (const auto& [line, sentence] : kEntries) {
        const auto word = WordOfEntry(line);
        EXPECT_EQ(word ? (word->IsWarning ? "warning: " : "") + word->Text : "", sentence) << line;
    }
    EXPECT_EQ(WordOfMessage(R"({"text":"Cannot get XML \nof it "})")->Text,
              "Cannot get XML  of it");
    EXPECT_FALSE(WordOfMessage("{").has_value());
}

}  // namespace
