#include "host/FileBytes.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "TestFolder.h"
#include "boundary/FileSizeLimit.h"
#include "host/QLCopyFile.h"

namespace fs = std::filesystem;

namespace {

/// The number of a process that lives no more.
pid_t EndedProcess() {
    const pid_t child = fork();
    if (child == 0) _exit(0);
    waitpid(child, nullptr, 0);
    return child;
}

TEST(ReplaceFileBytes, IsWholeOrNothing) {
    const TestFolder folder;
    const AFilePath old = folder.Write("old", "old");
    fs::create_symlink(folder.Name("old"), folder.Name("link"));
    EXPECT_TRUE(ReplaceFileBytes(folder.Path("link"), std::string_view("n\0w", 3)));
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(folder.Name("link"))));
    EXPECT_EQ(folder.Read("link"), std::string("n\0w", 3));
    EXPECT_EQ(folder.Read("old"), "old");

    fs::create_directories(folder.Name("folder/inside"));
    const std::pair<AFilePath, int> failures[] = {
        {folder.Path("none/x"), ENOENT},
        {folder.Path("old/x"), ENOTDIR},
        {folder.Path("folder"), EISDIR},
        {folder.Path(std::string(300, 'n')), ENAMETOOLONG},
        {folder.Path("x").Append(".."), 0}};
    for (const auto& [path, error] : failures) {
        const WriteOutcome outcome = ReplaceFileBytes(path, "new");
        EXPECT_FALSE(outcome) << path.fullPath();
        EXPECT_EQ(outcome.SystemError, error) << path.fullPath();
    }
    const FileSizeLimit full(2);
    EXPECT_EQ(ReplaceFileBytes(old, "new").SystemError, EFBIG);
    EXPECT_EQ(QLCopyFile(old, folder.Path("copy")), 0);
    EXPECT_EQ(folder.Read("old"), "old");
    EXPECT_EQ(folder.Count(), 3) << "no unfinished file";
}

// The unfinished file has a name of its own, which is free when the write begins; what other
// processes have left of the file goes, what they still write and other files' does not.
TEST(ReplaceFileBytes, RemovesWhatIsLeftOfTheFile) {
    const TestFolder folder;
    const WriterId writer = WriterId::Next();
    EXPECT_NE(writer.Number(), WriterId::Next().Number());
    const pid_t ended = EndedProcess();
    const std::string own = fmt::format(".{}.{}.tmp", getpid(), writer.Number());
    for (const std::string& name :
         {std::string("a.5"), std::string(255, 'n'), fmt::format("x{:\xC3\xA4>127}", "")}) {
        // A name's beginning, of whole characters, as far as it fits with what stands behind it.
        const auto with = [&](const std::string& ending) {
            std::size_t room = std::min(255 - ending.size(), name.size());
            if (name.size() > room && name[room] == '\xA4') --room;
            return name.substr(0, room) + ending;
        };
        for (const std::string& ending :
             {fmt::format(".{}.7.tmp", ended), fmt::format(".{}.0.tmp", ended), own})
            folder.Write(with(ending), "left over");
        const std::string kept[] = {with(".1.1.tmp"),
                                    with(fmt::format(".{}.999999.tmp", getpid())),  // they live
                                    with(fmt::format(".0{}.7.tmp", ended)),
                                    with(fmt::format(".{}.7.tmpx", ended)),
                                    with(fmt::format(".{}.x.tmp", ended)),
                                    with(".0.1.tmp"),
                                    with(".-1.1.tmp"),
                                    with(".99999999999999999999.1.tmp"),
                                    fmt::format("a.{}.7.tmp", ended),
                                    fmt::format("a.5.6.{}.7.tmp", ended)};
        for (const std::string& file : kept)
            folder.Write(file, "");
        EXPECT_TRUE(ReplaceFileBytes(folder.Path(name), "new", writer)) << name;
        EXPECT_EQ(folder.Read(name), "new");
        for (const std::string& file : kept)
            EXPECT_TRUE(fs::remove(folder.Name(file))) << file;
        fs::create_directories(folder.Name(with(own)) + "/in the way");
        EXPECT_EQ(ReplaceFileBytes(folder.Path(name), "other", writer).SystemError, EEXIST);
        EXPECT_TRUE(ReplaceFileBytes(folder.Path(name), "other", WriterId::Next())) << name;
        fs::remove_all(folder.Name(with(own)));
        fs::remove(folder.Name(name));
        EXPECT_EQ(folder.Count(), 0) << name;
    }
}

}  // namespace
