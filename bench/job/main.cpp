// What a whole job costs beside a plain copy of the same bytes, and whether its memory grows with
// the page.

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "BenchFolder.h"
#include "BenchJob.h"
#include "CostTable.h"
#include "Median.h"
#include "ProcessCost.h"
#include "platform/Program.h"

namespace {

struct Options {
    BenchPage page = {20'000, 20'000, 1};
    BenchModel model;
    bool artwork = false;
    bool all = false;
    bool quick = false;
    bool json = false;
    int32_t rounds = 7;
    std::string folder = std::filesystem::temp_directory_path().string();
};

/// -1, or the status to end with.
int ParseOptions(int argc, char** argv, Options& options) {
    CLI::App app(
        "Runs a job of one page with four ink channels through the output driver and "
        "compares its cost to a copy of the job's container.");
    constexpr int64_t kMost = 1'000'000;
    app.add_option("--width", options.page.widthPixels, "Page width in pixels")
        ->check(CLI::Range(int64_t{1}, kMost))
        ->capture_default_str();
    app.add_option("--height", options.page.rows, "Page height in lines")
        ->check(CLI::Range(int64_t{1}, kMost))
        ->capture_default_str();
    app.add_option("--bits", options.page.bits, "Bits per pixel")
        ->check(CLI::IsMember({1, 2, 4, 8}))
        ->capture_default_str();
    app.add_option("--rounds", options.rounds, "Rounds of one copy and one job each")
        ->check(CLI::Range(1, 1000))
        ->capture_default_str();
    app.add_option("--folder", options.folder, "Where a temporary folder may be made")
        ->check(CLI::ExistingDirectory)
        ->capture_default_str();
    app.add_flag("--raw", options.model.isRaw, "Raw channel files instead of TIFF");
    app.add_flag("--interleaved", options.model.isInterleaved, "Line by line through the channels");
    app.add_flag("--reversed", options.model.isReversed, "Bottom line first");
    app.add_option("--white", options.model.whiteType, "A white channel of this treatment")
        ->check(CLI::Range(0, 5));
    app.add_option("--preview", options.model.preview, "A preview of this format beside them")
        ->check(CLI::IsMember({"BMP", "PNG"}));
    app.add_flag("--artwork", options.artwork, "A page of artwork instead of noise");
    CLI::Option* const all =
        app.add_flag("--all", options.all,
                     "The whole table of costs instead, at every depth, on 20,000 x 28,000 pixels "
                     "of artwork");
    app.add_flag("--quick", options.quick, "The table on a smaller page")->needs(all);
    app.add_flag("--json", options.json, "The table as JSON")->needs(all);
    CLI11_PARSE(app, argc, argv);
    return -1;
}

/// Alternates copies and jobs, so that what else the machine does meets both. The job's peak.
int64_t CompareCosts(const BenchJob& job, const Options& options) {
    std::vector<double> cpuRatios;
    std::vector<double> wallRatios;
    int64_t peakBytes = 0;
    for (int32_t round = 1; round <= options.rounds; ++round) {
        const ProcessCost copy = job.Copy();
        const ProcessCost print = job.Print(options.model, true);
        cpuRatios.push_back(print.cpuSeconds / copy.cpuSeconds);
        wallRatios.push_back(print.wallSeconds / copy.wallSeconds);
        peakBytes = std::max(peakBytes, print.peakBytes);
        fmt::print(
            "round {}: CPU {:.3f} s / {:.3f} s = {:.2f}, wall {:.3f} s / {:.3f} s = {:.2f}\n",
            round, print.cpuSeconds, copy.cpuSeconds, cpuRatios.back(), print.wallSeconds,
            copy.wallSeconds, wallRatios.back());
        std::fflush(stdout);
        if (InterruptNoted()) throw std::runtime_error("interrupted");
    }
    fmt::print("job / copy, median of {} rounds: CPU {:.2f}, wall {:.2f}\n", options.rounds,
               Median(cpuRatios), Median(wallRatios));
    return peakBytes;
}

void Run(const Options& options) {
    const BenchFolder folder(options.folder);
    const BenchPage& page = options.page;
    fmt::print(
        "{} x {} pixels, {} channels of {} bits, {} bytes a line, {} bytes, {} channels{}{}{}\n",
        page.widthPixels, page.rows, BenchPage::kChannels, page.bits, page.RowBytes(), page.Bytes(),
        options.model.isRaw ? "raw" : "TIFF", options.model.isInterleaved ? ", interleaved" : "",
        options.model.isReversed ? ", bottom line first" : "",
        options.model.preview.empty() ? "" : ", preview " + options.model.preview);
    const BenchJob job = options.artwork ? BenchJob::OfArtwork(folder.Path() / "job", page)
                                         : BenchJob::OfNoise(folder.Path() / "job", page);
    const int64_t peakBytes = CompareCosts(job, options);
    job.Remove();
    BenchPage doublePage = page;
    doublePage.rows *= 2;
    const BenchJob doubleJob = BenchJob::OfNoise(folder.Path() / "double", doublePage);
    const int64_t doublePeakBytes = doubleJob.Print(options.model, true).peakBytes;
    fmt::print("peak memory of the job: {} KiB at {} lines, {} KiB at {} lines ({:+} KiB)\n",
               peakBytes / 1024, page.rows, doublePeakBytes / 1024, doublePage.rows,
               (doublePeakBytes - peakBytes) / 1024);
}

void RunAll(const Options& options) {
    const BenchFolder folder(options.folder);
    const int64_t shrinking = options.quick ? 4 : 1;
    const CostTable table = MeasureCosts(folder.Path(), 20'000 / shrinking, 28'000 / shrinking);
    if (options.json)
        PrintCostsAsJson(table);
    else
        PrintCosts(table);
}

}  // namespace

int main(int argc, char** argv) try {
    Options options;
    if (const int status = ParseOptions(argc, argv, options); status >= 0) return status;
    NoteInterrupts();
    if (options.all)
        RunAll(options);
    else
        Run(options);
    return 0;
} catch (const std::exception& fault) {
    std::fprintf(stderr, "bench_job: %s\n", fault.what());
    return 1;
}
