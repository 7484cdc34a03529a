// The fault sweep: whole jobs through the built library, in which each call of the system and each
// allocation fails in turn, once and from then on, by default and in strict mode. Every run has a
// process of its own, so that a crash is an outcome.

#include <fmt/format.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <memory>
#include <optional>

#include "sweep/SweepTable.h"

namespace fs = std::filesystem;

namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned kHangSeconds = 60;  // a run takes some milliseconds
constexpr int kNextJobEvery = 4;       // runs after which a second job is looked at

/// A base folder in which one run at a time takes place.
struct Slot {
    BaseFolder Folder;
    Run& Current =
        *new (mmap(nullptr, sizeof(Run), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))
            Run;  // shared with its process
    pid_t Process = 0;
    const Scenario* Installed = nullptr;
};

void PrintFacts(const RunFacts& facts) {
    for (const std::string& entry : facts.Log)
        fmt::print("  {}\n", entry);
    for (const std::string& name : facts.Left)
        fmt::print("  left: {}\n", name);
    for (const std::string& name : facts.LeakedDescriptors)
        fmt::print("  open: {}\n", name);
    std::fflush(stdout);
}

/// The run, in its own process, against the files of one without a fault; null: this is that, and
/// anything but success is a failure.
Outcome Execute(Run& run, const Files* right, BaseFolder& folder, bool isVerbose) {
    folder.Use();
    setenv("QL_STRICT", run.IsStrict ? "1" : "", 1);
    PlanFault(run.What, run.Met);
    const int32_t position = run.What.Position;
    const bool aborts = position % 2 == 0;
    const Driver driver;
    const RunFacts facts = Print(*run.Job, folder, driver, aborts);
    if (isVerbose) PrintFacts(facts);
    if (right == nullptr) {
        const bool isPrinted = facts.Options == OptionsEnd::kAsOrdered && !facts.HasFailed;
        return isPrinted ? Outcome::kRight : Outcome::kFailureSaid;
    }
    const Outcome outcome = OutcomeOf(*run.Job, *right, facts, run.What, run.Met);
    if (outcome > Outcome::kDoubtSaid || position / 2 % kNextJobEvery != 0) return outcome;
    Injection none;
    PlanFault({}, none);
    const RunFacts next = Print(*run.Job, folder, driver, aborts);
    return !next.HasFailed && next.Outputs == *right ? outcome : Outcome::kNextJobWrong;
}

Injection* ofThisProcess = nullptr;

/// Notes where the run's process is killed.
void NoteCrash(int signal) {
    ofThisProcess->Crash = CurrentCallSite();
    _exit(128 + signal);
}

void Start(const PlannedRun& planned, const Files* right, Slot& slot, bool isVerbose = false) {
    Run& run = slot.Current;
    run = Run();
    static_cast<PlannedRun&>(run) = planned;
    if (slot.Installed != run.Job) Install(*run.Job, slot.Folder);
    slot.Installed = run.Job;
    std::fflush(stdout);
    slot.Process = fork();
    if (slot.Process != 0) return;
    alarm(kHangSeconds);
    ofThisProcess = &run.Met;
    for (const int killer : {SIGSEGV, SIGBUS, SIGFPE, SIGABRT})
        std::signal(killer, &NoteCrash);
    if (!isVerbose && std::freopen("/dev/null", "w", stderr) == nullptr) _exit(1);
    run.End = Execute(run, right, slot.Folder, isVerbose);
    _exit(0);
}

Run Finish(Slot& slot) {
    int status = 0;
    waitpid(slot.Process, &status, 0);
    slot.Process = 0;
    if (WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM) slot.Current.End = Outcome::kHang;
    return slot.Current;
}

class Sweep {
  public:
    /// Prints the scenario without a fault, by which its right files and its calls are known.
    void Plan(const Scenario& scenario, const std::string& onlyCall) {
        std::optional<Files> right;
        for (const bool isStrict : {false, true}) {
            for (Slot& slot : slots_) {
                Start({&scenario, isStrict, {}}, nullptr, slot);
                const Run run = Finish(slot);
                const Files files = OutputFiles(slot.Folder);
                if (!right) right = files;
                const bool hasSides = std::ranges::all_of(
                    scenario.SideOutputs, [&](const auto& name) { return files.contains(name); });
                if (run.End != Outcome::kRight || *right != files || !hasSides)
                    throw std::runtime_error("not printed, or no two jobs alike: " + scenario.Name);
            }
            PlanFaults({&scenario, isStrict, {}}, onlyCall);
        }
        right_[&scenario] = *right;
    }

