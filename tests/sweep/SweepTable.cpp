#include "sweep/SweepTable.h"

#include <fmt/format.h>

#include <functional>
#include <numeric>

void SweepTable::Add(const RunResult& result) {
    if (!result.Met.HasStruck) return;
    ++runCount_;
    const std::string library(
        result.What.What == Call::kLibraryAllocation ? result.Met.Owner.LibraryName() : "");
    ++counts_[result.IsStrict ? 1 : 0][{result.What.What, library}]
             [static_cast<std::size_t>(result.End)];
    const bool isKept = IsKept(result.End, result.IsStrict, result.Met);
    if (!isKept) ++brokenCount_;
    if (!isKept || result.End == Outcome::kCrash) noted_.push_back(result);
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

std::string SweepTable::Places() const {
    std::vector<CallSite> sites;
    for (const RunResult& result : noted_)
        sites.push_back(result.End == Outcome::kCrash ? result.Met.Crash : result.Met.Site);
    const std::vector<std::string> places = Describe(sites);
    std::map<std::string, std::vector<const RunResult*>> groups;
    for (std::size_t i = 0; i < noted_.size(); ++i) {
        const RunResult& run = noted_[i];
        const bool isKept = IsKept(run.End, run.IsStrict, run.Met);
        groups[fmt::format("{}{}: {}, {}", isKept ? "allowed: " : "",
                           kOutcomeNames[static_cast<std::size_t>(run.End)],
                           kCallNames[static_cast<std::size_t>(run.What.What)], places[i])]
            .push_back(&run);
    }
    std::multimap<std::size_t, std::string, std::greater<>> lines;
    for (const auto& [text, runs] : groups) {
        const RunResult& first = *runs.front();
        lines.emplace(runs.size(),
                      fmt::format("{:5} {}\n      e.g. {}, {}, {} {}\n", runs.size(), text,
                                  first.ScenarioName, first.IsStrict ? "strict" : "by default",
                                  first.What.Position, first.What.Lasts ? "and on" : "once"));
    }
    std::string report;
    for (const auto& [count, line] : lines)
        report += line;
    return report;
}
