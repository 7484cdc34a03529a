#include "driverhost/DriverWords.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <system_error>

#include "driverhost/HostError.h"
#include "driverhost/Speech.h"
#include "driverhost/check/Findings.h"
#include "platform/PathRules.h"
#include "platform/Program.h"

namespace fs = std::filesystem;

namespace {

/// The PNG library as the driver's messages call it on every system.
constexpr std::string_view kPngLibrary = "libpng3.dll";

/// "" for a variable that is not set.
std::string ValueOf(const char* variable) {
    const char* const value = std::getenv(variable);
    return value == nullptr ? "" : value;
}

}  // namespace

std::vector<std::string> DriverWords::Source::NewLines() {
    std::vector<std::string> lines;
    std::error_code error;
    if (!fs::is_regular_file(Path, error)) return lines;
    std::ifstream file(Path, std::ios::binary);
    file.seekg(static_cast<std::streamoff>(Offset));
    for (std::string line; std::getline(file, line) && !file.eof();) {
        Offset += line.size() + 1;
        lines.push_back(std::move(line));
    }
    return lines;
}

std::optional<DriverWords::Source> DriverWords::Point(const char* variable, const char* name) {
    if (!folder_) {
        std::error_code error;
        const fs::path temporary = fs::temp_directory_path(error);
        if (error) return std::nullopt;  // then it speaks where it always does
        try {
            folder_.emplace(temporary / "driverhost");
        } catch (const HostError&) {
            return std::nullopt;
        }
    }
    const std::string path = (folder_->Path() / name).string();
    SetEnvironment(variable, path.c_str());
    return Source{path};
}

void DriverWords::Listen(bool takesMessages) {
    constexpr char kLog[] = "QL_LOG_FILE";
    constexpr char kMessages[] = "QL_MESSAGE_FILE";
    const std::string usersLog = ValueOf(kLog);
    if (usersLog.empty()) {
        log_ = Point(kLog, "log");
    } else {
        std::error_code error;
        const std::uintmax_t size = fs::file_size(usersLog, error);
        log_ = Source{usersLog, error ? 0 : size};
    }
    if (takesMessages && ValueOf(kMessages).empty()) messages_ = Point(kMessages, "messages");
}

std::vector<DriverWord> DriverWords::Take() {
    std::vector<DriverWord> words;
    const auto hear = [&](std::optional<Source>& source, auto wordOf) {
        if (!source) return;
        for (const std::string& line : source->NewLines()) {
            std::optional<DriverWord> word = wordOf(line);
            const bool isNew = word && std::none_of(words.begin(), words.end(), [&](auto& earlier) {
                                   return earlier.Text == word->Text;
                               });
            if (isNew) words.push_back(std::move(*word));
        }
    };
    hear(messages_, WordOfMessage);
    hear(log_, WordOfEntry);
    return words;
}

void DriverWords::SayAll() {
    for (const DriverWord& word : Take())
        Complain("{}{}", word.IsWarning ? "warning: " : "", word.Text);
}

std::optional<DriverWord> WordOfEntry(const std::string& line) {
    const bool isWarning = line.starts_with("W ");
    constexpr std::string_view kEndOfPlace = "): ";
    const std::size_t end = line.find(kEndOfPlace);
    if ((!isWarning && !line.starts_with("E ")) || end == std::string::npos) return std::nullopt;
    const std::string text = line.substr(end + kEndOfPlace.size());
    // A single word marks the place in the source and tells nobody else anything.
    if (text.find(' ') == std::string::npos) return std::nullopt;
    return DriverWord{isWarning, OneLine(text)};
}

std::optional<DriverWord> WordOfMessage(const std::string& line) {
    const nlohmann::json message = nlohmann::json::parse(line, nullptr, false);
    if (!message.is_object() || !message.contains("text") || !message["text"].is_string())
        return std::nullopt;
    std::string text = message["text"].get<std::string>();
    if (const std::size_t place = text.find(kPngLibrary); place != std::string::npos)
        text.replace(place, kPngLibrary.size(),
                     ProgramFolder() + kPathSeparator + "libpng3" + kLibrarySuffix);
    std::replace(text.begin(), text.end(), '\n', ' ');
    text.erase(text.find_last_not_of(' ') + 1);
    if (text.empty()) return std::nullopt;
    return DriverWord{false, OneLine(text)};
}
