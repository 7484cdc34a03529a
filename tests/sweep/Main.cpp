// The fault sweep: whole jobs through the built library, in which each call of the system and each
// allocation fails in turn, once and from then on, by default and in strict mode. Every run has a
// process of its own, so that a crash is an outcome.

#include <fmt/format.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>

#include "sweep/Outcome.h"
#include "sweep/SweepTable.h"

namespace fs = std::filesystem;

namespace {

constexpr unsigned kHangSeconds = 60;  // a run takes some milliseconds
constexpr std::size_t kSlots = 2;      // runs at a time
constexpr int kNextJobEvery = 4;       // runs after which a second job is looked at

/// What a run's process leaves for the sweep; in memory that both share.
struct Report {
    bool IsComplete = false;
    Outcome End = Outcome::kRight;
    Injection Met;
};

struct Run {
    const Scenario* Job = nullptr;
    bool IsStrict = false;
    Fault What;
};

/// A base folder in which one run at a time takes place.
struct Slot {
    BaseFolder Folder;
    Report* Shared = static_cast<Report*>(
        mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    pid_t Process = 0;
    Run Current;
};

/// The run itself, in its own process.
void RunHere(const Run& run, const Files* right, Slot& slot, bool isVerbose) {
    Report& report = *slot.Shared;
    setenv("QL_STRICT", run.IsStrict ? "1" : "", 1);
    slot.Folder.Use();
    PlanFault(run.What, report.Met);
    const int32_t position = run.What.Position;
    const bool aborts = position % 2 == 0;
    {
        const Driver driver;
        const RunFacts facts = Print(*run.Job, slot.Folder, driver, aborts);
        if (right != nullptr) report.End = OutcomeOf(*run.Job, *right, facts, run.What, report.Met);
        if (isVerbose) {
            for (const std::string& entry : facts.Log)
                fmt::print("  {}\n", entry);
            for (const std::string& name : facts.Left)
                fmt::print("  left: {}\n", name);
            for (const std::string& name : facts.LeakedDescriptors)
                fmt::print("  open: {}\n", name);
            std::fflush(stdout);
        }
        if (right != nullptr && position / 2 % kNextJobEvery == 0) {
            Injection none;
            PlanFault({}, none);
            const RunFacts next = Print(*run.Job, slot.Folder, driver, aborts);
            const bool isRight = !next.HasFailed && next.Outputs == *right;
            if (!isRight && report.End <= Outcome::kNoReason) report.End = Outcome::kNextJobWrong;
        }
    }
    report.IsComplete = true;
}

Injection* ofThisProcess = nullptr;

/// Notes where the run's process is killed.
void NoteCrash(int signal) {
    ofThisProcess->Crash = CurrentCallSite();
    _exit(128 + signal);
}

void Start(const Run& run, const Files* right, Slot& slot, bool isVerbose = false) {
    *slot.Shared = {};
    slot.Current = run;
    std::fflush(stdout);
    slot.Process = fork();
    if (slot.Process != 0) return;
    alarm(kHangSeconds);
    ofThisProcess = &slot.Shared->Met;
    for (const int killer : {SIGSEGV, SIGBUS, SIGFPE, SIGABRT})
        std::signal(killer, &NoteCrash);
    if (!isVerbose && std::freopen((slot.Folder.Root() / "stderr").c_str(), "w", stderr) == nullptr)
        _exit(1);
    RunHere(run, right, slot, isVerbose);
    _exit(0);
}

/// Waits for a slot's run. A run that did not come to its end is a crash or a hang.
RunResult Finish(Slot& slot) {
    int status = 0;
    waitpid(slot.Process, &status, 0);
    slot.Process = 0;
    Report& report = *slot.Shared;
    if (!report.IsComplete || !WIFEXITED(status)) {
        const bool hangs = WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM;
        report.End = hangs ? Outcome::kHang : Outcome::kCrash;
    }
    return {slot.Current.Job->Name, slot.Current.IsStrict, slot.Current.What, report.End,
            report.Met};
}

class Sweep {
  public:
    Sweep(std::string onlyScenario, std::string onlyCall)
        : onlyScenario_(std::move(onlyScenario)), onlyCall_(std::move(onlyCall)) {}

