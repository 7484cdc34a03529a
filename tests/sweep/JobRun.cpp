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

/// The options of a setting, as the calls of a host and a user's answers change them.
class OptionsEditor {
  public:
    OptionsEditor(const BaseFolder& folder, const Driver& driver, DriverOptionBlock& block)
        : folder_(folder), driver_(driver), block_(block) {}

    OptionsEnd Edit() {
        if (!Ensure()) return OptionsEnd::kRefused;
        if (!Holds(kNoChoice)) return OptionsEnd::kOtherwise;
        if (!Show("select 0\npress 1\n")) return OptionsEnd::kRefused;
        if (!Holds(kChoice)) return OptionsEnd::kOtherwise;
        const DriverOptionBlock before = block_;
        const std::string text = Text();
        const bool isShown = Show("press 1003\npress 2\n");
        if (std::memcmp(&before, &block_, sizeof before) != 0 || Text() != text)
            return OptionsEnd::kLost;
        return isShown ? OptionsEnd::kAsOrdered : OptionsEnd::kRefused;
    }
    std::string Text() const { return ReadText(folder_.Options() / block_.FileName); }

  private:
    bool Ensure() {
        const Armed armed;
        return driver_.Call(kEnsureDriverOptions, &block_) != 0;
    }
    bool Show(const std::string& script) {
        WriteText(folder_.Root() / "script", script);
        setenv("QL_DIALOG_SCRIPT", (folder_.Root() / "script").c_str(), 1);
        PrintSettings settings = Settings(kModelName);
        const Armed armed;
        return driver_.Call(kShowDriverOptions, &block_, kShow, &settings, nullptr) != 0;
    }
    bool Holds(const std::string& choice) const { return Text().find(choice) != std::string::npos; }

    const BaseFolder& folder_;
    const Driver& driver_;
    DriverOptionBlock& block_;
};

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
        OptionsEditor editor(folder, driver, choices.Options);
        facts.Options = editor.Edit();
        WriteText(folder.Jobs() / "job", JobFileBytes(choices));
        WriteText(folder.Out() / kOptionsFile, editor.Text());
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
