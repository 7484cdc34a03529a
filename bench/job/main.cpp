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
#include "ProcessCost.h"
#include "platform/Program.h"

namespace {

struct Options {
    BenchPage page = {20'000, 20'000, 1};
    BenchModel model;
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
    CLI11_PARSE(app, argc, argv);
    return -1;
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t half = values.size() / 2;
    return values.size() % 2 == 1 ? values[half] : (values[half - 1] + values[half]) / 2;
}

ProcessCost RunCopy(const BenchJob& job) {
    job.PrepareRound();
    return MeasureProcess({"cp", job.Container().string(), job.Copy().string()});
}

ProcessCost RunJob(const BenchJob& job) {
    job.PrepareRound();
    const ProcessCost cost = MeasureProcess(
        {MINIMAL_HOST, OUTPUT_DRIVER, job.JobFile().string(), job.OutputFolder().string()});
    if (InterruptNoted()) throw std::runtime_error("interrupted");
    job.CheckOutput();
    return cost;
}

/// Alternates copies and jobs, so that what else the machine does meets both. The job's peak.
int64_t CompareCosts(const BenchJob& job, int32_t rounds) {
    std::vector<double> cpuRatios;
    std::vector<double> wallRatios;
    int64_t peakBytes = 0;
    RunCopy(job);  // the container is in the system's cache from here on
    for (int32_t round = 1; round <= rounds; ++round) {
        const ProcessCost copy = RunCopy(job);
        const ProcessCost print = RunJob(job);
        cpuRatios.push_back(print.cpuSeconds / copy.cpuSeconds);
        wallRatios.push_back(print.wallSeconds / copy.wallSeconds);
        peakBytes = std::max(peakBytes, print.peakBytes);
        fmt::print(
            "round {}: CPU {:.3f} s / {:.3f} s = {:.2f}, wall {:.3f} s / {:.3f} s = {:.2f}\n",
            round, print.cpuSeconds, copy.cpuSeconds, cpuRatios.back(), print.wallSeconds,
            copy.wallSeconds, wallRatios.back());
        std::fflush(stdout);
    }
    fmt::print("job / copy, median of {} rounds: CPU {:.2f}, wall {:.2f}\n", rounds,
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
    int64_t peakBytes = 0;
    {
        const BenchJob job(folder.Path() / "job", page, options.model);
        peakBytes = CompareCosts(job, options.rounds);
        std::filesystem::remove_all(folder.Path() / "job");
    }
    BenchPage doublePage = page;
    doublePage.rows *= 2;
    const BenchJob doubleJob(folder.Path() / "double", doublePage, options.model);
    const int64_t doublePeakBytes = RunJob(doubleJob).peakBytes;
    fmt::print("peak memory of the job: {} KiB at {} lines, {} KiB at {} lines ({:+} KiB)\n",
               peakBytes / 1024, page.rows, doublePeakBytes / 1024, doublePage.rows,
               (doublePeakBytes - peakBytes) / 1024);
}

}  // namespace

int main(int argc, char** argv) try {
    Options options;
    if (const int status = ParseOptions(argc, argv, options); status >= 0) return status;
    NoteInterrupts();
    Run(options);
    return 0;
} catch (const std::exception& fault) {
    std::fprintf(stderr, "bench_job: %s\n", fault.what());
    return 1;
}
