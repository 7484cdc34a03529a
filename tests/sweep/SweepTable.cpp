#include "sweep/SweepTable.h"

#include <fmt/format.h>

#include <functional>
#include <numeric>

std::string Describe(const PlannedRun& run) {
    return fmt::format("{}, {}, {} {} {}", run.Job->Name, run.IsStrict ? "strict" : "by default",
                       kCallNames[static_cast<std::size_t>(run.What.What)], run.What.Position,
                       run.What.Lasts ? "and on" : "once");
}

void SweepTable::Add(const Run& run) {
    if (!run.Met.HasStruck) return;
    ++runCount_;
    const std::string library(
        run.What.What == Call::kLibraryAllocation ? run.Met.Owner.LibraryName() : "");
    const auto outcome = static_cast<std::size_t>(run.End);
    ++counts_[run.IsStrict ? 1 : 0][{run.What.What, library}][outcome];
    const bool isKept = IsKept(run.End, run.IsStrict, run.Met);
    if (!isKept) ++brokenCount_;
    if (!isKept || run.End == Outcome::kCrash) noted_.push_back(run);
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
    for (const Run& run : noted_)
        sites.push_back(run.End == Outcome::kCrash ? run.Met.Crash : run.Met.Site);
    const std::vector<std::string> places = Describe(sites);
    std::map<std::string, std::vector<const Run*>> groups;
    for (std::size_t i = 0; i < noted_.size(); ++i) {
        const Run& run = noted_[i];
        const bool isKept = IsKept(run.End, run.IsStrict, run.Met);
        groups[fmt::format("{}{}: {}, {}", isKept ? "allowed: " : "",
                           kOutcomeNames[static_cast<std::size_t>(run.End)],
                           kCallNames[static_cast<std::size_t>(run.What.What)], places[i])]
            .push_back(&run);
    }
    std::multimap<std::size_t, std::string, std::greater<>> lines;
    for (const auto& [text, runs] : groups) {
        lines.emplace(runs.size(), fmt::format("{:5} {}\n      e.g. {}\n", runs.size(), text,
                                               Describe(*runs.front())));
    }
    std::string report;
    for (const auto& [count, line] : lines)
        report += line;
    return report;
}
