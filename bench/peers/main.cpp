// What a preview costs beside the same reduction by well-known picture programs, each as a process
// that reads a plane of one bit a pixel and writes a small picture.

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "BenchContainer.h"
#include "BenchFolder.h"
#include "Median.h"
#include "host/ZEJob.h"
#include "job/ProcessCost.h"
#include "platform/Program.h"
#include "preview/BMP_Writer.h"
#include "preview/PreviewScaler.h"

namespace fs = std::filesystem;

namespace {

constexpr int kPreviewSide = 500;
constexpr int kResolution = 720;

struct Options {
    BenchPage page = {20'000, 28'000, 1};
    int rounds = 5;
    std::string folder = fs::temp_directory_path().string();
    std::string reduce;  ///< container to make a preview of; empty: compare
    std::string preview;
};

int ParseOptions(int argc, char** argv, Options& options) {
    CLI::App app(
        "Compares the preview's cost with that of picture programs, where they are there.");
    app.add_option("--rounds", options.rounds, "Rounds of one reduction by each")
        ->check(CLI::Range(1, 1000))
        ->capture_default_str();
    app.add_option("--folder", options.folder, "Where a temporary folder may be made")
        ->check(CLI::ExistingDirectory)
        ->capture_default_str();
    CLI::Option* const reduce =
        app.add_option("--reduce", options.reduce, "Only make a preview of this job container");
    app.add_option("--preview", options.preview, "The preview's file")->needs(reduce);
    CLI11_PARSE(app, argc, argv);
    return -1;
}

/// What the driver does for a preview of one plane, and what reading the plane costs with it.
void Reduce(const Options& options) {
    ZEJob job(0);
    job.Load(AFilePath(options.reduce));
    job.OpenData(1);
    AImage* const image = job.GetImage(0);
    if (image == nullptr) throw std::runtime_error("no page in " + options.reduce);
    PreviewScaler scaler;
    scaler.InitBestFit(kPreviewSide, image->Width(), image->Rows(), kResolution, kResolution);
    for (int32_t row = 0; row < image->Rows(); ++row) {
        const uint8_t* const data = image->Row(0, row);
        if (data == nullptr) throw std::runtime_error("damaged: " + options.reduce);
        scaler.AddRow(row, data, (image->Width() + 7) / 8, 1, 3);
    }
    BMP_Writer writer;
    scaler.Render(options.preview.c_str(), &writer, 0);
    if (!fs::exists(options.preview)) throw std::runtime_error("no preview");
}

struct Peer {
    const char* name;
    std::vector<std::string> command;
    std::vector<double> cpuSeconds;
    bool isThere = true;
};

/// ImageMagick's usual limits are below the page's size, and only such a file raises them.
void AllowLargePictures(const fs::path& folder) {
    std::ofstream policy(folder / "policy.xml");
    policy << "<policymap>";
    for (const char* side : {"width", "height"})
        policy << fmt::format(R"(<policy domain="resource" name="{}" value="100KP"/>)", side);
    for (const char* store : {"area", "memory", "map", "disk"})
        policy << fmt::format(R"(<policy domain="resource" name="{}" value="16GiB"/>)", store);
    policy << "</policymap>\n";
    policy.close();
    if (!policy) throw std::runtime_error("cannot write in " + folder.string());
    SetEnvironment("MAGICK_CONFIGURE_PATH", folder.c_str());
}

void Compare(const Options& options, const char* program) {
    const BenchFolder folder(options.folder);
    const fs::path container = folder.Path() / "plane.tif";
    WriteBenchContainer(container, options.page, 1);
    AllowLargePictures(folder.Path());
    const std::string plane = container.string();
    const std::string box = fmt::format("{0}x{0}", kPreviewSide);
    const std::string factor = std::to_string(options.page.rows / kPreviewSide);
    const std::string output = (folder.Path() / "small").string();
    Peer peers[] = {
        {"preview", {program, "--reduce", plane, "--preview", output + ".bmp"}, {}},
        {"vips shrink", {"vips", "shrink", plane + "[page=0]", output + ".v", factor, factor}, {}},
        {"ImageMagick, box filter",
         {"convert-im6.q16", plane + "[0]", "-filter", "box", "-resize", box, output + ".png"},
         {}},
    };
    for (int round = 0; round < options.rounds; ++round) {
        for (Peer& peer : peers) {
            try {
                if (peer.isThere)
                    peer.cpuSeconds.push_back(MeasureProcess(peer.command).cpuSeconds);
            } catch (const std::exception&) {
                if (&peer == peers) throw;
                peer.isThere = false;
            }
        }
    }
    fmt::print("{} x {} pixels of one bit to {}, {} rounds, CPU time of the whole program\n",
               options.page.widthPixels, options.page.rows, kPreviewSide, options.rounds);
    const double own = Median(peers[0].cpuSeconds);
    for (const Peer& peer : peers) {
        if (peer.isThere)
            fmt::print("{:<26}{:7.3f} s, {:5.1f} times the preview's\n", peer.name,
                       Median(peer.cpuSeconds), Median(peer.cpuSeconds) / own);
        else
            fmt::print("{:<26}not installed, or it failed\n", peer.name);
    }
}

}  // namespace

int main(int argc, char** argv) try {
    Options options;
    if (const int status = ParseOptions(argc, argv, options); status >= 0) return status;
    if (options.reduce.empty())
        Compare(options, argv[0]);
    else
        Reduce(options);
    return 0;
} catch (const std::exception& fault) {
    std::fprintf(stderr, "bench_peers: %s\n", fault.what());
    return 1;
}
