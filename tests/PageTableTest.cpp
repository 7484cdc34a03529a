#include "host/PageTable.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

struct PageTableCase {
    const char* numbers;  // of the directories in order; '?' unknown, '!' after one: damaged link
    int count;            // that the first directory names
    const char* pages;    // directories of each page
};

TEST(PageTable, SortsDirectoriesIntoPages) {
    const PageTableCase kCases[] = {
        {"0011", 2, "2 2"}, {"0011", 0, "2 2"},    {"0", 3, "1 0 0"},    {"0101", 2, "0 0"},
        {"10", 2, "0 0"},   {"02", 3, "1 0 0"},    {"0122", 2, "1 1"},   {"0919", 2, "1 1"},
        {"091", 2, "1 1"},  {"0?1", 2, "0 0"},     {"0?12", 3, "0 0 1"}, {"01?", 2, "1 0"},
        {"01!", 2, "1 0"},  {"0!", 2, "0 0"},      {"01?2", 3, "1 0 0"}, {"?01", 9, "2"},
        {"??", 9, "2"},     {"0012!", 0, "2 1 0"},
    };
    for (const PageTableCase& row : kCases) {
        std::vector<ContainerDirectory> directories;
        for (const char* at = row.numbers; *at != '\0'; ++at) {
            if (*at == '!') {
                directories.back().hasDamagedLink = true;
                continue;
            }
            ContainerDirectory directory;
            if (*at != '?') {
                directory.pageNumber = static_cast<uint16_t>(*at - '0');
                directory.pageCount = static_cast<uint16_t>(row.count);
            }
            directories.push_back(directory);
        }
        const PageTable table(directories);
        std::string pages;
        for (int32_t page = 0; page < table.PageCount(); ++page) {
            if (page > 0) pages += ' ';
            pages += std::to_string(table.Separations(static_cast<uint32_t>(page)).size());
        }
        EXPECT_EQ(pages, row.pages) << row.numbers << " of " << row.count;
    }
}

}  // namespace
