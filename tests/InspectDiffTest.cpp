// What inspect and diff say of jobs and channel files, whole, changed and damaged.

#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include "DriverHostFixture.h"

namespace {

using Json = nlohmann::json;

class InspectDiff : public DriverHost {
  protected:
    Json Inspected(Arguments arguments) const {
        arguments.insert(arguments.begin(), {"inspect", "--json"});
        const Outcome outcome = Host(arguments);
        EXPECT_EQ(outcome.Status, 0) << outcome.Output;
        return Json::parse(outcome.Output, nullptr, false);
    }

    /// The bytes of a file with some of them replaced.
    void Overwrite(const std::string& name, std::size_t offset, const std::string& bytes) const {
        std::string content = ReadText(Path(name));
        Write(name, content.replace(offset, bytes.size(), bytes));
    }

    std::string SumOf(const std::string& name) const {
        return Shell("sha256sum " + name).Output.substr(0, 64);
    }
};

TEST_F(InspectDiff, ChannelHasTheInkAndTheSumOfItsSeparation) {
    MakeSmallJob();
    ASSERT_EQ(Host({"run", "job", "--out", "printed"}).Status, 0);
    const Json all = Inspected({"job", "job.pages.tif", "printed/a/a_C.tif", "printed/a/a_M.tif"});
    const Json& job = all[0];
    EXPECT_EQ(job["model"], "Fenland R4");
    EXPECT_EQ(job["pages"], all[1]["pages"]);
    EXPECT_EQ(job["pages"][0]["xResolution"], 360.0);
    const Json& separations = job["pages"][0]["separations"];
    ASSERT_EQ(separations.size(), 4U);
    for (const std::size_t ink : {0U, 1U}) {
        EXPECT_EQ(separations[ink]["sha256"], all[2 + ink]["sha256"]);
        EXPECT_EQ(separations[ink]["coverage"], all[2 + ink]["coverage"]);
    }
    EXPECT_NEAR(separations[0]["coverage"].get<double>(), 25, 0.001);
    EXPECT_NEAR(separations[1]["coverage"].get<double>(), 12.5, 0.1);
    EXPECT_EQ(all[2]["lines"], 360);
}

TEST_F(InspectDiff, RawChannelTakesItsSizeFromTheRecordOrTheUser) {
    // 300 pixels a line in 320: what lies beyond the page is no ink.
    Write("a.pdf", Pdf({{"0 0 72 72", "1 1 1 1 k 0 0 72 72 re f"}, kQuarters}));
    ASSERT_EQ(Host({"make-job", "a.pdf", "-o", "job", "--model", "Fenland F8"}).Status, 0);
    ASSERT_EQ(Host({"run", "job", "--out", "printed"}).Status, 0);
    const std::string file = "printed/a-tile1/a_4K.raw";
    const Json known = Inspected({file})[0];
    EXPECT_EQ(known["width"], 320);
    EXPECT_EQ(known["lines"], 300);
    EXPECT_EQ(known["bits"], 2);
    EXPECT_EQ(known["yResolution"], 300.0);
    EXPECT_EQ(known["coverage"], 100.0);
    EXPECT_EQ(known["sha256"], SumOf(file));

    fs::copy(Path(file), Path("lone.raw"));
    EXPECT_EQ(Inspected({"lone.raw"})[0]["width"], nullptr);
    EXPECT_EQ(Inspected({"lone.raw"})[0]["sha256"], known["sha256"]);
    const Json said = Inspected({"lone.raw", "--width", "300", "--bits", "2"})[0];
    EXPECT_EQ(said["lines"], 300);
    EXPECT_EQ(said["coverage"], 100.0);
}

TEST_F(InspectDiff, InspectSaysWhatItCannotRead) {
    MakeSmallJob();
    ASSERT_EQ(Host({"run", "job", "--out", "printed"}).Status, 0);
    const std::string pages = ReadText(Path("job.pages.tif"));
    const std::string channel = ReadText(Path("printed/a/a_C.tif"));
    Write("empty", "");
    Write("cut.tif", channel.substr(0, channel.size() - 40));
    Write("cut.pages.tif", pages.substr(0, pages.size() / 2));
    Write("cutjob", ReadText(Path("job")).substr(0, 100));
    Write("cutjob.pages.tif", pages);
    Write("magic", std::string("II*\0", 4));
    // One directory of a plane of 4294967295 pixels a side in one strip.
    Write("huge", std::string("II*\0\10\0\0\0\4\0"
                              "\0\1\4\0\1\0\0\0\377\377\377\377\1\1\4\0\1\0\0\0\377\377\377\377"
                              "\21\1\4\0\1\0\0\0\0\0\0\0\27\1\4\0\1\0\0\0\377\377\377\377\0\0\0\0",
                              62));
    fs::create_directory(Path("folder"));
    ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
    Write("printed/b.print.json", "[{]");
    const std::pair<Arguments, const char*> cases[] = {
        {{"nothing"}, "nothing cannot be read"},
        {{"folder"}, "folder cannot be read"},
        {{"pipe"}, "pipe cannot be read"},
        {{"cut.pages.tif"}, "page 1"},
        {{"cutjob"}, "cutjob is no job file"},
        {{"magic"}, "magic is no TIFF file"},
        {{"huge"}, "huge"},
        {{"cut.tif"}, "cut.tif"},
        {{"job", "--bits", "3"}, "--bits"},
        {{"printed/a/a_C.tif", "empty", "--width", "5", "--bits", "1", "nothing"}, "1 of 3"},
    };
    for (const auto& [files, message] : cases) {
        Arguments arguments = {"inspect"};
        arguments.insert(arguments.end(), files.begin(), files.end());
        const Outcome outcome = Host(arguments);
        EXPECT_TRUE(outcome.Status == 1 || outcome.Status == 2) << outcome.Output;
        EXPECT_TRUE(Contains(outcome.Output, message)) << message << ": " << outcome.Output;
        EXPECT_TRUE(Contains(outcome.Output, "\ndriverhost: ") ||
                    outcome.Output.starts_with("driverhost: "))
            << outcome.Output;
    }
}

TEST_F(InspectDiff, DiffSaysWhereChannelsDiffer) {
    Write("a.pdf", Pdf({kQuarters, kQuarters}));
    ASSERT_EQ(Host({"make-job", "a.pdf", "-o", "tiff", "--model", "Fenland R4"}).Status, 0);
    ASSERT_EQ(Host({"make-job", "a.pdf", "-o", "raw", "--model", "Fenland F8"}).Status, 0);
    ASSERT_EQ(Host({"run", "tiff", "--out", "A"}).Status, 0);
    ASSERT_EQ(Host({"run", "raw", "--out", "A", "--name", "r"}).Status, 0);
    fs::copy(Path("A"), Path("same"), fs::copy_options::recursive);
    // Stored in another way, and the same lines.
    ASSERT_EQ(Shell("tiffcp -c lzw A/a/a-tile1/a_C.tif same/a/a-tile1/a_C.tif").Status, 0);
    const Outcome same = Host({"diff", "A", "same"});
    EXPECT_EQ(same.Status, 0) << same.Output;

    const auto size = [this](const char* name) { return fs::file_size(Path(name)); };
    const std::string raw = "r-tile2/r_1C.raw";
    const std::string tiff = "a/a-tile1/a_K.tif";
    struct Edit {
        const char* What;
        std::function<void()> Do;
        int Status;
        const char* Says;
    };
    const Edit edits[] = {
        // 80 bytes a line of 2 bits a pixel, bottom line first and without ink there.
        {"pixels of a raw channel", [&] { Overwrite("B/" + raw, 23920, "\x0C\x30\x01"); }, 1,
         "r-tile2/r_1C.raw: differs from line 299, pixel 2 on; 3 pixels differ"},
        {"raw lines missing",
         [&] { fs::resize_file(Path("B/" + raw), size("A/r-tile2/r_1C.raw") - 160); }, 1,
         "300 lines and 298 lines"},
        {"half a raw line", [&] { fs::resize_file(Path("B/" + raw), 24001); }, 1,
         "24000 bytes and 24001 bytes"},
        // The black plane is blank: its lines are all the bytes that are 0 in the middle.
        {"a TIFF pixel", [&] { Overwrite("B/" + tiff, 8 + 48 * 100 + 3, "\x80"); }, 1,
         "a_K.tif: differs from line 100, pixel 24 on; 1 pixel differs"},
        {"the resolution", [&] { Shell("tiffset -s 282 720 B/" + tiff); }, 1,
         "360 x 360 dpi and 720 x 360 dpi"},
        {"a TIFF cut short", [&] { fs::resize_file(Path("B/" + tiff), 3000); }, 1, "a_K.tif: "},
        {"another file", [&] { Write("A/t.txt", "abc"), Write("B/t.txt", "aBC"); }, 1,
         "t.txt: differs from byte 1 on; 2 bytes differ"},
        {"one side only", [&] { fs::remove(Path("B/" + tiff)), Write("B/new", ""); }, 1,
         "a/a-tile1/a_K.tif: only in A\nnew: only in B\n"},
        {"unreadable",
         [&] { fs::remove(Path("B/" + raw)), fs::create_symlink("x", Path("B/" + raw)); }, 2,
         "r_1C.raw cannot be read"},
        {"no folder", [&] { fs::remove_all(Path("B")); }, 2, "B does not exist"},
        {"a file and a folder", [&] { fs::remove_all(Path("B")), Write("B", ""); }, 2,
         "is a folder"},
    };
    for (const Edit& edit : edits) {
        fs::remove(Path("A/t.txt"));
        fs::remove_all(Path("B"));
        fs::copy(Path("A"), Path("B"), fs::copy_options::recursive);
        edit.Do();
        const Outcome outcome = Host({"diff", "A", "B"});
        EXPECT_EQ(outcome.Status, edit.Status) << edit.What << outcome.Output;
        EXPECT_TRUE(Contains(outcome.Output, edit.Says)) << edit.What << ": " << outcome.Output;
    }

    fs::copy(Path("A"), Path("C"), fs::copy_options::recursive);
    Overwrite("C/" + raw, 23920, "\x0C\x30\x01");
    Overwrite("C/" + tiff, 0, "X");
    fs::remove(Path("C/r-tile1/r_1C.raw"));
    fs::create_symlink("x", Path("C/r-tile1/r_1C.raw"));
    const Outcome outcome = Host({"diff", "A", "C", "--json"});
    ASSERT_EQ(outcome.Status, 2) << outcome.Output;
    const Json answer = Json::parse(outcome.Output);
    EXPECT_GT(answer.at("equal"), 5);
    EXPECT_EQ(answer.at("unreadable").at(0).at("file"), "r-tile1/r_1C.raw");
    const Json& different = answer.at("different");
    EXPECT_EQ(different.size(), 2U) << different;
    EXPECT_EQ(different.at(0).at("byte"), 0);
    EXPECT_EQ(different.at(0).at("bytes"), 1);
    const Json expected = {{"file", raw},
                           {"difference", "differs from line 299, pixel 2 on; 3 pixels differ"},
                           {"line", 299},
                           {"pixel", 2},
                           {"pixels", 3}};
    EXPECT_EQ(different.at(1), expected);
}

}  // namespace
