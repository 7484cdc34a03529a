#include "host/AFilePath.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "TestFolder.h"
#include "host/FileBytes.h"
#include "platform/win32.h"

namespace {

struct PathCase {
    const char* name;
    const char* path;
};

TEST(AFilePath, AppendingNeverLeavesTheFolder) {
    constexpr PathCase kInside[] = {{"a", "/base/a"},          {"a\\b//c\\", "/base/a/b/c"},
                                    {"\\\\x\\y", "/base/x/y"}, {"", "/base"},
                                    {"./a/.", "/base/a"},      {"a/../b", "/base/b"},
                                    {"a/..", "/base"},         {"...", "/base/..."},
                                    {"..a", "/base/..a"},      {"ab:1:x", "/base/ab:1:x"},
                                    {":", "/base/:"},          {"1:x", "/base/1:x"}};
    for (const PathCase& row : kInside)
        EXPECT_EQ(AFilePath("/base/").Append(row.name).fullPath(), row.path) << row.name;
    for (const char* name :
         {"..", "a/../../b", "..\\b", "/..", "C:", "c:x", "a/Z:/b", "a\\d:x", "/C:/x"}) {
        AFilePath path("/base/");
        path.Append(name).Append("a");
        EXPECT_FALSE(path.isValid() || path.exists()) << name;
        EXPECT_EQ(path.fullPath() + path.folderPart(), "") << name;
    }
}

TEST(AFilePath, TakesPathsAsTheHostGivesThem) {
    constexpr PathCase kCases[] = {{"/a/b/", "/a/b"}, {"/a\\b//c", "/a/b/c"},
                                   {"//", "/"},       {"a", "a"},
                                   {"", "."},         {"/a/../b", "/a/../b"}};
    for (const PathCase& row : kCases)
        EXPECT_EQ(AFilePath(row.name).fullPath(), row.path) << row.name;
    EXPECT_EQ(AFilePath("/a\\b//c").folderPart(), "/a/b/");
    EXPECT_EQ(AFilePath("a").folderPart(), "");
    setenv("QL_BASE_FOLDER", "/some/base/", 1);
    EXPECT_EQ(AFilePath().fullPath(), "/some/base");
    setenv("QL_BASE_FOLDER", "", 1);
    EXPECT_EQ(AFilePath().Append("x").fullPath(), "./x");
    unsetenv("QL_BASE_FOLDER");
    EXPECT_TRUE(AFilePath().exists()) << "the current folder";
}

// Here the second byte of a character is a separator's; the system gets the bytes as they stand.
TEST(AFilePath, PartsCharactersOfTheCodePage) {
    const TestFolder folder;
    setenv("QL_CODE_PAGE", "CP932", 1);
    const AFilePath path = folder.Path("\x95\\");
    ASSERT_NE(CreateDirectoryA((folder.Name("\x95\\") + "\\").c_str(), nullptr), 0);
    EXPECT_TRUE(path.exists());
    EXPECT_EQ(AFilePath(path).Append("\x83\\\\b\x95\\").fullPath(),
              folder.Name("\x95\\/\x83\\/b\x95\\"));
    EXPECT_EQ(AFilePath("\x95\\a\\b").folderPart(), "\x95\\a/");
    EXPECT_TRUE(AFilePath("x").Append("\x83\\..").isValid());
    EXPECT_TRUE(ReplaceFileBytes(AFilePath(path).Append("\x83\\"), "new"));
    EXPECT_EQ(folder.Read("\x95\\/\x83\\"), "new");
    EXPECT_NE(DeleteFileA((folder.Name("\x95\\") + "\\\x83\\").c_str()), 0);
    unsetenv("QL_CODE_PAGE");
    EXPECT_FALSE(path.exists()) << "a separator, where it is no byte of a character";
}

TEST(NativePath, ThatIsTooLongIsRefused) {
    const TestFolder folder;
    std::string deep = folder.Name("");
    while (deep.size() < 5000)
        deep += "./";
    for (const std::size_t size : {std::size_t{4095}, std::size_t{4096}, deep.size()}) {
        EXPECT_EQ(GetFileAttributesA(deep.substr(0, size).c_str()) != INVALID_FILE_ATTRIBUTES,
                  size < 4096);
        if (size < 4096) continue;
        EXPECT_EQ(GetLastError(), DWORD{ENAMETOOLONG});
        EXPECT_EQ(DeleteFileA(deep.c_str()) + CreateDirectoryA(deep.c_str(), nullptr) +
                      CopyFileA(deep.c_str(), "x", 0),
                  0);
        EXPECT_EQ(CreateFileA(deep.c_str(), GENERIC_READ, 0, nullptr, OPEN_ALWAYS, 0, nullptr),
                  INVALID_HANDLE_VALUE);
    }
}

// Missing is what the system says is missing, and nothing else.
TEST(AFilePath, TellsMissingFromUnknown) {
    const TestFolder folder;
    folder.Write("file", "");
    std::filesystem::create_symlink("loop", folder.Name("loop"));
    const struct {
        std::string name;
        Existence existence;
        int error;
    } cases[] = {
        {"file", Existence::kExists, 0},
        {"", Existence::kExists, 0},
        {"none", Existence::kMissing, ENOENT},
        {"none/below", Existence::kMissing, ENOENT},
        {"file/below", Existence::kMissing, ENOTDIR},
        {"loop", Existence::kUnknown, ELOOP},
        {"loop/below", Existence::kUnknown, ELOOP},
        {std::string(300, 'n'), Existence::kUnknown, ENAMETOOLONG},
    };
    for (const auto& [name, existence, error] : cases) {
        int systemError = 0;
        EXPECT_EQ(folder.Path(name).LookFor(&systemError), existence) << name;
        EXPECT_EQ(systemError, error) << name;
        EXPECT_EQ(folder.Path(name).exists(), existence == Existence::kExists) << name;
    }
    EXPECT_EQ(folder.Path("file").Append("..").LookFor(), Existence::kMissing) << "invalid";
}

}  // namespace
