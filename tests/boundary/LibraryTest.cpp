#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>

#include "BaseFolder.h"
#include "BoundaryHost.h"

namespace {

/// Lines that a shell command prints.
std::vector<std::string> LinesOf(const std::string& command) {
    std::FILE* const pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return {"no pipe"};
    std::vector<std::string> lines;
    std::array<char, 4096> line{};
    while (std::fgets(line.data(), line.size(), pipe) != nullptr) {
        lines.emplace_back(line.data());
        lines.back().pop_back();  // the line end
    }
    const int status = pclose(pipe);
    if (status != 0) lines.push_back("exit status " + std::to_string(status));
    return lines;
}

TEST(LibraryTest, ExportsExactlyTwoPlainFunctions) {
    std::vector<std::string> names;
    const std::string command = std::string("nm -D --defined-only '") + Plugin::Path() + "'";
    for (const std::string& line : LinesOf(command)) {
        const std::size_t type = line.find(' ');
        names.push_back(type == std::string::npos ? line : line.substr(type + 1));
    }
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"T createDriverPage", "T createNewPrinterDriver"}));
}

TEST(LibraryTest, LoadsAgainAfterItWasUnloaded) {
    const BaseFolder folder;
    for (int round = 0; round < 3; ++round) {
        {
            const Driver driver;
            EXPECT_EQ(driver.Call(kGetDriverId), 246);
        }
        EXPECT_EQ(dlopen(Plugin::Path(), RTLD_NOW | RTLD_NOLOAD), nullptr) << round;
    }
}

TEST(LibraryTest, DriversOfOneLibraryAreIndependent) {
    const BaseFolder folder;
    const Driver first;
    {
        const Driver second;
        EXPECT_EQ(second.Call(kGetDriverId), 246);
    }
    EXPECT_EQ(first.Call(kGetDriverId), 246);
}

TEST(LibraryTest, PageWithoutOptionsIsNull) {
    const BaseFolder folder;
    const Plugin plugin;
    auto* const createDriverPage =
        plugin.Export<void*(DriverOptionBlock*, PrintSettings*)>("createDriverPage");
    ASSERT_NE(createDriverPage, nullptr);
    PrintSettings settings = Settings("Roller 64");
    EXPECT_EQ(createDriverPage(nullptr, &settings), nullptr);
    EXPECT_EQ(createDriverPage(nullptr, nullptr), nullptr);
}

}  // namespace
