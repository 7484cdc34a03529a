#include "driverhost/JobFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fstream>
#include <nlohmann/json.hpp>
#include <system_error>

#include "driverhost/DocumentKind.h"
#include "driverhost/FreeSpace.h"
#include "driverhost/HostError.h"
#include "host/FileBytes.h"
#include "host/Text.h"

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
    if (!file) throw HostError(kFailed, WriteFailure(path));
}

fs::path Suffixed(const fs::path& job, const char* suffix) {
    fs::path path = job;
    path += suffix;
    return path;
}

using Json = nlohmann::ordered_json;

constexpr char kWhite[] = "white";

std::string TextOf(const Json& json) {
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

/// The settings beside a job, an object; null when there are none. Throws HostError for a damaged
/// file.
Json ReadSettings(const fs::path& path) {
    std::error_code error;
    if (!fs::exists(path, error)) return nullptr;
    const std::optional<std::string> text = ReadFileBytes(AFilePath(path.string()));
    Json json = text ? Json::parse(*text, nullptr, false) : Json();
    if (!json.is_object()) throw HostError(kFailed, fmt::format("{} is damaged", path.string()));
    return json;
}

void ReadChoice(const fs::path& path, JobSettings& settings) {
    const Json json = ReadSettings(path);
    if (json.is_null()) return;
    try {
        if (json.contains("media")) {
            settings.Choice.Media = json.at("media").get<int32_t>();
            settings.Choice.PrintMode = json.at("printMode").get<int32_t>();
            settings.Choice.Resolution = json.at("resolution").get<int32_t>();
            settings.HasChoice = true;
        }
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

std::optional<int32_t> ReadKeptWhite(const fs::path& job) {
    const Json json = ReadSettings(SettingsOf(job));
    if (json.is_null() || !json.contains(kWhite) || !json[kWhite].is_number_integer())
        return std::nullopt;
    const auto type = json[kWhite].get<int64_t>();
    if (type < INT32_MIN || type > INT32_MAX) return std::nullopt;
    return static_cast<int32_t>(type);
}

void KeepWhite(const fs::path& job, int32_t type) {
    const fs::path path = SettingsOf(job);
    Json json = ReadSettings(path);
    json[kWhite] = type;
    if (!ReplaceFileBytes(AFilePath(path.string()), TextOf(json)))
        throw HostError(kFailed, fmt::format("cannot write {}; is the disk full?", path.string()));
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
    header.Options = settings.Options;
    WriteFile(file, &header, sizeof header);
}

void WriteJobSettings(const fs::path& file, const JobSettings& settings) {
    Json json = {{"model", settings.Model},
                 {"media", settings.Choice.Media},
                 {"printMode", settings.Choice.PrintMode},
                 {"resolution", settings.Choice.Resolution},
                 {"colorMode", settings.Choice.ColorMode}};
    if (!settings.Tiles.IsWhole())
        json["tiles"] = {{"columns", settings.Tiles.Columns}, {"rows", settings.Tiles.Rows}};
    if (settings.White) json[kWhite] = *settings.White;
    const std::string text = TextOf(json);
    WriteFile(file, text.data(), text.size());
}

void RefuseArtwork(const fs::path& path) {
    if (IsArtwork(path))
        throw HostError(kFailed, fmt::format("{} is artwork, no job: make a job of it first, with "
                                             "`driverhost make-job {} --model MODEL -o JOB`",
                                             path.string(), path.string()));
}

bool IsJobHeader(const JobFileHeader& header) {
    const std::string_view model = FieldText(header.PrinterName, sizeof header.PrinterName);
    return !model.empty() && std::none_of(model.begin(), model.end(), [](char character) {
        return static_cast<unsigned char>(character) < 0x20;
    });
}

bool IsJobFile(const fs::path& path) {
    std::error_code error;
    if (fs::file_size(path, error) != sizeof(JobFileHeader) || error) return false;
    return !IsArtwork(path) && IsJobHeader(ReadJobHeader(path));
}

bool IsSettingsFile(const fs::path& path) {
    try {
        const Json json = ReadSettings(path);
        return json.is_object() && (json.contains("media") || json.contains(kWhite));
    } catch (const HostError&) {
        return false;
    }
}

JobFileHeader ReadJobHeader(const fs::path& job) {
    std::error_code error;
    const fs::file_status status = fs::status(job, error);
    if (!fs::exists(status))
        throw HostError(kFailed, fmt::format("{} does not exist", job.string()));
    if (!fs::is_regular_file(status))
        throw HostError(kFailed, fmt::format("{} is no job file", job.string()));
    RefuseArtwork(job);
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
    settings.Options = header.Options;
    ReadChoice(SettingsOf(job), settings);
    return settings;
}
