#include "driverhost/check/Findings.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>
#include <tuple>

namespace {

char Lower(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                : character;
}

/// Letters to insert, remove, replace or swap with their neighbour to make one name of the other;
/// case does not count.
std::size_t EditDistance(std::string_view from, std::string_view to) {
    std::vector<std::size_t> beforeLast;
    std::vector<std::size_t> last;
    std::vector<std::size_t> costs(to.size() + 1);
    std::iota(costs.begin(), costs.end(), std::size_t{0});
    const auto same = [&](std::size_t left, std::size_t right) {
        return Lower(from[left - 1]) == Lower(to[right - 1]);
    };
    for (std::size_t row = 1; row <= from.size(); ++row) {
        beforeLast = std::move(last);
        last = costs;
        costs[0] = row;
        for (std::size_t column = 1; column <= to.size(); ++column) {
            const std::size_t replaced = last[column - 1] + (same(row, column) ? 0 : 1);
            costs[column] = std::min({last[column] + 1, costs[column - 1] + 1, replaced});
            if (row > 1 && column > 1 && same(row, column - 1) && same(row - 1, column)) {
                costs[column] = std::min(costs[column], beforeLast[column - 2] + 1);
            }
        }
    }
    return costs.back();
}

}  // namespace

const char* LevelName(Severity level) {
    return level == Severity::kError ? "error" : "warning";
}

void PrintFindings(const Findings& findings, std::FILE* stream) {
    for (const Findings::File& file : findings.Files()) {
        for (const Finding& finding : file.List) {
            fmt::print(stream, "{}:{}:{}: {}: {}\n", OneLine(file.Name), finding.Position.Line,
                       finding.Position.Column, LevelName(finding.Level), OneLine(finding.Text));
        }
    }
}

std::string OneLine(std::string text) {
    const auto isControl = [](char character) {
        return static_cast<unsigned char>(character) < 0x20 || character == 0x7F;
    };
    std::replace_if(text.begin(), text.end(), isControl, '?');
    return text;
}

bool Findings::BeginFile(const std::string& file) {
    const bool isNew = !places_.contains(file);
    FileOf(file);
    return isNew;
}

bool Findings::IsFull(const std::string& file) const {
    const auto place = places_.find(file);
    return place != places_.end() && files_[place->second].List.size() >= kMostOfAFile;
}

bool Findings::Mentions(const std::string& file, std::string_view part) const {
    if (IsFull(file)) return true;
    const auto place = places_.find(file);
    if (place == places_.end()) return false;
    const std::vector<Finding>& list = files_[place->second].List;
    return std::any_of(list.begin(), list.end(), [&](const Finding& finding) {
        return finding.Text.find(part) != std::string::npos;
    });
}

Findings::File& Findings::FileOf(const std::string& file) {
    const auto [place, isNew] = places_.emplace(file, files_.size());
    if (isNew) files_.push_back({file, {}});
    return files_[place->second];
}

void Findings::Add(Severity level, const std::string& file, TextPosition at, std::string text) {
    ++(level == Severity::kError ? errors_ : warnings_);
    std::vector<Finding>& list = FileOf(file).List;
    if (list.size() >= kMostOfAFile) {
        ++leftOut_;
        return;
    }
    const auto behind = std::upper_bound(
        list.begin(), list.end(), at, [](const TextPosition& left, const Finding& right) {
            return std::tie(left.Line, left.Column) <
                   std::tie(right.Position.Line, right.Position.Column);
        });
    list.insert(behind, {at, level, std::move(text)});
}

std::string Quoted(std::string_view text) {
    constexpr std::size_t kMostBytes = 80;
    if (text.size() <= kMostBytes) return fmt::format("\"{}\"", text);
    std::size_t cut = kMostBytes;
    while (cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80)
        --cut;  // not within a UTF-8 character
    return fmt::format("\"{}…\"", text.substr(0, cut));
}

std::string Folded(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), Lower);
    return text;
}

std::string_view NearestName(std::string_view unknown, const std::vector<std::string_view>& known) {
    constexpr std::size_t kLongestName = 64;  // longer ones are no slip of the pen
    std::string_view nearest;
    if (unknown.size() > kLongestName) return nearest;
    std::size_t least = std::max<std::size_t>(unknown.size() / 3, 1) + 1;
    for (const std::string_view name : known) {
        const std::size_t distance = EditDistance(unknown, name);
        if (distance >= least) continue;
        least = distance;
        nearest = name;
    }
    return nearest;
}

std::string DidYouMean(std::string_view unknown, const std::vector<std::string_view>& known) {
    const std::string_view nearest = NearestName(unknown, known);
    return nearest.empty() ? "" : fmt::format(" (did you mean \"{}\"?)", nearest);
}
