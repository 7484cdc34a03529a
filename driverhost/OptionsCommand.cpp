#include "driverhost/OptionsCommand.h"

#include <fmt/format.h>

#include <cstdlib>
#include <optional>

#include "driverhost/CommandTree.h"
#include "driverhost/DriverLibrary.h"
#include "driverhost/JobFile.h"
#include "driverhost/ModelList.h"
#include "driverhost/ModelRules.h"
#include "driverhost/OptionsFile.h"
#include "driverhost/OptionsPage.h"
#include "driverhost/Overwriting.h"
#include "driverhost/SettingsSheet.h"
#include "driverhost/Speech.h"
#include "driverhost/WhiteChoice.h"
#include "host/FileBytes.h"
#include "host/Text.h"
#include "platform/win32.h"

namespace {

constexpr int32_t kShowDialog = 3;
constexpr int32_t kRestoreDefaults = 1003;

struct OptionsOptions {
    std::string Action;
    std::string File;
    std::string Value;
    std::string Model;
    std::string Encode;
    std::string Decode;
    std::string Output;
    std::string Sheet;
    bool Force = false;
};

/// An option block and the model that it is for.
struct Subject {
    std::string Path;
    OptionsFile File;
    PrintSettings Settings;
};

Subject OpenSubject(const OptionsOptions& options, const std::string& path) {
    Subject subject = {path, OptionsFile(path), {}};
    const std::string& model = options.Model.empty() ? subject.File.Model() : options.Model;
    if (model.empty())
        throw HostError(kUsage, "say the block's model with --model; only a job file holds one");
    RequireModel(model);
    CopyText(subject.Settings.ModelName, sizeof subject.Settings.ModelName, model);
    subject.Settings.ColorModeIndex = subject.File.ColorMode();
    return subject;
}

ModelRules RulesOf(const PrintSettings& settings) {
    return {settings.ModelName, {.ColorMode = settings.ColorModeIndex}};
}

void Show(const Subject& subject) {
    const ModelRules rules = RulesOf(subject.Settings);
    const ModelOutputSettings& model = rules.Output;
    Say("model:   {}\noffers:  {}\ndefault: {}\n", subject.Settings.ModelName, WhiteOffers(model),
        WhiteNameOf(model.DefaultWhiteType, model));
    const DriverOptionBlock& block = subject.File.Block;
    const std::optional<int32_t> stored = StoredWhite(block);
    const std::optional<int32_t> kept =
        subject.File.IsJob() ? ReadKeptWhite(subject.Path) : std::nullopt;
    if (stored)
        Say("stored:  {} in {}\n", WhiteNameOf(*stored, model), OptionsFileName(block));
    else
        Say("stored:  none, the block names no options file that can be read\n");
    if (kept) Say("kept:    {} in the job's settings\n", WhiteNameOf(*kept, model));
}

/// Puts a changed block into its file, and the choice into a job's settings. Throws HostError.
void Save(Subject& subject, const DriverOptionBlock& before) {
    const std::optional<int32_t> stored = StoredWhite(subject.File.Block);
    const bool keeps = subject.File.IsJob() && RulesOf(subject.Settings).OffersWhite();
    const bool isNew = OptionsFileName(before) != OptionsFileName(subject.File.Block);
    try {
        if (keeps && stored) KeepWhite(subject.Path, *stored);
        subject.File.Save();
    } catch (const HostError&) {
        if (isNew) RemoveOptionsFile(subject.File.Block);
        throw;
    }
    if (isNew && subject.File.IsJob()) RemoveOptionsFile(before);
}

/// A job gets an options file of its own, which no copy of the job shares; a block keeps the one
/// that it names.
void Set(Subject& subject, const std::string& treatment, const DriverLibrary& library) {
    const ModelRules rules = RulesOf(subject.Settings);
    const int32_t position = WhitePositionOf(treatment, rules.Output);
    const DriverOptionBlock before = subject.File.Block;
    if (subject.File.IsJob())
        subject.File.Block = StoreWhite(library, subject.Settings, rules.Output, position);
    else
        StoreWhiteIn(subject.File.Block, library, subject.Settings, rules.Output, position);
    Save(subject, before);
}

void Restore(Subject& subject, const DriverLibrary& library) {
    const DriverOptionBlock before = subject.File.Block;
    if (subject.File.IsJob()) subject.File.Block = {};
    OptionsPage(library, subject.File.Block, subject.Settings).Press(kRestoreDefaults);
    if (StoredWhite(subject.File.Block) != -1) RefuseUnstored();
    Save(subject, before);
}

/// Whether somebody or something can answer the driver's dialog.
bool CanEdit() {
    const char* const script = std::getenv("QL_DIALOG_SCRIPT");
    return (script != nullptr && *script != '\0') || OpenWindowSystem() != nullptr;
}

void Act(const OptionsOptions& options) {
    Subject subject = OpenSubject(options, options.File);
    if (options.Action == "show") return Show(subject);
    const DriverLibrary library;
    if (options.Action == "set") {
        if (options.Value.empty())
            throw HostError(kUsage, "say which white treatment to set, by name or number");
        Set(subject, options.Value, library);
    } else if (options.Action == "restore") {
        Restore(subject, library);
    } else {
        if (!CanEdit())
            throw HostError(kFailed,
                            "no window can be opened here: set DISPLAY, or answer the "
                            "dialog with a file that QL_DIALOG_SCRIPT names");
        const DriverOptionBlock before = subject.File.Block;
        library.CreateDriver()->ShowDriverOptions(&subject.File.Block, kShowDialog,
                                                  &subject.Settings, nullptr);
        Save(subject, before);
    }
    Show(subject);
}

void Decode(const OptionsOptions& options) {
    if (options.Output.empty()) throw HostError(kUsage, "say with -o where the block goes");
    const auto text = ReadFileBytes(AFilePath(options.Decode));
    if (!text) throw HostError(kFailed, fmt::format("cannot read {}", options.Decode));
    const DriverOptionBlock block = DecodeBlock(*text);
    RefuseToReplaceOther(options.Output, IsBlockFile, "an option block", options.Force);
    if (!ReplaceFileBytes(AFilePath(options.Output),
                          {reinterpret_cast<const char*>(&block), sizeof block}))
        throw HostError(kFailed, fmt::format("cannot write {}", options.Output));
}

void ServeOptions(const OptionsOptions& options) {
    const int asked = !options.Action.empty() + !options.Encode.empty() + !options.Decode.empty() +
                      !options.Sheet.empty();
    if (asked != 1 || options.Action.empty() != options.File.empty())
        throw HostError(kUsage,
                        "say one thing to do: show, set, edit or restore with a file, or "
                        "--encode, --decode or --sheet");
    if (!options.Encode.empty()) {
        Say("{}\n", EncodeBlock(OptionsFile(options.Encode).Block));
    } else if (!options.Decode.empty()) {
        Decode(options);
    } else if (!options.Sheet.empty()) {
        Subject subject = OpenSubject(options, options.Sheet);
        const DriverOptionBlock before = subject.File.Block;
        if (ShowSettingsSheet(subject.File, subject.Settings)) Save(subject, before);
        Show(subject);
    } else {
        Act(options);
    }
}

}  // namespace

