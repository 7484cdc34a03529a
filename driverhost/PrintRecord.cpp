#include "driverhost/PrintRecord.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <string_view>
#include <system_error>

#include "driverhost/HostError.h"
#include "host/FileBytes.h"

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kSuffix = ".print.json";

nlohmann::ordered_json ToJson(const PrintRecord::Page& page) {
    return {{"width", page.WidthPixels},
            {"lines", page.Lines},
            {"bits", page.Bits},
            {"files", page.Files}};
}

PrintRecord::Page PageOf(const nlohmann::json& json) {
    return {json.at("width").get<int64_t>(), json.at("lines").get<int64_t>(),
            json.at("bits").get<int32_t>(), json.at("files").get<std::vector<std::string>>()};
}

PrintRecord RecordOf(const nlohmann::json& json) {
    PrintRecord record;
    record.SourceName = json.at("source").get<std::string>();
    record.Model = json.at("model").get<std::string>();
    record.Choice = {json.at("media").get<int32_t>(), json.at("printMode").get<int32_t>(),
                     json.at("resolution").get<int32_t>(), json.at("colorMode").get<int32_t>()};
    record.WhiteType = json.value("white", -1);
    record.XResolution = json.at("xResolution").get<double>();
    record.YResolution = json.at("yResolution").get<double>();
    record.Complete = json.at("complete").get<bool>();
    for (const nlohmann::json& page : json.at("pages"))
        record.Pages.push_back(PageOf(page));
    if (json.contains("files")) record.Files = json.at("files").get<std::vector<std::string>>();
    return record;
}

}  // namespace

std::vector<std::string> PrintRecord::AllFiles() const {
    std::vector<std::string> files = Files;
    for (const Page& page : Pages)
        files.insert(files.end(), page.Files.begin(), page.Files.end());
    return files;
}

fs::path NewPrintRecordPath(const fs::path& folder, const std::string& name) {
    std::error_code error;
    fs::path path = folder / fmt::format("{}{}", name, kSuffix);
    for (int number = 2; fs::exists(fs::symlink_status(path, error)); ++number)
        path = folder / fmt::format("{}.{}{}", name, number, kSuffix);
    return path;
}

void WritePrintRecord(const fs::path& path, const PrintRecord& record) {
    nlohmann::ordered_json json = {{"source", record.SourceName},
                                   {"model", record.Model},
                                   {"media", record.Choice.Media},
                                   {"printMode", record.Choice.PrintMode},
                                   {"resolution", record.Choice.Resolution},
                                   {"colorMode", record.Choice.ColorMode},
                                   {"white", record.WhiteType},
                                   {"xResolution", record.XResolution},
                                   {"yResolution", record.YResolution},
                                   {"complete", record.Complete},
                                   {"pages", nlohmann::ordered_json::array()}};
    for (const PrintRecord::Page& page : record.Pages)
        json["pages"].push_back(ToJson(page));
    json["files"] = record.Files;
    const std::string text =
        json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + '\n';
    if (!ReplaceFileBytes(AFilePath(path.string()), text))
        throw HostError(kFailed, fmt::format("cannot write {}; is the disk full?", path.string()));
}

PrintRecord ReadPrintRecord(const fs::path& path) {
    const std::optional<std::string> text = ReadFileBytes(AFilePath(path.string()));
    if (!text) throw HostError(kFailed, fmt::format("cannot read {}", path.string()));
    try {
        return RecordOf(nlohmann::json::parse(*text));
    } catch (const nlohmann::json::exception&) {
        throw HostError(kFailed, fmt::format("{} is damaged", path.string()));
    }
}

std::vector<fs::path> FindPrintRecords(const fs::path& folder) {
    std::vector<fs::path> records;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error))
        if (entry->path().filename().string().ends_with(kSuffix)) records.push_back(entry->path());
    std::sort(records.begin(), records.end());
    return records;
}
