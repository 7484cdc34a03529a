#include "BenchJob.h"

#include <fmt/format.h>
#include <tiffio.h>
#include <unistd.h>

#include <cstring>

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "host/Records.h"

namespace fs = std::filesystem;

namespace {

std::string JobFileBytes(int32_t bits) {
    constexpr auto kResolution = static_cast<float>(kBenchResolution);
    JobFileHeader header = {};
    std::string_view("bench.pdf").copy(header.OriginalFileName, sizeof header.OriginalFileName);
    std::string_view(kBenchModelName).copy(header.PrinterName, sizeof header.PrinterName);
    header.XResolution = kResolution;
    header.YResolution = kResolution;
    header.XResolutionWhole = static_cast<int16_t>(kResolution);
    header.YResolutionWhole = static_cast<int16_t>(kResolution);
    header.ColorModeIndex = static_cast<int16_t>(BenchColorMode(bits));
    return {reinterpret_cast<const char*>(&header), sizeof header};
}

/// The poster, on its side, drawn over the whole page whatever page it asks for.
std::string ArtworkOf(const BenchPage& page) {
    constexpr double kPosterWidth = 420;  // points, as its page device says
    constexpr double kPosterHeight = 298;
    const double width = static_cast<double>(page.widthPixels) * 72 / kBenchResolution;
    const double height = static_cast<double>(page.rows) * 72 / kBenchResolution;
    std::ifstream file(BENCH_ARTWORK, std::ios::binary);
    const std::string poster{std::istreambuf_iterator<char>(file), {}};
    if (poster.empty()) throw std::runtime_error("cannot read " BENCH_ARTWORK);
    return fmt::format(
        "%!PS-Adobe-3.0\n<< /PageSize [{} {}] >> setpagedevice\n/setpagedevice {{ pop }} def\n"
        "{} 0 translate {} {} scale 90 rotate\n{}",
        width, height, width, width / kPosterHeight, height / kPosterWidth, poster);
}

}  // namespace

BenchJob BenchJob::OfNoise(const fs::path& folder, const BenchPage& page) {
    BenchJob job(folder, page);
    WriteBenchFile(job.JobFile(), JobFileBytes(page.bits));
    WriteBenchContainer(job.Container(), page, COMPRESSION_NONE);
    return job;
}

BenchJob BenchJob::OfArtwork(const fs::path& folder, const BenchPage& page) {
    BenchJob job(folder, page);
    WriteBenchBase(job.BaseFolder(), {});
    const fs::path artwork = folder / "poster.ps";
    WriteBenchFile(artwork, ArtworkOf(page));
    MeasureProcess({DRIVERHOST, "--base", job.BaseFolder().string(), "make-job", artwork.string(),
                    "--model", kBenchModelName, "--color-mode",
                    std::to_string(BenchColorMode(page.bits)), "-o", job.JobFile().string()});
    job.Recode("none", job.Container());
    return job;
}

BenchJob BenchJob::Compressed(const fs::path& folder) const {
    BenchJob job(folder, page_);
    fs::create_directories(folder);
    fs::copy_file(JobFile(), job.JobFile());
    Recode("lzw", job.Container());
    return job;
}

/// Has tiffcp write the container with another compression, perhaps in its own place.
void BenchJob::Recode(const char* compression, const fs::path& container) const {
    const fs::path recoded = container.string() + ".part";
    MeasureProcess({"tiffcp", "-c", compression, Container().string(), recoded.string()});
    fs::rename(recoded, container);
}

ProcessCost BenchJob::Copy() const {
    RemoveOutput();
    WarmUp();
    return MeasureProcess({"cp", Container().string(), CopyFile().string()});
}

ProcessCost BenchJob::Decode() const {
    RemoveOutput();
    WarmUp();
    return MeasureProcess({"tiffcp", "-c", "none", Container().string(), CopyFile().string()});
}

ProcessCost BenchJob::Print(const BenchModel& model, bool settle) const {
    RemoveOutput();
    if (settle) sync();
    fs::create_directories(OutputFolder());
    WriteBenchBase(BaseFolder(), model);
    WarmUp();
    const ProcessCost cost = MeasureProcess({MINIMAL_HOST, OUTPUT_DRIVER, BaseFolder().string(),
                                             JobFile().string(), OutputFolder().string()});
    CheckOutput(model);
    return cost;
}

void BenchJob::CheckOutput(const BenchModel& model) const {
    const auto channelBytes = static_cast<uintmax_t>(page_.Bytes() / BenchPage::kChannels);
    const int32_t expected = BenchPage::kChannels + (model.whiteType != 0 ? 1 : 0);
    int32_t found = 0;
    for (const auto& entry : fs::recursive_directory_iterator(OutputFolder())) {
        const fs::path name = entry.path().filename();
        if (name == kBenchPreviewName || name.extension() == ".hdr" || name.extension() == ".xml")
            continue;
        if (entry.file_size() < channelBytes)
            throw std::runtime_error("incomplete: " + entry.path().string());
        ++found;
    }
    if (found != expected) throw std::runtime_error(fmt::format("{} channel files", found));
    if (!model.preview.empty() && !fs::exists(OutputFolder() / kBenchPreviewName))
        throw std::runtime_error("no preview");
}

/// Has the system hold the container in its cache: some systems give up within seconds what lies
/// there.
void BenchJob::WarmUp() const {
    std::ifstream file(Container(), std::ios::binary);
    std::vector<char> block(std::size_t{1} << 20);
    while (file.read(block.data(), static_cast<std::streamsize>(block.size()))) {
    }
}

void BenchJob::RemoveOutput() const {
    fs::remove_all(OutputFolder());
    fs::remove(CopyFile());
}

void BenchJob::Remove() const {
    fs::remove_all(folder_);
}
