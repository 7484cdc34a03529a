#include "host/AFilePath.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "TestFolder.h"
#include "host/AFile.h"
#include "host/QLCopyFile.h"
#include "platform/RandomAccessFile.h"
#include "platform/win32.h"

namespace {

TEST(AFilePath, AppendingNeverLeavesTheFolder) {
    const struct {
        const char* name;
        const char* path;  // "" for invalid
    } kCases[] = {
        {"a", "/base/a"},
        {"a/b", "/base/a/b"},
        {"a\\b//c\\", "/base/a/b/c"},
        {"/a", "/base/a"},
        {"\\\\server\\share", "/base/server/share"},
        {"", "/base"},
        {".", "/base"},
        {"./a/.", "/base/a"},
        {"a/../b", "/base/b"},
        {"a/..", "/base"},
        {"..", ""},
        {"a/../..", ""},
        {"a/../../b", ""},
        {"..\\b", ""},
        {"/..", ""},
        {"...", "/base/..."},
        {"..a", "/base/..a"},
        {"C:", ""},
        {"c:x", ""},
        {"a/Z:/b", ""},
        {"a\\d:", ""},
        {"/C:/x", ""},
        {"1:x", "/base/1:x"},
        {"ab:x", "/base/ab:x"},
        {":", "/base/:"},
    };
    for (const auto& row : kCases) {
        AFilePath path("/base/");
        EXPECT_EQ(path.Append(row.name).fullPath(), row.path) << row.name;
        EXPECT_EQ(path.isValid(), *row.path != '\0') << row.name;
    }
    AFilePath invalid("/base");
    invalid.Append("..").Append("a");
    EXPECT_FALSE(invalid.isValid()) << "stays so";
    EXPECT_EQ(invalid.fullPath(), "");
    EXPECT_FALSE(invalid.exists());
    EXPECT_EQ(invalid.folderPart(), "");
    invalid.ReplaceLast("b");
    EXPECT_FALSE(invalid.isValid());
}

TEST(AFilePath, TakesPathsAsTheHostGivesThem) {
    const struct {
        const char* text;
        const char* path;
        const char* folder;
    } kCases[] = {
        {"/a/b/", "/a/b", "/a/"}, {"/a\\b//c", "/a/b/c", "/a/b/"},
        {"/", "/", "/"},          {"//", "/", "/"},
        {"a", "a", ""},           {"", ".", ""},
        {"../a", "../a", "../"},  {"/a/../b", "/a/../b", "/a/../"},
    };
    for (const auto& row : kCases) {
        EXPECT_EQ(AFilePath(row.text).fullPath(), row.path) << row.text;
        EXPECT_EQ(AFilePath(row.text).folderPart(), row.folder) << row.text;
    }
    AFilePath path("/a/b.txt");
    path.ReplaceLast("c.txt");
    EXPECT_EQ(path.fullPath(), "/a/c.txt");
    path.ReplaceLast("../d");
    EXPECT_FALSE(path.isValid());
    AFilePath bare("b.txt");
    bare.ReplaceLast("c.txt");
    EXPECT_EQ(AFilePath(bare).exists(), false);
    EXPECT_TRUE(bare.fullPath() == "c.txt" || bare.fullPath() == "./c.txt") << bare.fullPath();
}

TEST(AFilePath, StartsAtTheBaseFolder) {
    const char* former = std::getenv("QL_BASE_FOLDER");
    const std::string kept = former == nullptr ? "" : former;
    setenv("QL_BASE_FOLDER", "/some/base/", 1);
    EXPECT_EQ(AFilePath().fullPath(), "/some/base");
    setenv("QL_BASE_FOLDER", "/other", 1);
    EXPECT_EQ(AFilePath().Append("Temp").fullPath(), "/other/Temp");
    setenv("QL_BASE_FOLDER", "", 1);
    EXPECT_TRUE(AFilePath().exists()) << "the current folder";
    EXPECT_EQ(AFilePath().Append("x").fullPath(), "./x");
    unsetenv("QL_BASE_FOLDER");
    EXPECT_EQ(AFilePath().Append("x").fullPath(), "./x");
    if (former != nullptr) setenv("QL_BASE_FOLDER", kept.c_str(), 1);
}

TEST(QLCopyFile, CopiesButNeverOntoItself) {
    const TestFolder folder;
    const std::string bytes(600000, 'x');
    const AFilePath from = folder.Write("from", bytes);
    const AFilePath to = folder.Write("to", std::string(700000, 'y'));
    EXPECT_EQ(QLCopyFile(from, to), 1);
    EXPECT_EQ(folder.Read("to") == bytes, true);
    EXPECT_EQ(QLCopyFile(from, from), 0);
    std::filesystem::create_symlink(folder.Name("from"), folder.Name("link"));
    EXPECT_EQ(QLCopyFile(from, folder.Path("link")), 0);
    EXPECT_EQ(QLCopyFile(folder.Path("link"), from), 0);
    EXPECT_EQ(folder.Read("from") == bytes, true);
    EXPECT_EQ(QLCopyFile(folder.Path("missing"), to), 0);
    EXPECT_EQ(folder.Read("to") == bytes, true) << "not truncated";
    EXPECT_EQ(QLCopyFile(from, folder.Path("missing/x")), 0);
    EXPECT_EQ(QLCopyFile(AFilePath(folder.Name("")), to), 0) << "a folder";
    std::filesystem::create_symlink("/dev/full", folder.Name("full"));
    EXPECT_EQ(QLCopyFile(from, folder.Path("full")), 0);
    EXPECT_EQ(AFile::DeleteFileA(to, 1), 1);
    EXPECT_FALSE(to.exists());
    EXPECT_EQ(AFile::DeleteFileA(to, 1), 0);
}

TEST(FileHandle, ReadsWritesAndMoves) {
    const TestFolder folder;
    const std::string backslashed = folder.Name("") + "sub\\file";
    CreateDirectoryA(folder.Name("sub").c_str(), nullptr);
    EXPECT_EQ(CreateDirectoryA(folder.Name("sub").c_str(), nullptr), FALSE);
    HANDLE file = CreateFileA(backslashed.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                              OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    DWORD done = 0;
    EXPECT_NE(WriteFile(file, "0123456789", 10, &done, nullptr), FALSE);
    EXPECT_EQ(done, 10U);
    EXPECT_EQ(SetFilePointer(file, -4, nullptr, FILE_END), 6U);
    EXPECT_EQ(SetFilePointer(file, -7, nullptr, FILE_CURRENT), INVALID_SET_FILE_POINTER);
    EXPECT_NE(GetLastError(), ERROR_SUCCESS);
    char bytes[10] = {};
    EXPECT_NE(ReadFile(file, bytes, 10, &done, nullptr), FALSE);
    EXPECT_EQ(std::string(bytes, done), "6789");
    LONG high = 1;
    EXPECT_EQ(SetFilePointer(file, 5, &high, FILE_BEGIN), 5U);
    EXPECT_EQ(high, 1);
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    SetFilePointer(file, 3, nullptr, FILE_BEGIN);
    EXPECT_NE(SetEndOfFile(file), FALSE);
    EXPECT_NE(CloseHandle(file), FALSE);
    EXPECT_EQ(folder.Read("sub/file"), "012");
    EXPECT_EQ(GetFileAttributesA(folder.Name("sub").c_str()), FILE_ATTRIBUTE_DIRECTORY);
    EXPECT_EQ(GetFileAttributesA(backslashed.c_str()), FILE_ATTRIBUTE_NORMAL);
    EXPECT_EQ(GetFileAttributesA(folder.Name("none").c_str()), INVALID_FILE_ATTRIBUTES);
    ULARGE_INTEGER free = {};
    EXPECT_NE(GetDiskFreeSpaceExA(folder.Name("").c_str(), &free, nullptr, nullptr), FALSE);
    EXPECT_GT(free.QuadPart, 0U);
    EXPECT_EQ(GetDiskFreeSpaceExA(folder.Name("none").c_str(), &free, nullptr, nullptr), FALSE);
}

TEST(FileHandle, RefusesFoldersAndWaitsForNobody) {
    const TestFolder folder;
    ASSERT_EQ(mkfifo(folder.Name("pipe").c_str(), 0600), 0);
    for (const DWORD access : {GENERIC_READ, GENERIC_WRITE, DWORD{0}}) {
        EXPECT_EQ(CreateFileA(folder.Name("").c_str(), access, 0, nullptr, OPEN_ALWAYS, 0, nullptr),
                  INVALID_HANDLE_VALUE);
    }
    EXPECT_EQ(CreateFileA(folder.Name("pipe").c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS, 0,
                          nullptr),
              INVALID_HANDLE_VALUE);
    RandomAccessFile file;
    EXPECT_FALSE(file.Open(folder.Name("pipe").c_str()));
    EXPECT_FALSE(file.Open(folder.Name("").c_str()));
    EXPECT_FALSE(file.Open("/dev/zero"));
    EXPECT_FALSE(file.Open(folder.Name("none").c_str()));
    folder.Write("some", "0123456789");
    ASSERT_TRUE(file.Open(folder.Name("some").c_str()));
    char bytes[8] = {};
    EXPECT_EQ(file.ReadAt(6, bytes, 8), 4U);
    EXPECT_EQ(std::string(bytes, 4), "6789");
    EXPECT_EQ(file.ReadAt(~std::uint64_t{0}, bytes, 8), 0U);
}

}  // namespace