    /// All planned runs, or at most so many, spread evenly. They are gone through in several
    /// passes, each with some of every job, until the time is over (0: until all are done).
    void RunSample(std::size_t most, int32_t seconds) {
        constexpr std::size_t kPasses = 8;
        const auto end = Clock::now() + std::chrono::seconds(seconds);
        std::size_t stride = most == 0 ? 1 : (runs_.size() + most - 1) / most;
        if (stride % 2 == 0) ++stride;  // faults come in pairs, once and lasting
        for (std::size_t pass = 0; pass < kPasses; ++pass) {
            std::size_t i = stride / 2 + pass * stride;
            for (; i < runs_.size() && (seconds == 0 || Clock::now() < end); i += kPasses * stride)
                RunInFreeSlot(runs_[i]);
        }
        for (Slot& slot : slots_)
            if (slot.Process != 0) table_.Add(Finish(slot));
    }

    /// The planned runs of one position, each with its log.
    void RunOnly(int32_t position) {
        for (const PlannedRun& planned : runs_) {
            if (planned.What.Position != position) continue;
            fmt::print("{}:\n", Describe(planned));
            Start(planned, &right_.at(planned.Job), slots_[0], true);
            const Run run = Finish(slots_[0]);
            fmt::print("  {}\n  at {}\n", kOutcomeNames[static_cast<std::size_t>(run.End)],
                       Describe({run.Met.Site})[0]);
            table_.Add(run);
        }
    }

    const SweepTable& Table() const { return table_; }
    std::size_t PlannedCount() const { return runs_.size(); }

  private:
    void PlanFaults(PlannedRun run, const std::string& onlyCall) {
        for (std::size_t call = 0; call < kCallCount; ++call) {
            if (!onlyCall.empty() && kCallNames[call] != onlyCall) continue;
            const int32_t count = slots_[0].Current.Met.Seen[call];
            for (int32_t position = 1; position <= count; ++position) {
                for (const bool lasts : {false, true}) {
                    run.What = {static_cast<Call>(call), position, lasts};
                    runs_.push_back(run);
                }
            }
        }
    }

    void RunInFreeSlot(const PlannedRun& planned) {
        Slot& slot = slots_[next_++ % slots_.size()];
        if (slot.Process != 0) table_.Add(Finish(slot));
        Start(planned, &right_.at(planned.Job), slot);
    }

    std::array<Slot, 2> slots_;
    std::size_t next_ = 0;
    std::map<const Scenario*, Files> right_;
    std::vector<PlannedRun> runs_;
    SweepTable table_;
};

int SweepAsAsked(int argc, char** argv) {
    CLI::App app("Fails each call of each job in turn and looks at what becomes of it.");
    std::size_t most = 0;
    int32_t seconds = 0;
    int32_t position = 0;
    std::string scenarioName;
    std::string call;
    bool onlyReports = false;
    app.add_option("--runs", most, "A sample of at most so many runs, spread evenly");
    app.add_option("--seconds", seconds, "No run begins later than that");
    app.add_option("--scenario", scenarioName, "Only jobs of this scenario");
    app.add_option("--call", call, "Only faults of this call");
    app.add_option("--position", position, "Only the fault at this place, with each run's log");
    app.add_flag("--report", onlyReports, "Succeed whatever the runs come to");
    CLI11_PARSE(app, argc, argv);

    // A file system in memory, where there is one.
    if (fs::is_directory("/dev/shm")) setenv("TMPDIR", "/dev/shm", 0);
    const Driver loaded;  // once for all processes
    Sweep sweep;
    for (const Scenario& scenario : Scenarios())
        if (scenarioName.empty() || scenario.Name == scenarioName) sweep.Plan(scenario, call);
    if (position != 0)
        sweep.RunOnly(position);
    else
        sweep.RunSample(most, seconds);
    const SweepTable& table = sweep.Table();
    for (const bool isStrict : {true, false})
        fmt::print("{}:\n\n{}\n", isStrict ? "Strict" : "By default", table.Markdown(isStrict));
    fmt::print("{} of {} runs, {} not as they must be\n{}", table.RunCount(), sweep.PlannedCount(),
               table.BrokenCount(), table.Places());
    return onlyReports || table.BrokenCount() == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return SweepAsAsked(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "fault_sweep: %s\n", error.what());
    }
    return 2;
}
