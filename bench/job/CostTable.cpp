#include "CostTable.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <future>
#include <nlohmann/json.hpp>

#include "BenchJob.h"
#include "Median.h"

namespace {

constexpr std::array<int32_t, 4> kDepths = {1, 2, 4, 8};

/// What is printed in each round, in this order.
enum Variant {
    kPlain,
    kPreview,
    kWhite,
    kReversed,
    kEverything,
    kEverythingReversed,
    kInterleaved,
    kFullPlane,
    kVariants
};

BenchModel ModelOf(Variant variant) {
    BenchModel model;
    const bool everything = variant == kEverything || variant == kEverythingReversed;
    if (variant == kPreview || everything) model.preview = "BMP";
    if (variant == kWhite || everything) model.whiteType = 2;
    if (variant == kFullPlane) model.whiteType = 3;  // white everywhere, from one byte
    model.isReversed = variant == kReversed || variant == kEverythingReversed;
    model.isInterleaved = variant == kInterleaved;
    model.hasSideFiles = everything;
    return model;
}

/// CPU seconds of a copy and of every variant, one after the other, so that what else the machine
/// does meets all of them.
struct Round {
    double copy = 0;
    std::array<double, kVariants> print = {};
};

/// Each round begins with another of them, so that none always follows the same one.
Round RunRound(const BenchJob& job, int number, int64_t& peakBytes) {
    Round round;
    for (int i = 0; i <= kVariants; ++i) {
        const int place = (i + number * 2) % (kVariants + 1);
        if (place == kVariants) {
            round.copy = job.Copy().cpuSeconds;
            continue;
        }
        const ProcessCost cost = job.Print(ModelOf(static_cast<Variant>(place)), false);
        round.print[static_cast<std::size_t>(place)] = cost.cpuSeconds;
        peakBytes = std::max(peakBytes, cost.peakBytes);
    }
    return round;
}

/// The rows of the table that every depth has, and what a round says of each.
struct Measure {
    const char* name;
    double target;
    double (*value)(const Round&);
};

const Measure kMeasures[] = {
    {"channels only", 1.4, [](const Round& r) { return r.print[kPlain] / r.copy; }},
    {"channels and preview", 1.9, [](const Round& r) { return r.print[kPreview] / r.copy; }},
    {"white type 2 adds", 1.2,
     [](const Round& r) { return (r.print[kWhite] - r.print[kPlain]) / r.copy; }},
    {"reversed direction adds", 1.4,
     [](const Round& r) { return (r.print[kReversed] - r.print[kPlain]) / r.copy; }},
    {"everything on", 3.1, [](const Round& r) { return r.print[kEverything] / r.copy; }},
    {"everything on, reversed", 4.4,
     [](const Round& r) { return r.print[kEverythingReversed] / r.copy; }},
    {"line-interleaved against plane order", 1.2,
     [](const Round& r) { return r.print[kInterleaved] / r.print[kPlain]; }},
    {"a plane of one value against cp of its size", 0.5,
     [](const Round& r) {
         return (r.print[kFullPlane] - r.print[kPlain]) / (r.copy / BenchPage::kChannels);
     }},
};

/// Against tiffcp, which decodes and writes the same.
CostRow MeasureCompressed(const BenchJob& job, const std::filesystem::path& folder, int rounds) {
    const BenchJob compressed = job.Compressed(folder);
    std::vector<double> ratios;
    for (int round = 0; round < rounds; ++round) {
        const double decoded = compressed.Decode().cpuSeconds;
        ratios.push_back(compressed.Print({}, false).cpuSeconds / decoded);
    }
    compressed.Remove();
    return {"LZW container against tiffcp of the same file", 1.25, "", {Median(ratios)}};
}

/// How much more a page of twice the height takes.
CostRow MeasureGrowth(const std::filesystem::path& folder, BenchPage page, int64_t peakBytes) {
    page.rows *= 2;
    const BenchJob job = BenchJob::OfNoise(folder, page);
    const int64_t peak = job.Print(ModelOf(kEverythingReversed), false).peakBytes;
    job.Remove();
    return {"and grows at twice the height by",
            1,
            "MiB",
            {static_cast<double>(std::max<int64_t>(peak - peakBytes, 0)) / (1 << 20)}};
}

/// Jobs of all depths. Two are made at a time, for that takes the longest by far.
std::vector<BenchJob> MakeJobs(const std::filesystem::path& folder, int64_t widthPixels,
                               int64_t rows) {
    const auto make = [&](int32_t bits) {
        return BenchJob::OfArtwork(folder / std::to_string(bits), {widthPixels, rows, bits});
    };
    std::vector<BenchJob> jobs;
    for (std::size_t i = 0; i < kDepths.size(); i += 2) {
        fmt::print(stderr, "making the jobs of {} and {} bits\n", kDepths[i], kDepths[i + 1]);
        std::future<BenchJob> other =
            std::async(std::launch::async, [&, bits = kDepths[i + 1]] { return make(bits); });
        jobs.push_back(make(kDepths[i]));
        jobs.push_back(other.get());
    }
    return jobs;
}

}  // namespace

