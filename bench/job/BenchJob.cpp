#include "BenchJob.h"

#include <fmt/format.h>
#include <tiffio.h>
#include <unistd.h>

#include <cstring>

#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

#include "host/Records.h"
#include "platform/Program.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* kModelName = "Bench";
constexpr const char* kPreviewName = "preview";
constexpr int kPreviewSide = 500;

void WriteFile(const fs::path& path, std::string_view content) {
    fs::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    file.close();
    if (!file) throw std::runtime_error("cannot write " + path.string());
}

std::string ChannelName(const BenchModel& model, int32_t channel) {
    return fmt::format("filename_{}.{}", kBenchColorants[channel], model.isRaw ? "raw" : "tif");
}

std::string Description(const BenchPage& page, const BenchModel& model) {
    std::string colors;
    std::string colorants;
    for (int32_t channel = 0; channel < BenchPage::kChannels; ++channel) {
        colors += fmt::format(
            "<Color><ID>{0}</ID><InternalName>{1}</InternalName><DisplayName>{1}</DisplayName>"
            "<ChannelName>{2}</ChannelName></Color>",
            channel, kBenchColorants[channel], ChannelName(model, channel));
        colorants += fmt::format(
            "<Colorant ID=\"{}\" IsSpotColor=\"0\"><ColorDepth>{}</ColorDepth></Colorant>", channel,
            page.bits);
    }
    return fmt::format(
        "<Printer><BaseResourceNumber><BaseMedia/><BasePrintMode/><BaseResolution/><BaseColor/>"
        "<BaseColorMode/></BaseResourceNumber><Definition><ColorList>{}</ColorList>"
        "<ColorModeList><ColorMode><ID>0</ID><InternalName>CMYK</InternalName>"
        "<DisplayName>CMYK</DisplayName><ColorantList>{}</ColorantList></ColorMode>"
        "</ColorModeList></Definition><ModelList><Model Name=\"{}\" TypeRead=\"{}\" "
        "PrinterDirection=\"{}\" CreateFolder=\"No\" SupportWhite=\"{}\"><PreviewParam type=\"{}\" "
        "sizeV=\"{}\" "
        "name=\"{}\"/></Model></ModelList></Printer>",
        colors, colorants, kModelName, model.isInterleaved ? "LINE_BY_LINE" : "",
        model.isReversed ? "YES" : "",
        model.whiteType == 0 ? "" : fmt::format("{0}|White;{0};1", model.whiteType), model.preview,
        model.preview.empty() ? 0 : kPreviewSide, kPreviewName);
}

std::string JobFileBytes() {
    constexpr float kResolution = 720;
    JobFileHeader header = {};
    std::string_view("bench.pdf").copy(header.OriginalFileName, sizeof header.OriginalFileName);
    std::string_view(kModelName).copy(header.PrinterName, sizeof header.PrinterName);
    header.XResolution = kResolution;
    header.YResolution = kResolution;
    header.XResolutionWhole = static_cast<int16_t>(kResolution);
    header.YResolutionWhole = static_cast<int16_t>(kResolution);
    return {reinterpret_cast<const char*>(&header), sizeof header};
}

}  // namespace

BenchJob::BenchJob(const fs::path& folder, const BenchPage& page, const BenchModel& model)
    : folder_(folder), page_(page), model_(model) {
    const fs::path base = folder / "base";
    WriteFile(
        base / "OutputDrivers" / "ZeComFile.xml",
        fmt::format("<Models><Model Name=\"{}\" XMLFile=\"bench.xml\"/></Models>", kModelName));
    WriteFile(base / "OutputDrivers" / "bench.xml", Description(page, model));
    fs::create_directories(base / "Temp");
    WriteFile(JobFile(), JobFileBytes());
    WriteBenchContainer(Container(), page, COMPRESSION_NONE);
    SetEnvironment("QL_BASE_FOLDER", base.c_str());
}

void BenchJob::CheckOutput() const {
    const auto channelBytes = static_cast<uintmax_t>(page_.Bytes() / BenchPage::kChannels);
    int32_t found = 0;
    for (const auto& entry : fs::recursive_directory_iterator(OutputFolder())) {
        if (!entry.is_regular_file() || entry.path().filename() == kPreviewName) continue;
        if (entry.file_size() < channelBytes) {
            throw std::runtime_error("incomplete: " + entry.path().string());
        }
        ++found;
    }
    const int32_t expected = BenchPage::kChannels + (model_.whiteType != 0 ? 1 : 0);
    if (found != expected) {
        throw std::runtime_error(fmt::format("{} channel files", found));
    }
    if (!model_.preview.empty() && !fs::exists(OutputFolder() / kPreviewName)) {
        throw std::runtime_error("no preview");
    }
}

void BenchJob::PrepareRound() const {
    fs::remove_all(OutputFolder());
    fs::remove(Copy());
    sync();
    fs::create_directories(OutputFolder());
}
