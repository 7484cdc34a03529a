#pragma once

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

/// What the content of a page holds that the rasteriser does not tell of.
struct PageContent {
    /// Bytes that the rasteriser lays aside to draw the page: its pictures decoded, and its content
    /// as a list of what to draw.
    int64_t SpoolBytes = 0;
    /// Words that stand where an operator is due and are none: the rasteriser passes over them
    /// without a word, and what they stood for is not drawn. A few of them when there are many.
    std::set<std::string> UnknownOperators;
};

/// Looks through the pages of a PDF, in order. Ends before the first page that cannot be read: to
/// say what is wrong there is the rasteriser's part.
std::vector<PageContent> ReadPageContents(const std::filesystem::path& document);
