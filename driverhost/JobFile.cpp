#include "driverhost/JobFile.h"

#include <fmt/format.h>

#include <cmath>
#include <cstring>
#include <fstream>
#include <nlohmann/json.hpp>
#include <system_error>

#include "driverhost/HostError.h"

namespace fs = std::filesystem;

namespace {

/// Cut to fit; the field is zero from the text's end on.
template <std::size_t kSize>
void SetText(char (&field)[kSize], const std::string& text) {
    std::memcpy(field, text.data(), std::min(text.size(), kSize - 1));
}

template <std::size_t kSize>
std::string TextOf(const char (&field)[kSize]) {
    return {field, strnlen(field, kSize)};
}

int16_t WholeDots(double resolution) {
    return static_cast<int16_t>(std::lround(std::clamp(resolution, 0.0, double{INT16_MAX})));
}

void WriteFile(const fs::path& path, const void* data, std::size_t size) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(static_cast<const char*>(data), static_cast<std::streamsize>(size));
    file.close();
    if (!file)
        throw HostError(kFailed, fmt::format("cannot write {}; is the disk full?", path.string()));
}

fs::path Suffixed(const fs::path& job, const char* suffix) {
    fs::path path = job;
    path += suffix;
    return path;
}

void ReadChoice(const fs::path& path, JobSettings& settings) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return;
    try {
        const nlohmann::json json = nlohmann::json::parse(file);
        settings.Choice.Media = json.at("media").get<int32_t>();
        settings.Choice.PrintMode = json.at("printMode").get<int32_t>();
        settings.Choice.Resolution = json.at("resolution").get<int32_t>();
        settings.HasChoice = true;
        if (json.contains("tiles")) {
            settings.Tiles.Columns = json.at("tiles").at("columns").get<int32_t>();
            settings.Tiles.Rows = json.at("tiles").at("rows").get<int32_t>();
        }
    } catch (const nlohmann::json::exception&) {
        throw HostError(kFailed, fmt::format("{} is damaged", path.string()));
    }
}

}  // namespace

fs::path ContainerOf(const fs::path& job) {
    return Suffixed(job, ".pages.tif");
}

fs::path SettingsOf(const fs::path& job) {
    return Suffixed(job, ".settings.json");
}

void WriteJobHeader(const fs::path& file, const JobSettings& settings) {
    JobFileHeader header = {};
    SetText(header.OriginalFileName, settings.SourceName);
    SetText(header.PrinterName, settings.Model);
    header.XResolution = static_cast<float>(settings.XResolution);
    header.YResolution = static_cast<float>(settings.YResolution);
    header.XResolutionWhole = WholeDots(settings.XResolution);
    header.YResolutionWhole = WholeDots(settings.YResolution);
    header.ColorModeIndex = static_cast<int16_t>(settings.Choice.ColorMode);
    WriteFile(file, &header, sizeof header);
}

void WriteJobSettings(const fs::path& file, const JobSettings& settings) {
    nlohmann::ordered_json json = {{"model", settings.Model},
                                   {"media", settings.Choice.Media},
                                   {"printMode", settings.Choice.PrintMode},
                                   {"resolution", settings.Choice.Resolution},
                                   {"colorMode", settings.Choice.ColorMode}};
    if (!settings.Tiles.IsWhole())
        json["tiles"] = {{"columns", settings.Tiles.Columns}, {"rows", settings.Tiles.Rows}};
    const std::string text =
        json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + '\n';
    WriteFile(file, text.data(), text.size());
}

JobFileHeader ReadJobHeader(const fs::path& job) {
    std::error_code error;
    const fs::file_status status = fs::status(job, error);
    if (!fs::exists(status))
        throw HostError(kFailed, fmt::format("{} does not exist", job.string()));
    if (!fs::is_regular_file(status))
        throw HostError(kFailed, fmt::format("{} is no job file", job.string()));
    std::ifstream file(job, std::ios::binary);
    JobFileHeader header = {};
    file.read(reinterpret_cast<char*>(&header), sizeof header);
    if (file.gcount() != sizeof header)
        throw HostError(kFailed, fmt::format("{} is no job file: it has {} bytes instead of {}",
                                             job.string(), file.gcount(), sizeof header));
    return header;
}

JobSettings ReadJob(const fs::path& job) {
    const JobFileHeader header = ReadJobHeader(job);
    JobSettings settings;
    settings.Model = TextOf(header.PrinterName);
    settings.SourceName = TextOf(header.OriginalFileName);
    settings.XResolution = double{header.XResolution};
    settings.YResolution = double{header.YResolution};
    settings.Choice.ColorMode = header.ColorModeIndex;
    ReadChoice(SettingsOf(job), settings);
    return settings;
}
