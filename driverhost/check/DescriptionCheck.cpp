#include <fmt/format.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "description/CDynamic.h"
#include "driverhost/HostError.h"
#include "driverhost/WorkFolder.h"
#include "driverhost/check/ChannelFormatCheck.h"
#include "driverhost/check/FileChecks.h"
#include "platform/Program.h"

namespace fs = std::filesystem;

namespace {

/// An environment variable for as long as this lives.
class ScopedVariable {
  public:
    ScopedVariable(const char* name, const std::string& value) : name_(name) {
        const char* const before = std::getenv(name);
        before_ = before == nullptr ? "" : before;
        SetEnvironment(name, value.c_str());
    }
    ~ScopedVariable() { SetEnvironment(name_, before_.c_str()); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

  private:
    const char* name_;
    std::string before_;
};

void WriteFile(const fs::path& path, const std::string& bytes) {
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!file.flush()) throw HostError(kFailed, fmt::format("cannot write {}", path.string()));
}

}  // namespace

std::optional<std::string> DriverRefusal(const std::string& description) {
    // In a base folder of its own, whose list leads every model here.
    const WorkFolder folder(fs::temp_directory_path() / "driverhost-check");
    const fs::path messages = folder.Path() / "messages";
    fs::create_directory(folder.Path() / "OutputDrivers");
    WriteFile(folder.Path() / "OutputDrivers" / "ZeComFile.xml",
              R"(<Models><Model XMLFile="description.xml"/></Models>)");
    WriteFile(folder.Path() / "OutputDrivers" / "description.xml", description);
    const ScopedVariable base("QL_BASE_FOLDER", folder.Path().string());
    const ScopedVariable messageFile("QL_MESSAGE_FILE", messages.string());
    if (CDynamic().LoadDescription("any") != 0) return std::nullopt;
    std::string last;
    std::ifstream lines(messages);
    for (std::string line; std::getline(lines, line);)
        last = nlohmann::json::parse(line).at("text").get<std::string>();
    return last;
}

void CheckDescription(CheckRun& run, const AFilePath& path) {
    CheckedDocument document(run.Found);
    if (!LoadNext(run, document, path, CheckedDocument::Form::kEncoded)) return;
    document.CheckNames(document.Root(),
                        {{"BaseResourceNumber", "Definition", "Control_Definition", "ModelList"},
                         {},
                         false,
                         false});
    const DescriptionFacts facts = CheckDefinition(document);
    CheckCombinations(document, facts);
    CheckChannelFormats(document, facts);
    CheckOutputRules(run, document, facts);
    // The driver has the last word, should these checks ever know less than it does.
    const std::optional<std::string> refusal = DriverRefusal(document.Bytes());
    if (!refusal) return;
    const std::string shown = refusal->empty() ? kWithoutMessage : Quoted(*refusal);
    if (run.Found.Mentions(document.File(), shown)) return;
    document.Error(document.Root(), "the driver refuses the description: " + shown);
}
