#include "sweep/SweepTable.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>

void SweepTable::Add(const RunResult& result) {
    if (!result.Met.HasStruck) return;
    ++runCount_;
    const std::string library =
        result.What.What == Call::kLibraryAllocation ? result.Met.Owner.LibraryName() : "";
    ++counts_[result.IsStrict ? 1 : 0][{result.What.What, library}]
             [static_cast<std::size_t>(result.End)];
    if (!IsKept(result.End, result.IsStrict, result.Met)) broken_.push_back(result);
}

std::string SweepTable::Markdown(bool isStrict) const {
    const std::map<Row, Counts>& rows = counts_[isStrict ? 1 : 0];
    Counts sums{};
    for (const auto& [row, counts] : rows)
        for (std::size_t i = 0; i < kOutcomeCount; ++i)
            sums[i] += counts[i];
    std::string head = "| Call that fails | Runs |";
    std::string rule = "|---|---|";
    for (std::size_t i = 0; i < kOutcomeCount; ++i) {
        if (sums[i] == 0) continue;
        head += fmt::format(" {} |", kOutcomeNames[i]);
        rule += "---|";
    }
    const auto line = [&](const std::string& name, const Counts& counts) {
        std::string text =
            fmt::format("| {} | {} |", name, std::accumulate(counts.begin(), counts.end(), 0));
        for (std::size_t i = 0; i < kOutcomeCount; ++i)
            if (sums[i] != 0) text += counts[i] == 0 ? " |" : fmt::format(" {} |", counts[i]);
        return text + "\n";
    };
    std::string table = head + "\n" + rule + "\n";
    for (const auto& [row, counts] : rows) {
        const auto& [call, library] = row;
        table += line(library.empty() ? kCallNames[static_cast<std::size_t>(call)]
                                      : "allocation in " + library,
                      counts);
    }
    return table + line("all", sums);
}

std::string SweepTable::Broken(std::size_t mostLines) const {
    std::vector<CallSite> sites;
    for (const RunResult& result : broken_)
        sites.push_back(result.Met.Site);
    const std::vector<std::string> places = Describe(sites);
    std::map<std::string, std::pair<int32_t, const RunResult*>> groups;
    for (std::size_t i = 0; i < broken_.size(); ++i) {
        auto& [count, first] = groups[fmt::format(
            "{}: {} at {}", kOutcomeNames[static_cast<std::size_t>(broken_[i].End)],
            kCallNames[static_cast<std::size_t>(broken_[i].What.What)], places[i])];
        if (count++ == 0) first = &broken_[i];
    }
    std::vector<std::tuple<int32_t, std::string, const RunResult*>> lines;
    for (const auto& [text, group] : groups)
        lines.emplace_back(-group.first, text, group.second);
    std::sort(lines.begin(), lines.end());
    std::string report;
    for (std::size_t i = 0; i < std::min(lines.size(), mostLines); ++i) {
        const auto& [count, text, run] = lines[i];
        report += fmt::format("{:5} {}\n      e.g. {}, {}, {} {}\n", -count, text,
                              run->ScenarioName, run->IsStrict ? "strict" : "by default",
                              run->What.Position, run->What.Lasts ? "and on" : "once");
    }
    return report;
}