CostTable MeasureCosts(const std::filesystem::path& folder, int64_t widthPixels, int64_t rows) {
    CostTable table = {widthPixels, rows, {kDepths.begin(), kDepths.end()}, {}};
    for (const Measure& measure : kMeasures)
        table.costs.push_back({measure.name, measure.target, "", {}});
    CostRow peaks = {"peak memory of the program", 16, "MiB", {}};
    CostRow compressed;
    CostRow growth;
    for (const BenchJob& job : MakeJobs(folder, widthPixels, rows)) {
        const int32_t bits = job.Page().bits;
        const int roundCount = bits == 1 ? 7 : 3;
        std::vector<Round> rounds;
        int64_t peakBytes = 0;
        for (int i = 1; i <= roundCount; ++i) {
            fmt::print(stderr, "{} bits: round {} of {}\n", bits, i, roundCount);
            rounds.push_back(RunRound(job, i, peakBytes));
        }
        for (std::size_t i = 0; i < std::size(kMeasures); ++i) {
            std::vector<double> values(rounds.size());
            std::transform(rounds.begin(), rounds.end(), values.begin(), kMeasures[i].value);
            table.costs[i].values.push_back(Median(values));
        }
        peaks.values.push_back(static_cast<double>(peakBytes) / (1 << 20));
        if (bits == 1) {
            growth = MeasureGrowth(folder / "double", job.Page(), peakBytes);
            compressed = MeasureCompressed(job, folder / "compressed", roundCount);
        }
        job.Remove();
    }
    table.costs.insert(table.costs.end(), {compressed, peaks, growth});
    return table;
}

void PrintCosts(const CostTable& table) {
    fmt::print(
        "{} x {} pixels of artwork, 4 channels; CPU time as a multiple of that of `cp` of the\n"
        "container in the same round, median of the rounds\n\n{:<46}{:>8}",
        table.widthPixels, table.rows, "", "aim");
    for (const int32_t bits : table.depths)
        fmt::print("{:>8}", fmt::format("{} bit", bits));
    fmt::print("\n");
    for (const CostRow& row : table.costs) {
        fmt::print("{:<46}{:>8}", row.name, row.target);
        for (const double value : row.values)
            fmt::print("{:>8.2f}", value);
        fmt::print("{}\n", row.unit.empty() ? "" : "  " + row.unit);
    }
}

void PrintCostsAsJson(const CostTable& table) {
    nlohmann::ordered_json json = {
        {"width", table.widthPixels}, {"rows", table.rows}, {"bits", table.depths}};
    for (const CostRow& row : table.costs)
        json["costs"].push_back({{"name", row.name},
                                 {"aim", row.target},
                                 {"unit", row.unit.empty() ? "ratio" : row.unit},
                                 {"values", row.values}});
    fmt::print("{}\n", json.dump(2));
}
