#include "driverhost/JobReport.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "driverhost/Sha256.h"
#include "driverhost/Speech.h"

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

namespace {

const char* NameOf(JobState state) {
    switch (state) {
        case JobState::kNotRun:
            return "not run";
        case JobState::kComplete:
            return "complete";
        case JobState::kIncomplete:
            return "incomplete";
        case JobState::kAborted:
            return "aborted";
        case JobState::kFailed:
            break;
    }
    return "failed";
}

std::set<std::string> IncompleteFolders(const JobReport& report) {
    const bool incomplete =
        report.State == JobState::kIncomplete || report.State == JobState::kAborted;
    return incomplete ? report.Folders : std::set<std::string>();
}

Json PagesJson(const JobReport& report) {
    Json pages = Json::array();
    for (std::size_t i = 0; i < report.Pages.size(); ++i) {
        const PrintRecord::Page& page = report.Pages[i];
        pages.push_back({{"page", i + 1},
                         {"width", page.WidthPixels},
                         {"lines", page.Lines},
                         {"bits", page.Bits},
                         {"shortFiles", report.Faults[i].ShortFiles},
                         {"missingFiles", report.Faults[i].MissingFiles},
                         {"missingChannels", report.Faults[i].MissingFiles.size()},
                         {"sideFaults", report.Faults[i].SideFaults}});
    }
    return pages;
}

Json WordsJson(const JobReport& report) {
    Json words = Json::array();
    for (const DriverWord& word : report.Words)
        words.push_back({{"level", word.IsWarning ? "warning" : "error"}, {"text", word.Text}});
    return words;
}

/// Null for a file that cannot be read any more, and once an interrupt has come.
Json SumOf(const fs::path& file) {
    try {
        return Sha256OfFile(file);
    } catch (const HostError&) {
        return nullptr;
    }
}

Json FilesJson(const JobReport& report, const fs::path& folder) {
    Json files = Json::array();
    for (const auto& [path, state] : report.Files)
        files.push_back({{"path", path}, {"bytes", state.Bytes}, {"sha256", SumOf(folder / path)}});
    return files;
}

void PrintFaults(std::size_t page, const PageFaults& faults) {
    for (const std::string& file : faults.ShortFiles)
        Complain("page {}: {} is incomplete", page + 1, file);
    if (!faults.MissingFiles.empty())
        Complain("page {}: {} channels are not written: {}", page + 1, faults.MissingFiles.size(),
                 fmt::join(faults.MissingFiles, ", "));
    for (const std::string& fault : faults.SideFaults)
        Complain("page {}: {}", page + 1, fault);
}

}  // namespace

void JobReport::Fail(ExitStatus status, const std::string& message) {
    Message = message;
    Status = status;
    if (status == kAborted) {
        State = JobState::kAborted;
    } else if (Folders.empty()) {
        State = JobState::kFailed;
    } else {
        State = JobState::kIncomplete;
        Status = kIncomplete;
    }
}

bool JobReport::AnyFault() const {
    return !SideFaults.empty() || std::any_of(Faults.begin(), Faults.end(),
                                              [](const PageFaults& page) { return page.Any(); });
}

std::uintmax_t JobReport::Bytes() const {
    std::uintmax_t bytes = 0;
    for (const auto& [path, state] : Files)
        bytes += state.Bytes;
    return bytes;
}

double JobReport::BytesPerSecond() const {
    return Seconds > 0 ? static_cast<double>(Bytes()) / Seconds : 0;
}

void PrintReport(const JobReport& report, const fs::path& folder, bool nameJob) {
    constexpr double kMegabyte = 1e6;
    if (report.State != JobState::kNotRun && report.State != JobState::kFailed) {
        for (const auto& [path, state] : report.Files)
            Say("{:>15} bytes  {}\n", state.Bytes, path);
        Say("{} files, {:.1f} MB in {:.2f} s, {:.1f} MB/s\n", report.Files.size(),
            static_cast<double>(report.Bytes()) / kMegabyte, report.Seconds,
            report.BytesPerSecond() / kMegabyte);
    }
    for (const DriverWord& word : report.Words)
        Complain("{}{}", word.IsWarning ? "warning: " : "", word.Text);
    for (std::size_t page = 0; page < report.Faults.size(); ++page)
        PrintFaults(page, report.Faults[page]);
    for (const std::string& fault : report.SideFaults)
        Complain("{}", fault);
    if (report.Message.empty()) return;
    Complain("{}{}", nameJob ? report.Job + ": " : "", report.Message);
    for (const std::string& name : IncompleteFolders(report))
        Complain("the folder {} is incomplete", (folder / name).lexically_normal().string());
}

void PrintReportsAsJson(const std::vector<JobReport>& reports, const fs::path& folder,
                        int exitStatus) {
    Json jobs = Json::array();
    for (const JobReport& report : reports)
        jobs.push_back({{"job", report.Job},
                        {"model", report.Model},
                        {"source", report.SourceName},
                        {"state", NameOf(report.State)},
                        {"message", report.Message.empty() ? Json() : Json(report.Message)},
                        {"folders", report.Folders},
                        {"incompleteFolders", IncompleteFolders(report)},
                        {"pages", PagesJson(report)},
                        {"sideFaults", report.SideFaults},
                        {"driver", WordsJson(report)},
                        {"files", FilesJson(report, folder)},
                        {"bytes", report.Bytes()},
                        {"seconds", report.Seconds},
                        {"bytesPerSecond", report.BytesPerSecond()}});
    const Json all = {{"folder", folder.string()}, {"jobs", jobs}, {"exitStatus", exitStatus}};
    Say("{}\n", all.dump(2, ' ', false, Json::error_handler_t::replace));
}
