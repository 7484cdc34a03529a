#include "sweep/Outcome.h"

#include <algorithm>
#include <cstring>

namespace {

bool HasEntry(const RunFacts& facts, const std::string& levels, const std::string& text) {
    return std::any_of(facts.Log.begin(), facts.Log.end(), [&](const std::string& entry) {
        return !entry.empty() && levels.find(entry[0]) != std::string::npos &&
               entry.find(text) != std::string::npos;
    });
}

/// Names of the files that are missing, too many or of other bytes.
std::vector<std::string> Differences(const Files& right, const Files& files) {
    std::vector<std::string> names;
    for (const auto& [name, bytes] : right) {
        const auto found = files.find(name);
        if (found == files.end() || found->second != bytes) names.push_back(name);
    }
    for (const auto& [name, bytes] : files)
        if (!right.contains(name)) names.push_back(name);
    return names;
}

/// Whether only side outputs are lost, each of them named in the log.
bool AreNamedSideOutputs(const Scenario& scenario, const std::vector<std::string>& names,
                         const RunFacts& facts) {
    return std::all_of(names.begin(), names.end(), [&](const std::string& name) {
        const auto& sides = scenario.SideOutputs;
        return std::find(sides.begin(), sides.end(), name) != sides.end() &&
               HasEntry(facts, "EW", name.substr(name.rfind('/') + 1));
    });
}

Outcome EndOfJob(const Scenario& scenario, const Files& right, const RunFacts& facts,
                 const Injection& injection) {
    if (facts.HasFailed) {
        if (!HasEntry(facts, "E", "")) return Outcome::kSilentFailure;
        const bool isOfSystem = injection.Error != 0 && injection.Owner.Offset == 0;
        return isOfSystem && !HasEntry(facts, "E", std::strerror(injection.Error))
                   ? Outcome::kNoReason
                   : Outcome::kFailureSaid;
    }
    const std::vector<std::string> differences = Differences(right, facts.Outputs);
    if (differences.empty()) return Outcome::kRight;
    if (AreNamedSideOutputs(scenario, differences, facts)) return Outcome::kEntryNamesIt;
    return HasEntry(facts, "E", kJobName) ? Outcome::kDoubtSaid : Outcome::kFalseSuccess;
}

}  // namespace

Outcome OutcomeOf(const Scenario& scenario, const Files& right, const RunFacts& facts,
                  const Fault& fault, const Injection& injection) {
    Outcome outcome = Outcome::kFailureSaid;
    if (facts.Options == OptionsEnd::kAsOrdered)
        outcome = EndOfJob(scenario, right, facts, injection);
    else if (facts.Options == OptionsEnd::kLost)
        outcome = Outcome::kOptionsLost;
    else if (facts.Options == OptionsEnd::kOtherwise)
        outcome =
            HasEntry(facts, "EW", kOptionsFile) ? Outcome::kEntryNamesIt : Outcome::kFalseSuccess;
    if (outcome > Outcome::kDoubtSaid) return outcome;
    if (!facts.LeakedDescriptors.empty()) return Outcome::kDescriptorLeaked;
    if (!facts.Left.empty() && fault.What != Call::kUnlink) return Outcome::kFileLeft;
    return outcome;
}

bool IsKept(Outcome outcome, bool isStrict, const Injection& injection) {
    if (outcome == Outcome::kCrash)
        return injection.Owner.Offset != 0 && !injection.Owner.IsOurs() &&
               injection.Crash.Count > 0 && !injection.Crash.Frames[0].IsOurs();
    return outcome <= (isStrict ? Outcome::kEntryNamesIt : Outcome::kDoubtSaid);
}