void AddOptionsCommand(CommandTree& tree) {
    auto [command, options] =
        tree.Add("options", "Show or change how white ink is treated", ServeOptions);
    command.add_option("ACTION", options.Action, "show, set, edit (in a window) or restore")
        ->check(CLI::IsMember({"show", "set", "edit", "restore"}));
    command.add_option("JOB", options.File, "A job file, or a file that holds an option block")
        ->type_name(kFileArgument);
    command.add_option("VALUE", options.Value, "For set: a treatment, by its name or number");
    command.add_option("--model", options.Model, "The model (default: the job's)")
        ->type_name(kModelArgument);
    command
        .add_option("--encode", options.Encode,
                    "Print the block of a job or block file in the host's text form")
        ->type_name(kFileArgument);
    command.add_option("--decode", options.Decode, "Make a block file of a text form, see -o")
        ->type_name(kFileArgument);
    command.add_option("-o,--output", options.Output, "The block file that --decode writes")
        ->type_name(kFileArgument);
    command.add_flag("--force", options.Force,
                     "Let --decode replace a file that is no option block");
    command
        .add_option("--sheet", options.Sheet,
                    "Show a settings sheet that holds the driver's page, for a job or block file")
        ->type_name(kFileArgument);
    AddHelp(command,
            "The choice is kept in an options file below the base folder, which the block names, "
            "and\nfor a job also in its settings, from which run makes a missing options file "
            "again.",
            {"driverhost options show glass.job", "driverhost options set white.job overprint",
             "driverhost options restore white.job",
             "driverhost options --encode white.job > white.txt",
             "driverhost options --decode white.txt -o white.block",
             "driverhost options show white.block --model \"Fenland W6\"",
             "QL_DIALOG_SCRIPT=answers.txt driverhost options edit white.job"});
}
