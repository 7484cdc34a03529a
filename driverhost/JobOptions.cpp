#include "driverhost/JobOptions.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <system_error>

#include "description/DriverOptions.h"
#include "driverhost/HostError.h"
#include "driverhost/JobFile.h"
#include "driverhost/WhiteChoice.h"

namespace fs = std::filesystem;

namespace {

std::string Remedy(const fs::path& job, const ModelRules& rules) {
    return fmt::format("choose again with `driverhost options set {} TREATMENT`, one of {}",
                       job.string(), WhiteOffers(rules.Output));
}

}  // namespace

JobOptions::JobOptions(const fs::path& job, const DriverOptionBlock& block, ModelRules& rules) {
    if (!rules.OffersWhite()) return;
    int32_t type = -1;
    const OptionsState state = PeekDriverOptions(block, type);
    if (state == OptionsState::kUnreadable)
        throw HostError(kFailed, fmt::format("the job's white choice cannot be read from its "
                                             "options file {}; {}",
                                             OptionsFileName(block), Remedy(job, rules)));
    if (state == OptionsState::kMissing) {
        const std::optional<int32_t> kept = ReadKeptWhite(job);
        if (!kept)
            throw HostError(kFailed, fmt::format("the job's white choice is not known: its options "
                                                 "file {} is missing, and its settings keep none; "
                                                 "{}",
                                                 OptionsFileName(block), Remedy(job, rules)));
        type = *kept;
        Make(block, type);
    }
    rules.Output.SupportWhiteType = type;
}

void JobOptions::Make(const DriverOptionBlock& block, int32_t type) {
    const fs::path folder = OptionsFolder();
    std::error_code error;
    for (fs::path missing = folder; !fs::exists(missing, error); missing = missing.parent_path())
        made_.insert(made_.begin(), missing);
    fs::create_directories(folder, error);
    DriverOptionBlock fresh = {};
    CreateDriverOptionsFile(fresh);
    WriteDriverOptions(fresh, type);
    const fs::path path = folder / OptionsFileName(block);
    if (StoredWhite(fresh) == type) fs::rename(folder / fresh.FileName, path, error);
    made_.push_back(path);
    if (!error && StoredWhite(block) == type) return;
    RemoveOptionsFile(fresh);
    RemoveMade();
    throw HostError(kFailed,
                    fmt::format("the job's options file {} cannot be made again", path.string()));
}

void JobOptions::RemoveMade() {
    for (auto place = made_.rbegin(); place != made_.rend(); ++place) {
        std::error_code error;  // a folder that others use by now stays
        fs::remove(*place, error);
    }
    made_.clear();
}

JobOptions::~JobOptions() {
    RemoveMade();
}
