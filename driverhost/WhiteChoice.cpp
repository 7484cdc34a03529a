#include "driverhost/WhiteChoice.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <system_error>

#include "description/DriverOptions.h"
#include "driverhost/HostError.h"
#include "driverhost/JobFile.h"
#include "driverhost/OptionsPage.h"
#include "driverhost/Speech.h"
#include "driverhost/TextCompare.h"
#include "driverhost/check/Findings.h"
#include "host/AFilePath.h"
#include "host/Numbers.h"
#include "host/Text.h"

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kMostNameBytes = 254;

std::string_view NameIn(const DriverOptionBlock& block) {
    return FieldText(block.FileName, kMostNameBytes);
}

}  // namespace

std::string WhiteNameOf(int32_t type, const ModelOutputSettings& model) {
    for (std::size_t i = 0; i < model.WhiteTypeCodes.size(); ++i)
        if (model.WhiteTypeCodes[i] == type && i < model.WhiteTypeNames.size())
            return fmt::format("{} ({})", model.WhiteTypeNames[i], type);
    return type < 0 ? "none" : fmt::format("{}, which the model does not offer", type);
}

std::string WhiteOffers(const ModelOutputSettings& model) {
    std::string offers;
    for (const int32_t code : model.WhiteTypeCodes)
        offers += (offers.empty() ? "" : ", ") + WhiteNameOf(code, model);
    return offers.empty() ? "no white ink" : offers;
}

int32_t WhitePositionOf(const std::string& treatment, const ModelOutputSettings& model) {
    const std::size_t count = std::min(model.WhiteTypeNames.size(), model.WhiteTypeCodes.size());
    for (std::size_t i = 0; i < count; ++i)
        if (SameIgnoringCase(model.WhiteTypeNames[i], treatment)) return static_cast<int32_t>(i);
    for (std::size_t i = 0; i < model.WhiteTypeCodes.size(); ++i)
        if (LeadingDecimal(treatment) == model.WhiteTypeCodes[i]) return static_cast<int32_t>(i);
    throw HostError(kUsage, fmt::format("no white treatment \"{}\"; the model offers {}", treatment,
                                        WhiteOffers(model)));
}

std::string OptionsFileName(const DriverOptionBlock& block) {
    return OneLine(std::string(NameIn(block)));
}

fs::path OptionsFolder() {
    return AFilePath().Append("Jobs and Settings").Append("OptionsDrivers").fullPath();
}

std::optional<int32_t> StoredWhite(const DriverOptionBlock& block) {
    int32_t type = -1;
    if (PeekDriverOptions(block, type) != OptionsState::kRead) return std::nullopt;
    return type;
}

void RemoveOptionsFile(const DriverOptionBlock& block) {
    int32_t unused = -1;
    if (PeekDriverOptions(block, unused) == OptionsState::kNone) return;
    std::error_code error;  // one that stays is named by nobody and harms nobody
    fs::remove(OptionsFolder() / NameIn(block), error);
}

void RefuseUnstored() {
    throw HostError(kFailed, fmt::format("the choice is not stored: an options file cannot be "
                                         "written in {}",
                                         OptionsFolder().string()));
}

void StoreWhiteIn(DriverOptionBlock& block, const DriverLibrary& library, PrintSettings& settings,
                  const ModelOutputSettings& model, int32_t position) {
    OptionsPage page(library, block, settings);
    page.Activate();
    page.Select(position);
    page.Deactivate();
    if (StoredWhite(block) != model.WhiteTypeCodes.at(static_cast<std::size_t>(position)))
        RefuseUnstored();
}

DriverOptionBlock StoreWhite(const DriverLibrary& library, PrintSettings& settings,
                             const ModelOutputSettings& model, int32_t position) {
    DriverOptionBlock block = {};
    try {
        StoreWhiteIn(block, library, settings, model, position);
    } catch (const HostError&) {
        RemoveOptionsFile(block);
        throw;
    }
    return block;
}

WhiteOrder::WhiteOrder(const std::string& treatment, const fs::path& job, const std::string& model,
                       const PrintChoice& choice) {
    const ModelRules rules(model, choice);
    if (!rules.OffersWhite()) {
        if (!treatment.empty())
            throw HostError(kUsage, fmt::format("{} offers no white ink to choose", model));
        return;
    }
    if (IsJobFile(job)) TakeFrom(job, model);
    if (treatment.empty()) {
        if (type_ && *type_ >= 0) Say("white: {}, as before\n", WhiteNameOf(*type_, rules.Output));
        return;
    }
    const int32_t position = WhitePositionOf(treatment, rules.Output);
    PrintSettings settings;
    CopyText(settings.ModelName, sizeof settings.ModelName, model);
    settings.ColorModeIndex = choice.ColorMode;
    block_ = StoreWhite(DriverLibrary(), settings, rules.Output, position);
    type_ = rules.Output.WhiteTypeCodes[static_cast<std::size_t>(position)];
    isMade_ = true;
}

void WhiteOrder::TakeFrom(const fs::path& job, const std::string& model) {
    const JobFileHeader header = ReadJobHeader(job);
    if (FieldText(header.PrinterName, sizeof header.PrinterName) != model) return;
    int32_t stored = -1;
    const OptionsState state = PeekDriverOptions(header.Options, stored);
    if (state == OptionsState::kNone) return;
    earlier_ = header.Options;
    if (state == OptionsState::kRead) type_ = stored;
    if (state == OptionsState::kMissing) type_ = ReadKeptWhite(job);
    if (!type_) {
        Complain("warning: the white choice of the earlier {} cannot be read and is not kept",
                 job.string());
        return;
    }
    block_ = header.Options;
}

WhiteOrder::~WhiteOrder() {
    if (isMade_) RemoveOptionsFile(block_);
}

void WhiteOrder::Keep() {
    isMade_ = false;
    if (NameIn(earlier_) != NameIn(block_)) RemoveOptionsFile(earlier_);
}