    /// All faults of the scenarios, or about `most` of them, spread evenly; `position` not 0: this
    /// one only, with the log of each run.
    void Execute(std::size_t most, int32_t position) {
        for (const Scenario& scenario : Scenarios()) {
            if (!onlyScenario_.empty() && scenario.Name != onlyScenario_) continue;
            PrepareRuns(scenario);
        }
        std::size_t stride = most == 0 ? 1 : runs_.size() / most + 1;
        if (stride % 2 == 0) ++stride;  // runs come in pairs, once and lasting
        for (std::size_t i = position == 0 ? stride / 2 : 0; i < runs_.size(); i += stride) {
            if (position != 0 && runs_[i].What.Position != position) continue;
            RunNext(runs_[i], position != 0);
        }
        for (const auto& slot : slots_)
            if (slot->Process != 0) table_.Add(Finish(*slot));
    }
    const SweepTable& Table() const { return table_; }
    std::size_t PlannedCount() const { return runs_.size(); }

  private:
    /// Prints without a fault, by which the right files and the calls to fail are known.
    void PrepareRuns(const Scenario& scenario) {
        std::optional<Files> right;
        for (const bool isStrict : {false, true}) {
            for (const auto& slot : slots_) {
                Install(scenario, slot->Folder);
                Start({&scenario, isStrict, {}}, nullptr, *slot);
                Finish(*slot);
                const Files files = OutputFiles(slot->Folder);
                if (!right) right = files;
                if (!slot->Shared->IsComplete || *right != files || files.empty())
                    throw std::runtime_error("no two jobs alike: " + scenario.Name);
            }
            AddRuns(scenario, isStrict, slots_[0]->Shared->Met);
        }
        right_[&scenario] = *right;
    }

    void AddRuns(const Scenario& scenario, bool isStrict, const Injection& clean) {
        for (std::size_t call = 0; call < kCallCount; ++call) {
            if (!onlyCall_.empty() && kCallNames[call] != onlyCall_) continue;
            for (int32_t position = 1; position <= clean.Seen[call]; ++position)
                for (const bool lasts : {false, true})
                    runs_.push_back(
                        {&scenario, isStrict, {static_cast<Call>(call), position, lasts}});
        }
    }

    void RunNext(const Run& run, bool isVerbose) {
        Slot& slot = *slots_[next_++ % kSlots];
        if (slot.Process != 0) table_.Add(Finish(slot));
        if (installed_[&slot] != run.Job) Install(*run.Job, slot.Folder);
        installed_[&slot] = run.Job;
        Start(run, &right_.at(run.Job), slot, isVerbose);
        if (!isVerbose) return;
        const RunResult result = Finish(slot);
        const std::size_t end = static_cast<std::size_t>(result.End);
        fmt::print("{}, {}, {} {}: {}\n", run.Job->Name, run.IsStrict ? "strict" : "by default",
                   kCallNames[static_cast<std::size_t>(run.What.What)],
                   run.What.Lasts ? "and on" : "once", kOutcomeNames[end]);
        if (result.Met.HasStruck) fmt::print("  at {}\n", Describe({result.Met.Site})[0]);
        table_.Add(result);
    }

    std::string onlyScenario_;
    std::string onlyCall_;
    std::array<std::unique_ptr<Slot>, kSlots> slots_ = {std::make_unique<Slot>(),
                                                        std::make_unique<Slot>()};
    std::size_t next_ = 0;
    std::map<const Slot*, const Scenario*> installed_;
    std::map<const Scenario*, Files> right_;
    std::vector<Run> runs_;
    SweepTable table_;
};

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Fails each call of each job in turn and looks at what becomes of it.");
    std::size_t most = 0;
    int32_t position = 0;
    std::string scenario;
    std::string call;
    bool reports = false;
    app.add_option("--runs", most, "A sample of at most so many runs, spread evenly");
    app.add_option("--scenario", scenario, "Only jobs of this scenario");
    app.add_option("--call", call, "Only faults of this call");
    app.add_option("--position", position, "Only the fault at this place, with each run's log");
    app.add_flag("--report", reports, "Succeed whatever the runs come to");
    CLI11_PARSE(app, argc, argv);

    // A file system in memory, where there is one.
    if (fs::is_directory("/dev/shm")) setenv("TMPDIR", "/dev/shm", 0);
    const Driver loaded;  // once for all processes
    Sweep sweep(scenario, call);
    sweep.Execute(most, position);
    const SweepTable& table = sweep.Table();
    for (const bool isStrict : {true, false})
        fmt::print("{}:\n\n{}\n", isStrict ? "Strict" : "By default", table.Markdown(isStrict));
    fmt::print("{} of {} runs, {} not as they must be\n{}", table.RunCount(), sweep.PlannedCount(),
               table.BrokenCount(), table.Places());
    return reports || table.BrokenCount() == 0 ? 0 : 1;
}
