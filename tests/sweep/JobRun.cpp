#include "sweep/JobRun.h"

#include <algorithm>
#include <array>
#include <filesystem>

#include "boundary/JobRunner.h"
#include "sweep/Faults.h"

namespace fs = std::filesystem;

namespace {

// The choice that the dialog stores, as the options file shows it.
constexpr const char* kNoChoice = "Type=\"-1\"";
constexpr const char* kChoice = "Type=\"1\"";
constexpr int32_t kShow = 3;

bool IsTemporary(const std::string& name) {
    return name.ends_with(".part") || name.ends_with(".tmp");
}

void Empty(const fs::path& folder) {
    for (const fs::directory_entry& entry : fs::directory_iterator(folder))
        fs::remove_all(entry.path());
}

void EmptyFolders(const Scenario& scenario, const BaseFolder& folder) {
    for (const fs::path& each :
         {folder.Out(), folder.Temp(), folder.Base() / "temp", folder.Options()})
        Empty(each);
    for (const char* name : {"log", "messages"})
        fs::remove(folder.Root() / name);
    for (const auto& [name, bytes] : scenario.Before)
        WriteText(folder.Out() / name, bytes);
}

/// What this process has open, but for the host's own files.
std::vector<std::string> OpenFiles() {
    std::vector<std::string> files;
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code ignored;
        const std::string target = fs::read_symlink(entry.path(), ignored);
        const bool isListing = target.starts_with("/proc/");
        if (isListing || target.ends_with("/log") || target.ends_with("/messages")) continue;
        files.push_back(entry.path().filename().string() + " " + target);
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::vector<std::string> LeftFiles(const BaseFolder& folder, const DriverOptionBlock& block) {
    std::vector<std::string> left = Listing(folder.Temp());
    for (const std::string& name : Listing(folder.Base() / "temp"))
        left.push_back(name);
    for (const std::string& name : Listing(folder.Out()))
        if (IsTemporary(name)) left.push_back(name);
    for (const std::string& name : Listing(folder.Options()))
        if (name != block.FileName) left.push_back(name);
    return left;
}

std::string OptionsText(const BaseFolder& folder, const DriverOptionBlock& block) {
    return ReadText(folder.Options() / block.FileName);
}

/// The options of a setting, as the calls of a host and a user's answers change them.
OptionsEnd EditOptions(const BaseFolder& folder, const Driver& driver, DriverOptionBlock& block) {
    const fs::path script = folder.Root() / "script";
    setenv("QL_DIALOG_SCRIPT", script.c_str(), 1);
    PrintSettings settings = Settings(kModelName);
    const auto show = [&](const char* answers) {
        WriteText(script, answers);
        const Armed armed;
        return driver.Call(kShowDriverOptions, &block, kShow, &settings, nullptr);
    };
    const auto ensure = [&] {
        const Armed armed;
        return driver.Call(kEnsureDriverOptions, &block);
    };
    const auto holds = [&](const char* choice) {
        return OptionsText(folder, block).find(choice) != std::string::npos;
    };
    if (ensure() == 0) return OptionsEnd::kRefused;
    if (!holds(kNoChoice)) return OptionsEnd::kOtherwise;
    if (show("select 0\npress 1\n") == 0) return OptionsEnd::kRefused;
    if (!holds(kChoice)) {
        const std::string reports = ReadText(folder.Root() / "messages");
        const bool isOffered = reports.find("\"selection\":0") != std::string::npos;
        return isOffered ? OptionsEnd::kOtherwise : OptionsEnd::kRefused;
    }
    const DriverOptionBlock before = block;
    const std::string text = OptionsText(folder, block);
    const bool isShown = show("press 1003\npress 2\n") != 0;
    const bool isSame = std::memcmp(&before, &block, sizeof before) == 0;
    if (!isSame || OptionsText(folder, block) != text) return OptionsEnd::kLost;
    return isShown ? OptionsEnd::kAsOrdered : OptionsEnd::kRefused;
}

/// True when every page is printed.
bool PrintJob(const Scenario& scenario, const BaseFolder& folder, Job& job) {
    static constexpr std::array<int32_t, 2> kTileNumbers = {0, 1};
    if (scenario.HasThumbnail)
        SetText(job.Status.ThumbnailPath, (folder.Root() / "thumbnail").string());
    job.Status.RecordVersion = JobStatusRecord::kTileRecordVersion;
    job.Status.TileCount = scenario.TileCount;
    job.Status.TilePageNumbers = kTileNumbers.data();
    job.Status.TileColumnNumbers = kTileNumbers.data();
    job.Status.TileRowNumbers = kTileNumbers.data();
    const Armed armed;
    if (job.Open() == 0 || job.Port(folder.Out()) == 0 || job.HasEnded()) return false;
    while (!job.HasEnded())
        if (job.Step() == 0) return false;
    return true;
}

}  // namespace

Files OutputFiles(const BaseFolder& folder) {
    Files files;
    for (const std::string& name : Listing(folder.Out()))
        if (!IsTemporary(name))
            files[name] = name.ends_with('/') ? "" : ReadText(folder.Out() / name);
    return files;
}

RunFacts Print(const Scenario& scenario, BaseFolder& folder, const Driver& driver, bool aborts) {
    EmptyFolders(scenario, folder);
    setenv("QL_CODE_PAGE", scenario.CodePage.c_str(), 1);
    const std::vector<std::string> openBefore = OpenFiles();
    RunFacts facts;
    JobChoices choices;
    if (scenario.EditsOptions) {
        facts.Options = EditOptions(folder, driver, choices.Options);
        WriteText(folder.Jobs() / "job", JobFileBytes(choices));
        WriteText(folder.Out() / kOptionsFile, OptionsText(folder, choices.Options));
    }
    if (facts.Options == OptionsEnd::kAsOrdered) {
        Job job(driver, folder.Jobs() / "job");
        facts.HasFailed = !PrintJob(scenario, folder, job);
        if (facts.HasFailed && aborts) {
            const Armed armed;
            driver.Call(kAbortJob);
        }
    }
    const std::vector<std::string> openAfter = OpenFiles();
    std::set_difference(openAfter.begin(), openAfter.end(), openBefore.begin(), openBefore.end(),
                        std::back_inserter(facts.LeakedDescriptors));
    facts.Outputs = OutputFiles(folder);
    facts.Left = LeftFiles(folder, choices.Options);
    facts.Log = folder.Log();
    return facts;
}
